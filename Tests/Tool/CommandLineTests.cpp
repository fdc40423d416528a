// SPDX-License-Identifier: MIT
// Commands and options as a whole: wrong usage, help, exit codes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tool/ToolSupport.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;
using ToolSupport::Outcome;
using ToolSupport::run;

namespace {

using Arguments = std::vector<std::string>;

const std::vector<std::string> commands = {"get",      "set",    "unset",     "list",  "search",
                                           "explain",  "diff",   "export",    "color", "appearance",
                                           "profiles", "apply",  "import",    "merge", "watch",
                                           "path",     "doctor", "completion"};

}  // namespace

TEST(CommandLine, NamesTheWordThatIsNoCommand) {
    EXPECT_EQ(ToolSupport::run({"frobnicate", "a"}).errors,
              "qrvsettings: there is no such command, frobnicate (see qrvsettings --help)\n");
}

TEST(CommandLine, WrongUsageIsOneLineWithAHint) {
    const std::vector<Arguments> wrong = {
        {},
        {"frobnicate"},
        {"--frobnicate"},
        {"get"},
        {"get", "a", "b"},
        {"get", "a", "--layer", "middle"},
        {"get", "a", "--layer"},
        {"get", "--frobnicate", "a"},
        {"set"},
        {"set", "a"},
        {"set", "a", "1", "2"},
        {"set", "a", "1", "--type", "colour"},
        {"set", "a", "1", "--type", "int", "--type", "real"},
        {"set", "a", "-frobnicate"},
        {"unset"},
        {"list", "a", "b"},
        {"export", "a", "b"},
        {"path", "a"},
        {"color"},
        {"color", "frobnicate"},
        {"color", "get"},
        {"color", "get", "a", "b"},
        {"color", "set", "a"},
        {"color", "unset", "a", "b"},
        {"profiles", "a"},
        {"get", "a", "--profile"},
        {"get", "a", "--profile", ""},
        {"set", "a", "1", "--profile", ""},
        {"unset", "a", "--profile="},
        {"list", "--profile", ""},
        {"color", "get", "a", "--profile", ""},
        {"apply"},
        {"apply", "a", "b"},
        {"import"},
        {"import", "a", "b"},
        {"merge", "a", "b"},
        {"merge", "a", "b", "c", "d"},
        {"merge", "a", "b", "c", "--output"},
        {"watch", "a", "b"},
        {"appearance"},
        {"appearance", "get", "a"},
        {"appearance", "set"},
        {"appearance", "set", "dark", "light"},
        {"search"},
        {"search", "a", "b"},
        {"search", "a", "--keys", "--values"},
        {"search", "a", "--profile", ""},
        {"explain"},
        {"explain", "a", "b"},
        {"explain", "a", "--profile", ""},
        {"diff", "a", "b"},
        {"diff", "--json", "--as-commands"},
        {"diff", "a", "--profile", "p"},
        {"doctor", "a"},
        {"completion"},
        {"completion", "tcsh"},
        {"completion", "bash", "a"},
        {"--quiet"},
    };
    for (const Arguments& arguments : wrong) {
        const Outcome outcome = run(arguments);
        const auto shown = testing::PrintToString(arguments);
        EXPECT_EQ(outcome.exitCode, 2) << shown;
        EXPECT_EQ(outcome.output, "") << shown;
        EXPECT_THAT(outcome.errors, AllOf(StartsWith("qrvsettings: "), HasSubstr("--help")))
            << shown;
        EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1) << shown;
    }
}

TEST(CommandLine, WrongUsageChangesNothing) {
    run({"set", "a", "1", "2"});
    run({"unset"});
    EXPECT_FALSE(std::filesystem::exists(ToolSupport::configurationFolder()));
}

TEST(CommandLine, HelpNamesEveryCommand) {
    const Outcome outcome = run({"--help"});
    EXPECT_EQ(outcome.exitCode, 0);
    for (const std::string& command : commands)
        EXPECT_THAT(outcome.output, HasSubstr("\n  " + command + " "));
    EXPECT_THAT(outcome.output, HasSubstr("Exit codes"));
}

TEST(CommandLine, EachCommandExplainsItselfWithOneExample) {
    for (const std::string& command : commands) {
        const Outcome outcome = run({command, "--help"});
        EXPECT_EQ(outcome.exitCode, 0) << command;
        EXPECT_THAT(outcome.output, HasSubstr("Usage: qrvsettings " + command)) << command;
        EXPECT_THAT(outcome.output, HasSubstr("Example: ")) << command;
        EXPECT_EQ(outcome.errors, "") << command;
    }
}

