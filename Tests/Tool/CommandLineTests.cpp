// SPDX-License-Identifier: MIT
// Commands and options as a whole: wrong usage, help, exit codes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "Tool/ToolSupport.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;
using ToolSupport::Outcome;
using ToolSupport::run;

namespace {

using Arguments = std::vector<std::string>;

const std::vector<std::string> commands = {"get",      "set",   "unset",   "list",   "search",
                                           "explain",  "diff",  "export",  "color",  "appearance",
                                           "profiles", "apply", "history", "import", "merge",
                                           "undo",     "watch", "path",    "doctor", "completion"};

}  // namespace

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

TEST(CommandLine, WrongUsageIsSaidInWordsOfThisProgram) {
    struct Row {
        Arguments arguments;
        std::string said;
        std::string seen;  ///< whose help is named
    };
    const std::vector<Row> rows = {
        {{}, "no command is named; usage: qrvsettings [OPTION...] COMMAND [ARGUMENT...]", ""},
        {{"--quiet"},
         "no command is named; usage: qrvsettings [OPTION...] COMMAND [ARGUMENT...]",
         ""},
        {{"color"},
         "no command is named; usage: qrvsettings color [OPTION...] COMMAND [ARGUMENT...]",
         "color"},
        {{"--", "get"}, "there is no command before --", ""},
        // Commands
        {{"gte", "a"}, "there is no such command, gte; did you mean get?", ""},
        {{"expo"}, "there is no such command, expo; did you mean export?", ""},
        {{"colour"}, "there is no such command, colour; did you mean color?", ""},
        {{"frobnicate"}, "there is no such command, frobnicate", ""},
        {{"g"}, "there is no such command, g", ""},
        {{"color", "frob"},
         "there is no such command, color frob; there is get, set or unset",
         "color"},
        {{"completion", "tcsh"},
         "there is no such command, completion tcsh; there is bash, zsh, fish or candidates",
         "completion"},
        // Options
        {{"get", "--frob", "a"}, "get has no option --frob", "get"},
        {{"get", "--jsn", "a"}, "get has no option --jsn; did you mean --json?", "get"},
        {{"get", "--prof", "x", "a"}, "get has no option --prof; did you mean --profile?", "get"},
        {{"color", "get", "--type", "int"}, "color get has no option --type", "color get"},
        {{"--frob", "get", "a"}, "no command has an option --frob", ""},
        {{"--keys", "get", "a"}, "get has no option --keys", "get"},
        {{"set", "a", "-x"},
         "set has no option -x; an argument that begins with a dash goes after --",
         "set"},
        {{"get", "a", "--json=yes"}, "--json takes no value: --json=yes", "get"},
        {{"get", "a", "--layer"}, "--layer needs a NAME behind it", "get"},
        {{"get", "--layer", "--json", "a"},
         "--layer needs a NAME behind it; one that begins with a dash is written --layer=--json",
         "get"},
        {{"get", "a", "--layer", "middle"},
         "--layer takes effective, stored, site or default, not middle",
         "get"},
        {{"get", "a", "--layer="}, "--layer takes effective, stored, site or default, not ", "get"},
        {{"set", "a", "1", "--type", "int", "--type", "int"}, "--type stands there twice", "set"},
        {{"--profile", "x", "get", "a", "--profile", "y"}, "--profile stands there twice", "get"},
        {{"search", "a", "--keys", "--values"}, "--keys and --values exclude each other", "search"},
        {{"diff", "a", "--profile", "p"}, "FILE and --profile exclude each other", "diff"},
        {{"set", "a", "1", "--timeout", "x"},
         "--timeout: not a number of seconds above 0: x",
         "set"},
        {{"get", "a", "--profile="}, "--profile: the name of the profile is empty", "get"},
        // Arguments
        {{"get"}, "KEYPATH is missing; usage: qrvsettings get [OPTION...] KEYPATH", "get"},
        {{"set", "a"}, "VALUE is missing; usage: qrvsettings set [OPTION...] KEYPATH VALUE", "set"},
        {{"get", "--profile", "a"},
         "KEYPATH is missing, as a is the NAME of --profile; usage: qrvsettings get [OPTION...] "
         "KEYPATH",
         "get"},
        {{"set", "a", "1", "2"},
         "one word too many, 2; usage: qrvsettings set [OPTION...] KEYPATH VALUE",
         "set"},
        {{"path", "a"}, "one word too many, a; usage: qrvsettings path [OPTION...]", "path"},
        {{"color", "set", "a"},
         "COLOR is missing; usage: qrvsettings color set [OPTION...] KEYPATH COLOR...",
         "color set"},
    };
    for (const auto& [arguments, said, seen] : rows) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.exitCode, 2) << said;
        EXPECT_EQ(outcome.errors, "qrvsettings: " + said + " (see qrvsettings " +
                                      (seen.empty() ? "" : seen + " ") + "--help)\n");
    }
}

