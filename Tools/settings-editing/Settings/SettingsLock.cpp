// SPDX-License-Identifier: MIT
#include "Settings/SettingsLock.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "Platform/Files/Files.h"
#include "QRVSettings/QRVSettings.h"
#include "Settings/FileFacts.h"

namespace Tool {

// Writers hold the lock file, and whoever keeps the others out of the file at this moment holds
// that: whom this process waits for is among them.
std::string lockOfSettingsFile() {
    const std::string& location = QRVSettings::sharedSettings().location();
    const std::string target = QRVPlatform::resolvedPath(location).path;
    std::vector<LockFacts::Holder> holders =
        factsOfLock(QRVPlatform::filesBeside(target).lock).holders;
    for (LockFacts::Holder& holder : holdersOfFile(target))
        if (std::none_of(holders.begin(), holders.end(),
                         [&holder](const auto& one) { return one.process == holder.process; }))
            holders.push_back(std::move(holder));
    const std::string text = holdersText(holders);
    return "the lock of " + location + (text.empty() ? "" : ", held by " + text);
}

}  // namespace Tool
