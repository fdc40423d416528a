// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string_view>

#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Platform/PropertyLists/PassedText.h"

namespace QRVPlatform::PropertyLists {

/// The same as `NSPropertyListSerialization::propertyListWithData`, but gives the bytes back in
/// steps of at least `step` while it reads them, where their format is read from the beginning to
/// the end. No byte before the place that `giveBack` is called with is read again.
PropertyListReadResult propertyListReadOnce(std::string_view bytes,
                                            const PassedText::GiveBack& giveBack,
                                            std::size_t step = PassedText::usualStep);

}  // namespace QRVPlatform::PropertyLists
