// SPDX-License-Identifier: MIT
#pragma once

// Files of the site, in folders of the test's own.

#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Files/Files.h"
#include "Support/StoreSupport.h"

namespace SiteSupport {

inline constexpr const char* frequency = "UpdateFrequency";
inline constexpr const char* enabled = "CPU.Menubar.Enabled";

/// A tree with a value at `enabled`.
inline NSDictionary cpu(const PropertyListValue& isEnabled) {
    return {{"CPU", NSDictionary{{"Menubar", NSDictionary{{"Enabled", isEnabled}}}}}};
}

/// The folder of the site that every test has at its start, without files.
inline std::string firstFolder() {
    return std::getenv("XDG_CONFIG_DIRS");
}

inline std::string listIn(const std::string& folder) {
    return folder + "/Preferences/" +
           std::filesystem::path(QRVSettingsLocation()).filename().string();
}
inline std::string locksIn(const std::string& folder) {
    return listIn(folder) + ".locks";
}

inline void writeList(const NSDictionary& tree, const std::string& folder = firstFolder()) {
    StoreSupport::writeFile(listIn(folder),
                            NSPropertyListSerialization::dataWithPropertyList(tree).bytes);
}
inline void writeLocks(std::string_view lines, const std::string& folder = firstFolder()) {
    StoreSupport::writeFile(locksIn(folder), lines);
}

/// As a host that wants the site's defaults does at its start.
inline void start() {
    QRVSettings::sharedSettings().setUsesSiteDefaults(true);
    QRVSettings::sharedSettings().loadDefaults();
}

/// What the failure handler receives during its life.
class Failures {
  public:
    Failures() {
        QRVPlatform::setFileFailureHandler(
            [this](const QRVPlatform::FileFailure& failure) { all_.push_back(failure); });
    }
    Failures(const Failures&) = delete;
    Failures& operator=(const Failures&) = delete;
    ~Failures() { QRVPlatform::setFileFailureHandler(nullptr); }

    /// `OPERATION: KEYPATH` of each since the last call.
    std::vector<std::string> take() {
        std::vector<std::string> texts;
        for (const QRVPlatform::FileFailure& failure : all_)
            texts.push_back(failure.operation + ": " + failure.keyPath);
        all_.clear();
        return texts;
    }
    [[nodiscard]] const std::vector<QRVPlatform::FileFailure>& all() const { return all_; }

  private:
    std::vector<QRVPlatform::FileFailure> all_;
};

}  // namespace SiteSupport
