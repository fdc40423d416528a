// SPDX-License-Identifier: MIT
#pragma once

// The text between the tags of an XML file.

#include <cstddef>
#include <string>
#include <string_view>

#include "Platform/PropertyLists/TextBuilder.h"

namespace QRVPlatform::PropertyLists {

enum class XMLTextKind { Characters, CDATA };

/// Appends `raw` with entities resolved (in characters, not in CDATA), and CR LF and CR turned into
/// LF. `offset` is that of `raw`. Throws ReadFailure for an entity that is malformed or unknown.
void appendDecoded(std::string& text, std::string_view raw, std::size_t offset, XMLTextKind kind);

/// Refuses a declaration that names an encoding other than UTF-8, UTF-16, UTF-32 and US-ASCII. The
/// bytes, not the declaration, decide among these.
void checkXMLDeclaration(std::string_view text);

/// Appends text, with characters escaped that XML cannot hold or that reading would change. False
/// when `characters` is not UTF-8; how much of it was appended is then undefined.
[[nodiscard]] bool appendXMLText(TextBuilder& text, std::string_view characters);

}  // namespace QRVPlatform::PropertyLists