TEST(CommandLine, EachPartOfACommandExplainsItselfWithOneExample) {
    const std::vector<Arguments> parts = {
        {"color", "get"},      {"color", "set"},       {"color", "unset"},
        {"appearance", "get"}, {"appearance", "set"},  {"completion", "bash"},
        {"completion", "zsh"}, {"completion", "fish"}, {"completion", "candidates"}};
    for (Arguments arguments : parts) {
        arguments.emplace_back("--help");
        EXPECT_THAT(run(arguments).output, HasSubstr("Example: ")) << arguments[1];
    }
}

TEST(CommandLine, VersionIsThatOfTheProject) {
    const Outcome outcome = run({"--version"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "qrvsettings " QRV_VERSION "\n");
}

TEST(CommandLine, OptionsMayStandBeforeAndAfterTheKeyPath) {
    ASSERT_EQ(run({"set", "--type", "string", "a", "1"}).exitCode, 0);
    EXPECT_EQ(run({"get", "--json", "a"}).output, "\"1\"\n");
    EXPECT_EQ(run({"get", "a", "--json"}).output, "\"1\"\n");
    EXPECT_EQ(run({"get", "a", "--layer=stored", "--json"}).output, "\"1\"\n");
}

TEST(CommandLine, ArgumentsThatLookLikeSyntaxArrive) {
    const std::vector<std::string> texts = {"list", "+",   "++", "+x", "-inf",
                                            "-nan", "a=b", "%",  "/h"};
    for (const std::string& text : texts) {
        ASSERT_EQ(run({"set", "a", text}).exitCode, 0) << text;
        EXPECT_EQ(run({"get", "a"}).output, text + "\n");
    }
}

TEST(CommandLine, WhatFollowsTheDoubleDashIsNoOption) {
    ASSERT_EQ(run({"set", "a", "--", "--help"}).exitCode, 0);
    EXPECT_EQ(run({"get", "a"}).output, "--help\n");
    ASSERT_EQ(run({"set", "--", "-x", "-5"}).exitCode, 0);
    EXPECT_EQ(run({"get", "--json", "--", "-x"}).output, "-5\n");
}

TEST(CommandLine, KeyPathsMayLookLikeSyntax) {
    const std::vector<std::string> keyPaths = {"[a,b]", "get", "+", "-5", "", ".", "a..b", "ä.ö"};
    for (const std::string& keyPath : keyPaths) {
        ASSERT_EQ(run({"set", keyPath, "1"}).exitCode, 0) << keyPath;
        EXPECT_EQ(run({"get", keyPath}).output, "1\n") << keyPath;
        EXPECT_EQ(run({"unset", keyPath}).exitCode, 0) << keyPath;
        EXPECT_EQ(run({"get", keyPath}).exitCode, 1) << keyPath;
    }
}

TEST(CommandLine, MessagesCarryNoControlCharacters) {
    const Outcome outcome = run({"get", "a\x1b[31m\n"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "qrvsettings: not set, a\\x1b[31m\\x0a\n");
}

TEST(Quiet, NothingIsSaidThatIsNoError) {
    ToolSupport::writeFile("changes", "# none\n");
    ASSERT_THAT(run({"apply", "changes"}).errors, HasSubstr("no changes"));
    const Outcome outcome = run({"apply", "changes", "--quiet"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(run({"--quiet", "apply", "changes"}).errors, "");
}

TEST(Quiet, AnErrorIsSaid) {
    const Outcome outcome = run({"get", "absent", "--quiet"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "qrvsettings: not set, absent\n");
    EXPECT_EQ(run({"--quiet", "unset", "absent"}).errors, "qrvsettings: not set, absent\n");
    EXPECT_THAT(run({"--quiet", "get"}).errors, HasSubstr("--help"));
}

TEST(Quiet, StandsAlsoWithThePartOfACommand) {
    ASSERT_EQ(run({"color", "set", "a", "2", "0", "0", "--quiet"}).errors, "");
    EXPECT_EQ(run({"color", "--quiet", "get", "a"}).output, "2 0 0 1\n");
    EXPECT_EQ(run({"set", "a", "--", "--quiet"}).exitCode, 0);
    EXPECT_EQ(run({"get", "a"}).output, "--quiet\n");
}
