// SPDX-License-Identifier: MIT
#pragma once

// Reading and writing a file by what differs from a text that is known already. Both give what
// reading or writing the whole gives, or nothing; then the whole is to be read or written.
//
// `known` is a text that `writeXML` has written, and `tree` is what reading it gives, frozen: the
// functions rely on the layout of the writer, in which a line tells by its tabs how deep it is.

#include <optional>
#include <string>
#include <string_view>

#include "Platform/Values/PropertyListValue.h"

namespace QRVPlatform::PropertyLists {

/// The tree of `text`, and then `text` is what writing that tree gives. What has not changed is the
/// same objects as in `tree`. Gives nothing for a text in another layout, and where too much
/// differs.
std::optional<NSDictionary> treeOfRevision(std::string_view known, const NSDictionary& tree,
                                           std::string_view text);

/// What `writeXML` gives for `revised`, which is frozen. What has not changed must be the same
/// objects as in `tree` to be recognised. Gives nothing where too much differs, and when there is a
/// value that cannot be written.
std::optional<std::string> textOfRevision(std::string_view known, const NSDictionary& tree,
                                          const NSDictionary& revised);

}  // namespace QRVPlatform::PropertyLists
