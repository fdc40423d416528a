// SPDX-License-Identifier: MIT
// What a process enters.

#include "HistorySupport.h"

using namespace HistorySupport;

TEST(Entry, ASaveIsEnteredWithItsChanges) {
    start();
    set(true, "CPU.Menubar.Shown");
    set(7, "Host.Width");
    set(nullptr, "Host.Width");
    EXPECT_EQ(lines(), (Lines{"test/set: CPU.Menubar.Shown none > true",
                              "test/set: Host.Width none > 7", "test/set: Host.Width 7 > none"}));
}
