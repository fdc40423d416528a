// SPDX-License-Identifier: MIT
#pragma once

// Takes the place of the C library's `syslog` and of the daemon behind it in a test program, and
// records what it is given. To be included by one source of the program.

#include <fcntl.h>
#include <syslog.h>
#include <unistd.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

struct SystemLogRecorder {
    static SystemLogRecorder& shared() {
        static auto& recorder = *new SystemLogRecorder;
        return recorder;
    }
    void record(int priority, const char* format, va_list arguments) {
        std::array<char, 1024> text{};
        static_cast<void>(vsnprintf(text.data(), text.size(), format, arguments));
        const std::lock_guard lock(mutex);
        messages.emplace_back(priority, text.data());
    }
    std::mutex mutex;
    std::vector<std::pair<int, std::string>> messages;
};

extern "C" void syslog(int priority, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    SystemLogRecorder::shared().record(priority, format, arguments);
    va_end(arguments);
}

/// There is a daemon, whatever machine this is.
extern "C" int access(const char* path, int mode) noexcept {
    return std::string_view(path) == _PATH_LOG ? 0 : faccessat(AT_FDCWD, path, mode, 0);
}

/// What a fortified build calls instead; the name is the C library's own.
#ifdef __clang__
#pragma clang diagnostic ignored "-Wreserved-identifier"
#endif
extern "C" void __syslog_chk(int priority, int, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    SystemLogRecorder::shared().record(priority, format, arguments);
    va_end(arguments);
}
