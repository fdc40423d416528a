// SPDX-License-Identifier: MIT
// Memory over many writes and reloads. QRV_GROWTH_ROUNDS is their number; without it the run is
// short. To be run without the allocator's caches (GLIBC_TUNABLES): each thread fills its own over
// thousands of writes, and what lies in them counts as allocated.

#include <gtest/gtest.h>

#include <cstdlib>

#include "Platform/Files/Files.h"
#include "Support/AllocatedBytes.h"
#include "Support/MachineSupport.h"
#include "Support/StoreSupport.h"

using namespace QRVPlatform;

using StoreSupport::drainUntil;
using StoreSupport::fileTree;
using StoreSupport::finishSaves;

namespace {

int roundsWanted() {
    constexpr int aFew = 1000;
    const char* const text = std::getenv("QRV_GROWTH_ROUNDS");
    return text == nullptr ? aFew : std::stoi(text);
}

/// What the process keeps when it has nothing to do: saves have run, and neither a change record
/// nor a timer of one is left.
std::size_t bytesAtRest() {
    QRVSettings& store = QRVSettings::sharedSettings();
    finishSaves();
    store.readQueue().sync([] {});
    DispatchMainQueue::shared().drain();
    EXPECT_TRUE(drainUntil([&] { return store.localChanges().count() == 0; }));
    while (DispatchMainQueue::shared().wait(std::chrono::milliseconds(100)))
        DispatchMainQueue::shared().drain();
    return allocatedBytes();
}

/// This process writes, and takes over what another one makes of the file.
void writeAndReload(int round) {
    QRVSettingsSetObjectForKeyPath(NSArray{round, "text"}, "Own.Key" + std::to_string(round % 50));
    finishSaves();
    DispatchMainQueue::shared().drain();
    const NSMutableDictionary tree = fileTree().mutableCopy();
    tree.setObjectForKey(round, "Other");
    replaceFile(QRVSettingsLocation(),
                NSPropertyListSerialization::dataWithPropertyList(tree).bytes);
    ASSERT_TRUE(drainUntil([&] { return QRVSettingsStoredObjectForKeyPath("Other") == round; }));
}

}  // namespace

TEST(Growth, WritesAndReloadsLeaveNothingBehind) {
    constexpr int warmUp = 200;
    constexpr std::size_t allowed = 16U << 10U;
    MachineSupport::startWatching();
    for (int round = 0; round < warmUp; ++round) writeAndReload(round);
    const std::size_t before = bytesAtRest();
    const int last = warmUp + roundsWanted();
    for (int round = warmUp; round < last && !HasFatalFailure(); ++round) writeAndReload(round);
    const std::size_t after = bytesAtRest();
    EXPECT_LE(after, before + allowed);
    RecordProperty("BytesBefore", std::to_string(before));
    RecordProperty("BytesAfter", std::to_string(after));
}

TEST(Growth, AHostThatDoesNotDrainKeepsARecordOfEachWriteUntilItDoes) {
    constexpr int writes = 2000;
    constexpr std::size_t mostPerWrite = 2048;
    constexpr std::size_t allowed = 16U << 10U;
    const auto write = [](int number) {
        QRVSettingsSetObjectForKeyPath(number, "Own.Key" + std::to_string(number % 50));
        finishSaves();
    };
    // As many as later: queues keep the room that they once needed.
    for (int number = 0; number < writes; ++number) write(number);
    const std::size_t before = bytesAtRest();
    for (int number = 0; number < writes; ++number) write(number);
    const std::size_t kept = allocatedBytes() - before;
    EXPECT_GT(kept, writes * sizeof(void*));
    EXPECT_LT(kept, writes * mostPerWrite);
    EXPECT_LE(bytesAtRest(), before + allowed);
    RecordProperty("BytesPerWrite", std::to_string(kept / writes));
}
