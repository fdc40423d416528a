// SPDX-License-Identifier: MIT
#pragma once

// What stands between the tags of an XML file. Inner header of this folder.

#include <cstddef>
#include <string>
#include <string_view>

#include "Platform/PropertyLists/TextBuilder.h"

namespace QRVPlatform::PropertyLists {

enum class XMLTextKind { Characters, CDATA };

/// Appends `raw` with entities resolved (in characters, not in CDATA) and CR LF and CR turned into
/// LF. Throws Failure; `offset` is that of `raw`.
void appendDecoded(std::string& text, std::string_view raw, std::size_t offset, XMLTextKind kind);

/// Refuses a declaration that names an encoding other than UTF-8, UTF-16, UTF-32 and US-ASCII.
/// Which of these it is has been told by the bytes.
void checkXMLDeclaration(std::string_view text);

/// Escapes what XML cannot hold as it is, or would change in reading. False, and an undefined rest,
/// when `characters` is not UTF-8.
[[nodiscard]] bool appendXMLText(TextBuilder& text, std::string_view characters);

}  // namespace QRVPlatform::PropertyLists
