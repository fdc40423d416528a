// SPDX-License-Identifier: MIT
// Commands that diff prints mean the same to a shell and to apply.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "Support/ChildProcess.h"
#include "Tool/ToolSupport.h"

using ToolSupport::Outcome;
using ToolSupport::run;
using ToolSupport::settingsFile;
using ToolSupport::writeFile;
using ToolSupport::writeSettings;

namespace {

const std::string flags = R"("Migration":{"CombinedPowerItems":true,"Profiles":true},)"
                          R"("Profiles":{"Available":{"identifier":"default"}})";

/// Names that a shell, a terminal, a parser of options or a script could take for something else.
const std::vector<std::string>& hostileNames() {
    static const auto& names = *new std::vector<std::string>{
        "it's",    "\"quoted\"",  "$HOME",     "`date`",   "$(date)", "${IFS#??}", "a b",
        " blank ", "tab\tx",      "line\n",    "\nline",   "\n",      "\r",        "--",
        "--type",  "-x",          "-5",        "-",        "",        "#x",        "*",
        "a;b",     "a&b|c",       "\\",        "\\n",      "%s%d",    "~",         "!x",
        "[a]",     "{a,b}",       "äöü€😀",     "\x1b[31m", "\x7f",    "\xc2\x9b",  "\xe2\x80\xae",
        "set",     "qrvsettings", "null",      "=",        "a=b",     "'",         "''",
        "\"",      "\\'",         "trailing\\"};
    return names;
}

std::string jsonString(const std::string& text) {
    std::string result = "\"";
    for (const char character : text) {
        constexpr std::string_view digits = "0123456789abcdef";
        const auto byte = static_cast<unsigned char>(character);
        if (character == '"' || character == '\\')
            result += std::string("\\") + character;
        else if (byte < ' ')
            result += std::string("\\u00") + digits[byte >> 4U] + digits[byte & 0xFU];
        else
            result += character;
    }
    return result + "\"";
}

/// Every name as a key, as text, within an array, and as a key in there.
nlohmann::json hostileSettings() {
    std::string keys = "{";
    std::string texts = "[";
    for (const std::string& name : hostileNames()) {
        const std::string text = jsonString(name);
        keys += (keys.size() == 1 ? "" : ",") + text + ":" + text;
        texts += (texts.size() == 1 ? "" : ",") + text + ",{" + text + ":[]}";
    }
    return nlohmann::json::parse("{\"Hostile\":" + keys + "},\"Texts\":" + texts + R"(],
        "Values":{"neg":-5,"negReal":-0.5,"small":-5e-324,"big":18446744073709551615,
        "nan":{"$real":"nan"},"inf":{"$real":"-inf"},"date":{"$date":"1999-12-31T23:59:59Z"},
        "farDate":{"$date":1e+12},"data":{"$data":"AP8nIg=="},"noData":{"$data":""},"empty":"",
        "yes":true,"no":false,"zero":0,"zeroReal":0.0,"one":"1","true":"true","json":"{\"a\":1}",
        "list":[],"lists":[[],[[1]],{"a":{"b":[{}]}}],"looks":{"$dictionary":{"$date":"x"}},
        "void":{}}})");
}

/// What is stored and the hostile settings, as a file.
void writeHostile(const std::string& file) {
    nlohmann::json settings = nlohmann::json::parse(run({"export", "--json"}).output);
    settings.update(hostileSettings());
    writeFile(file, settings.dump());
}

void expectSame(const std::string& commands, const std::string& before, const std::string& wanted) {
    writeSettings(before);
    const Outcome shell = ToolSupport::runShell(commands);
    ASSERT_EQ(shell.exitCode, 0) << shell.errors << commands;
    const std::string byShell = run({"export", "--json"}).output;
    EXPECT_TRUE(byShell == wanted) << byShell;

    writeSettings(before);
    const Outcome apply = run({"apply", "-"}, {commands, {}});
    ASSERT_EQ(apply.exitCode, 0) << apply.errors << commands;
    EXPECT_TRUE(run({"export", "--json"}).output == byShell);
    EXPECT_TRUE(run({"apply", "-"}, {commands, {}}).errors.find(": 0 changed, ") != commands.npos);
}

}  // namespace

TEST(Replay, OfHostileSettingsIsTheSameByAShellAndByApply) {
    ASSERT_EQ(run({"set", "any", "1"}).exitCode, 0);  // the record of the machine
    const std::string before = ToolSupport::contentsOf(settingsFile());
    writeHostile("hostile.json");
    const Outcome commands = run({"diff", "hostile.json", "--as-commands"});
    ASSERT_EQ(commands.exitCode, 1) << commands.errors;
    ASSERT_EQ(commands.errors, "");
    ASSERT_EQ(run({"import", "hostile.json"}).exitCode, 0);
    expectSame(commands.output, before, run({"export", "--json"}).output);
}

TEST(Replay, RemovesHostileSettings) {
    ASSERT_EQ(run({"set", "any", "1"}).exitCode, 0);
    writeFile("plain.json", run({"export", "--json"}).output);
    const std::string wanted = run({"export", "--json"}).output;
    writeHostile("hostile.json");
    ASSERT_EQ(run({"import", "hostile.json"}).exitCode, 0);
    const std::string before = ToolSupport::contentsOf(settingsFile());
    expectSame(run({"diff", "plain.json", "--as-commands"}).output, before, wanted);
}

