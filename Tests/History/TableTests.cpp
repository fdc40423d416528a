// SPDX-License-Identifier: MIT
// The functions for a program that loads the library when it needs it.

#include <gtest/gtest.h>

#include <cstddef>

#include "QRVHistory/QRVHistory.h"

TEST(HistoryTable, HasEachFunctionOfTheHeader) {
    const QRVHistoryTable& table = *QRVHistoryFunctions();
    EXPECT_EQ(table.start, &QRVHistoryStart);
    EXPECT_EQ(table.wait, &QRVHistoryWait);
    EXPECT_EQ(table.saves, &QRVHistorySaves);
    EXPECT_EQ(table.lastChange, &QRVHistoryLastChange);
    EXPECT_EQ(table.location, &QRVHistoryLocation);
    EXPECT_EQ(table.isSwitchedOff, &QRVHistoryIsSwitchedOff);
    EXPECT_EQ(table.inverseOf, &QRVHistoryInverseOf);
    EXPECT_EQ(table.clear, &QRVHistoryClear);
}

// A program that was built with an earlier header finds them where they were.
TEST(HistoryTable, OnlyGrows) {
    EXPECT_EQ(offsetof(QRVHistoryTable, clear), 7 * sizeof(void*));
    EXPECT_GE(sizeof(QRVHistoryTable), 8 * sizeof(void*));
}
