// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Platform/Values/OneThread.h"

namespace QRVPlatform::PropertyLists {

/// Makes string values; equal ones are mostly the same object, because a file repeats its keys and
/// short words, and mostly soon. Remembers the last string of each slot.
class SharedStrings {
  public:
    /// The strings lie in `pages`, which must outlive this.
    explicit SharedStrings(ValueObjects::ValuePages& pages) : pages_(pages) {}
    SharedStrings(const SharedStrings&) = delete;
    SharedStrings& operator=(const SharedStrings&) = delete;
    ~SharedStrings() {
        for (StringObject* const known : strings_) {
            if (known != nullptr) OneThread::release(known);
        }
    }

    PropertyListValue stringOf(std::string_view text) {
        const std::uint32_t hash = ValueObjects::hashOf(text);
        StringObject*& known = strings_[hash % slots];
        if (known == nullptr || known->hash != hash ||
            !ValueObjects::isSameText(known->view(), text)) {
            StringObject* const made = StringObject::make(text, hash, &pages_).leak();
            if (known != nullptr) OneThread::release(known);
            known = made;
        }
        OneThread::retain(*known);
        return ValueObjects::Access::valueOwning(known);
    }

  private:
    using StringObject = ValueObjects::StringObject;
    static constexpr std::size_t slots = 512;

    ValueObjects::ValuePages& pages_;
    std::array<StringObject*, slots> strings_{};
};

}  // namespace QRVPlatform::PropertyLists
