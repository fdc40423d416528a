// SPDX-License-Identifier: MIT
#include "Platform/Values/NSData.h"

#include "Platform/Values/Objects.h"

using QRVPlatform::ValueObjects::DataObject;

NSData::NSData(std::string_view bytes) : object_(new DataObject(bytes)) {}

NSData::NSData(std::span<const std::byte> bytes)
    : NSData(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size())) {}

std::string_view NSData::view() const& noexcept {
    const auto* const object = static_cast<const DataObject*>(object_.get());
    return object == nullptr ? std::string_view() : std::string_view(object->bytes);
}

std::span<const std::byte> NSData::bytes() const& noexcept {
    return std::as_bytes(std::span(view().data(), view().size()));
}

std::size_t NSData::size() const noexcept {
    return view().size();
}

bool operator==(const NSData& left, const NSData& right) noexcept {
    return left.view() == right.view();
}
