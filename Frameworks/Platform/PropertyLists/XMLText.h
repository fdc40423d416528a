// SPDX-License-Identifier: MIT
#pragma once

// What stands between the tags of an XML file. Inner header of this folder.

#include <cstddef>
#include <string>
#include <string_view>

namespace PropertyLists {

enum class XMLTextKind { Characters, CDATA };

/// Resolves entities (in characters, not in CDATA) and turns CR LF and CR into LF, in place: the
/// result is the front of the same bytes. Throws Failure with an offset into `buffer`.
std::string_view decodeXMLText(std::string& buffer, std::size_t offset, std::size_t length,
                               XMLTextKind kind);

/// Refuses a declaration that names an encoding other than UTF-8, UTF-16, UTF-32 and US-ASCII.
/// Which of these it is has been told by the bytes.
void checkXMLDeclaration(std::string_view text);

/// Escapes what XML cannot hold as it is, or would change in reading. False, and an undefined rest,
/// when `characters` is not UTF-8.
[[nodiscard]] bool appendXMLText(std::string& text, std::string_view characters);

}  // namespace PropertyLists
