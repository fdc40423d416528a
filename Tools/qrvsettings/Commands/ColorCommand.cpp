// SPDX-License-Identifier: MIT
// Reads and writes colours.

#include <algorithm>
#include <cstdlib>

#include "Commands/CommandTable.h"
#include "Commands/Leniency.h"
#include "Commands/WritingCommands.h"
#include "Options/CommonOptions.h"
#include "Process/ExitCode.h"
#include "Process/StandardError.h"
#include "Process/StandardOutput.h"
#include "Process/StandardStreams.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Settings/KnownKeyPaths.h"
#include "Settings/PendingChanges.h"
#include "Settings/ProfileScope.h"
#include "Settings/SettingsFileCondition.h"
#include "Text/ColorText.h"
#include "Text/FileForm.h"
#include "Text/ValueText.h"

namespace Tool {
namespace {

struct Options {
    std::string keyPath;
    std::string profile;
    std::vector<std::string> color;
    bool hexadecimal = false;
    Leniency leniency;
    WritingOptions writing;
};

bool isSet(const char* variable) {
    const char* const value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

bool has24Bits() {
    const char* const colors = std::getenv("COLORTERM");
    return colors != nullptr &&
           (std::string_view(colors) == "truecolor" || std::string_view(colors) == "24bit");
}

bool showsColors() {
    const char* const terminal = std::getenv("TERM");
    return standardOutputIsTerminal() && !isSet("NO_COLOR") && terminal != nullptr &&
           std::string_view(terminal) != "dumb";
}

/// The rule by which the store recognises the text of a colour.
bool isColorText(const PropertyListValue& value) {
    const std::string_view text = value.stringView();
    return value.isString() && std::count(text.begin(), text.end(), ' ') == 3;
}

NSColor colorOf(const ProfileScope& scope, const std::string& keyPath) {
    scope.extendDefault(keyPath);
    const PropertyListValue color = QRVSettingsColorForKeyPath(scope.storedKeyPath(keyPath));
    const PropertyListValue stored = scope.stored(keyPath);
    const PropertyListValue present =
        stored.isNull() ? QRVSettingsDefaultForKeyPath(keyPath) : stored;
    if (present.isNull()) throw Failure(Fault::NotSet, notSet(keyPath));
    if (color.isNull())
        throw Failure(Fault::WrongValue, "not a colour, but " + kindName(present) + ": " +
                                             shortened(bareText(present)) + ", " + keyPath);
    if (!isColorText(present))
        remark("what is stored is not a colour, so this is the default, " + keyPath);
    return color.color();
}

ExitCode get(const Options& options) {
    requireUTF8(options.keyPath);
    const ProfileScope scope(options.profile);
    openToRead();
    prepareToRead();
    const NSColor color = colorOf(scope, options.keyPath);
    const std::string text = options.hexadecimal ? hexadecimalColorText(color) : colorText(color);
    printWithEscapeSequences(text + (showsColors() ? "  " + swatch(color, has24Bits()) : "") +
                             "\n");
    return ExitCode::Done;
}

bool isUsual(double component) {
    return component >= 0 && component <= 1;
}

ExitCode set(const Options& options) {
    requireUTF8(options.keyPath);
    const NSColor color = colorFromTexts(options.color);
    const ProfileScope scope(options.profile);
    const std::string storedKeyPath = scope.storedKeyPath(options.keyPath);
    openToWrite(options.writing);
    PendingChanges changes;
    requireUsualColor(options.keyPath, scope, options.leniency);
    changes.write(storedKeyPath, [&] {
        scope.extendDefault(options.keyPath);
        QRVSettingsSetColorForKeyPath(color, storedKeyPath);
    });
    remarkIfUnchanged(changes.save(), options.keyPath);
    if (!isUsual(color.redComponent) || !isUsual(color.greenComponent) ||
        !isUsual(color.blueComponent) || !isUsual(color.alphaComponent))
        remark("stored as it is, though not all components are from 0 to 1, " + options.keyPath);
    return ExitCode::Done;
}

ExitCode unset(const Options& options) {
    requireUTF8(options.keyPath);
    const ProfileScope scope(options.profile);
    const std::string storedKeyPath = scope.storedKeyPath(options.keyPath);
    openToWrite(options.writing);
    if (QRVSettingsStoredObjectForKeyPath(storedKeyPath).isNull())
        throw Failure(Fault::NotSet, notSet(options.keyPath));
    PendingChanges changes;
    changes.write(storedKeyPath, [&] { QRVSettingsSetColorForKeyPath(nullptr, storedKeyPath); });
    changes.save();
    return ExitCode::Done;
}

OptionList declareGet(Options& options) {
    return {keyPathArgument(options.keyPath), profileOption(options.profile),
            flag("--hex", options.hexadecimal,
                 "Print #rrggbbaa, components outside of 0 to 1 clamped")};
}

OptionList declareSet(Options& options) {
    Option color =
        required(texts("COLOR", options.color,
                       "R G B [A], numbers usually from 0 to 1, or '#rrggbb' or '#rrggbbaa'"));
    color.takes = Takes::Color;
    return withWritingOptions(
        withLeniency({keyPathArgument(options.keyPath), profileOption(options.profile), color},
                     options.leniency),
        options.writing);
}

OptionList declareUnset(Options& options) {
    Option keyPath = keyPathArgument(options.keyPath);
    keyPath.takes = Takes::StoredKeyPath;
    return withWritingOptions({keyPath, profileOption(options.profile)}, options.writing);
}

}  // namespace

Configuration configureColorGet() {
    return configured(declareGet, get);
}

Configuration configureColorSet() {
    return configured(declareSet, set);
}

Configuration configureColorUnset() {
    return configured(declareUnset, unset);
}

}  // namespace Tool
