// SPDX-License-Identifier: MIT
// Reads and writes the appearance of the menu bar.

#include "Commands/CommandTable.h"
#include "Commands/PrintedValue.h"
#include "Commands/WritingCommands.h"
#include "Options/CommonOptions.h"
#include "Platform/System/NSAppearance.h"
#include "Process/ExitCode.h"
#include "QRVSettings/QRVSettings.h"
#include "QRVSettings/StoreKeyPaths.h"
#include "Reporting/Failure.h"
#include "Settings/PendingChanges.h"
#include "Settings/SettingsFileCondition.h"
#include "Text/LetterCase.h"

namespace Tool {
namespace {

constexpr std::string_view keyPath = QRVStoreKeyPaths::currentAppearance;

/// The platform's name of an appearance that the user names by a word or by that name.
std::string appearanceName(const std::string& name) {
    if (lowercase(name) == "dark") return std::string(NSAppearanceNameDarkAqua);
    if (lowercase(name) == "light") return "NSAppearanceNameAqua";
    if (name.starts_with("NSAppearanceName")) return name;
    throw Failure(Fault::WrongValue,
                  "neither dark, light nor the name of an appearance: " + shortened(name));
}

ExitCode get() {
    openToRead();
    prepareToRead();
    const PropertyListValue appearance = QRVSettingsCurrentAppearance();
    if (appearance.isNull()) throw Failure(Fault::NotSet, "not set, " + std::string(keyPath));
    printValue(appearance);
    return ExitCode::Done;
}

struct Options {
    std::string name;
    WritingOptions writing;
};

ExitCode set(const Options& options) {
    const std::string platformName = appearanceName(options.name);
    openToWrite(options.writing);
    PendingChanges changes;
    changes.write(std::string(keyPath), [&] { QRVSettingsSetCurrentAppearance(platformName); });
    remarkIfUnchanged(changes.save(), std::string(keyPath));
    printValue(QRVSettingsCurrentAppearance());
    return ExitCode::Done;
}

OptionList declare(Options& options) {
    Option name = required(
        text("NAME", options.name, "dark, light, or the platform's name of an appearance"));
    name.words = {"dark", "light"};
    return withWritingOptions({name}, options.writing);
}

}  // namespace

Configuration configureAppearanceGet() {
    return {{}, get};
}

Configuration configureAppearanceSet() {
    return configured(declare, set);
}

}  // namespace Tool
