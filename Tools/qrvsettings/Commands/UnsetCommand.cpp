// SPDX-License-Identifier: MIT
// Removes stored settings.

#include "Commands/CommandTable.h"
#include "Commands/WritingCommands.h"
#include "Options/CommonOptions.h"
#include "Process/ExitCode.h"
#include "Process/StandardError.h"
#include "Settings/KnownKeyPaths.h"
#include "Settings/PendingChanges.h"
#include "Settings/ProfileScope.h"
#include "Settings/SettingsFileCondition.h"
#include "Text/FileForm.h"

namespace Tool {
namespace {

struct Options {
    std::vector<std::string> keyPaths;
    std::string profile;
    WritingOptions writing;
    ChangeReport report;
};

/// The others are named on standard error.
std::vector<std::string> storedOnes(const ProfileScope& scope,
                                    const std::vector<std::string>& keyPaths) {
    std::vector<std::string> stored;
    for (const std::string& keyPath : keyPaths) {
        if (scope.stored(keyPath).isNull())
            say(notSet(keyPath));
        else
            stored.push_back(keyPath);
    }
    return stored;
}

Changes remove(const ProfileScope& scope, const std::vector<std::string>& keyPaths) {
    // A value that prevents the preparation can be removed this way.
    PendingChanges changes(PendingChanges::Preparation::MayFail);
    for (const std::string& keyPath : keyPaths) changes.set(nullptr, keyPath, scope);
    return changes.save();
}

ExitCode unset(const Options& options) {
    for (const std::string& keyPath : options.keyPaths) requireUTF8(keyPath);
    openToWrite(options.writing);
    const ProfileScope scope(options.profile);
    const std::vector<std::string> stored = storedOnes(scope, options.keyPaths);
    Changes changes;
    if (!stored.empty()) changes = remove(scope, stored);
    changes.unchanged += options.keyPaths.size() - stored.size();
    if (options.report.json) printObject(changes);
    return stored.size() == options.keyPaths.size() ? ExitCode::Done : ExitCode::NotSet;
}

OptionList declare(Options& options) {
    Option keyPaths =
        required(texts("KEYPATH", options.keyPaths, "Keys joined by dots; one or more"));
    keyPaths.takes = Takes::StoredKeyPath;
    return withWritingOptions(
        {keyPaths, profileOption(options.profile), changesAsJSONFlag(options.report)},
        options.writing);
}

}  // namespace

Configuration configureUnset() {
    return configured(declare, unset);
}

}  // namespace Tool
