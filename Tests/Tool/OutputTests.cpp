// SPDX-License-Identifier: MIT
// Standard output that cannot be written, or that nobody reads; input that is no file.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <csignal>

#include "Tool/ToolSupport.h"

using testing::HasSubstr;
using testing::StartsWith;
using ToolSupport::Outcome;
using ToolSupport::run;

namespace {

void writeToAFullDisk() {
    const int full = open("/dev/full", O_WRONLY);
    if (full < 0 || dup2(full, STDOUT_FILENO) < 0) _exit(99);
}

/// With the signal ignored or not as it is.
void writeToAPipeWithoutReader() {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0 || dup2(ends[1], STDOUT_FILENO) < 0) _exit(99);
    close(ends[0]);
    close(ends[1]);
}

}  // namespace

TEST(Output, ThatCannotBeWrittenIsAnError) {
    ASSERT_EQ(run({"set", "a", "1"}).exitCode, 0);
    const std::vector<std::vector<std::string>> printing = {{"get", "a"},
                                                            {"list"},
                                                            {"export"},
                                                            {"path"},
                                                            {"--help"},
                                                            {"set", "--help"},
                                                            {"--version"},
                                                            {"search", "a"},
                                                            {"explain", "a"},
                                                            {"diff"},
                                                            {"get", "absent", "--default", "x"},
                                                            {"doctor"},
                                                            {"completion", "bash"}};
    for (const auto& arguments : printing) {
        const Outcome outcome = run(arguments, {"", writeToAFullDisk});
        EXPECT_EQ(outcome.exitCode, 4) << arguments.front();
        EXPECT_EQ(outcome.errors,
                  "qrvsettings: cannot write: No space left on device, standard output\n");
    }
}

TEST(Output, OfAChangeThatCannotBeWrittenIsAnErrorThoughTheChangeIsMade) {
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"set", "a", "1", "--json"},
                                               {"apply", "changes", "--json"},
                                               {"unset", "a", "--json"}}) {
        ToolSupport::writeFile("changes", "set a 2\n");
        const Outcome outcome = run(arguments, {"", writeToAFullDisk});
        EXPECT_EQ(outcome.exitCode, 4) << arguments.front();
        EXPECT_EQ(outcome.errors,
                  "qrvsettings: cannot write: No space left on device, standard output\n");
    }
    EXPECT_EQ(run({"get", "a"}).exitCode, 1);
}

TEST(Output, OfACheckThatCannotBeWrittenIsAnError) {
    for (const char* option : {"--check", "--dry-run"})
        EXPECT_EQ(run({"apply", "-", option}, {"set a 2\n", writeToAFullDisk}).exitCode, 4);
    EXPECT_FALSE(std::filesystem::exists(ToolSupport::configurationFolder()));
}

TEST(Output, WhatIsSaidBesideIsNoErrorWhereItCannotBeWritten) {
    for (const bool isClosed : {true, false}) {
        const Outcome outcome =
            run({"apply", "-"}, {"set a 1\n", [isClosed] {
                                     close(STDERR_FILENO);
                                     if (isClosed) return;
                                     static_cast<void>(open("/dev/full", O_WRONLY));
                                 }});
        EXPECT_EQ(outcome.exitCode, 0);
    }
    EXPECT_EQ(run({"get", "a"}).output, "1\n");
}

TEST(Output, WithoutStandardOutputIsAnError) {
    const Outcome outcome = run({"path"}, {"", [] { close(STDOUT_FILENO); }});
    EXPECT_EQ(outcome.exitCode, 4);
    EXPECT_THAT(outcome.errors, StartsWith("qrvsettings: cannot write: "));
}

TEST(Output, AReaderThatIsGoneEndsTheProgramInSilence) {
    const Outcome outcome = run({"path"}, {"", writeToAPipeWithoutReader});
    EXPECT_EQ(outcome.exitCode, 128 + SIGPIPE);
    EXPECT_EQ(outcome.errors, "");
}

TEST(Output, AReaderThatIsGoneIsAnErrorWhereTheSignalIsIgnored) {
    const Outcome outcome = run({"path"}, {"", [] {
                                               static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
                                               writeToAPipeWithoutReader();
                                           }});
    EXPECT_EQ(outcome.exitCode, 4);
    EXPECT_THAT(outcome.errors, HasSubstr("Broken pipe"));
}

// As a shell hands over the output of a command: <(...).
TEST(Input, IsReadFromAPipeThatHasAName) {
    constexpr int descriptor = 9;
    const auto open = [](std::string_view text) {
        return [text] {
            std::array<int, 2> ends{};
            if (pipe(ends.data()) != 0 || write(ends[1], text.data(), text.size()) < 0 ||
                dup2(ends[0], descriptor) < 0)
                _exit(99);
            close(ends[1]);
        };
    };
    const std::string pipe = "/dev/fd/" + std::to_string(descriptor);
    EXPECT_EQ(run({"apply", pipe}, {"", open("set a 1\n")}).errors,
              "qrvsettings: 1 changed, 0 as they were\n");
    EXPECT_EQ(run({"import", pipe}, {"", open(R"({"a":2})")}).exitCode, 0);
    EXPECT_EQ(run({"get", "a"}).output, "2\n");
    EXPECT_EQ(run({"diff", pipe}, {"", open(R"({"a":3})")}).output, "a\t2 -> 3\n");
}

TEST(Input, WithoutStandardInputNothingIsSet) {
    const Outcome outcome = run({"set", "a", "-"}, {"", [] { close(STDIN_FILENO); }});
    EXPECT_EQ(outcome.exitCode, 5);
    EXPECT_EQ(outcome.errors, "qrvsettings: cannot be read: Bad file descriptor, standard input\n");
    EXPECT_FALSE(std::filesystem::exists(ToolSupport::configurationFolder()));
}
