// SPDX-License-Identifier: MIT
// One settings file and several real processes.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "Support/StoreSupport.h"

using StoreSupport::finishSaves;

namespace {

// Runs `body` in a child process; the child's status is 0 when the body returns true.
pid_t inChild(const std::function<bool()>& body) {
    const pid_t child = fork();
    if (child == 0) _exit(body() ? 0 : 1);
    return child;
}

int statusOf(pid_t child) {
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

// A tree of which every version holds one number in all its places.
void writeVersion(int number) {
    const NSMutableDictionary tree;
    for (int index = 0; index < 40; ++index) {
        tree.setObjectForKey(NSDictionary{{"Number", number}}, "Key" + std::to_string(index));
    }
    QRVSettingsSaveObject(tree);
}

bool isOneVersion(const NSDictionary& tree) {
    const PropertyListValue first = tree.objectForKey("Key0");
    for (const auto& [key, value] : tree) {
        if (value != first) return false;
    }
    return tree.count() == 40;
}

}  // namespace

TEST(StoreProcesses, AReaderInALoopSeesWholeFilesOnly) {
    constexpr int versions = 200;
    const pid_t writer = inChild([] {
        for (int number = 0; number <= versions; ++number) writeVersion(number);
        finishSaves();
        return true;
    });
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    NSDictionary seen = nullptr;
    const NSDictionary last{{"Number", versions}};
    while (seen.objectForKey("Key0") != last) {
        ASSERT_LT(std::chrono::steady_clock::now(), deadline);
        seen = QRVSettingsStorage();
        ASSERT_TRUE(seen.isNull() || isOneVersion(seen)) << seen;
    }
    EXPECT_EQ(statusOf(writer), 0);
}

TEST(StoreProcesses, WhatOneProcessWritesAnotherReads) {
    const pid_t writer = inChild([] {
        QRVSettingsSetObjectForKeyPath(NSArray({NSDictionary{{"source", 21}}, "text"}), "A.Items");
        finishSaves();
        return true;
    });
    ASSERT_EQ(statusOf(writer), 0);
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A.Items"),
              NSArray({NSDictionary{{"source", 21}}, "text"}));
}

TEST(StoreProcesses, ProcessesThatSaveAtOnceLeaveOneOfTheirTrees) {
    std::vector<pid_t> writers;
    for (int process = 1; process <= 3; ++process) {
        writers.push_back(inChild([process] {
            for (int round = 0; round < 50; ++round) writeVersion(process * 1000 + round);
            finishSaves();
            return isOneVersion(QRVSettingsStorage());
        }));
    }
    for (const pid_t writer : writers) EXPECT_EQ(statusOf(writer), 0);
    EXPECT_TRUE(isOneVersion(QRVSettingsStorage()));
    const auto folder = std::filesystem::path(QRVSettingsLocation()).parent_path();
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 2)
        << "the file and its lock, no temporary file";
}

TEST(StoreProcesses, AWriterKilledAtAnyMomentLeavesAWholeFile) {
    for (int round = 0; round < 20; ++round) {
        const pid_t writer = inChild([]() -> bool {
            for (int number = 0;; ++number) {
                writeVersion(number);
                finishSaves();
            }
        });
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (QRVSettingsStorage().isNull()) {
            ASSERT_LT(std::chrono::steady_clock::now(), deadline);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(round));  // a moment like any other
        ASSERT_EQ(kill(writer, SIGKILL), 0);
        EXPECT_TRUE(WIFSIGNALED(statusOf(writer)));
        ASSERT_TRUE(isOneVersion(QRVSettingsStorage()));
    }
    writeVersion(7);
    finishSaves();
    EXPECT_EQ(QRVSettingsStorage().objectForKey("Key0"), NSDictionary({{"Number", 7}}));
    const auto folder = std::filesystem::path(QRVSettingsLocation()).parent_path();
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 2)
        << "what a killed process left behind is gone";
}
