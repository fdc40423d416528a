// SPDX-License-Identifier: MIT
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "Platform/Values/Objects.h"

namespace QRVPlatform::PropertyLists {

/// What is known of an object of a file in the binary format, in eight bytes, because there are
/// many.
class KnownObject {
  public:
    enum class State : std::uint8_t {
        Unread,
        UnderWay,   // a container
        Container,  // payload: its place among those that have been read
        Shared,     // an object: a string or data
        Boolean,
        Integer,
        Again,  // another number or a date, which is read at each place
    };

    KnownObject() = default;
    explicit KnownObject(State state, std::uint64_t payload = 0) noexcept
        : word_(payload << stateBits | static_cast<std::uint64_t>(state)) {}
    /// Takes over the object of a scalar.
    explicit KnownObject(PropertyListValue scalar) noexcept {
        if (scalar.kind() >= PropertyListValue::Kind::String) {
            const auto address = std::bit_cast<std::uintptr_t>(ValueObjects::Access::leak(scalar));
            *this = KnownObject(State::Shared, address >> stateBits);
        } else if (scalar.isBoolean()) {
            *this = KnownObject(State::Boolean, scalar.boolValue() ? 1 : 0);
        } else if (scalar.isInteger() && scalar.unsignedValue() >> (64 - stateBits) == 0 &&
                   scalar.integerValue() >= 0) {
            *this = KnownObject(State::Integer, scalar.unsignedValue());
        } else {
            *this = KnownObject(State::Again);
        }
    }
    [[nodiscard]] State state() const noexcept {
        return static_cast<State>(word_ & ((1U << stateBits) - 1));
    }
    [[nodiscard]] bool isScalar() const noexcept { return state() > State::Container; }
    [[nodiscard]] std::uint64_t payload() const noexcept { return word_ >> stateBits; }
    /// Of a shared one.
    [[nodiscard]] ValueObjects::Object* object() const noexcept {
        return std::bit_cast<ValueObjects::Object*>(
            static_cast<std::uintptr_t>(word_ >> stateBits << stateBits));
    }
    [[nodiscard]] bool isString() const noexcept {
        // The analyzer loses sight of an object whose address is part of a number.
        // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult)
        return state() == State::Shared && object()->kind == PropertyListValue::Kind::String;
    }
    /// Of a scalar: the bytes of its text or data.
    [[nodiscard]] std::size_t contents() const noexcept {
        if (state() != State::Shared) return 0;
        if (isString()) return static_cast<const ValueObjects::StringObject*>(object())->length;
        return static_cast<const ValueObjects::DataObject*>(object())->bytes.size();
    }

  private:
    static constexpr unsigned stateBits = 3;  // objects lie at multiples of eight
    std::uint64_t word_ = 0;
};

}  // namespace QRVPlatform::PropertyLists
