// SPDX-License-Identifier: MIT
// Prints the names of profiles.

#include <set>

#include "Commands/CommandTable.h"
#include "Options/CommonOptions.h"
#include "Process/ExitCode.h"
#include "Process/StandardOutput.h"
#include "Reporting/Failure.h"
#include "Settings/PendingChanges.h"
#include "Settings/ProfileScope.h"
#include "Settings/SettingsFileCondition.h"
#include "Text/JSON.h"
#include "Text/KeyPaths.h"

namespace Tool {
namespace {

std::string jsonLine(const std::set<std::string>& names) {
    NSMutableArray array;
    for (const std::string& name : names) array.addObject(name);
    return jsonText(array) + "\n";
}

std::string lines(const std::set<std::string>& names) {
    std::string text;
    for (const std::string& name : names) text.append(keyPathText(name)).append("\n");
    return text;
}

struct Options {
    bool json = false;
};

ExitCode profiles(const Options& options) {
    openToRead();
    prepareToRead();
    const std::set<std::string> names = profileNames();
    if (names.empty()) throw Failure(Fault::NotSet, "there are no profiles");
    print(options.json ? jsonLine(names) : lines(names));
    return ExitCode::Done;
}

OptionList declare(Options& options) {
    return {jsonFlag(options.json, "Print one JSON array")};
}

}  // namespace

Configuration configureProfiles() {
    return configured(declare, profiles);
}

}  // namespace Tool
