// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "Platform/Values/OneThread.h"
#include "Platform/Values/PropertyListValue.h"

namespace QRVPlatform::PropertyLists {

/// Makes string values; equal ones are mostly the same object, because a file repeats its keys and
/// short words, and mostly soon. Remembers the last string of each slot.
class SharedStrings {
  public:
    PropertyListValue stringOf(std::string_view text) {
        PropertyListValue& known = strings_[slotOf(text)];
        if (!known.isString() || known.stringView() != text) {
            OneThread::clear(known);
            known = text;
        }
        return OneThread::copy(known);
    }

  private:
    static constexpr std::size_t slots = 256;

    static std::size_t slotOf(std::string_view text) {
        if (text.empty()) return 0;
        const auto byteAt = [text](std::size_t index) -> std::size_t {
            return static_cast<unsigned char>(text[index]);
        };
        return (text.size() * 7 + byteAt(0) + byteAt(text.size() / 2) * 31 +
                byteAt(text.size() - 1) * 5) %
               slots;
    }

    std::array<PropertyListValue, slots> strings_;
};

}  // namespace QRVPlatform::PropertyLists
