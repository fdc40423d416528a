// SPDX-License-Identifier: MIT
// Equality of values, however deep.

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "Platform/Values/ContainerObjects.h"
#include "Platform/Values/DictionaryPairs.h"

using namespace QRVPlatform;

using ValueObjects::ArrayObject;
using ValueObjects::CurrentContents;

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

bool scalarsEqual(const PropertyListValue& left, const PropertyListValue& right) noexcept {
    using Kind = PropertyListValue::Kind;
    switch (left.kind()) {
        case Kind::Boolean:
            return left.boolValue() == right.boolValue();
        case Kind::Integer:
        case Kind::Real:
            return numbersEqual(left, right);
        case Kind::Date:
            return realsEqual(left.date().timeIntervalSinceReferenceDate(),
                              right.date().timeIntervalSinceReferenceDate());
        case Kind::String:
            return left.stringView() == right.stringView();
        case Kind::Data:
            return left.data() == right.data();
        case Kind::Color:
            return left.color() == right.color();
        case Kind::Null:
        case Kind::NullMarker:
        case Kind::Array:
        case Kind::Dictionary:
            break;  // nothing to compare, or no scalar
    }
    return true;
}

constexpr int maximumRecursion = 32;

// Compares by recursion, so that ordinary values cost no memory. Pairs of containers that are
// nested deeper go to a list, so that a deep tree does not exhaust the stack. The order of the
// pairs does not matter: two trees are equal when all pairs are.
class EqualityCheck {
  public:
    bool areEqual(const PropertyListValue& left, const PropertyListValue& right) {
        if (!compare(left, right)) return false;
        while (!remaining_.empty()) {
            const auto pair = std::move(remaining_.back());
            remaining_.pop_back();
            if (!compareContents(pair.first, pair.second)) return false;
        }
        return true;
    }

  private:
    // False when the values differ for certain.
    bool compare(const PropertyListValue& left, const PropertyListValue& right) {
        if (!left.isSameKindAs(right)) return false;
        if (left.isIdenticalTo(right)) return true;
        if (left.kind() < PropertyListValue::Kind::Array) return scalarsEqual(left, right);
        if (level_ < maximumRecursion) return compareContents(left, right);
        remaining_.emplace_back(left, right);
        return true;
    }

    bool compareContents(const PropertyListValue& left, const PropertyListValue& right) {
        ++level_;
        const bool isEqual =
            left.isArray() ? compareElements(left, right) : compareEntries(left, right);
        --level_;
        return isEqual;
    }

    bool compareElements(const PropertyListValue& left, const PropertyListValue& right) {
        const CurrentContents<ArrayObject> one(left);
        const CurrentContents<ArrayObject> other(right);
        return std::ranges::equal(one->elements(), other->elements(),
                                  [this](const auto& element, const auto& counterpart) {
                                      return compare(element, counterpart);
                                  });
    }

    bool compareEntries(const PropertyListValue& left, const PropertyListValue& right) {
        for (DictionaryPairs pairs(left, right); pairs.next();) {
            if (pairs.valueBefore() == nullptr || pairs.valueAfter() == nullptr) return false;
            if (!compare(*pairs.valueBefore(), *pairs.valueAfter())) return false;
        }
        return true;
    }

    int level_ = 0;
    std::vector<std::pair<PropertyListValue, PropertyListValue>> remaining_;
};

}  // namespace

bool PropertyListValue::isIdenticalTo(const PropertyListValue& other) const noexcept {
    if (kind_ != other.kind_) return false;
    if (kind_ >= Kind::String) return payload_.object == other.payload_.object;
    if (kind_ == Kind::Boolean) return payload_.boolean == other.payload_.boolean;
    return payload_.integer == other.payload_.integer && isBeyondSigned() == other.isBeyondSigned();
}

bool operator==(const PropertyListValue& left, const PropertyListValue& right) {
    return EqualityCheck().areEqual(left, right);
}

bool operator==(const NSArray& left, const NSArray& right) {
    return PropertyListValue(left) == PropertyListValue(right);
}

bool operator==(const NSDictionary& left, const NSDictionary& right) {
    return PropertyListValue(left) == PropertyListValue(right);
}
