// SPDX-License-Identifier: MIT
#pragma once

// A process that takes part in the history, in a state folder of the test's own.

#include <gtest/gtest.h>
#include <stdlib.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "Platform/Files/Files.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "QRVHistory/QRVHistory.h"
#include "Support/StoreSupport.h"

namespace HistorySupport {

inline constexpr std::chrono::seconds longTime(60);

inline void start(bool mergesSaves = true) {
    QRVSettings::sharedSettings().setMergesSaves(mergesSaves);
    ASSERT_TRUE(QRVHistoryStart("test"));
}

/// Everything saved so far is entered.
inline void wait() {
    EXPECT_TRUE(QRVHistoryWait(longTime));
}

/// A save with an entry of its own.
inline void set(const PropertyListValue& value, const std::string& keyPath) {
    QRVSettingsSetObjectForKeyPath(value, keyPath);
    wait();
}

/// The settings file, replaced by a program that takes no part.
inline void otherReplaces(const NSDictionary& tree) {
    EXPECT_FALSE(QRVPlatform::replaceFile(
        QRVSettingsLocation(), NSPropertyListSerialization::dataWithPropertyList(tree).bytes));
}

inline std::vector<QRVHistorySave> saves(const QRVHistoryQuery& query = {}) {
    QRVHistoryAnswer answer = QRVHistorySaves(query);
    EXPECT_EQ(answer.failure, "");
    return answer.saves;
}

inline std::string textOf(const PropertyListValue& value) {
    return value.isNull() ? "none" : QRVPlatform::description(value);
}

/// `program/origin: key path before > after, ...`, unknown programs as "?".
inline std::string lineOf(const QRVHistorySave& save) {
    std::string line = save.program.empty() ? "?" : save.program + "/" + save.origin;
    line += ":";
    for (const QRVHistoryChange& change : save.changes)
        line += " " + change.keyPath + " " + textOf(change.before) + " > " + textOf(change.after);
    return line;
}

/// The oldest first.
inline std::vector<std::string> lines(const QRVHistoryQuery& query = {}) {
    std::vector<std::string> result;
    for (const QRVHistorySave& save : saves(query)) result.insert(result.begin(), lineOf(save));
    return result;
}

using Lines = std::vector<std::string>;

}  // namespace HistorySupport
