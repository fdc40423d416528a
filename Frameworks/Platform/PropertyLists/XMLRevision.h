// SPDX-License-Identifier: MIT
#pragma once

// Reading and writing a file by what differs from a text that is known already. Both give what
// reading or writing the whole gives, or nothing; then the whole is to be read or written.
//
// `known` is a text that `writeXML` has written, and `tree` is what reading it gives, frozen: the
// functions rely on the layout of the writer, in which a line tells by its tabs how deep it is.

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

#include "Platform/Values/PropertyListValue.h"

namespace QRVPlatform::PropertyLists {

/// The tree of `text`, and then `text` is what writing that tree gives. What has not changed is the
/// same objects as in `tree`. Gives nothing for a text in another layout, and where too much
/// differs.
std::optional<NSDictionary> treeOfRevision(std::string_view known, const NSDictionary& tree,
                                           std::string_view text);

/// Makes what `writeXML` gives for `revised`, which is frozen, of the known text of `size` bytes at
/// the beginning of `room`; returns the new size. What has not changed must be the same objects as
/// in `tree` to be recognised. Gives nothing, and leaves the text, where too much differs or the
/// room is too small, and when there is a value that cannot be written.
std::optional<std::size_t> reviseText(std::span<char> room, std::size_t size,
                                      const NSDictionary& tree, const NSDictionary& revised);

}  // namespace QRVPlatform::PropertyLists
