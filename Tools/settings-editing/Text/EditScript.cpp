// SPDX-License-Identifier: MIT
#include "Text/EditScript.h"

#include <algorithm>
#include <string_view>

#include "QRVSettings/StoreKeyPaths.h"
#include "Reporting/Failure.h"
#include "Text/FileForm.h"
#include "Text/JSON.h"
#include "Text/ValueText.h"

namespace Tool {
namespace {

constexpr std::string_view blanks = " \t";

[[noreturn]] void refuse(const std::string& why) {
    throw Failure(Fault::WrongValue, why);
}

void skipBlanks(std::string_view& rest) {
    rest.remove_prefix(std::min(rest.find_first_not_of(blanks), rest.size()));
}

std::string_view takeUpTo(std::string_view& rest, std::size_t end) {
    const std::string_view taken = rest.substr(0, end);
    rest.remove_prefix(taken.size());
    return taken;
}

std::string_view takeWord(std::string_view& rest) {
    return takeUpTo(rest, rest.find_first_of(blanks));
}

/// Returns the quotation marks too; the whole rest when the second one is missing.
std::string_view takeQuoted(std::string_view& rest) {
    std::size_t end = 1;
    while (end < rest.size() && rest[end] != '"') end += rest[end] == '\\' ? 2 : 1;
    return takeUpTo(rest, end + 1);
}

/// A word, or a JSON string that may hold blanks.
std::string takeName(std::string_view& rest, const std::string& what) {
    if (!rest.starts_with('"')) return std::string(takeWord(rest));
    std::string name = valueFromJSON(takeQuoted(rest)).stringValue();
    if (!rest.empty() && blanks.find(rest.front()) == blanks.npos)
        refuse("no blank after " + what + ": " + shortened(rest));
    return name;
}

std::string typeNamed(const std::string& name) {
    if (std::find(valueTypes().begin(), valueTypes().end(), name) != valueTypes().end())
        return name;
    std::string names;
    for (const std::string& type : valueTypes()) names += (names.empty() ? "" : ", ") + type;
    refuse("not a type of values (" + names + "): " + shortened(name));
}

std::string profileNamed(const std::string& name) {
    if (name.empty()) refuse("the name of the profile is empty");
    return name;
}

/// Reads one line from its start.
class LineReader {
  public:
    explicit LineReader(std::string_view line) : rest_(line) {}
    Edit edit(std::size_t number);

  private:
    void takeOptions();
    void takeOption(std::string_view name);
    bool takeFlag(std::string_view name);
    std::string takeKeyPath();
    PropertyListValue takeValue(const std::string& keyPath);

    std::string_view rest_;
    std::string operation_;
    std::string type_;
    std::string profile_;
    bool isNew_ = false;
    bool isOfAnyKind_ = false;
    bool areOptionsOver_ = false;
};

void LineReader::takeOptions() {
    skipBlanks(rest_);
    while (!areOptionsOver_ && rest_.starts_with("--")) {
        const std::string_view name = takeUpTo(rest_, rest_.find_first_of(" \t="));
        if (name == "--" && !rest_.starts_with('='))
            areOptionsOver_ = true;
        else if (!takeFlag(name))
            takeOption(name);
        skipBlanks(rest_);
    }
}

bool LineReader::takeFlag(std::string_view name) {
    if (operation_ != "set" || rest_.starts_with('=')) return false;
    if (name == "--new") return isNew_ = true;
    if (name == "--any-kind") return isOfAnyKind_ = true;
    return false;
}

void LineReader::takeOption(std::string_view name) {
    const bool isType = name == "--type" && operation_ == "set";
    if (!isType && name != "--profile")
        refuse("no option of " + operation_ + " in a line: " + shortened(name) +
               " (a key path or value that begins with -- goes after --)");
    if (rest_.starts_with('='))
        rest_.remove_prefix(1);
    else
        skipBlanks(rest_);
    if (rest_.empty()) refuse("no value for " + std::string(name));
    const std::string value = takeName(rest_, "the value of " + std::string(name));
    (isType ? type_ : profile_) = isType ? typeNamed(value) : profileNamed(value);
}

std::string LineReader::takeKeyPath() {
    if (rest_.empty()) refuse("no key path");
    return takeName(rest_, "the key path");
}

PropertyListValue LineReader::takeValue(const std::string& keyPath) {
    if (rest_.empty()) refuse("no value for " + shortened(keyPath) + " (\"\" is empty text)");
    return valueFromText(std::string(rest_), type_);
}

/// A storable value is not enough: the key path may have too many levels.
void requireStorableSetting(const Edit& edit) {
    std::string keyPath = edit.keyPath;
    if (!edit.profile.empty())
        keyPath = std::string(QRVStoreKeyPaths::profiles) + "." + edit.profile + "." + keyPath;
    requireStorable(edit.value, keyPath);
}

Edit LineReader::edit(std::size_t number) {
    operation_ = takeWord(rest_);
    if (operation_ != "set" && operation_ != "unset")
        refuse("neither set nor unset: " + shortened(operation_));
    takeOptions();
    Edit edit{number, takeKeyPath(), nullptr, {}, false, false};
    takeOptions();
    if (operation_ == "set")
        edit.value = takeValue(edit.keyPath);
    else if (!rest_.empty())
        refuse("more than a key path: " + shortened(rest_));
    edit.profile = profile_;
    edit.isNew = isNew_;
    edit.isOfAnyKind = isOfAnyKind_;
    if (operation_ == "set") requireStorableSetting(edit);
    return edit;
}

/// Without "\n" or "\r\n", and without blanks around it.
std::string_view takeLine(std::string_view& text) {
    std::string_view line = takeUpTo(text, text.find('\n'));
    if (!text.empty()) text.remove_prefix(1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    skipBlanks(line);
    return line.substr(0, line.find_last_not_of(blanks) + 1);
}

}  // namespace

std::vector<Edit> editsFromScript(std::string_view text, const std::string& name) {
    std::vector<Edit> edits;
    for (std::size_t number = 1; !text.empty(); ++number) {
        const std::string_view line = takeLine(text);
        try {
            requireUTF8(std::string(line));
            if (!line.empty() && !line.starts_with('#'))
                edits.push_back(LineReader(line).edit(number));
        } catch (const Failure& failure) {
            throw Failure(failure.fault(), atLine(name, number, failure.what()));
        }
    }
    return edits;
}

std::string atLine(const std::string& name, std::size_t line, const std::string& fault) {
    return name + ":" + std::to_string(line) + ": " + fault;
}

}  // namespace Tool
