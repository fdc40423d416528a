// SPDX-License-Identifier: MIT
// Output on a terminal: colours, and messages while a command waits.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
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

/// Those that a terminal obeys, but for line ends and tabs, as numbers.
std::string controlsIn(const std::string& text) {
    std::string found;
    for (std::size_t index = 0; index < text.size(); ++index) {
        const auto byte = static_cast<unsigned char>(text[index]);
        const bool isLineEnd = byte == '\n' || (byte == '\r' && text.substr(index + 1, 1) == "\n");
        const bool isSecondSet = byte >= 0x80 && byte < 0xA0 &&
                                 (index == 0 || static_cast<unsigned char>(text[index - 1]) < 0xC3);
        if ((byte < ' ' && !isLineEnd && byte != '\t') || byte == 0x7F || isSecondSet)
            found += " " + std::to_string(byte);
    }
    return found;
}

/// All that a command prints where standard output and standard error are a terminal.
std::string shownBy(const std::vector<std::string>& arguments) {
    const Terminal terminal;
    ToolSupport::RunningTool tool(arguments, {"", [&terminal] {
                                                  terminal.as(STDOUT_FILENO).prepare();
                                                  dup2(STDOUT_FILENO, STDERR_FILENO);
                                              }});
    std::string shown;
    EXPECT_TRUE(waitUntil([&] {
        shown += terminal.printed();
        return tool.hasEnded();
    }));
    for (std::string more = terminal.printed(); !more.empty(); more = terminal.printed())
        shown += more;
    return shown;
}

/// Writes settings, other.plist and lines of apply; returns one of the key paths.
std::string writeNastySettings() {
    using ToolSupport::propertyList;
    const std::string nasty =
        "k\x7f\xc2\x9b"
        "31m\xc2\x85&#27;[31m&#13;\n\tx";
    const std::string entry = "<key>" + nasty + "</key><string>" + nasty + "</string>";
    const std::string profiles = "<key>Profiles</key><dict><key>Settings</key><dict><key>" + nasty +
                                 "</key><dict>" + entry + "</dict></dict></dict>";
    const std::string flags =
        "<key>Migration</key><dict><key>CombinedPowerItems</key><true/><key>Profiles</key><true/>"
        "</dict>";
    const std::string all =
        flags + entry + profiles + "<key>a</key><string>" + nasty + "</string>" +
        "<key>MenubarCurrentApperance</key><string>" + nasty + "</string><key>" + nasty +
        ".x</key><true/><key>updatefrequency</key><string>" + nasty + "</string>";
    setenv("XDG_CONFIG_HOME", (std::string(getenv("XDG_CONFIG_HOME")) + "\x1b\n\x9b").c_str(), 1);
    std::string path = ToolSupport::run({"path"}).output;
    path.pop_back();
    ToolSupport::writeFile(path, propertyList(all));
    ToolSupport::writeFile("other.plist",
                           propertyList("<key>b</key><string>" + nasty + "</string>" + profiles));
    ToolSupport::writeFile("lines", "set \"\\u009b\\n\" \"\\u0085\"\nunset a\n");
    return "k\x7f\xc2\x9b"
           "31m\xc2\x85\x1b[31m\r\n\tx";
}

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

TEST(OutputOnATerminal, HoldsNoControlsOfOthers) {
    const std::string keyPath = writeNastySettings();
    const std::vector<std::pair<std::vector<std::string>, std::size_t>> commands = {
        {{"path"}, 1},
        {{"get", "a"}, 1},
        {{"get", keyPath}, 1},
        {{"get", "a", "--json"}, 1},
        {{"get", "Profiles"}, 1},
        {{"get", "--profile", keyPath, keyPath}, 1},
        {{"appearance", "get"}, 1},
        {{"list", "--layer", "stored", "--records"}, 7},
        {{"list", "--layer", "stored", "--keys", "--records"}, 7},
        {{"list", "--layer", "stored", "--json"}, 2},
        {{"list", "--layer", "stored", "--keys", "--json", "--records"}, 1},
        {{"search", "31m", "--records"}, 5},
        {{"explain", keyPath}, 7},
        {{"explain", keyPath, "--profile", keyPath}, 10},
        {{"profiles"}, 1},
        {{"diff", "--records"}, 8},
        {{"diff", "--json", "--records"}, 8},
        {{"diff", "--as-commands", "--records"}, 8},
        {{"diff", "other.plist", "--records"}, 8},
        {{"diff", "other.plist", "--as-commands", "--records"}, 8},
        {{"diff", "--profile", keyPath, "--as-commands"}, 1},
        {{"export", "--json"}, 1},
        {{"export"}, 0},
        {{"doctor"}, 0},
        {{"doctor", "--json"}, 1},
        {{"completion", "candidates", "--", "get", "k"}, 0},
        {{"completion", "candidates", "--", "get", "--profile", ""}, 1},
        {{"apply", "lines", "--dry-run"}, 0},
        {{"import", "other.plist", "--dry-run"}, 0},
        {{"no" + keyPath}, 0},
    };
    for (const auto& [arguments, lineCount] : commands) {
        const std::string shown = shownBy(arguments);
        EXPECT_NE(shown, "");
        EXPECT_EQ(controlsIn(shown), "") << testing::PrintToString(arguments) << "\n" << shown;
        const auto lines = static_cast<std::size_t>(std::count(shown.begin(), shown.end(), '\n'));
        EXPECT_EQ(lines, lineCount == 0 ? lines : lineCount)
            << testing::PrintToString(arguments) << "\n"
            << shown;
    }
}

TEST(OutputInAPipe, HoldsTheBytesAsTheyAre) {
    const std::string text = "a\x1b\x7f\xc2\x9b\r\n\tb";
    ASSERT_EQ(ToolSupport::run({"set", "a", text}).exitCode, 0);
    EXPECT_EQ(ToolSupport::run({"get", "a"}).output, text + "\n");
}

TEST(OutputInAPipe, CommandsGiveTheSameSettingsAgain) {
    for (const std::string key : {"a\x1b", "b\n", "\xc2\x9b", "%s\t'", "-\r", "\n\n"})
        ASSERT_EQ(ToolSupport::run({"set", "--profile", "p" + key, "--", key, key}).exitCode, 0);
    const std::string before = ToolSupport::run({"export"}).output;
    const std::string commands = ToolSupport::run({"diff", "--as-commands"}).output;
    EXPECT_EQ(controlsIn(commands), "");
    std::filesystem::remove(ToolSupport::settingsFile());
    const ToolSupport::Outcome replay = ToolSupport::runShell(commands);
    ASSERT_EQ(replay.exitCode, 0) << replay.errors << commands;
    EXPECT_EQ(ToolSupport::run({"export"}).output, before);
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
