// SPDX-License-Identifier: MIT
#pragma once

// The change records of this process's recent saves.

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <string_view>
#include <unordered_set>

#include "Platform/Values/PropertyListValue.h"

namespace QRVInside {

/// Equal records have equal hashes. A batch may write one key path many times, so that the key path
/// alone would not tell its records apart.
struct RecordHash {
    std::size_t operator()(const PropertyListValue& record) const {
        const NSDictionary entries = record.dictionary();
        const PropertyListValue key = entries.objectForKey("key");
        const std::size_t ofTime = std::hash<double>()(entries.objectForKey("time").doubleValue());
        return std::hash<std::string_view>()(key.stringView()) ^ (ofTime << 1U);
    }
};

/// The records that are equal to none of the log's. Records that share neither key path nor time
/// are not compared.
template <typename Equal = std::equal_to<PropertyListValue>>
NSArray recordsWithout(const NSArray& records, const NSArray& log, const Equal& isEqual = {}) {
    std::unordered_set<PropertyListValue, RecordHash, Equal> gone(log.count(), RecordHash(),
                                                                  isEqual);
    for (const PropertyListValue& record : log) gone.insert(record);
    NSMutableArray others;
    for (const PropertyListValue& record : records)
        if (!gone.contains(record)) others.addObject(record);
    return others;
}

/// Lets a reload tell this process's own changes of the file from those of others. Lives as long as
/// the process.
class LocalChanges {
  public:
    /// How long a record stays.
    static constexpr std::chrono::seconds lifetime{3};

    LocalChanges() = default;
    LocalChanges(const LocalChanges&) = delete;
    LocalChanges& operator=(const LocalChanges&) = delete;

    /// The records in the order added: always this array. Any thread.
    [[nodiscard]] const NSMutableArray& records() const { return records_; }

    /// Adds the records of a log, and expires them after `lifetime`. On the main queue.
    void add(const NSArray& log);
    /// Removes every record that is equal to one of the log's; readers see none or all of them
    /// removed. On the main queue.
    void expire(const NSArray& log) const;

    /// The key paths that no record names. Any thread.
    [[nodiscard]] NSArray withoutLocal(const NSArray& keyPaths) const;

  private:
    using Clock = std::chrono::steady_clock;
    struct ExpiringLog {
        Clock::time_point time;
        NSArray log;
    };

    void expireDueLogs();

    const NSMutableArray records_;
    std::deque<ExpiringLog> expiring_;  // in the order of their times; used on the main queue
};

}  // namespace QRVInside
