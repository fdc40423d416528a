// SPDX-License-Identifier: MIT
// Candidates of the completion, and the scripts for the shells.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <regex>
#include <sstream>

#include "QRVSettings/QRVKnownSettings.h"
#include "Tool/ToolSupport.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;
using ToolSupport::Outcome;
using ToolSupport::run;
using ToolSupport::runProgram;
using ToolSupport::writeFile;

namespace {

using Words = std::vector<std::string>;

Outcome candidatesWithSentences(const Words& words) {
    Words arguments = {"completion", "candidates", "--"};
    arguments.insert(arguments.end(), words.begin(), words.end());
    return run(arguments);
}

/// Without the sentences.
Outcome candidates(const Words& words) {
    Outcome outcome = candidatesWithSentences(words);
    outcome.output = std::regex_replace(outcome.output, std::regex("\t[^\n]*"), "");
    return outcome;
}

void expectCandidates(const Words& words, const std::string& lines) {
    const Outcome outcome = candidates(words);
    EXPECT_EQ(outcome.exitCode, 0) << testing::PrintToString(words);
    EXPECT_EQ(outcome.output, lines) << testing::PrintToString(words);
}

void expectNone(const Words& words) {
    const Outcome outcome = candidates(words);
    EXPECT_EQ(outcome.exitCode, 1) << testing::PrintToString(words);
    EXPECT_EQ(outcome.output, "") << testing::PrintToString(words);
}

std::string shellQuoted(const std::string& word) {
    std::string quoted = "'";
    for (const char character : word)
        quoted += character == '\'' ? std::string("'\\''") : std::string(1, character);
    return quoted + "'";
}

/// What bash offers for the last of these words, as it splits them.
std::string offeredByBash(const Words& words) {
    std::string line = "COMP_WORDS=(" + shellQuoted(QRV_TOOL);
    for (const std::string& word : words) line += " " + shellQuoted(word);
    const std::string call = line + ")\nCOMP_CWORD=" + std::to_string(words.size()) +
                             "\neval \"$(" + shellQuoted(QRV_TOOL) + " completion bash)\"\n" +
                             "[[ $(complete -p qrvsettings) == *'-F _qrvsettings'* ]] || exit 9\n" +
                             "_qrvsettings " + shellQuoted(QRV_TOOL) + " " +
                             shellQuoted(words.back()) +
                             "\n((${#COMPREPLY[@]})) && printf '%s\\n' \"${COMPREPLY[@]}\"\nexit 0";
    const Outcome outcome = runProgram("/bin/bash", {"--norc", "-c", call});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(outcome.errors, "");
    return outcome.output;
}

/// Empty where the shell is not installed.
std::string pathOf(const std::string& shell) {
    for (const char* folder : {"/bin/", "/usr/bin/", "/usr/local/bin/"})
        if (std::filesystem::exists(folder + shell)) return folder + shell;
    return "";
}

void expectSyntaxIsRight(const std::string& shell) {
    const std::string path = pathOf(shell);
    if (path.empty()) return;
    writeFile("script", run({"completion", shell}).output);
    const Outcome outcome = runProgram(path, {"-n", "script"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
}

}  // namespace

TEST(Candidates, AreTheCommandsAtFirst) {
    expectCandidates({"e"}, "explain\nexport\n");
    expectCandidates({"p"}, "path\nprofiles\n");
    EXPECT_THAT(candidates({""}).output, AllOf(StartsWith("appearance\n"), HasSubstr("\nset\n")));
    EXPECT_EQ(candidates({}).output, candidates({""}).output);
    expectCandidates({"color", ""}, "get\nset\nunset\n");
    expectNone({"frob"});
}

TEST(Candidates, HaveTheSentencesOfTheHelp) {
    EXPECT_EQ(candidatesWithSentences({"get", "--js"}).output,
              "--json\tPrint every value as JSON, not only dictionaries and arrays\n");
    for (const Words& words : {Words{""}, Words{"color", ""}, Words{"get", "--"}}) {
        std::istringstream lines(candidatesWithSentences(words).output);
        std::string line;
        while (std::getline(lines, line))
            EXPECT_THAT(line, testing::MatchesRegex("[a-z-]+\t[^\t]+")) << line;
    }
    EXPECT_EQ(candidatesWithSentences({"get", "--layer", "d"}).output, "default\n");
}

TEST(Candidates, HaveTheSentencesOfKnownSettings) {
    const QRVKnownSetting* const known = QRVKnownSettingAt("CPU.Menubar.Enabled");
    ASSERT_NE(known, nullptr);
    EXPECT_EQ(candidatesWithSentences({"get", "CPU.Menubar.E"}).output,
              "CPU.Menubar.Enabled\t" + std::string(known->sentence) + "\n");
    ASSERT_EQ(run({"set", "Odd", "1"}).exitCode, 0);
    EXPECT_EQ(candidatesWithSentences({"get", "Odd"}).output, "Odd\n");
}

TEST(Candidates, AreTheOptionsOfTheCommand) {
    expectCandidates({"get", "--"}, "--default\n--help\n--json\n--layer\n--profile\n--quiet\n");
    expectCandidates({"color", "get", "--h"}, "--help\n--hex\n");
    expectCandidates({"--v"}, "--version\n");
    expectCandidates({"watch", "a", "--c"}, "--count\n");
    expectNone({"get", "--", "--l"});
}

TEST(Candidates, AreTheWordsThatAnOptionTakes) {
    expectCandidates({"get", "--layer", ""}, "default\neffective\nsite\nstored\n");
    expectCandidates({"get", "--layer=s"}, "--layer=site\n--layer=stored\n");
    expectCandidates({"set", "--type", "d"}, "data\ndate\n");
    expectNone({"watch", "--count", ""});
    expectNone({"get", "--frobnicate=x"});
}

TEST(Candidates, AreTheKeyPathsOfDefaultsAndFile) {
    ASSERT_EQ(run({"set", "CPU.Menubar.Width", "1"}).exitCode, 0);
    expectCandidates({"get", "CPU.Menubar.W"}, "CPU.Menubar.Width\n");
    expectCandidates({"get", "--json", "CPU.Menubar.E"}, "CPU.Menubar.Enabled\n");
    expectCandidates({"set", "Time.Menubar.F"}, "Time.Menubar.FlashSeperators\n");
    expectCandidates({"watch", "Menu.Th"}, "Menu.Theme.Dark\nMenu.Theme.Light\n");
    expectNone({"get", "CPU.Menubar.Width", "CPU"});
    expectNone({"set", "CPU.Menubar.Width", "1", ""});
}

TEST(Candidates, OfWhatIsToBeRemovedAreWhatIsStored) {
    ASSERT_EQ(run({"set", "CPU.Menubar.Width", "1"}).exitCode, 0);
    expectCandidates({"unset", "CPU"}, "CPU.Menubar.Width\n");
    expectCandidates({"unset", "a", "b", "CPU"}, "CPU.Menubar.Width\n");
    expectCandidates({"color", "unset", "CPU"}, "CPU.Menubar.Width\n");
}

TEST(Candidates, AreTheProfilesAndTheirKeyPaths) {
    ASSERT_EQ(run({"set", "inProfile", "1", "--profile", "at work"}).exitCode, 0);
    expectCandidates({"get", "--profile", ""}, "at work\ndefault\n");
    expectCandidates({"unset", "--profile", "at work", ""}, "inProfile\n");
    expectCandidates({"--profile", "at work", "unset", ""}, "inProfile\n");
    expectCandidates({"--profile", ""}, "at work\ndefault\n");
    expectCandidates({"get", "--profile=at work", "in"}, "inProfile\n");
    expectNone({"get", "in"});
}

TEST(Candidates, AreWordsWhereFewAreMeant) {
    expectCandidates({"appearance", "set", ""}, "dark\nlight\n");
    expectCandidates({"completion", ""}, "bash\ncandidates\nfish\nzsh\n");
}

TEST(Candidates, AreNotPrintedWhereAFileIsMeant) {
    for (const std::string command : {"export", "import", "apply", "diff"})
        expectCandidates({command, "x"}, "");
}

TEST(Candidates, ADamagedFileLeavesTheDefaults) {
    ToolSupport::writeSettings("{broken");
    expectCandidates({"get", "UpdateF"}, "UpdateFrequency\n");
}

TEST(Candidates, AKeyPathThatNoLineHoldsIsLeftOut) {
    ToolSupport::writeSettings(
        ToolSupport::propertyList("<key>odd&#10;</key><true/><key>odd\xc2\x9b"
                                  "b</key><true/><key>odd one</key><true/>"));
    expectCandidates({"get", "odd"}, "odd one\n");
}

TEST(BashCompletion, OffersWhatTheToolTells) {
    EXPECT_EQ(offeredByBash({"ex"}), "explain\nexport\n");
    EXPECT_EQ(offeredByBash({"get", "CPU.Menubar.E"}), "CPU.Menubar.Enabled\n");
    EXPECT_EQ(offeredByBash({"get", "--js"}), "--json\n");
    EXPECT_EQ(offeredByBash({"get", "frobnicate"}), "");
    EXPECT_EQ(offeredByBash({"set", "CPU.Menubar.Enabled", "t"}), "true\n");
    const std::string color = "Network.Menubar.Mode.Status.NoIP.Color";
    EXPECT_EQ(offeredByBash({"set", color, ""}), "1\\ 0.776\\ 0\\ 1\n");
    EXPECT_EQ(offeredByBash({"color", "set", color, ""}), "\\#ffc600ff\n");
}

TEST(BashCompletion, TakesTheEqualsSignThatBashSetsApart) {
    EXPECT_EQ(offeredByBash({"get", "--layer", "=", "st"}), "stored\n");
    EXPECT_EQ(offeredByBash({"get", "--layer", "="}), "default\neffective\nsite\nstored\n");
    EXPECT_EQ(offeredByBash({"get", "--layer", "=", "stored", "UpdateF"}), "");
    EXPECT_EQ(offeredByBash({"get", "--layer", "=", "effective", "UpdateF"}), "UpdateFrequency\n");
}

TEST(BashCompletion, OffersFilesWhereOneIsMeant) {
    writeFile("settings one.plist", "");
    writeFile("settings.json", "");
    EXPECT_THAT(offeredByBash({"import", "settings"}),
                testing::AnyOf("settings one.plist\nsettings.json\n",
                               "settings.json\nsettings one.plist\n"));
}

TEST(BashCompletion, NeverRunsWhatAKeyPathSays) {
    ASSERT_EQ(run({"set", "x$(touch hit)`touch hit`;touch hit", "1"}).exitCode, 0);
    EXPECT_EQ(offeredByBash({"get", "x"}),
              "x\\$\\(touch\\ hit\\)\\`touch\\ hit\\`\\;touch\\ hit\n");
    EXPECT_FALSE(std::filesystem::exists("hit"));
}

TEST(CompletionScripts, AskTheTool) {
    for (const std::string shell : {"bash", "zsh", "fish"}) {
        const Outcome outcome = run({"completion", shell});
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_THAT(outcome.output, HasSubstr(" completion candidates -- ")) << shell;
        expectSyntaxIsRight(shell);
    }
    EXPECT_THAT(run({"completion", "zsh"}).output,
                AllOf(StartsWith("#compdef qrvsettings\n"),
                      HasSubstr("\n    compdef _qrvsettings qrvsettings\n")));
    EXPECT_THAT(run({"completion", "fish"}).output, HasSubstr("\ncomplete -c qrvsettings "));
}
