// SPDX-License-Identifier: MIT
#include "Commands/ProfileHint.h"

#include "Process/StandardError.h"
#include "Settings/Records.h"
#include "Settings/SettingDescription.h"
#include "Text/JSON.h"
#include "Text/KeyPaths.h"

namespace Tool {
namespace {

/// Whether the key path is the plain one of a setting that each profile has.
bool isReadElsewhere(const std::string& keyPath, const ProfileScope& scope) {
    return !scope.isProfile() && QRVPlainKeyPath(keyPath) == keyPath &&
           scopeOf(keyPath) == QRVSettingScope::Profile;
}

}  // namespace

void hintAfterWrite(const std::string& keyPath, const ProfileScope& scope) {
    if (isRecord(scope.storedKeyPath(keyPath)))
        remark(keyPathText(keyPath) + " is a record that the store keeps for itself");
    if (isQuiet() || !isReadElsewhere(keyPath, scope)) return;
    remark("the application reads " + keyPathText(keyPath) +
           " in its profile; --profile NAME sets it there (profiles: " + profilesInWords() + ")");
}

void hintAfterRead(const std::string& keyPath, const ProfileScope& scope) {
    if (isQuiet() || !isReadElsewhere(keyPath, scope)) return;
    std::string values;
    for (const std::string& profile : profileNames()) {
        const PropertyListValue value = ProfileScope(profile).effective(keyPath);
        values += (values.empty() ? "" : ", ") + keyPathText(profile) + ": " +
                  (value.isNull() ? "not set" : jsonText(value));
    }
    remark("the application reads " + keyPathText(keyPath) + " in its profile (" + values + ")");
}

}  // namespace Tool
