// SPDX-License-Identifier: MIT
// Standard output that cannot be written, or that nobody reads.
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
    const std::vector<std::vector<std::string>> printing = {
        {"get", "a"}, {"list"}, {"export"}, {"path"}, {"--help"}, {"--version"}};
    for (const auto& arguments : printing) {
        const Outcome outcome = run(arguments, {"", writeToAFullDisk});
        EXPECT_EQ(outcome.exitCode, 4) << arguments.front();
        EXPECT_EQ(outcome.errors,
                  "qrvsettings: cannot write: No space left on device, standard output\n");
    }
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

TEST(Input, WithoutStandardInputNothingIsSet) {
    const Outcome outcome = run({"set", "a", "-"}, {"", [] { close(STDIN_FILENO); }});
    EXPECT_EQ(outcome.exitCode, 5);
    EXPECT_EQ(outcome.errors, "qrvsettings: cannot be read, standard input\n");
    EXPECT_FALSE(std::filesystem::exists(ToolSupport::configurationFolder()));
}
