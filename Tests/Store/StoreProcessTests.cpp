// SPDX-License-Identifier: MIT
// One settings file and several real processes.

#include <gtest/gtest.h>
#include <csignal>

#include "Platform/Files/Files.h"
#include "Support/ChildProcess.h"
#include "Support/StoreSupport.h"

using namespace QRVPlatform;

using StoreSupport::finishSaves;

namespace {

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
    ChildProcess writer([] {
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
    EXPECT_TRUE(writer.succeeded());
}

TEST(StoreProcesses, WhatOneProcessWritesAnotherReads) {
    ChildProcess writer([] {
        QRVSettingsSetObjectForKeyPath(NSArray({NSDictionary{{"source", 21}}, "text"}), "A.Items");
        finishSaves();
        return true;
    });
    ASSERT_TRUE(writer.succeeded());
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A.Items"),
              NSArray({NSDictionary{{"source", 21}}, "text"}));
}

TEST(StoreProcesses, ProcessesThatSaveAtOnceLeaveOneOfTheirTrees) {
    std::vector<std::unique_ptr<ChildProcess>> writers;
    for (int process = 1; process <= 3; ++process) {
        writers.push_back(std::make_unique<ChildProcess>([process] {
            for (int round = 0; round < 50; ++round) writeVersion(process * 1000 + round);
            finishSaves();
            return isOneVersion(QRVSettingsStorage());
        }));
    }
    for (const auto& writer : writers) EXPECT_TRUE(writer->succeeded());
    EXPECT_TRUE(isOneVersion(QRVSettingsStorage()));
    const auto folder = std::filesystem::path(QRVSettingsLocation()).parent_path();
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 2)
        << "the file and its lock, no temporary file";
}

TEST(StoreProcesses, AWriterKilledAtAnyMomentLeavesAWholeFile) {
    for (int round = 0; round < 20; ++round) {
        ChildProcess writer([]() -> bool {
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
        writer.send(SIGKILL);
        EXPECT_TRUE(writer.diedOf(SIGKILL));
        ASSERT_TRUE(isOneVersion(QRVSettingsStorage()));
    }
    writeVersion(7);
    finishSaves();
    EXPECT_EQ(QRVSettingsStorage().objectForKey("Key0"), NSDictionary({{"Number", 7}}));
    const auto folder = std::filesystem::path(QRVSettingsLocation()).parent_path();
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 2)
        << "what a killed process left behind is gone";
}

TEST(StoreProcesses, AnExceptionThatIsNotAnInvalidArgumentPassesOutOfASave) {
    const std::filesystem::path file = QRVSettingsLocation();
    std::filesystem::create_directories(file.parent_path() /
                                        ("." + file.filename().string() + ".tmp") / "inside");
    ChildProcess process([] {
        setFileFailureHandler([](const FileFailure&) { throw std::runtime_error("raised"); });
        QRVSettingsSetObjectForKeyPath(1, "A");
        finishSaves();
        return true;
    });
    EXPECT_TRUE(process.diedOf(SIGABRT));
}

TEST(StoreProcesses, AProcessMayExitDuringASave) {
    for (int round = 0; round < 20; ++round) {
        ChildProcess process([]() -> bool {
            for (int number = 0; number < 100; ++number) writeVersion(number);
            std::exit(0);  // runs the destructors of static objects while the queue is at work
        });
        ASSERT_TRUE(process.succeeded());
        const NSDictionary seen = QRVSettingsStorage();
        ASSERT_TRUE(seen.isNull() || isOneVersion(seen));
    }
}
