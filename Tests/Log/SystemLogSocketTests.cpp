// SPDX-License-Identifier: MIT
// The socket to the system log: kept where there is a daemon, never made where there is none.

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <string>

#include "Files/SystemCallFilter.h"
#include "Platform/System/System.h"
#include "Support/ChildProcess.h"

namespace {

/// Gives this process a folder of devices of its own, which is empty.
bool leaveTheDevices() {
    return unshare(CLONE_NEWNS) == 0 &&
           mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("none", "/dev", "tmpfs", 0, nullptr) == 0;
}

/// The test is skipped when that takes a right that this process does not have.
bool mayLeaveTheDevices() {
    return ChildProcess(leaveTheDevices).succeeded();
}

class Daemon {
  public:
    Daemon() : socket_(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, _PATH_LOG, sizeof address.sun_path - 1);
        EXPECT_EQ(bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    }
    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;
    ~Daemon() { close(socket_); }

    /// The next text, which must be there.
    [[nodiscard]] std::string text() const {
        std::array<char, 4096> buffer{};
        const ssize_t count = recv(socket_, buffer.data(), buffer.size(), MSG_DONTWAIT);
        return {buffer.data(), count < 0 ? 0 : static_cast<std::size_t>(count)};
    }

  private:
    int socket_;
};

}  // namespace

TEST(SystemLog, MakesNoSocketForATextWhereThereIsNoDaemon) {
    if (!mayLeaveTheDevices()) GTEST_SKIP() << "takes root to leave the machine's devices";
    ChildProcess child([] {
        if (!leaveTheDevices()) return false;
        dieAtCall(SystemCall::Socket);
        for (int number = 0; number < 10; ++number) NSLog("%@", {number});
        return true;
    });
    EXPECT_TRUE(child.succeeded());
}

TEST(SystemLog, KeepsTheSocketToADaemonThatHasComeLater) {
    if (!mayLeaveTheDevices()) GTEST_SKIP() << "takes root to leave the machine's devices";
    ChildProcess child([] {
        if (!leaveTheDevices()) return false;
        NSLog("lost");
        const Daemon daemon;
        NSLog("0");
        dieAtCall(SystemCall::Socket);
        bool hasAll = daemon.text().ends_with("0");
        for (int number = 1; number < 10; ++number) {
            NSLog("%@", {number});
            hasAll = daemon.text().ends_with(std::to_string(number)) && hasAll;
        }
        return hasAll;
    });
    EXPECT_TRUE(child.succeeded());
}
