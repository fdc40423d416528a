// SPDX-License-Identifier: MIT
#include <errno.h>
#include <syslog.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <string_view>

#include "Platform/Log/SystemLog.h"

namespace QRVPlatform {

namespace {

std::string localTimeText() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    std::array<char, 64> seconds{};
    const std::size_t length =
        strftime(seconds.data(), seconds.size(), "%Y-%m-%d %H:%M:%S", &local);
    const std::string milliseconds = std::to_string(1000 + now.tv_nsec / 1'000'000).substr(1);
    return std::string(seconds.data(), length) + "." + milliseconds;
}

void writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) return;
        if (count > 0) bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

/// Without a daemon, the C library would make, connect and close sockets for each text. With one,
/// it keeps its socket.
bool hasDaemon() {
    return access(_PATH_LOG, W_OK) == 0;
}

}  // namespace

void SystemLog::write(Level level, const std::string& text) {
    if (!hasDaemon()) return;
    syslog(LOG_USER | (level == Level::Debug ? LOG_DEBUG : LOG_NOTICE), "%s", text.c_str());
}

void SystemLog::writeToStandardError(const std::string& text) {
    writeAll(STDERR_FILENO, localTimeText() + " " + program_invocation_short_name + "[" +
                                std::to_string(getpid()) + "] " + text + "\n");
}

}  // namespace QRVPlatform
