// SPDX-License-Identifier: MIT
// Changes of the settings file while `watch` starts: after its first read, and before it is
// notified.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "Support/TracedProcess.h"
#include "Tool/ToolSupport.h"

namespace {

using ToolSupport::propertyList;
using TracedProcess::Call;

struct Start {
    bool hasChanged = false;
    int exitCode = -1;
    std::string output;
};

bool becomeWatch() {
    TracedProcess::switchLeaksOff();
    const int output = open("output", O_WRONLY | O_CREAT | O_TRUNC, S_IRUSR | S_IWUSR);
    if (output < 0 || dup2(output, STDOUT_FILENO) < 0) return false;
    execl(QRV_TOOL, QRV_TOOL, "watch", "--count", "1", "--timeout", "20", nullptr);
    return false;
}

/// Runs `watch` until it has printed a line, and replaces the file before the first call that
/// `isMoment` accepts.
Start changeAt(const std::function<bool(const Call&)>& isMoment, const std::string& contents) {
    const std::filesystem::path file = ToolSupport::settingsFile();
    const std::filesystem::path written = file.string() + ".written";
    ToolSupport::writeFile(written, contents);
    Start start;
    const int status = TracedProcess::run(becomeWatch, [&](const Call& call) {
        if (!start.hasChanged && isMoment(call)) {
            std::filesystem::rename(written, file);
            start.hasChanged = true;
        }
        return TracedProcess::goesOn;
    });
    start.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    start.output = ToolSupport::contentsOf("output");
    return start;
}

bool beginsToBeNotified(const Call& call) {
    return call.is({SYS_inotify_add_watch});
}

/// Comes after the first read of the file and before later ones, while there is no stored tree.
bool readsTheMachine(const Call& call) {
    return call.is({SYS_openat}) && call.textOf(1) == "/etc/machine-id";
}

}  // namespace

TEST(WatchStart, PrintsWhatChangesBeforeItIsNotified) {
    if (!TracedProcess::isAllowed()) GTEST_SKIP() << "processes must not be traced here";
    ToolSupport::writeSettings(propertyList("<key>a</key><integer>1</integer>"));
    const Start start =
        changeAt(beginsToBeNotified, propertyList("<key>a</key><integer>2</integer>"));
    ASSERT_TRUE(start.hasChanged);
    EXPECT_EQ(start.output, "a\t2\n");
    EXPECT_EQ(start.exitCode, 0);
}

TEST(WatchStart, PrintsTheFileThatIsCreatedAfterItsFirstRead) {
    if (!TracedProcess::isAllowed()) GTEST_SKIP() << "processes must not be traced here";
    const Start start = changeAt(readsTheMachine, propertyList("<key>a</key><integer>2</integer>"));
    ASSERT_TRUE(start.hasChanged);
    EXPECT_EQ(start.output, "a\t2\n");
    EXPECT_EQ(start.exitCode, 0);
}
