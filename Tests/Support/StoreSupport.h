// SPDX-License-Identifier: MIT
#pragma once

// What tests of the store need: its file, its log lines, and the moment when its queues are done.

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <mutex>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Platform/System/System.h"
#include "QRVLogger/DDLog.h"
#include "QRVSettings/QRVSettings.h"

namespace StoreSupport {

inline void writeFile(const std::filesystem::path& path, std::string_view bytes) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

inline std::string contentsOf(const std::filesystem::path& path) {
    std::ostringstream bytes;
    bytes << std::ifstream(path, std::ios::binary).rdbuf();
    return bytes.str();
}

/// The settings file made by somebody else than the store.
inline void writeSettings(std::string_view bytes) {
    writeFile(QRVSettingsLocation(), bytes);
}
inline void writeSettings(const NSDictionary& tree) {
    writeSettings(NSPropertyListSerialization::dataWithPropertyList(tree).bytes);
}

/// The settings file read past the store; null when it is none.
inline NSDictionary fileTree() {
    return NSPropertyListSerialization::propertyListWithData(contentsOf(QRVSettingsLocation()))
        .value.dictionary();
}

inline void setDefaults(const NSDictionary& defaults) {
    QRVSettings::sharedSettings().setDefaults(defaults.mutableCopy());
}

/// The entry of the cache, null when there is none.
inline PropertyListValue cached(std::string_view keyPath) {
    return QRVSettings::sharedSettings().cache().objectForKey(keyPath);
}

/// Returns when the saves queued so far have run.
inline void finishSaves() {
    QRVSettings::sharedSettings().queue().sync([] {});
}

/// Drains the main queue until the condition holds; false after a deadline.
inline bool drainUntil(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        if (DispatchMainQueue::shared().wait(std::chrono::milliseconds(50))) {
            DispatchMainQueue::shared().drain();
        }
    }
    return true;
}

/// The lines that go to the system log during its life.
class SystemLogLines {
  public:
    SystemLogLines() {
        setNSLogSink([this](const std::string& text) {
            const std::lock_guard guard(mutex_);
            lines_.push_back(text);
        });
    }
    SystemLogLines(const SystemLogLines&) = delete;
    SystemLogLines& operator=(const SystemLogLines&) = delete;
    ~SystemLogLines() { setNSLogSink(nullptr); }
    [[nodiscard]] std::vector<std::string> lines() const {
        const std::lock_guard guard(mutex_);
        return lines_;
    }

  private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};

/// The developers' log messages during its life.
class LogMessages {
  public:
    LogMessages() {
        DDLog::setSink([this](const DDLogMessage& message) { messages_.push_back(message); });
    }
    LogMessages(const LogMessages&) = delete;
    LogMessages& operator=(const LogMessages&) = delete;
    ~LogMessages() { DDLog::setSink(nullptr); }
    [[nodiscard]] const std::vector<DDLogMessage>& messages() const {
        DDLog::flush();
        return messages_;
    }

  private:
    std::vector<DDLogMessage> messages_;
};

}  // namespace StoreSupport
