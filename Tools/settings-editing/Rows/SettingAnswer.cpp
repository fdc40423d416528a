// SPDX-License-Identifier: MIT
#include "Rows/SettingAnswer.h"

#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings.h"
#include "Settings/ProfileScope.h"

namespace Tool {

using NSDictionaryQRV::objectAtKeyPath;

std::string layerWord(AnsweringLayer layer) {
    switch (layer) {
        case AnsweringLayer::Default:
            return "default";
        case AnsweringLayer::Site:
            return "site";
        case AnsweringLayer::Stored:
            return "stored";
        case AnsweringLayer::Profile:
            return "profile";
        case AnsweringLayer::None:
            break;
    }
    return "none";
}

AnsweringLayer answeringLayer(const LayersOfSetting& layers) {
    if (layers.isStored && !layers.isLocked)
        return layers.isOfProfile ? AnsweringLayer::Profile : AnsweringLayer::Stored;
    if (layers.hasSite) return AnsweringLayer::Site;
    return layers.hasBuiltIn ? AnsweringLayer::Default : AnsweringLayer::None;
}

SettingAnswer answerAt(const SettingsSnapshot& snapshot, std::string_view keyPath,
                       const std::string& profile) {
    const ProfileScope scope(profile);
    const ProfileScope inProfile(profile.empty() ? "default" : profile);
    SettingAnswer answer{.effective = scope.effective(keyPath),
                         .layer = AnsweringLayer::None,
                         .stored = objectAtKeyPath(snapshot.stored, keyPath),
                         .site = objectAtKeyPath(snapshot.site, keyPath),
                         .builtIn = objectAtKeyPath(snapshot.builtIn, keyPath),
                         .inProfile = inProfile.stored(keyPath),
                         .siteFile = QRVSettingsSiteFileForKeyPath(keyPath),
                         .lockFile = QRVSettingsLockFileForKeyPath(scope.storedKeyPath(keyPath))};
    answer.layer = answeringLayer({.isOfProfile = scope.isProfile(),
                                   .isStored = !scope.stored(keyPath).isNull(),
                                   .isLocked = !answer.lockFile.empty(),
                                   .hasSite = !answer.site.isNull(),
                                   .hasBuiltIn = !answer.builtIn.isNull()});
    return answer;
}

}  // namespace Tool
