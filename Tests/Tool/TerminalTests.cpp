// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <stdexcept>

#include "Tool/ToolSupport.h"

namespace {

/// What the tool prints where standard output is a terminal.
class Terminal {
  public:
    Terminal() : ours_(posix_openpt(O_RDWR | O_NOCTTY)) {
        if (ours_ < 0 || grantpt(ours_) != 0 || unlockpt(ours_) != 0)
            throw std::runtime_error("no terminal");
        theirs_ = open(ptsname(ours_), O_RDWR | O_NOCTTY);
        if (theirs_ < 0) throw std::runtime_error("no terminal");
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    ~Terminal() {
        close(ours_);
        close(theirs_);
    }
    std::string run(const std::vector<std::string>& arguments) const {
        const auto prepare = [this] { dup2(theirs_, STDOUT_FILENO); };
        EXPECT_EQ(ToolSupport::run(arguments, {"", prepare}).exitCode, 0);
        std::array<char, 4096> printed{};
        const ssize_t size = read(ours_, printed.data(), printed.size());
        return {printed.data(), static_cast<std::size_t>(size < 0 ? 0 : size)};
    }

  private:
    int ours_;
    int theirs_ = -1;
};

const std::vector<std::string> showRed = {"color", "get",
                                          "Network.Menubar.Mode.Status.NotConnected.Color"};

void setTerminal(const char* name, const char* colors) {
    setenv("TERM", name, 1);
    setenv("COLORTERM", colors, 1);
    unsetenv("NO_COLOR");
}

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
