// SPDX-License-Identifier: MIT
// What a process of `get` does besides its work: libraries, threads, and files.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "Support/TracedProcess.h"
#include "Tool/ToolSupport.h"

namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using ToolSupport::propertyList;
using TracedProcess::Call;

struct Trace {
    int exitCode = -1;
    std::string output;
    std::vector<std::string> opened;  ///< paths, in their order, also where there was nothing
    int threads = 0;

    [[nodiscard]] auto timesOpened(const std::string& path) const {
        return std::count(opened.begin(), opened.end(), path);
    }
    /// All files but those of the dynamic linker, which come first.
    [[nodiscard]] auto openedByItself() const {
        return opened.end() -
               std::find(opened.begin(), opened.end(), ToolSupport::settingsFile().string());
    }
};

bool become(const std::vector<std::string>& arguments) {
    TracedProcess::switchLeaksOff();
    const int output = open("output", O_WRONLY | O_CREAT | O_TRUNC, S_IRUSR | S_IWUSR);
    if (output < 0 || dup2(output, STDOUT_FILENO) < 0) return false;
    std::vector<std::string> words = {QRV_TOOL};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    execv(QRV_TOOL, pointers.data());
    return false;
}

Trace traceOf(const std::vector<std::string>& arguments) {
    Trace trace;
    const int status = TracedProcess::run([&arguments] { return become(arguments); },
                                          [&trace](const Call& call) {
                                              if (call.is({SYS_openat}))
                                                  trace.opened.push_back(call.textOf(1));
                                              if (call.is({SYS_clone, SYS_clone3})) ++trace.threads;
                                              return TracedProcess::goesOn;
                                          });
    trace.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    trace.output = ToolSupport::contentsOf("output");
    return trace;
}

class GetStart : public testing::Test {
  protected:
    void SetUp() override {
        if (!TracedProcess::isAllowed()) GTEST_SKIP() << "processes must not be traced here";
        ToolSupport::writeSettings(propertyList("<key>a</key><integer>1</integer>"));
    }
};

}  // namespace

TEST_F(GetStart, LoadsNoLibraryThatItDoesNotNeed) {
    setenv("LC_ALL", "de_DE.UTF-8", 1);
    const Trace get = traceOf({"get", "a"});
    EXPECT_EQ(get.exitCode, 0);
    EXPECT_EQ(get.output, "1\n");
    EXPECT_THAT(get.opened, Contains(HasSubstr("libQRVSettings")));
    EXPECT_THAT(get.opened, Not(Contains(HasSubstr("libQRVHistory"))));
    EXPECT_THAT(get.opened, Not(Contains(HasSubstr("libsqlite3"))));
    EXPECT_THAT(get.opened, Not(Contains(HasSubstr("libicu"))));
}

TEST_F(GetStart, OfACommandThatNeedsTheHistoryLoadsIt) {
    const Trace explain = traceOf({"explain", "a"});
    EXPECT_EQ(explain.exitCode, 0);
    if (QRV_HAS_HISTORY) {
        EXPECT_THAT(explain.opened, Contains(HasSubstr("libsqlite3")));
    }
}

TEST_F(GetStart, AsksICUOfALocaleThatIsNotKnown) {
    setenv("LC_ALL", "de_XX.UTF-8", 1);
    const Trace get = traceOf({"get", "a"});
    EXPECT_EQ(get.output, "1\n");
    EXPECT_THAT(get.opened, Contains(HasSubstr("libicu")));
}

TEST_F(GetStart, StartsNoThread) {
    EXPECT_EQ(traceOf({"get", "a"}).threads, 0);
    EXPECT_EQ(traceOf({"get", "CPU.Menubar.Enabled"}).threads, 0);
}

TEST_F(GetStart, OpensTheSettingsFileToLockItAndToReadItAndFewOthers) {
    setenv("LC_ALL", "C.UTF-8", 1);
    const Trace get = traceOf({"get", "a"});
    EXPECT_GE(get.timesOpened(ToolSupport::settingsFile()), 1);
    EXPECT_LE(get.timesOpened(ToolSupport::settingsFile()), 2);
    // It is 10 on a machine with one folder of the site and two of data.
    EXPECT_LE(get.openedByItself(), 15);
}
