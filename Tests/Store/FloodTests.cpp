// SPDX-License-Identifier: MIT
// Eight processes that write and watch one settings file at once, while they are killed at random
// moments. QRV_FLOOD_KILLS is the number of kills; without it the run is short.

#include <gtest/gtest.h>

#include <random>

#include "Support/HostProcess.h"

using namespace HostProcess;
using StoreSupport::drainUntil;
using StoreSupport::fileTree;
using StoreSupport::finishSaves;

namespace {

namespace fs = std::filesystem;

constexpr std::size_t processes = 8;

std::size_t openDescriptors() {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator("/proc/self/fd"), {}));
}

std::size_t residentBytes() {
    std::size_t total = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * 4096;
}

std::string moduleOf(std::size_t self) {
    return "Process" + std::to_string(self);
}

class Flood {
  public:
    explicit Flood(Mode mode) : mode_(mode) {
        MachineSupport::beMachine("1", "M");
        for (std::size_t index = 0; index < processes; ++index) start(index);
    }

    void killSome(int kills) {
        std::mt19937 random(20);
        for (int count = 0; count < kills; ++count) {
            // any moment
            std::this_thread::sleep_for(std::chrono::microseconds(random() % 30'000));
            const std::size_t index = random() % processes;
            children_.at(index)->send(SIGKILL);
            ASSERT_TRUE(children_.at(index)->diedOf(SIGKILL));
            ASSERT_NO_FATAL_FAILURE(expectWhatWasSaved()) << "after kill " << count;
            start(index);
        }
    }
    void end() {
        endOfWriting_.open();
        for (const Gate& hasWritten : hasWritten_) ASSERT_TRUE(hasWritten.wait());
        allHaveWritten_.open();
        for (const auto& child : children_) EXPECT_TRUE(child->succeeded());
        ASSERT_NO_FATAL_FAILURE(expectWhatWasSaved());
        const auto folder = fs::path(QRVSettingsLocation()).parent_path();
        EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 2) << "the file and its lock";
    }

  private:
    void start(std::size_t index) {
        constexpr std::int64_t farApart = 1'000'000;
        firstNumber_ += farApart;
        children_.at(index) = std::make_unique<ChildProcess>(
            [this, index, number = firstNumber_] { return writeAndWatch(index, number); });
    }

    /// In each process.
    void writeOnce(std::size_t self, std::int64_t number) const {
        QRVSettingsSetObjectForKeyPath(number, moduleOf(self) + ".Number");
        QRVSettingsSetObjectForKeyPath(NSArray{number, "text"}, moduleOf(self) + ".Menubar.Items");
        QRVSettingsSetObjectForKeyPath(moduleOf(self) + " wrote " + std::to_string(number),
                                       "Shared.Last");
        if (allIsSaved()) saved_[self] = number;
        DispatchMainQueue::shared().drain();
    }

    /// The life of one process. In the end it may have no more memory and descriptors than after
    /// its first writes, and when it merges, has to hold what the file holds.
    bool writeAndWatch(std::size_t self, std::int64_t number) const {
        constexpr int warmUp = 20;
        constexpr std::size_t allowedGrowth = 48U << 20U;  // a sanitizer keeps what was freed
        HostProcess::start(mode_, true);
        for (int count = 0; count < warmUp; ++count) writeOnce(self, ++number);
        const std::size_t memory = residentBytes();
        const std::size_t descriptors = openDescriptors();
        while (!endOfWriting_.isOpen()) writeOnce(self, ++number);
        writeOnce(self, ++number);
        hasWritten_.at(self).open();
        if (!allHaveWritten_.wait()) return false;
        if (mode_ == Mode::Merging) {
            if (saved_[self] != number) return false;
            if (!drainUntil([] { return QRVSettingsStoredValues() == fileTree(); })) return false;
        }
        QRVSettings::sharedSettings().readQueue().sync([] {});
        return openDescriptors() <= descriptors + 2 && residentBytes() <= memory + allowedGrowth;
    }

    /// The file is whole. When processes merge, it has what each of them, killed or not, was told
    /// is saved.
    void expectWhatWasSaved() const {
        std::array<std::int64_t, processes> saved{};
        for (std::size_t index = 0; index < processes; ++index) saved.at(index) = saved_[index];
        const bool exists = fs::exists(QRVSettingsLocation());
        const NSDictionary tree = fileTree();
        ASSERT_TRUE(!exists || !tree.isNull());
        if (mode_ != Mode::Merging) return;
        for (std::size_t index = 0; index < processes; ++index) {
            if (saved.at(index) == 0) continue;
            const NSDictionary module = tree.objectForKey(moduleOf(index)).dictionary();
            const NSArray items =
                module.objectForKey("Menubar").dictionary().objectForKey("Items").array();
            ASSERT_GE(module.objectForKey("Number").integerValue(), saved.at(index));
            ASSERT_GE(items.objectAtIndex(0).integerValue(), saved.at(index));
        }
    }

    Mode mode_;
    Gate endOfWriting_;
    std::array<Gate, processes> hasWritten_;
    Gate allHaveWritten_;
    SharedNumbers saved_{processes};  ///< the last number that each was told is saved
    std::int64_t firstNumber_ = 0;
    std::array<std::unique_ptr<ChildProcess>, processes> children_;  // destroyed first
};

}  // namespace

TEST(Flood, WhatWasSavedSurvivesKillsAtAnyMomentAndTheOthersEndAlike) {
    Flood flood(Mode::Merging);
    constexpr int aFew = 40;
    ASSERT_NO_FATAL_FAILURE(flood.killSome(sizeFromEnvironment("QRV_FLOOD_KILLS", aFew)));
    flood.end();
}

TEST(Flood, ProcessesThatSaveWholeTreesLeaveWholeFilesWhenTheyAreKilled) {
    Flood flood(Mode::WholeTrees);
    constexpr int aFew = 20;
    ASSERT_NO_FATAL_FAILURE(flood.killSome(aFew));
    flood.end();
}
