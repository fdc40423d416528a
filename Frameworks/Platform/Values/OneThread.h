// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstdint>

#include "Platform/Values/Objects.h"

/// Copies and releases values whose objects no other thread has seen yet, as while a file is being
/// read. References are then counted without atomic instructions, which take longer than all the
/// rest of a copy.
namespace QRVPlatform::OneThread {

inline void retain(ValueObjects::Object& object) noexcept {
    std::atomic<std::uint32_t>& references = object.references;
    references.store(references.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
}

inline void release(ValueObjects::Object* object) noexcept {
    std::atomic<std::uint32_t>& references = object->references;
    const std::uint32_t others = references.load(std::memory_order_relaxed) - 1;
    if (others == 0) return ValueObjects::release(object);
    references.store(others, std::memory_order_relaxed);
}

/// Containers are counted atomically all the same: all threads share the empty ones.
inline bool isCountedHere(PropertyListValue::Kind kind) noexcept {
    using Kind = PropertyListValue::Kind;
    return kind >= Kind::String && kind < Kind::Array;
}

/// The same object, or the same scalar.
inline PropertyListValue copy(const PropertyListValue& value) noexcept {
    if (value.kind() >= PropertyListValue::Kind::Array) return value;
    if (isCountedHere(value.kind())) retain(*ValueObjects::Access::objectOf(value));
    return ValueObjects::Access::uncountedCopy(value);
}

/// The same for a container that is not empty and thus not shared.
inline PropertyListValue copyOfContainer(const PropertyListValue& value) noexcept {
    retain(*ValueObjects::Access::objectOf(value));
    return ValueObjects::Access::uncountedCopy(value);
}

/// Makes the value null.
inline void clear(PropertyListValue& value) noexcept {
    if (isCountedHere(value.kind())) return OneThread::release(ValueObjects::Access::leak(value));
    value = nullptr;
}

}  // namespace QRVPlatform::OneThread
