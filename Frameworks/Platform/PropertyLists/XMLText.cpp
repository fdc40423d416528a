// SPDX-License-Identifier: MIT
#include "Platform/PropertyLists/XMLText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <optional>

#include "Platform/PropertyLists/Readers.h"
#include "Platform/PropertyLists/Unicode.h"

namespace QRVPlatform::PropertyLists {
namespace {

struct NamedEntity {
    std::string_view name;
    char character;
};

constexpr std::array namedEntities{NamedEntity{"lt", '<'}, NamedEntity{"gt", '>'},
                                   NamedEntity{"amp", '&'}, NamedEntity{"quot", '"'},
                                   NamedEntity{"apos", '\''}};

/// The character of `#13` or `#xD`; a number past the last character when there is none.
char32_t numericReference(std::string_view name) {
    constexpr char32_t none = lastCharacter + 1;
    name.remove_prefix(1);
    const bool isHexadecimal = name.starts_with('x');
    if (isHexadecimal) name.remove_prefix(1);
    std::uint32_t number = 0;
    const char* end = name.data() + name.size();
    const auto [stop, fault] = std::from_chars(name.data(), end, number, isHexadecimal ? 16 : 10);
    return fault == std::errc() && stop == end ? number : none;
}

// `name` is the text between "&" and ";".
void appendEntity(std::string& text, std::string_view name, std::size_t offset) {
    if (name.starts_with('#')) {
        const char32_t character = numericReference(name);
        if (!isCharacter(character)) fail("&" + shortened(name) + "; is no character", offset);
        appendUTF8(text, character);
        return;
    }
    const auto entity =
        std::find_if(namedEntities.begin(), namedEntities.end(),
                     [name](const NamedEntity& known) { return known.name == name; });
    if (entity == namedEntities.end()) fail("unknown entity &" + shortened(name) + ";", offset);
    text += entity->character;
}

/// Appends the character of the entity at the start of `rest`; returns the entity's length.
std::size_t resolveEntity(std::string& text, std::string_view rest, std::size_t offset) {
    const std::size_t semicolon = rest.find(';');
    if (semicolon == std::string_view::npos) fail("an entity is not closed by \";\"", offset);
    appendEntity(text, rest.substr(1, semicolon - 1), offset);
    return semicolon + 1;
}

/// The value of an attribute of the XML declaration; empty when it is missing.
std::string_view declaredValue(std::string_view declaration, std::string_view name) {
    const std::size_t found = declaration.find(name);
    if (found == std::string_view::npos) return {};
    const std::size_t open = declaration.find_first_of("\"'", found);
    if (open == std::string_view::npos) return {};
    const std::size_t close = declaration.find(declaration[open], open + 1);
    return close == std::string_view::npos ? std::string_view{}
                                           : declaration.substr(open + 1, close - open - 1);
}

bool isReadableEncoding(std::string_view name) {
    constexpr std::array<std::string_view, 8> readable{
        "UTF-8", "US-ASCII", "UTF-16", "UTF-16LE", "UTF-16BE", "UTF-32", "UTF-32LE", "UTF-32BE"};
    std::string uppercase(name);
    for (char& character : uppercase) {
        if (character >= 'a' && character <= 'z')
            character = static_cast<char>(character - 'a' + 'A');
    }
    return std::find(readable.begin(), readable.end(), uppercase) != readable.end();
}

enum class Treatment : std::uint8_t { Copy, Escape, Sequence };

constexpr std::array<Treatment, 256> treatments = [] {
    std::array<Treatment, 256> table{};
    for (std::size_t byte = 0; byte < 0x20; ++byte) table[byte] = Treatment::Escape;
    table['\t'] = table['\n'] = Treatment::Copy;
    table['&'] = table['<'] = table['>'] = table['\x7F'] = Treatment::Escape;
    for (std::size_t byte = 0x80; byte < 0x100; ++byte) table[byte] = Treatment::Sequence;
    return table;
}();

Treatment treatmentOf(char byte) {
    return treatments[static_cast<unsigned char>(byte)];
}

void appendEscaped(TextBuilder& text, char character) {
    switch (character) {
        case '&':
            return text.append("&amp;");
        case '<':
            return text.append("&lt;");
        case '>':
            return text.append("&gt;");
        default:
            return text.append("&#" + std::to_string(int{character}) + ";");
    }
}

// The two characters past U+007F that XML cannot hold unescaped.
std::optional<std::string_view> referenceOf(std::string_view character) {
    if (character == "\xEF\xBF\xBE") return "&#65534;";
    if (character == "\xEF\xBF\xBF") return "&#65535;";
    return std::nullopt;
}

}  // namespace

void appendDecoded(std::string& text, std::string_view raw, std::size_t offset, XMLTextKind kind) {
    const std::string_view special = kind == XMLTextKind::Characters ? "&\r" : "\r";
    std::size_t position = 0;
    for (;;) {
        const std::size_t found = std::min(raw.find_first_of(special, position), raw.size());
        text.append(raw, position, found - position);
        if (found == raw.size()) return;
        if (raw[found] == '&') {
            position = found + resolveEntity(text, raw.substr(found), offset + found);
        } else {
            text += '\n';
            position = found + (raw.substr(found).starts_with("\r\n") ? 2 : 1);
        }
    }
}

void checkXMLDeclaration(std::string_view text) {
    constexpr std::string_view beginning = "<?xml";
    if (!text.starts_with(beginning)) return;
    const std::string_view declaration = text.substr(0, text.find("?>"));
    const std::string_view encoding = declaredValue(declaration, "encoding");
    if (encoding.empty() || isReadableEncoding(encoding)) return;
    fail("unsupported encoding " + shortened(encoding), 0);
}

bool appendXMLText(TextBuilder& text, std::string_view characters) {
    // Most text is short and plain: nothing is left after this.
    std::size_t position = text.appendWhile(
        characters, [](char character) { return treatmentOf(character) == Treatment::Copy; });
    std::size_t copied = position;
    const auto copyUntilHere = [&] { text.append(characters.substr(copied, position - copied)); };
    while (position < characters.size()) {
        const Treatment treatment = treatmentOf(characters[position]);
        if (treatment == Treatment::Copy) {
            ++position;
        } else if (treatment == Treatment::Escape) {
            copyUntilHere();
            appendEscaped(text, characters[position]);
            copied = ++position;
        } else {
            const std::size_t length = lengthOfFirstCharacter(characters.substr(position));
            if (length == 0) return false;
            if (const auto reference = referenceOf(characters.substr(position, length))) {
                copyUntilHere();
                text.append(*reference);
                copied = position + length;
            }
            position += length;
        }
    }
    if (copied != position) copyUntilHere();
    return true;
}

}  // namespace QRVPlatform::PropertyLists
