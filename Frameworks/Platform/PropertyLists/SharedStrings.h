// SPDX-License-Identifier: MIT
#pragma once

// Inner header of this folder.

#include <array>
#include <cstddef>
#include <string_view>

#include "Platform/Values/Building.h"
#include "Platform/Values/PropertyListValue.h"

namespace QRVPlatform::PropertyLists {

/// Makes string values, equal ones mostly the same object: a file has few keys and short words
/// that come again and again, and they come near each other. The last one of each slot is known.
class SharedStrings {
  public:
    PropertyListValue stringOf(std::string_view text) {
        using ValueObjects::Building;
        PropertyListValue& known = strings_[slotOf(text)];
        if (!known.isString() || known.stringView() != text) {
            Building::giveUp(known);
            known = text;
        }
        return Building::sameObject(known);
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
