// SPDX-License-Identifier: MIT
#include <cmath>
#include <vector>

#include "Platform/Values/Objects.h"

namespace {

bool integerEqualsReal(const PropertyListValue& integer, double real) noexcept {
    constexpr double twoTo63 = 9223372036854775808.0;
    if (std::trunc(real) != real) return false;
    if (integer.isBeyondSigned()) {
        return real >= twoTo63 && real < 2 * twoTo63 &&
               static_cast<std::uint64_t>(real) == integer.unsignedValue();
    }
    return real >= -twoTo63 && real < twoTo63 &&
           static_cast<std::int64_t>(real) == integer.integerValue();
}

bool realsEqual(double left, double right) noexcept {
    return left == right || (std::isnan(left) && std::isnan(right));
}

bool integersEqual(const PropertyListValue& left, const PropertyListValue& right) noexcept {
    if (left.isBeyondSigned() || right.isBeyondSigned()) {
        return left.isBeyondSigned() == right.isBeyondSigned() &&
               left.unsignedValue() == right.unsignedValue();
    }
    return left.integerValue() == right.integerValue();
}

bool numbersEqual(const PropertyListValue& left, const PropertyListValue& right) noexcept {
    if (left.isInteger() && right.isInteger()) return integersEqual(left, right);
    if (left.isInteger()) return integerEqualsReal(left, right.doubleValue());
    if (right.isInteger()) return integerEqualsReal(right, left.doubleValue());
    return realsEqual(left.doubleValue(), right.doubleValue());
}

// Pairs of containers that remain to be compared. Two trees are equal when all pairs are, in
// whatever order they are taken, so a list does where recursion would let a deep tree exhaust the
// stack.
struct Comparison {
    std::vector<std::pair<PropertyListValue, PropertyListValue>> pairs;

    // False when the values differ for certain; containers are put off.
    bool compare(const PropertyListValue& left, const PropertyListValue& right) {
        if (!left.isSameKindAs(right)) return false;
        if (left.isIdenticalTo(right)) return true;
        if (left.kind() < PropertyListValue::Kind::Array) return scalarsEqual(left, right);
        pairs.emplace_back(left, right);
        return true;
    }

    bool compareElements(const NSArray& left, const NSArray& right) {
        if (left.count() != right.count()) return false;
        std::size_t index = 0;
        for (const PropertyListValue& element : left) {
            if (!compare(element, right.objectAtIndex(index++))) return false;
        }
        return true;
    }

    bool compareEntries(const NSDictionary& left, const NSDictionary& right) {
        if (left.count() != right.count()) return false;
        for (const auto& [key, value] : left) {
            if (!compare(value, right.objectForKey(key))) return false;
        }
        return true;
    }

    bool run() {
        while (!pairs.empty()) {
            const std::pair<PropertyListValue, PropertyListValue> pair = pairs.back();
            pairs.pop_back();
            // Copies, so that a change on another thread meets the comparison before or after.
            const bool equal =
                pair.first.isArray()
                    ? compareElements(pair.first.array().copy(), pair.second.array().copy())
                    : compareEntries(pair.first.dictionary().copy(),
                                     pair.second.dictionary().copy());
            if (!equal) return false;
        }
        return true;
    }
};

}  // namespace

bool scalarsEqual(const PropertyListValue& left, const PropertyListValue& right) noexcept {
    using Kind = PropertyListValue::Kind;
    switch (left.kind()) {
        case Kind::Boolean:
            return left.payload_.boolean == right.payload_.boolean;
        case Kind::Integer:
        case Kind::Real:
            return numbersEqual(left, right);
        case Kind::Date:
            return realsEqual(left.payload_.real, right.payload_.real);
        case Kind::String:
            return left.stringView() == right.stringView();
        case Kind::Data:
            return left.data() == right.data();
        case Kind::Color:
            return left.color() == right.color();
        default:
            return true;  // null, the null marker
    }
}

bool PropertyListValue::isIdenticalTo(const PropertyListValue& other) const noexcept {
    if (kind_ != other.kind_) return false;
    if (kind_ >= Kind::String) return payload_.object == other.payload_.object;
    if (kind_ == Kind::Boolean) return payload_.boolean == other.payload_.boolean;
    return payload_.integer == other.payload_.integer && isBeyondSigned() == other.isBeyondSigned();
}

bool operator==(const PropertyListValue& left, const PropertyListValue& right) {
    Comparison comparison;
    return comparison.compare(left, right) && comparison.run();
}

bool operator==(const NSArray& left, const NSArray& right) {
    return PropertyListValue(left) == PropertyListValue(right);
}

bool operator==(const NSDictionary& left, const NSDictionary& right) {
    return PropertyListValue(left) == PropertyListValue(right);
}

bool operator==(const NSData& left, const NSData& right) noexcept {
    return left.view() == right.view();
}
