// SPDX-License-Identifier: MIT
// Many processes of the tool that write at once, some of them killed, and the tool beside hosts.
// With QRV_TOGETHER_FULL they write more; without it the run is short.

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <random>

#include "QRVSettings/NSDictionary+QRV.h"
#include "Support/ChildProcess.h"
#include "Support/StoreSupport.h"
#include "Tool/ToolSupport.h"

using NSDictionaryQRV::objectAtKeyPath;
using StoreSupport::contentsOf;
using StoreSupport::fileTree;
using ToolSupport::run;
using ToolSupport::RunningTool;

namespace {

namespace fs = std::filesystem;

struct Effect {
    std::string keyPath;
    PropertyListValue value;  ///< null when it is not set afterwards
};

struct Command {
    std::vector<std::string> arguments;
    std::string input;
    std::vector<Effect> effects;
};

std::string name(const std::string& kind, std::size_t worker, std::size_t number) {
    return kind + std::to_string(worker) + "n" + std::to_string(number);
}

/// What one process does for its setting of this number. Settings lie side by side in dictionaries
/// that all processes share; `Lone` is empty most of the time.
std::vector<Command> commandsOf(std::size_t worker, std::size_t number) {
    const std::string shared = "Shared." + name("Key", worker, number);
    const auto value = static_cast<std::int64_t>(number);
    const std::string text = std::to_string(number);
    switch (number % 5) {
        case 0:
            return {{{"set", shared, text}, "", {{shared, value}}}};
        case 1: {
            const std::string other = "Other." + name("Key", worker, number);
            return {{{"apply", "-"},
                     "set " + shared + " " + text + "\nset " + other + " x\n",
                     {{shared, value}, {other, "x"}}}};
        }
        case 2:
            return {{{"color", "set", shared, "#ff0000"}, "", {{shared, "1 0 0 1"}}}};
        case 3: {
            const std::string lone = "Lone." + name("Key", worker, number);
            return {{{"set", lone, text}, "", {{lone, value}}},
                    {{"unset", lone}, "", {{lone, nullptr}}},
                    {{"set", shared, text}, "", {{shared, value}}}};
        }
        default: {
            const std::string profile = name("profile", worker, number);
            const std::string stored = "Profiles.Settings." + profile + ".a.b";
            return {{{"set", "a.b", text, "--profile", profile}, "", {{stored, value}}},
                    {{"set", shared, "first"}, "", {{shared, "first"}}},
                    {{"set", shared, text}, "", {{shared, value}}}};
        }
    }
}

std::vector<Command> commandsOfWorker(std::size_t worker, std::size_t settings) {
    std::vector<Command> commands;
    for (std::size_t number = 0; number < settings; ++number)
        for (Command& command : commandsOf(worker, number)) commands.push_back(std::move(command));
    return commands;
}

enum class Kills { None, Some };

/// The exit code, or that of a command that was killed before its end.
int exitCodeOf(const Command& command, Kills kills, std::mt19937& random) {
    RunningTool tool(command.arguments, {command.input, {}});
    if (kills == Kills::Some && random() % 2 == 0) {
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 30'000));
        tool.send(SIGKILL);
    }
    return tool.finish().exitCode;
}

constexpr int killed = 128 + SIGKILL;

fs::path recordOf(std::size_t worker) {
    return fs::current_path() / ("exit-codes-" + std::to_string(worker));
}

/// Runs its commands one by one, and writes down their exit codes.
bool work(std::size_t worker, std::size_t settings, Kills kills) {
    std::mt19937 random(static_cast<unsigned>(worker));
    std::ofstream record(recordOf(worker));
    for (const Command& command : commandsOfWorker(worker, settings)) {
        const int exitCode = exitCodeOf(command, kills, random);
        record << exitCode << '\n';
        // A killed `set` leaves nothing to unset.
        const bool isExpected =
            exitCode == 0 || (kills == Kills::Some && (exitCode == killed || exitCode == 1));
        if (!isExpected) return false;
    }
    return true;
}

/// Reads the file over and over. It may be missing only until it is seen for the first time.
bool isWholeUntil(const Gate& end, const std::string& path) {
    bool wasSeen = false;
    while (!end.isOpen()) {
        const std::string bytes = contentsOf(path);
        if (bytes.empty() && !wasSeen) continue;
        wasSeen = true;
        if (!bytes.starts_with("<?xml") || !bytes.ends_with("</plist>\n")) return false;
    }
    return wasSeen;
}

/// What a setting may be in the end, by what became of the commands that write it.
struct Possible {
    std::vector<PropertyListValue> values = {nullptr};

