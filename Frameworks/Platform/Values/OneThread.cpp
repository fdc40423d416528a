// SPDX-License-Identifier: MIT
#include "Platform/Values/OneThread.h"

#include "Platform/Values/Objects.h"

namespace QRVPlatform::OneThread {
namespace {

using ValueObjects::Access;
using ValueObjects::Kind;

// Containers are counted atomically all the same: all threads share the empty ones.
bool isCountedHere(Kind kind) noexcept {
    return kind >= Kind::String && kind < Kind::Array;
}

}  // namespace

PropertyListValue copy(const PropertyListValue& value) noexcept {
    if (value.kind() >= Kind::Array) return value;
    if (isCountedHere(value.kind())) {
        std::atomic<std::uint32_t>& references = Access::objectOf(value)->references;
        references.store(references.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    }
    return Access::uncountedCopy(value);
}

void clear(PropertyListValue& value) noexcept {
    if (isCountedHere(value.kind())) {
        std::atomic<std::uint32_t>& references = Access::objectOf(value)->references;
        const std::uint32_t others = references.load(std::memory_order_relaxed) - 1;
        if (others != 0) {
            references.store(others, std::memory_order_relaxed);
            static_cast<void>(Access::leak(value));
        }
    }
    value = nullptr;
}

}  // namespace QRVPlatform::OneThread
