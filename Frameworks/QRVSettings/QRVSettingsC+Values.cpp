// SPDX-License-Identifier: MIT
// Values for C: handles with a reference count of their own around the values of C++.

#include <string_view>
#include <vector>

#include "Platform/Values/ImmutableContainers.h"
#include "QRVSettings/QRVSettingsC+Boundary.h"

using QRVInside::CInterface::emptied;
using QRVInside::CInterface::give;
using QRVInside::CInterface::giveValue;
using QRVInside::CInterface::newHandle;
using QRVInside::CInterface::notNull;
using QRVInside::CInterface::perform;
using QRVInside::CInterface::Refusal;
using QRVInside::CInterface::requireUTF8;
using QRVInside::CInterface::textOf;
using QRVInside::CInterface::valueOf;
using Kind = PropertyListValue::Kind;

namespace {

qrv_kind kindOf(const PropertyListValue& value) {
    switch (value.kind()) {
        case Kind::Null:
            return QRV_KIND_NULL;
        case Kind::Boolean:
            return QRV_KIND_BOOLEAN;
        case Kind::Integer:
            return QRV_KIND_INTEGER;
        case Kind::Real:
            return QRV_KIND_REAL;
        case Kind::Date:
            return QRV_KIND_DATE;
        case Kind::NullMarker:
            return QRV_KIND_NULL_MARKER;
        case Kind::String:
            return QRV_KIND_STRING;
        case Kind::Data:
            return QRV_KIND_DATA;
        case Kind::Color:
            return QRV_KIND_COLOR;
        case Kind::Array:
            return QRV_KIND_ARRAY;
        case Kind::Dictionary:
            return QRV_KIND_DICTIONARY;
    }
    return QRV_KIND_NULL;
}

const char* bytesOf(const void* bytes, std::size_t length) {
    return static_cast<const char*>(length == 0 ? "" : notNull(bytes, "the text or data"));
}

PropertyListValue stringOf(const char* text, std::size_t length) {
    const std::string_view characters(bytesOf(text, length), length);
    requireUTF8(characters);
    return characters;
}

PropertyListValue elementOf(const qrv_value* const* elements, std::size_t index) {
    PropertyListValue element = valueOf(notNull(elements, "the list of values")[index]);
    if (element.isNull()) throw NSInvalidArgumentException("no container can hold null");
    return element;
}

PropertyListValue arrayOf(const qrv_value* const* elements, std::size_t count) {
    std::vector<PropertyListValue> values;
    for (std::size_t index = 0; index < count; ++index)
        values.push_back(elementOf(elements, index));
    return QRVPlatform::immutableArray(values);
}

PropertyListValue keyOf(const char* const* keys, std::size_t index) {
    return textOf(notNull(notNull(keys, "the list of keys")[index], "a key"));
}

PropertyListValue dictionaryOf(const char* const* keys, const qrv_value* const* elements,
                               std::size_t count) {
    std::vector<QRVPlatform::KeyedValue> entries;
    for (std::size_t index = 0; index < count; ++index)
        entries.push_back({keyOf(keys, index), elementOf(elements, index)});
    return QRVPlatform::immutableDictionary(entries);
}

std::int64_t signedOf(const PropertyListValue& integer) {
    if (!integer.isBeyondSigned()) return integer.integerValue();
    throw Refusal(QRV_ERROR_OUT_OF_RANGE, "the integer is above 2^63-1");
}

std::uint64_t unsignedOf(const PropertyListValue& integer) {
    if (integer.isBeyondSigned() || integer.integerValue() >= 0) return integer.unsignedValue();
    throw Refusal(QRV_ERROR_OUT_OF_RANGE, "the integer is below 0");
}

qrv_color colorOf(const NSColor& color) {
    return {color.redComponent, color.greenComponent, color.blueComponent, color.alphaComponent};
}

std::size_t countOf(const PropertyListValue& container) {
    if (container.isArray()) return container.array().count();
    if (container.isDictionary()) return container.dictionary().count();
    throw Refusal(QRV_ERROR_WRONG_KIND,
                  "the value is no container: " + QRVPlatform::description(container));
}

PropertyListValue elementAt(const NSArray& array, std::size_t index) {
    PropertyListValue element = array.objectAtIndex(index);
    if (!element.isNull()) return element;
    throw Refusal(QRV_ERROR_OUT_OF_RANGE,
                  "the array has no element of index " + std::to_string(index));
}

}  // namespace

qrv_value::qrv_value(PropertyListValue newValue)
    : value(std::move(newValue)),
      text(value.isString() ? value.stringView() : std::string_view()) {}

qrv_value* qrv_value_retain(qrv_value* value) {
    if (value != nullptr) value->references.fetch_add(1, std::memory_order_relaxed);
    return value;
}

