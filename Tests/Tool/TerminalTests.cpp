// SPDX-License-Identifier: MIT
// Output on a terminal: colours, and messages while a command waits.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdlib>

#include "Support/ChildProcess.h"
#include "Support/PseudoTerminal.h"
#include "Tool/ToolSupport.h"

namespace {

/// What the tool prints where a standard stream is a terminal.
class Terminal : public PseudoTerminal {
  public:
    [[nodiscard]] std::string run(const std::vector<std::string>& arguments) const {
        EXPECT_EQ(ToolSupport::run(arguments, as(STDOUT_FILENO)).exitCode, 0);
        return printed();
    }
    /// A process that has it as one of its standard streams.
    [[nodiscard]] ToolSupport::Surroundings as(int stream) const { return {"", becomes(stream)}; }
};

const std::vector<std::string> showRed = {"color", "get",
                                          "Network.Menubar.Mode.Status.NotConnected.Color"};

void setTerminal(const char* name, const char* colors) {
    setenv("TERM", name, 1);
    setenv("COLORTERM", colors, 1);
    unsetenv("NO_COLOR");
}

std::filesystem::path lockFile() {
    const auto file = ToolSupport::settingsFile();
    return file.parent_path() / ("." + file.filename().string() + ".lock");
}

/// A process that holds the lock of a file, which it makes if need be, until it is killed.
class LockHolder {
  public:
    explicit LockHolder(std::filesystem::path path) : path_(std::move(path)) {
        EXPECT_TRUE(held_.wait());
    }
    [[nodiscard]] std::string description() const {
        return "process " + std::to_string(process_.pid());
    }
    void letGo() { process_.send(SIGKILL); }

  private:
    std::filesystem::path path_;
    Gate held_;
    ChildProcess process_{[this] {
        std::filesystem::create_directories(path_.parent_path());
        const int file = open(path_.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, 0600);
        if (file < 0 || flock(file, LOCK_EX) != 0) return false;
        held_.open();
        return pause() == 0;
    }};
};

}  // namespace

TEST(ColorGetOnATerminal, ShowsTheColour) {
    setTerminal("xterm", "truecolor");
    EXPECT_EQ(Terminal().run(showRed), "1 0.321 0.341 1  \x1b[48;2;255;82;87m  \x1b[0m\r\n");
    setTerminal("xterm", "24bit");
    EXPECT_EQ(Terminal().run(showRed), "1 0.321 0.341 1  \x1b[48;2;255;82;87m  \x1b[0m\r\n");
}

TEST(ColorGetOnATerminal, ShowsTheNearestColourWhereThereAreFew) {
    setTerminal("xterm-256color", "");
    EXPECT_EQ(Terminal().run(showRed), "1 0.321 0.341 1  \x1b[48;5;210m  \x1b[0m\r\n");
}

TEST(ColorGetOnATerminal, ShowsNoColourWhereNoneIsWanted) {
    setTerminal("xterm", "truecolor");
    setenv("NO_COLOR", "1", 1);
    EXPECT_EQ(Terminal().run(showRed), "1 0.321 0.341 1\r\n");
    setenv("NO_COLOR", "", 1);
    EXPECT_NE(Terminal().run(showRed), "1 0.321 0.341 1\r\n") << "empty, it means nothing";
    setTerminal("dumb", "truecolor");
    EXPECT_EQ(Terminal().run(showRed), "1 0.321 0.341 1\r\n");
    setTerminal("xterm", "truecolor");
    unsetenv("TERM");
    EXPECT_EQ(Terminal().run(showRed), "1 0.321 0.341 1\r\n");
}

TEST(ColorGetOnATerminal, IsTheOnlyPlaceForAColour) {
    setTerminal("xterm", "truecolor");
    EXPECT_EQ(ToolSupport::run(showRed).output, "1 0.321 0.341 1\n");
}

TEST(WaitingOnATerminal, AReaderTellsForWhom) {
    const LockHolder holder(ToolSupport::settingsFile());
    const Terminal terminal;
    EXPECT_EQ(ToolSupport::run({"get", "UpdateFrequency"}, terminal.as(STDERR_FILENO)).exitCode, 0);
    EXPECT_THAT(terminal.printed(),
                testing::AllOf(testing::StartsWith("qrvsettings: waiting for the lock of " +
                                                   ToolSupport::settingsFile().string() +
                                                   ", held by " + holder.description() + " ("),
                               testing::EndsWith(")\r\n")));
}

TEST(WaitingOnATerminal, ASaveTellsForWhomAndGoesOn) {
    LockHolder holder(lockFile());
    const Terminal terminal;
    ToolSupport::RunningTool tool({"set", "a", "1"}, terminal.as(STDERR_FILENO));
    std::string told;
    EXPECT_TRUE(waitUntil([&] {
        told += terminal.printed();
        return told.find("waiting for the lock of ") != told.npos;
    })) << told;
    holder.letGo();
    EXPECT_EQ(tool.finish().exitCode, 0);
    EXPECT_EQ(ToolSupport::run({"get", "a"}).output, "1\n");
}

TEST(WaitingOnATerminal, ItTellsThatItReadsStandardInput) {
    const Terminal input;
    const Terminal terminal;
    ToolSupport::Surroundings surroundings = terminal.as(STDERR_FILENO);
    surroundings.prepare = [&input, errors = surroundings.prepare] {
        input.as(STDIN_FILENO).prepare();
        errors();
    };
    const ToolSupport::RunningTool tool({"import", "-"}, surroundings);
    std::string told;
    EXPECT_TRUE(waitUntil([&] {
        told += terminal.printed();
        return told == "qrvsettings: waiting for standard input\r\n";
    })) << told;
}

TEST(WaitingOnATerminal, NothingIsToldToWhoWantsItQuietAndElsewhere) {
    ToolSupport::writeSettings(ToolSupport::propertyList(""));
    const LockHolder holder(ToolSupport::settingsFile());
    const Terminal terminal;
    const std::vector<std::string> quietly = {"get", "UpdateFrequency", "--quiet"};
    EXPECT_EQ(ToolSupport::run(quietly, terminal.as(STDERR_FILENO)).exitCode, 0);
    EXPECT_EQ(terminal.printed(), "");
    EXPECT_EQ(ToolSupport::run({"get", "UpdateFrequency"}, terminal.as(STDOUT_FILENO)).errors, "");
    EXPECT_EQ(terminal.printed(), "1\r\n");
}
