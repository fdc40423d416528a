// SPDX-License-Identifier: MIT
#pragma once

// The writes of this process that are not in the file yet, and what they make of a tree. Used when
// the store merges saves.

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Platform/Values/PropertyListValue.h"
#include "QRVSettings/QRVSettings+ChangeRecord.h"

namespace QRVInside {

/// The value with every container below it immutable. What is immutable already stays the same
/// object. Below `NSPropertyListSerialization::maximumLevels`, which no file can hold, containers
/// stay as they are.
PropertyListValue frozen(const PropertyListValue& value);

/// The value at a key path; null also where a value on the way is no dictionary. The log stays as
/// it is.
PropertyListValue valueAt(const NSDictionary& tree, std::string_view keyPath);

/// Tells that a write is not needed any more, because another process has done the same.
struct Settled {
    std::string keyPath;
    std::optional<PropertyListValue> value;  ///< empty: any value at the key path will do

    [[nodiscard]] bool isIn(const NSDictionary& tree) const;
};

/// One value, or a removal, at a key path.
struct Write {
    std::string keyPath;
    PropertyListValue value;  ///< frozen; null removes
    /// Null for a write that is always needed.
    std::shared_ptr<const Settled> unless = nullptr;
    /// A removal of an empty dictionary, which removes nothing else.
    bool isOfEmpty = false;
    /// A removal that stands also for an earlier write of a value: to it, too, a value on its way
    /// gives way.
    bool followsAValue = false;
};

/// A write as its caller leaves it for the save, which does the rest.
struct NewWrite {
    ChangeRecord record;
    bool hasRecord = true;    ///< else the record is elsewhere, and only its key path counts
    bool isOfEmpty = false;   ///< `Write::isOfEmpty`
    PropertyListValue value;  ///< frozen; null removes
    std::shared_ptr<const Settled> unless = nullptr;  ///< `Write::unless`
};

/// A write that no property list can hold, and why.
struct RefusedWrite {
    std::string keyPath;
    std::string reason;
};

/// Writes in their order, with the change records that belong to them. Of two writes at one key
/// path the later is kept. None leads through a value of an earlier one: the stored tree of the
/// host has that value, and refuses the write.
class Writes {
  public:
    void add(Write write);
    /// With its record. Mostly only appended; the next use of the writes adds it.
    void join(NewWrite write);
    /// Adds what has only joined.
    void settle();
    /// Whatever the tree was, it becomes this one (frozen); the earlier writes are forgotten.
    void replaceTree(NSDictionary tree);
    /// Null adds none.
    void addRecords(const NSArray& log);
    void append(const Writes& later);

    /// What the writes are, for observers of the file; several are joined by ", ".
    void addOrigins(const std::string& origins);
    [[nodiscard]] const std::string& origins() const { return origins_; }

    /// Neither writes nor another tree.
    [[nodiscard]] bool isEmpty() const { return count_ == 0 && joined_.empty() && tree_.isNull(); }
    [[nodiscard]] bool replaceTheTree() const { return !tree_.isNull(); }
    /// Of the writes; empty for another tree.
    [[nodiscard]] std::vector<std::string> keyPaths() const;
    /// Null when no log was added.
    [[nodiscard]] NSArray records() const;

    /// What the writes make of `tree`, which is frozen or null, and stays as it is. The result is
    /// frozen; null only when there was no tree and nothing was written. A value on the way of a
    /// write that is no dictionary gives way, which `log` says in the system log.
    enum class Logging { Off, On };
    [[nodiscard]] NSDictionary appliedTo(const NSDictionary& tree, Logging logging) const;

    /// Takes out the writes, and of another tree the values, that no property list can hold.
    std::vector<RefusedWrite> removeRefused();

    void dropRecords();
    /// Leaves the last record of each key path.
    void dropEarlierRecords();

  private:
    [[nodiscard]] bool isSettled() const { return joined_.empty(); }
    [[nodiscard]] Writes settled() const;
    void addSettled(Write write);
    void addSettledRecords(const NSArray& log);
    void removeGaps();
    void removeRefusedOfTree(std::vector<RefusedWrite>& refused);

    NSDictionary tree_ = nullptr;
    std::vector<std::optional<Write>> writes_;  ///< empty where a later one has replaced it
    std::unordered_map<std::string, std::size_t> indexes_;  ///< into `writes_`, by key path
    std::size_t count_ = 0;                                 ///< of the writes that are there
    NSMutableArray records_ = nullptr;
    std::vector<NewWrite> joined_;  ///< later than all that is above
    std::string origins_;
};

}  // namespace QRVInside