void qrv_value_release(qrv_value* value) {
    if (value != nullptr && value->references.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete value;
}

qrv_result qrv_value_create_null(qrv_value** value) {
    return giveValue(value, [] { return PropertyListValue(); });
}

qrv_result qrv_value_create_null_marker(qrv_value** value) {
    return giveValue(value, [] { return NSNull(); });
}

qrv_result qrv_value_create_boolean(bool boolean, qrv_value** value) {
    return giveValue(value, [&] { return boolean; });
}

qrv_result qrv_value_create_integer(int64_t integer, qrv_value** value) {
    return giveValue(value, [&] { return integer; });
}

qrv_result qrv_value_create_unsigned(uint64_t integer, qrv_value** value) {
    return giveValue(value, [&] { return integer; });
}

qrv_result qrv_value_create_real(double real, qrv_value** value) {
    return giveValue(value, [&] { return real; });
}

qrv_result qrv_value_create_date(double seconds, qrv_value** value) {
    return giveValue(value, [&] { return NSDate::dateWithTimeIntervalSince1970(seconds); });
}

qrv_result qrv_value_create_string(const char* text, size_t length, qrv_value** value) {
    return giveValue(value, [&] { return stringOf(text, length); });
}

qrv_result qrv_value_create_data(const void* bytes, size_t length, qrv_value** value) {
    return giveValue(value,
                     [&] { return NSData(std::string_view(bytesOf(bytes, length), length)); });
}

qrv_result qrv_value_create_color(qrv_color color, qrv_value** value) {
    return giveValue(value, [&] {
        return NSColor::colorWithSRGBRed(color.red, color.green, color.blue, color.alpha);
    });
}

qrv_result qrv_value_create_array(const qrv_value* const* elements, size_t count,
                                  qrv_value** value) {
    return giveValue(value, [&] { return arrayOf(elements, count); });
}

qrv_result qrv_value_create_dictionary(const char* const* keys, const qrv_value* const* elements,
                                       size_t count, qrv_value** value) {
    return giveValue(value, [&] { return dictionaryOf(keys, elements, count); });
}

qrv_kind qrv_value_kind(const qrv_value* value) {
    return value == nullptr ? qrv_kind(QRV_KIND_NULL) : kindOf(value->value);
}

qrv_result qrv_value_get_boolean(const qrv_value* value, bool* boolean) {
    return give(boolean, [&] { return valueOf(value, Kind::Boolean).boolValue(); });
}

qrv_result qrv_value_get_integer(const qrv_value* value, int64_t* integer) {
    return give(integer, [&] { return signedOf(valueOf(value, Kind::Integer)); });
}

qrv_result qrv_value_get_unsigned(const qrv_value* value, uint64_t* integer) {
    return give(integer, [&] { return unsignedOf(valueOf(value, Kind::Integer)); });
}

qrv_result qrv_value_get_real(const qrv_value* value, double* real) {
    return give(real, [&] { return valueOf(value, Kind::Real).doubleValue(); });
}

qrv_result qrv_value_get_date(const qrv_value* value, double* seconds) {
    return give(seconds, [&] { return valueOf(value, Kind::Date).date().timeIntervalSince1970(); });
}

qrv_result qrv_value_get_string(const qrv_value* value, const char** text, size_t* length) {
    return perform([&] {
        const char*& characters = emptied(text);
        std::size_t& size = emptied(length);
        valueOf(value, Kind::String);
        characters = value->text.c_str();
        size = value->text.size();
    });
}

qrv_result qrv_value_get_data(const qrv_value* value, const void** bytes, size_t* length) {
    return perform([&] {
        const void*& first = emptied(bytes);
        std::size_t& size = emptied(length);
        const NSData data = valueOf(value, Kind::Data).data();
        first = data.bytes().data();
        size = data.size();
    });
}

qrv_result qrv_value_get_color(const qrv_value* value, qrv_color* color) {
    return give(color, [&] { return colorOf(valueOf(value, Kind::Color).color()); });
}

qrv_result qrv_value_get_count(const qrv_value* value, size_t* count) {
    return give(count, [&] { return countOf(valueOf(value)); });
}

qrv_result qrv_value_get_element(const qrv_value* array, size_t index, qrv_value** element) {
    return giveValue(element,
                     [&] { return elementAt(valueOf(array, Kind::Array).array(), index); });
}

qrv_result qrv_value_get_entry(const qrv_value* dictionary, const char* key, qrv_value** element) {
    return giveValue(element, [&] {
        const char* const text = textOf(notNull(key, "the key"));
        return valueOf(dictionary, Kind::Dictionary).dictionary().objectForKey(text);
    });
}

qrv_result qrv_value_get_entries(const qrv_value* dictionary, qrv_value** keys,
                                 qrv_value** elements) {
    return perform([&] {
        qrv_value*& keysPlace = emptied(keys);
        qrv_value*& elementsPlace = emptied(elements);
        const NSMutableArray foundKeys;
        const NSMutableArray foundElements;
        for (const auto& [key, element] : valueOf(dictionary, Kind::Dictionary).dictionary()) {
            foundKeys.addObject(key);
            foundElements.addObject(element);
        }
        auto handleOfKeys = std::make_unique<qrv_value>(foundKeys.copy());
        elementsPlace = newHandle(foundElements.copy());
        keysPlace = handleOfKeys.release();
    });
}

qrv_result qrv_value_as_boolean(const qrv_value* value, bool* boolean) {
    return give(boolean, [&] { return valueOf(value).boolValue(); });
}

qrv_result qrv_value_as_integer(const qrv_value* value, int64_t* integer) {
    return give(integer, [&] { return valueOf(value).integerValue(); });
}

qrv_result qrv_value_as_real(const qrv_value* value, double* real) {
    return give(real, [&] { return valueOf(value).doubleValue(); });
}

qrv_result qrv_value_as_string(const qrv_value* value, qrv_value** text) {
    return giveValue(text, [&] { return valueOf(value).stringValue(); });
}

qrv_result qrv_value_equal(const qrv_value* left, const qrv_value* right, bool* equal) {
    return give(equal, [&] { return valueOf(left) == valueOf(right); });
}

qrv_result qrv_value_description(const qrv_value* value, qrv_value** text) {
    return giveValue(text, [&] { return QRVPlatform::description(valueOf(value)); });
}
