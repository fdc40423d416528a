// SPDX-License-Identifier: MIT
#include "Platform/Values/PropertyListValue.h"

#include "Platform/Values/Objects.h"

using namespace QRVPlatform;

using ValueObjects::Access;
using ValueObjects::ColorObject;
using ValueObjects::DataObject;
using ValueObjects::StringObject;

NSInvalidArgumentException::NSInvalidArgumentException(const std::string& reason)
    : std::invalid_argument(reason) {}
NSInvalidArgumentException::NSInvalidArgumentException(const NSInvalidArgumentException&) noexcept =
    default;
NSInvalidArgumentException& NSInvalidArgumentException::operator=(
    const NSInvalidArgumentException&) noexcept = default;
NSInvalidArgumentException::~NSInvalidArgumentException() = default;

PropertyListValue::PropertyListValue(const char* text) {
    if (text != nullptr) *this = PropertyListValue(std::string_view(text));
}

PropertyListValue::PropertyListValue(std::string_view text)
    : kind_(Kind::String), payload_{.object = StringObject::make(text).leak()} {}

PropertyListValue::PropertyListValue(const NSData& value) : kind_(Kind::Data) {
    ValueObjects::Object* const object = Access::objectOf(value);
    if (object != nullptr) ValueObjects::retain(object);
    payload_.object = object != nullptr ? object : new DataObject({});
}

PropertyListValue::PropertyListValue(const NSColor& value)
    : kind_(Kind::Color), payload_{.object = new ColorObject(value)} {}

PropertyListValue::PropertyListValue(const NSArray& value) noexcept {
    if (value.isNull()) return;
    kind_ = Kind::Array;
    payload_.object = Access::objectOf(value);
    ValueObjects::retain(payload_.object);
}

PropertyListValue::PropertyListValue(const NSDictionary& value) noexcept {
    if (value.isNull()) return;
    kind_ = Kind::Dictionary;
    payload_.object = Access::objectOf(value);
    ValueObjects::retain(payload_.object);
}

std::string_view PropertyListValue::stringView() const& noexcept {
    if (!isString()) return {};
    return static_cast<const StringObject*>(payload_.object)->view();
}

NSData PropertyListValue::data() const {
    return Access::handleOf<NSData>(isData() ? payload_.object : nullptr);
}

NSColor PropertyListValue::color() const noexcept {
    return isColor() ? static_cast<const ColorObject*>(payload_.object)->color
                     : NSColor{0, 0, 0, 0};
}

NSArray PropertyListValue::array() const noexcept {
    return Access::handleOf<NSArray>(isArray() ? payload_.object : nullptr);
}

NSDictionary PropertyListValue::dictionary() && noexcept {
    return Access::handleOwning<NSDictionary>(isDictionary() ? Access::leak(*this) : nullptr);
}

NSDictionary PropertyListValue::dictionary() const& noexcept {
    return Access::handleOf<NSDictionary>(isDictionary() ? payload_.object : nullptr);
}
