// SPDX-License-Identifier: MIT
#pragma once

// The shared objects behind the handles of PropertyListValue.h that hold no other objects. Inner
// header of this folder.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Platform/Values/Hashing.h"
#include "Platform/Values/PropertyListValue.h"

namespace QRVPlatform::ValueObjects {

using Kind = PropertyListValue::Kind;

struct Object {
    explicit Object(Kind objectKind, bool mutableObject = false) noexcept
        : kind(objectKind), isMutable(mutableObject) {}
    std::atomic<std::uint32_t> references{1};
    const Kind kind;
    const bool isMutable;
};

/// Gives one reference up; answers whether it was the last. Whoever holds the only one need not
/// write, which is much cheaper: nobody is left who could take another.
inline bool isLastReference(Object& object) noexcept {
    return object.references.load(std::memory_order_acquire) == 1 ||
           object.references.fetch_sub(1, std::memory_order_acq_rel) == 1;
}

/// Characters follow the object in the same allocation.
struct StringObject : Object {
    const std::uint32_t hash;
    const std::uint32_t length;

    /// Throws std::length_error beyond 4 GiB.
    static Reference<StringObject> make(std::string_view text);
    static Reference<StringObject> make(std::string_view text, std::uint32_t hashOfText);
    [[nodiscard]] std::string_view view() const noexcept {
        return {reinterpret_cast<const char*>(this + 1), length};
    }

  private:
    StringObject(std::uint32_t hashOfText, std::uint32_t lengthOfText) noexcept
        : Object(Kind::String), hash(hashOfText), length(lengthOfText) {}
};

struct DataObject : Object {
    explicit DataObject(std::string_view contents) : Object(Kind::Data), bytes(contents) {}
    const std::string bytes;
};

struct ColorObject : Object {
    explicit ColorObject(const NSColor& value) : Object(Kind::Color), color(value) {}
    const NSColor color;
};

}  // namespace QRVPlatform::ValueObjects
