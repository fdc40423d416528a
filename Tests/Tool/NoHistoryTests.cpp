// SPDX-License-Identifier: MIT
// What a build without the history does in its place.
#include <gtest/gtest.h>

#include "History/ToolHistory.h"
#include "Reporting/Failure.h"

TEST(NoHistory, IsSaidWhereOneIsAskedFor) {
    EXPECT_EQ(Tool::whyNoHistory(), "there is no history: this program was built without it");
    EXPECT_THROW(Tool::savesInHistory({}), Tool::Failure);
    EXPECT_THROW(Tool::clearHistory(), Tool::Failure);
}

TEST(NoHistory, IsNoFaultElsewhere) {
    Tool::takePartInHistory();
    Tool::waitForHistory();
    EXPECT_FALSE(Tool::lastChangeInHistory("A"));
}