TEST(CommandLine, WhatIsWrongIsQuotedInPart) {
    const std::string longWord(100'000, 'x');
    for (const Arguments& arguments : std::vector<Arguments>{{longWord},
                                                             {"get", "a", longWord},
                                                             {"get", "--" + longWord},
                                                             {"get", "a", "--layer", longWord},
                                                             {"get", "a", "--json=" + longWord},
                                                             {"color", longWord},
                                                             {"--" + longWord}})
        EXPECT_LT(run(arguments).errors.size(), 500U);
}

TEST(CommandLine, OptionsOfTheCommandMayStandBeforeIt) {
    ASSERT_EQ(run({"--profile", "p", "set", "a", "-5"}).exitCode, 0);
    EXPECT_EQ(run({"--profile", "p", "get", "a"}).output, "-5\n");
    EXPECT_EQ(run({"--profile=p", "--json", "get", "a"}).output, "-5\n");
    EXPECT_EQ(run({"--json", "list", "--profile", "p"}).output.substr(0, 1), "{");
    EXPECT_EQ(run({"--quiet", "--timeout", "5", "set", "b", "1"}).exitCode, 0);
    EXPECT_EQ(run({"--profile", "p", "color", "set", "c", "#000000"}).exitCode, 0);
    EXPECT_EQ(run({"color", "--profile", "p", "get", "c"}).output, "0 0 0 1\n");
    EXPECT_EQ(run({"--profile", "p", "get", "--", "a"}).output, "-5\n");
}

TEST(CommandLine, AProfileWithoutANameIsTheOneNamedDefault) {
    ASSERT_EQ(run({"set", "a", "-5", "--profile"}).exitCode, 0);
    EXPECT_EQ(run({"get", "a", "--profile", "default"}).output, "-5\n");
    EXPECT_EQ(run({"get", "a", "--profile", "--json"}).output, "-5\n");
    EXPECT_EQ(run({"--profile", "get", "a"}).output, "-5\n");
    EXPECT_EQ(run({"get", "a"}).exitCode, 1);
}

TEST(CommandLine, NegativeValuesNeedNoDoubleDash) {
    for (const std::string value :
         {"-5", "-0.5", "-1e3", "-.5", "-inf", "-18446744073709551616x", "-5,3"}) {
        ASSERT_EQ(run({"set", "a", value, "--type", "string"}).exitCode, 0) << value;
        EXPECT_EQ(run({"get", "a"}).output, value + "\n");
        EXPECT_EQ(run({"get", "absent", "--default", value}).output, value + "\n");
    }
    ASSERT_EQ(run({"set", "a", "-5"}).exitCode, 0);
    EXPECT_EQ(run({"get", "a", "--json"}).output, "-5\n");
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

TEST(CommandLine, NoHelpIsWiderThanATerminal) {
    constexpr std::size_t columns = 80;
    std::vector<Arguments> everyHelp = {{},
                                        {"color", "set"},
                                        {"appearance", "set"},
                                        {"completion", "candidates"},
                                        {"history", "clear"}};
    for (const std::string& command : commands) everyHelp.push_back({command});
    for (Arguments arguments : everyHelp) {
        arguments.emplace_back("--help");
        std::istringstream lines(run(arguments).output);
        for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), columns) << line;
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
    EXPECT_EQ(outcome.errors, "qrvsettings: not set, \"a\\u001b[31m\\n\"\n");
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
