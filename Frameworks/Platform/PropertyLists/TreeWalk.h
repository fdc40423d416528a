// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Platform/Values/PropertyListValue.h"

namespace QRVPlatform::PropertyLists {

/// Passes once over a tree in the order of a file: each container before its contents, keys sorted
/// by their bytes. The depth of the tree costs no stack.
///
/// A container may change meanwhile: the walk sees it as it was when it was entered.
class TreeWalk {
  public:
    enum class Step { Value, EndOfArray, EndOfDictionary, EndOfTree };

    /// `root` must outlive the walk.
    explicit TreeWalk(const PropertyListValue& root) : root_(root) {}

    Step next();

    /// @name After the step `Value`, until the next one
    /// @{
    [[nodiscard]] const PropertyListValue& value() const noexcept { return *value_; }
    [[nodiscard]] bool hasKey() const noexcept { return hasKey_; }
    [[nodiscard]] std::string_view key() const { return currentEntry(frames_.back()).key; }
    /// The value must be a container. The next steps lead through its contents to its end. False
    /// when it is empty; it has then not been entered.
    bool enter();
    /// As in PropertyListError; bytes of keys that are not UTF-8 become \xNN.
    [[nodiscard]] std::string keyPath() const;
    /// @}

    /// The number of containers that have been entered and not left.
    [[nodiscard]] std::size_t level() const noexcept { return frames_.size(); }

  private:
    /// Refers to the contents that the iterator of its frame keeps alive.
    struct Entry {
        std::string_view key;
        std::uint64_t beginning;  // the key's first bytes, which sort like the key
        const PropertyListValue* value;
    };

    struct Frame {
        std::variant<NSArray::Iterator, NSDictionary::Iterator> contents;
        std::size_t first;  // in `entries_`, for a dictionary
        std::size_t next;   // in `entries_`, or in the array
    };

    static bool isBefore(const Entry& left, const Entry& right);
    static std::uint64_t beginningOf(std::string_view key);
    [[nodiscard]] const Entry& currentEntry(const Frame& frame) const {
        return entries_[frame.next - 1];
    }
    Step nextOfArray(NSArray::Iterator& element);
    Step nextOfDictionary();
    bool enterArray(const NSArray& array);
    bool enterDictionary(const NSDictionary& dictionary);

    const PropertyListValue& root_;
    const PropertyListValue* value_ = nullptr;
    bool hasKey_ = false;
    // The containers that have been entered, and the entries of the dictionaries among them; the
    // innermost last.
    std::vector<Frame> frames_;
    std::vector<Entry> entries_;
};

}  // namespace QRVPlatform::PropertyLists
