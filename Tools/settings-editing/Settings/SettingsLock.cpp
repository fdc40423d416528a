// SPDX-License-Identifier: MIT
#include "Settings/SettingsLock.h"

#include "Platform/Files/Files.h"
#include "QRVSettings/QRVSettings.h"
#include "Settings/FileFacts.h"

namespace Tool {

std::string lockOfSettingsFile() {
    const std::string& location = QRVSettings::sharedSettings().location();
    const std::string target = QRVPlatform::resolvedPath(location).path;
    const LockFacts facts = factsOfLock(QRVPlatform::filesBeside(target).lock);
    const std::string holders = holdersText(facts.holders);
    return "the lock of " + location + (holders.empty() ? "" : ", held by " + holders);
}

}  // namespace Tool
