// SPDX-License-Identifier: MIT
// Eight processes that write and watch one settings file at once, while they are killed at random
// moments. QRV_FLOOD_KILLS is the number of kills; without it the run is short.

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "Support/ChildProcess.h"
#include "Support/MachineSupport.h"
#include "Support/StoreSupport.h"

using StoreSupport::drainUntil;
using StoreSupport::fileTree;
using StoreSupport::finishSaves;

namespace {

namespace fs = std::filesystem;

constexpr std::size_t processes = 8;

int killsWanted() {
    constexpr int aFew = 40;
    const char* const text = std::getenv("QRV_FLOOD_KILLS");
    return text == nullptr ? aFew : std::stoi(text);
}

std::size_t openDescriptors() {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator("/proc/self/fd"), {}));
}

std::size_t residentBytes() {
    std::size_t total = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * 4096;
}

/// What the processes wait for, each on its own.
struct Gates {
    Gate endOfWriting;
    std::array<Gate, processes> hasWritten;
    Gate allHaveWritten;
};

void writeOnce(std::size_t self, std::int64_t number) {
    const std::string module = "Process" + std::to_string(self);
    QRVSettingsSetObjectForKeyPath(number, module + ".Number");
    QRVSettingsSetObjectForKeyPath(NSArray{number, "text"}, module + ".Menubar.Items");
    finishSaves();
    DispatchMainQueue::shared().drain();
}

/// The life of one process. In the end it has to hold what the file holds, and no more memory and
/// descriptors than after its first writes.
bool writeAndWatch(std::size_t self, std::int64_t firstNumber, const Gates& gates) {
    constexpr std::int64_t warmUp = 20;
    constexpr std::size_t allowedGrowth = 48U << 20U;  // a sanitizer keeps what was freed
    MachineSupport::startWatching();
    std::int64_t number = firstNumber;
    for (; number < firstNumber + warmUp; ++number) writeOnce(self, number);
    const std::size_t memory = residentBytes();
    const std::size_t descriptors = openDescriptors();
    while (!gates.endOfWriting.isOpen()) writeOnce(self, ++number);
    writeOnce(self, ++number);
    gates.hasWritten.at(self).open();
    if (!gates.allHaveWritten.wait()) return false;
    if (!drainUntil([] { return QRVSettingsStoredValues() == fileTree(); })) return false;
    QRVSettings::sharedSettings().readQueue().sync([] {});
    return openDescriptors() <= descriptors + 2 && residentBytes() <= memory + allowedGrowth;
}

bool fileIsWhole() {
    return !fs::exists(QRVSettingsLocation()) || !fileTree().isNull();
}

}  // namespace

TEST(Flood, ProcessesKilledAtAnyMomentLeaveWholeFilesAndTheOthersEndAlike) {
    const Gates gates;
    std::mt19937 random(20);
    std::array<std::unique_ptr<ChildProcess>, processes> children;
    std::int64_t firstNumber = 0;
    const auto start = [&](std::size_t index) {
        constexpr std::int64_t farApart = 1'000'000;
        firstNumber += farApart;
        children.at(index) = std::make_unique<ChildProcess>(
            [&gates, index, number = firstNumber] { return writeAndWatch(index, number, gates); });
    };
    for (std::size_t index = 0; index < processes; ++index) start(index);
    for (int kills = 0; kills < killsWanted(); ++kills) {
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 30'000));  // any moment
        const std::size_t index = random() % processes;
        children.at(index)->send(SIGKILL);
        ASSERT_TRUE(children.at(index)->diedOf(SIGKILL));
        ASSERT_TRUE(fileIsWhole()) << "after kill " << kills;
        start(index);
    }
    gates.endOfWriting.open();
    for (const Gate& hasWritten : gates.hasWritten) ASSERT_TRUE(hasWritten.wait());
    gates.allHaveWritten.open();
    for (const auto& child : children) EXPECT_TRUE(child->succeeded());
    const auto folder = fs::path(QRVSettingsLocation()).parent_path();
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 2) << "the file and its lock";
}
