// SPDX-License-Identifier: MIT
// Hosts on one large settings file, each in a process of its own. Saves and reloads of such a file
// go by what differs from the last known text.

#include <gtest/gtest.h>

#include <random>
#include <thread>

#include "QRVSettings/QRVSettings+KnownText.h"
#include "Support/HostProcess.h"

using namespace HostProcess;
using StoreSupport::contentsOf;
using StoreSupport::drainUntil;
using StoreSupport::fileTree;

namespace {

constexpr int changesOfEach = 60;

void writeLargeFile() {
    const NSMutableDictionary tree;
    for (int number = 0; number < 2000; ++number) {
        NSDictionaryQRV::setObjectAtKeyPath(
            tree, number, "Group" + std::to_string(number % 20) + ".Key" + std::to_string(number));
    }
    StoreSupport::writeSettings(tree);
    ASSERT_GE(contentsOf(QRVSettingsLocation()).size(), QRVInside::KnownText::smallest);
}

std::string anyKeyPath(std::mt19937& random) {
    const std::size_t number = random() % 30;
    return "Group" + std::to_string(number % 20) + (number % 3 == 0 ? ".New" : ".Key") +
           std::to_string(number);
}

PropertyListValue anyValue(std::mt19937& random) {
    switch (random() % 6) {
        case 0:
            return nullptr;
        case 1:
            return "two\n\t<lines>";
        case 2:
            return NSArray{static_cast<int>(random() % 100), NSDictionary{{"a", "b"}}};
        default:
            return static_cast<int>(random() % 1000);
    }
}

void pause(std::mt19937& random) {
    DispatchMainQueue::shared().drain();
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 5000));
}

// Those of the test: hosts also write settings of their own when they start.
Settings ofGroups(Settings settings) {
    std::erase_if(settings, [](const auto& entry) { return !entry.first.starts_with("Group"); });
    return settings;
}

bool isTheFile(const Mirror& mirror) {
    const bool isAlike = drainUntil([&mirror] {
        const Settings stored = settingsOf(fileTree());
        return settingsOf(QRVSettingsStoredValues()) == stored &&
               ofGroups(mirror.settings()) == ofGroups(stored);
    });
    EXPECT_EQ(settingsOf(QRVSettingsStoredValues()), settingsOf(fileTree()));
    EXPECT_EQ(ofGroups(mirror.settings()), ofGroups(settingsOf(fileTree())));
    return isAlike;
}

bool listen(const Hosts& hosts, std::size_t self, Mode mode, const Gate& isListening) {
    start(mode, true);
    const Mirror mirror;
    isListening.open();
    return hosts.meet(self) && isTheFile(mirror) && mirror.received() > 0;
}

bool write(const Hosts& hosts, std::size_t self, Mode mode, const Gate& isListening) {
    start(mode, false);
    if (!isListening.wait()) return false;
    std::mt19937 random(static_cast<unsigned>(self));
    for (int count = 0; count < changesOfEach; ++count) {
        QRVSettingsSetObjectForKeyPath(anyValue(random), anyKeyPath(random));
        if (random() % 3 == 0) StoreSupport::finishSaves();
        pause(random);
    }
    QRVSettingsSetObjectForKeyPath("written", "Group1.Last");
    return allIsSaved() && hosts.meet(self);
}

bool writeAndMirror(const Hosts& hosts, std::size_t self) {
    start(Mode::Merging, true);
    Mirror mirror;
    std::mt19937 random(static_cast<unsigned>(self));
    for (int count = 0; count < changesOfEach; ++count) {
        mirror.write(anyKeyPath(random), anyValue(random));
        if (random() % 3 == 0) StoreSupport::finishSaves();
        pause(random);
    }
    return allIsSaved() && hosts.meet(self) && isTheFile(mirror);
}

void expectFileOfItsTree() {
    EXPECT_EQ(contentsOf(QRVSettingsLocation()),
              NSPropertyListSerialization::dataWithPropertyList(fileTree()).bytes);
}

class LargeFile : public testing::TestWithParam<Mode> {};

}  // namespace

TEST_P(LargeFile, WhatOneHostSavesAnotherHasAfterItsReloads) {
    writeLargeFile();
    Hosts hosts(2);
    const Gate isListening;
    hosts.add([&] { return listen(hosts, 0, GetParam(), isListening); });
    hosts.add([&] { return write(hosts, 1, GetParam(), isListening); });
    EXPECT_TRUE(hosts.letMeet());
    hosts.expectSuccess();
    EXPECT_EQ(NSDictionaryQRV::objectAtKeyPath(fileTree(), "Group1.Last"), "written");
    expectFileOfItsTree();
}

INSTANTIATE_TEST_SUITE_P(Modes, LargeFile, testing::Values(Mode::WholeTrees, Mode::Merging),
                         [](const testing::TestParamInfo<Mode>& information) {
                             return information.param == Mode::Merging ? "Merging" : "WholeTrees";
                         });

TEST(LargeFileOfSeveral, HostsThatMergeAgreeOnIt) {
    constexpr std::size_t count = 3;
    writeLargeFile();
    Hosts hosts(count);
    for (std::size_t self = 0; self < count; ++self)
        hosts.add([&hosts, self] { return writeAndMirror(hosts, self); });
    EXPECT_TRUE(hosts.letMeet());
    hosts.expectSuccess();
    expectFileOfItsTree();
}
