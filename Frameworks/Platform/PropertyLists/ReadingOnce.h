// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string_view>

#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Platform/PropertyLists/PassedText.h"

namespace QRVPlatform::PropertyLists {

/// Like `NSPropertyListSerialization::propertyListWithData`. In a format that is read from
/// beginning to end, it also gives the bytes back while it reads, in steps of at least `step`: it
/// reads no byte again before the place that it calls `giveBack` with.
PropertyListReadResult propertyListReadOnce(std::string_view bytes,
                                            const PassedText::GiveBack& giveBack,
                                            std::size_t step = PassedText::usualStep);

}  // namespace QRVPlatform::PropertyLists
