// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>

/// Counts what happens to one file from its creation on: `IN_OPEN`, `IN_MOVED_TO`.
class FileEvents {
  public:
    FileEvents(const std::filesystem::path& file, std::uint32_t kind)
        : events_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)), name_(file.filename()) {
        EXPECT_GE(inotify_add_watch(events_, file.parent_path().c_str(), kind), 0);
    }
    FileEvents(const FileEvents&) = delete;
    FileEvents& operator=(const FileEvents&) = delete;
    ~FileEvents() { close(events_); }

    [[nodiscard]] int count() {
        alignas(inotify_event) std::array<char, 4096> events{};
        for (;;) {
            const ssize_t size = read(events_, events.data(), events.size());
            if (size <= 0) return count_;
            for (std::size_t at = 0; at < static_cast<std::size_t>(size);) {
                const auto* event = reinterpret_cast<const inotify_event*>(&events.at(at));
                if (event->name == name_) ++count_;
                at += sizeof(inotify_event) + event->len;
            }
        }
    }

  private:
    int events_;
    int count_ = 0;
    std::string name_;
};
