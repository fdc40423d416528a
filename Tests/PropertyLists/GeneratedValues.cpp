// SPDX-License-Identifier: MIT
#include "PropertyLists/GeneratedValues.h"

#include <bit>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "Platform/PropertyLists/Unicode.h"

using namespace QRVPlatform;

namespace {

rc::Gen<std::string> text() {
    const auto character = rc::gen::oneOf(
        rc::gen::inRange<std::uint32_t>(0, 0x20), rc::gen::inRange<std::uint32_t>(0x20, 0x80),
        rc::gen::element<std::uint32_t>('&', '<', '>', ' ', '\r', '\n', ';', '#', ']'),
        rc::gen::inRange<std::uint32_t>(0x80, 0xD800),
        rc::gen::inRange<std::uint32_t>(0xE000, 0x10000),
        rc::gen::inRange<std::uint32_t>(0xFFF0, 0x10010),
        rc::gen::inRange<std::uint32_t>(0x10000, 0x110000));
    return rc::gen::map(rc::gen::container<std::vector<std::uint32_t>>(character),
                        [](const std::vector<std::uint32_t>& characters) {
                            std::string result;
                            for (const auto one : characters)
                                PropertyLists::appendUTF8(result, one);
                            return result;
                        });
}

// Doubles of any bits: subnormal, infinite and NaN ones too.
rc::Gen<double> anyReal() {
    return rc::gen::oneOf(
        rc::gen::arbitrary<double>(),
        rc::gen::map(rc::gen::arbitrary<std::uint64_t>(),
                     [](std::uint64_t bits) { return std::bit_cast<double>(bits); }),
        rc::gen::map(rc::gen::arbitrary<int>(), [](int number) { return double{1.0} * number; }),
        rc::gen::element(0.0, -0.0, 5e-324, 1e308, 1e22, 0.1));
}

template <typename Source>
rc::Gen<PropertyListValue> valueOf(rc::Gen<Source> source) {
    return rc::gen::map(std::move(source),
                        [](const Source& value) { return PropertyListValue(value); });
}

rc::Gen<PropertyListValue> scalar() {
    constexpr std::int64_t furthest = std::int64_t{1} << 62U;
    const auto seconds = rc::gen::oneOf(rc::gen::inRange<std::int64_t>(-63145526400, 252423993600),
                                        rc::gen::inRange<std::int64_t>(-furthest, furthest));
    return rc::gen::oneOf(
        valueOf(rc::gen::arbitrary<bool>()), valueOf(rc::gen::arbitrary<std::int64_t>()),
        valueOf(rc::gen::arbitrary<std::uint64_t>()), valueOf(anyReal()), valueOf(text()),
        valueOf(rc::gen::map(rc::gen::arbitrary<std::string>(),
                             [](const std::string& bytes) { return NSData(bytes); })),
        valueOf(rc::gen::map(
            seconds, [](std::int64_t whole) { return NSDate(static_cast<double>(whole)); })));
}

rc::Gen<PropertyListValue> tree(int levels) {
    if (levels == 0) return scalar();
    const auto element = rc::gen::lazy([levels] { return tree(levels - 1); });
    const auto array =
        rc::gen::map(rc::gen::container<std::vector<PropertyListValue>>(element),
                     [](const std::vector<PropertyListValue>& elements) -> PropertyListValue {
                         return NSArray(elements);
                     });
    const auto dictionary =
        rc::gen::map(rc::gen::container<std::vector<std::pair<std::string, PropertyListValue>>>(
                         rc::gen::pair(text(), element)),
                     [](const std::vector<std::pair<std::string, PropertyListValue>>& entries) {
                         const NSMutableDictionary result;
                         for (const auto& [key, value] : entries)
                             result.setObjectForKey(value, key);
                         return PropertyListValue(result);
                     });
    return rc::gen::oneOf(scalar(), array, dictionary);
}

}  // namespace

rc::Gen<PropertyListValue> anyTree() {
    return rc::gen::scale(0.3, tree(3));
}
