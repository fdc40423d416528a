// SPDX-License-Identifier: MIT
// What people and scripts write for the tool, scripts of edits, JSON, key paths and single values,
// is read or refused with a reason, and what the tool prints of it is read as the same again.

#include <array>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Fuzzing.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Reporting/Failure.h"
#include "Reporting/PrintableText.h"
#include "Text/EditScript.h"
#include "Text/JSON.h"
#include "Text/KeyPaths.h"
#include "Text/SettingLines.h"
#include "Text/SettingsText.h"
#include "Text/ShellCommands.h"
#include "Text/ValueText.h"

using Fuzzing::isSameTree;
using Fuzzing::require;

namespace {

/// False when it is refused, as it should be refused.
bool isRead(std::string_view text, std::string_view beginning, const std::function<void()>& read) {
    try {
        read();
        return true;
    } catch (const Tool::Failure& failure) {
        const std::string_view why = failure.what();
        require(failure.fault() == Tool::Fault::WrongValue, "input is refused as such", text);
        require(why.size() > beginning.size() && why.starts_with(beginning), "a refusal says what",
                why, text);
        return false;
    }
}

bool isStorable(const PropertyListValue& value) {
    return !NSPropertyListSerialization::dataWithPropertyList(value).error;
}

/// What the text of a date can tell: in the second before 2001 a double can tell more than the
/// whole second and a fraction do.
NSDate asInText(NSDate date) {
    const double seconds = date.timeIntervalSinceReferenceDate();
    return seconds > -1 && seconds < 0 ? NSDate(-1 + (seconds + 1)) : date;
}

void requireJSONIsReadAgain(const PropertyListValue& value) {
    const std::string text = Tool::jsonText(value);
    require(!Tool::holdsControls(text), "JSON is one line without control characters", text);
    PropertyListValue again;
    require(isRead(text, "", [&] { again = Tool::valueFromJSON(text); }), "JSON is read", text);
    require(isSameTree(again, value, asInText), "JSON is read as the same value", text, value,
            again);
    require(Tool::jsonText(again) == text, "the same value is the same JSON", text);
}

void readSettings(std::string_view text) {
    NSDictionary tree;
    if (!isRead(text, "", [&] { tree = Tool::settingsFromText(std::string(text)); })) return;
    const std::string json = Tool::jsonOfSettings(tree);
    NSDictionary again;
    require(isRead(json, "", [&] { again = Tool::settingsFromText(json); }), "settings are read",
            json);
    require(isSameTree(again, tree, asInText), "settings are read as the same", text, json);
}

void readJSON(std::string_view text) {
    PropertyListValue value;
    if (!isRead(text, "", [&] { value = Tool::valueFromJSON(text); })) return;
    require(!value.isNull(), "there is a value", text);
    requireJSONIsReadAgain(value);
    readSettings(text);
}

void requireLineIsReadAgain(const std::string& line, const Tool::Edit& edit) {
    std::vector<Tool::Edit> again;
    require(isRead(line, "", [&] { again = Tool::editsFromScript(line, "line"); }),
            "an edit is read again", line);
    require(again.size() == 1 && again[0].keyPath == edit.keyPath &&
                again[0].profile == edit.profile &&
                isSameTree(again[0].value, edit.value, asInText),
            "an edit is read as the same", line);
}

/// As a command for a shell, which no U+0000 fits in.
void requireCommandIsReadAgain(const Tool::Edit& edit) {
    if ((edit.keyPath + edit.profile).find('\0') != std::string::npos) return;
    std::string line = edit.value.isNull() ? "qrvsettings unset " : "qrvsettings set ";
    if (!edit.profile.empty()) line += "--profile=" + Tool::shellWord(edit.profile) + " ";
    line += "-- " + Tool::shellWord(edit.keyPath);
    if (!edit.value.isNull()) line += " " + Tool::shellWord(Tool::jsonText(edit.value));
    requireLineIsReadAgain(line, edit);
}

void requireEditIsReadAgain(const Tool::Edit& edit) {
    const bool isRemoval = edit.value.isNull();
    std::string line = isRemoval ? "unset " : "set ";
    if (!edit.profile.empty()) line += "--profile " + Tool::jsonText(edit.profile) + " ";
    line += Tool::jsonText(edit.keyPath);
    if (!isRemoval) line += " " + Tool::jsonText(edit.value);
    requireLineIsReadAgain(line, edit);
}

void readLines(std::string_view text) {
    std::vector<Tool::Edit> edits;
    if (!isRead(text, "input:", [&] { edits = Tool::editsFromScript(text, "input"); })) return;
    std::size_t line = 0;
    for (const Tool::Edit& edit : edits) {
        require(edit.line >= line, "lines come in order", text);
        line = edit.line;
        require(edit.value.isNull() || isStorable(edit.value), "values can be stored", text);
        requireEditIsReadAgain(edit);
        requireCommandIsReadAgain(edit);
        const std::string printed = Tool::settingLine(edit.keyPath, edit.value);
        require(printed.ends_with('\n') && printed.find('\n') == printed.size() - 1 &&
                    printed.find('\t') != std::string::npos,
                "a setting is one line", printed);
    }
}

void readKeyPath(std::string_view keyPath) {
    if (!isStorable(keyPath)) return;  // not UTF-8
    const std::string text = Tool::keyPathText(keyPath);
    require(!Tool::holdsControls(text), "a key path is one line", text);
    if (keyPath.empty() || text.find(' ') != std::string::npos) return;
    std::vector<Tool::Edit> edits;
    const std::string line = "unset -- " + text;
    require(isRead(line, "", [&] { edits = Tool::editsFromScript(line, "line"); }),
            "a key path that was printed is read", line);
    require(edits.size() == 1 && edits[0].keyPath == keyPath,
            "a key path that was printed is read as the same", line);
}

void readText(std::string_view bytes) {
    constexpr std::array types{"", "bool", "int", "real", "string", "date", "data", "json"};
    Fuzzing::Input input(bytes);
    const std::string type = types[input.number(types.size())];
    const std::string text(input.rest());
    PropertyListValue value;
    if (!isRead(text, "", [&] { value = Tool::valueFromText(text, type); })) return;
    require(!value.isNull(), "there is a value", text);
    requireJSONIsReadAgain(value);
    if (type.empty() || type == "json") return;
    const std::string bare = Tool::bareText(value);
    PropertyListValue again;
    require(isRead(bare, "", [&] { again = Tool::valueFromText(bare, type); }),
            "what is printed bare is read", type, bare);
    require(isSameTree(again, value), "what is printed bare is read as the same", type, bare, text);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::array languages{readLines, readJSON, readKeyPath, readText};
    Fuzzing::silenceLogs();
    Fuzzing::Input input(Fuzzing::textOf(data, size));
    const auto read = languages[input.number(languages.size())];
    read(input.rest());
    return 0;
}