    void afterEnd(const PropertyListValue& value) { values = {value}; }
    void afterKill(const PropertyListValue& value) { values.push_back(value); }
};

struct Result {
    int settings = 0;
    int survivors = 0;
    int kills = 0;
};

void expectAllOrNone(const Command& command, const NSDictionary& tree) {
    std::size_t made = 0;
    for (const Effect& effect : command.effects)
        made += objectAtKeyPath(tree, effect.keyPath) == effect.value ? 1U : 0U;
    EXPECT_TRUE(made == 0 || made == command.effects.size())
        << testing::PrintToString(command.arguments) << command.input;
}

void examine(std::size_t worker, std::size_t settings, const NSDictionary& tree, Result& result) {
    std::map<std::string, Possible> possible;
    std::ifstream record(recordOf(worker));
    for (const Command& command : commandsOfWorker(worker, settings)) {
        int exitCode = -1;
        ASSERT_TRUE(record >> exitCode);
        if (exitCode == killed) {
            ++result.kills;
            expectAllOrNone(command, tree);
        }
        for (const auto& [keyPath, value] : command.effects)
            exitCode == killed ? possible[keyPath].afterKill(value)
                               : possible[keyPath].afterEnd(value);
    }
    for (const auto& [keyPath, after] : possible) {
        const PropertyListValue stored = objectAtKeyPath(tree, keyPath);
        const bool survives =
            std::find(after.values.begin(), after.values.end(), stored) != after.values.end();
        ++result.settings;
        result.survivors += survives ? 1 : 0;
        EXPECT_TRUE(survives) << keyPath << " is " << stored;
    }
}

/// Each process writes so many settings of its own, all processes at once.
void runTogether(std::size_t processes, std::size_t settings, Kills kills) {
    const std::string path = QRVSettingsLocation();
    const Gate end;
    ChildProcess observer([&] { return isWholeUntil(end, path); });
    const auto start = std::chrono::steady_clock::now();
    std::vector<std::unique_ptr<ChildProcess>> workers;
    for (std::size_t worker = 0; worker < processes; ++worker)
        workers.push_back(
            std::make_unique<ChildProcess>([=] { return work(worker, settings, kills); }));
    // As long as it takes: a worker ends at its first wrong exit code, the tool after a minute.
    for (const auto& worker : workers) {
        while (!worker->hasEnded()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        EXPECT_TRUE(worker->succeeded());
    }
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    end.open();
    EXPECT_TRUE(observer.succeeded()) << "the file was not whole";
    Result result;
    for (std::size_t worker = 0; worker < processes; ++worker)
        examine(worker, settings, fileTree(), result);
    EXPECT_EQ(result.survivors, result.settings);
    std::printf("%zu processes, %d settings, %d as expected, %d kills, %.1f s\n", processes,
                result.settings, result.survivors, result.kills, time.count());
}

/// True when each write was on the disk before the next one.
bool writeAsHost(const std::string& module, std::size_t settings, bool isMonitoring) {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setMergesSaves(true);
    store.setMonitorFileChanges(isMonitoring);
    store.loadDefaults();
    store.prepare();
    for (std::size_t number = 0; number < settings; ++number) {
        QRVSettingsSetObjectForKeyPath(true, module + ".ofHost" + std::to_string(number));
        if (QRVSettingsWaitForSaves(testDeadline).state != QRVSaveStatus::State::Saved)
            return false;
        DispatchMainQueue::shared().drain();
    }
    return true;
}

std::size_t sized(std::size_t full, std::size_t usual) {
    return std::getenv("QRV_TOGETHER_FULL") != nullptr ? full : usual;
}

}  // namespace

TEST(Together, TwoProcessesLoseNothing) {
    runTogether(2, sized(60, 10), Kills::None);
}

TEST(Together, FourProcessesLoseNothing) {
    runTogether(4, sized(25, 5), Kills::None);
}

TEST(Together, EightProcessesLoseNothing) {
    runTogether(8, sized(50, 5), Kills::None);
}

TEST(Together, WhatEndedSurvivesTheKillsOfOthers) {
    runTogether(8, sized(50, 5), Kills::Some);
}

TEST(Together, AHostThatMergesLosesNothingBesideTheTool) {
    for (const bool isMonitoring : {false, true}) {
        const std::string host = isMonitoring ? "Monitoring" : "Host";
        const std::size_t settings = sized(60, 10);
        ChildProcess process([&] { return writeAsHost(host, settings, isMonitoring); });
        for (std::size_t number = 0; number < settings; ++number)
            EXPECT_EQ(run({"set", host + ".ofTool" + std::to_string(number), "1"}).exitCode, 0);
        EXPECT_TRUE(process.succeeded());
        const NSDictionary tree = objectAtKeyPath(fileTree(), host).dictionary();
        EXPECT_EQ(tree.count(), 2 * settings);
    }
}
