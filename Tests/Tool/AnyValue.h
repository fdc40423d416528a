// SPDX-License-Identifier: MIT
#pragma once

// Values of all kinds that a property list holds, for tests of properties.

#include <rapidcheck.h>

#include <cstdint>
#include <limits>
#include <string>
#include <utility>

#include "Platform/Values/PropertyListValue.h"

namespace ToolSupport {

inline rc::Gen<std::string> anyText() {
    return rc::gen::element<std::string>("", "a", "ab", "a.b", "$date", "$data", "$real",
                                         "$dictionary", "$other", "ä€😀", "\"\\/\b\n\t",
                                         "\x7f\xc2\x80\xc2\x9f\xc2\xa0", std::string("\0\x1f", 2));
}

inline rc::Gen<double> anyReal() {
    using Limits = std::numeric_limits<double>;
    return rc::gen::oneOf(
        rc::gen::arbitrary<double>(),
        rc::gen::element(0.0, -0.0, 1.0, 0.1, 1e15, 1e300, -5e-324, Limits::max(),
                         Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN()));
}

inline rc::Gen<PropertyListValue> anyDate() {
    constexpr std::int64_t farthest = 60'000'000'000;
    return rc::gen::apply(
        [](std::int64_t seconds, int thousandths) {
            return PropertyListValue(
                NSDate(static_cast<double>(seconds) + static_cast<double>(thousandths) / 1000));
        },
        rc::gen::inRange<std::int64_t>(-farthest, farthest), rc::gen::inRange(0, 1000));
}

template <typename Type>
rc::Gen<PropertyListValue> valuesOf(rc::Gen<Type> contents) {
    return rc::gen::map(std::move(contents),
                        [](const Type& content) { return PropertyListValue(content); });
}

inline rc::Gen<PropertyListValue> anyScalar() {
    return rc::gen::oneOf(
        valuesOf(rc::gen::arbitrary<bool>()), valuesOf(rc::gen::arbitrary<std::int64_t>()),
        valuesOf(rc::gen::element<std::uint64_t>(0, std::uint64_t{1} << 63U, ~std::uint64_t{0})),
        valuesOf(anyReal()), valuesOf(anyText()), anyDate(),
        rc::gen::map(rc::gen::arbitrary<std::string>(),
                     [](const std::string& bytes) { return PropertyListValue(NSData(bytes)); }));
}

rc::Gen<PropertyListValue> anyTree(int levels);

inline PropertyListValue someContainer(int levels) {
    const auto count = *rc::gen::inRange(0, 4);
    if (*rc::gen::arbitrary<bool>()) {
        const NSMutableArray array;
        for (int index = 0; index < count; ++index) array.addObject(*anyTree(levels - 1));
        return array;
    }
    const NSMutableDictionary dictionary;
    for (int index = 0; index < count; ++index)
        dictionary.setObjectForKey(*anyTree(levels - 1), *anyText());
    return dictionary;
}

inline rc::Gen<PropertyListValue> anyTree(int levels) {
    if (levels == 0) return anyScalar();
    return rc::gen::oneOf(anyScalar(), rc::gen::exec([levels] { return someContainer(levels); }));
}

}  // namespace ToolSupport
