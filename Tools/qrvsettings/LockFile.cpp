// SPDX-License-Identifier: MIT
#include "LockFile.h"

#include <filesystem>

#include "FileFacts.h"
#include "QRVSettings/QRVSettings.h"

namespace Tool {

std::string followed(const std::string& path) {
    constexpr int mostLinks = 40;
    std::filesystem::path target = path;
    for (int count = 0; count <= mostLinks; ++count) {
        std::error_code error;
        const std::filesystem::path next = std::filesystem::read_symlink(target, error);
        if (error) return target.string();
        target = target.parent_path() / next;
    }
    return {};
}

std::string hiddenBeside(const std::string& path, const std::string& suffix) {
    const std::filesystem::path file = path;
    return (file.parent_path() / ("." + file.filename().string() + suffix)).string();
}

std::string lockOfSettingsFile() {
    const std::string& location = QRVSettings::sharedSettings().location();
    const LockFacts facts = factsOfLock(hiddenBeside(followed(location), ".lock"));
    const std::string holders = holdersText(facts.holders);
    return "the lock of " + location + (holders.empty() ? "" : ", held by " + holders);
}

}  // namespace Tool