TEST(Replay, OfAProfileIsTheSameByAShellAndByApply) {
    for (const char* profile : {"it's", "at work", "new\nline", "-x", "$HOME", "\"q\""}) {
        ASSERT_EQ(run({"set", "any", "1"}).exitCode, 0);
        const std::string before = ToolSupport::contentsOf(settingsFile());
        const std::string option = std::string("--profile=") + profile;
        ASSERT_EQ(run({"set", option, "a", "-5"}).exitCode, 0) << profile;
        ASSERT_EQ(run({"set", option, "CPU.Menubar.Enabled", "false"}).exitCode, 0);
        const std::string commands = run({"diff", option, "--as-commands"}).output;
        expectSame(commands, before, run({"export", "--json"}).output);
        writeSettings(before);
    }
}

TEST(Replay, OfWhatWatchPrints) {
    ASSERT_EQ(run({"set", "any", "1"}).exitCode, 0);
    ToolSupport::RunningTool watch({"watch", "--as-commands", "--count", "2"});
    ASSERT_TRUE(waitUntil([&] { return watch.errors().ends_with(".plist\n"); })) << watch.errors();
    ASSERT_EQ(run({"apply", "-"}, {"set \"it's\" -5\nset b \"\"\n", {}}).exitCode, 0);
    const std::string commands = watch.finish().output;
    EXPECT_EQ(commands, "qrvsettings set -- 'b' '\"\"'\nqrvsettings set -- 'it'\\''s' '-5'\n");
    EXPECT_EQ(run({"apply", "-"}, {commands, {}}).errors,
              "qrvsettings: 0 changed, 2 as they were\n");
}

TEST(ApplyCommands, LinesOfBothFormsMayStandTogether) {
    const Outcome outcome = run({"apply", "-"}, {"# a comment\nqrvsettings set a 1\nset b 2\n"
                                                 "  qrvsettings set --type string c 3\n"
                                                 "qrvsettings set d -5 --profile p\n"
                                                 "qrvsettings set \"e f\" \"g \\\"h\\\"\"\n"
                                                 "qrvsettings unset a b\n",
                                                 {}});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(run({"get", "c", "--json"}).output, "\"3\"\n");
    EXPECT_EQ(run({"get", "d", "--profile", "p"}).output, "-5\n");
    EXPECT_EQ(run({"get", "e f"}).output, "g \"h\"\n");
    EXPECT_EQ(run({"get", "a"}).exitCode, 1);
    EXPECT_EQ(run({"get", "b"}).exitCode, 1);
}

TEST(ApplyCommands, OptionsAreReadAsOnTheCommandLine) {
    const Outcome outcome = run({"apply", "-"}, {"qrvsettings set --profile -- -x 1\n"
                                                 "qrvsettings set y -.5 --profile\n"
                                                 "qrvsettings set --profile=q z -inf\n",
                                                 {}});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(run({"get", "--profile", "--", "-x"}).output, "1\n");
    EXPECT_EQ(run({"get", "y", "--profile", "default"}).output, "-0.5\n");
    EXPECT_EQ(run({"get", "z", "--profile", "q"}).output, "-inf\n");
    EXPECT_EQ(run({"profiles"}).output, "default\nq\n");
    for (const char* line : {"qrvsettings set a -x\n", "qrvsettings set --profile -x a 1\n",
                             "qrvsettings set --type -- a 1\n"}) {
        EXPECT_EQ(run({"apply", "-"}, {line, {}}).exitCode, 5) << line;
        EXPECT_EQ(ToolSupport::runShell(line).exitCode, 2) << line;
    }
}

TEST(ApplyCommands, WhatAShellWouldReplaceIsRefused) {
    const std::vector<std::string> lines = {"qrvsettings set a $HOME",
                                            "qrvsettings set a \"$HOME\"",
                                            "qrvsettings set a `date`",
                                            "qrvsettings set a \"`date`\"",
                                            "qrvsettings set a $(date)",
                                            "qrvsettings set a \"$(date)\"",
                                            "qrvsettings set a *",
                                            "qrvsettings set a 1; date",
                                            "qrvsettings set a 1 | cat",
                                            "qrvsettings set a 1 > file",
                                            "qrvsettings set a 1 && date",
                                            "qrvsettings set a ~",
                                            "qrvsettings set a {b,c}",
                                            "qrvsettings set a [b]",
                                            "qrvsettings set a 1 # comment",
                                            "qrvsettings set a 'no end",
                                            "qrvsettings set a \"no end",
                                            "qrvsettings set a \\",
                                            "qrvsettings set a \"$(printf '%s')\"",
                                            "qrvsettings set a \"$(printf '\\000')\"",
                                            "qrvsettings set a \"$(printf '\\x')\"",
                                            "qrvsettings set a \"$(printf 'x\"",
                                            "qrvsettings",
                                            "qrvsettings list",
                                            "qrvsettings set",
                                            "qrvsettings set a",
                                            "qrvsettings set a 1 2",
                                            "qrvsettings set a -",
                                            "qrvsettings unset",
                                            "qrvsettings set --force a 1",
                                            "qrvsettings unset --type int a",
                                            "qrvsettings set a 1 --type",
                                            "qrvsettings set a 1 --profile=",
                                            "qrvsettings set a '{'",
                                            "qrvsettings set \xff 1"};
    for (const std::string& line : lines) {
        const Outcome outcome = run({"apply", "-"}, {"set b 1\n" + line + "\n", {}});
        EXPECT_EQ(outcome.exitCode, 5) << line;
        EXPECT_THAT(outcome.errors, testing::StartsWith("qrvsettings: standard input:2:")) << line;
        EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1) << line;
    }
    EXPECT_FALSE(std::filesystem::exists(ToolSupport::configurationFolder()));
}
