// SPDX-License-Identifier: MIT
// A property list of any format is read, written and read again. The second tree equals the first,
// with dates rounded down to whole seconds, and writing it gives the same bytes. The file can be
// read in any encoding, and no part of it that was cut off can be read.

#include <string>
#include <string_view>

#include "Fuzzing.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"

using Fuzzing::require;

namespace {

using Serialization = NSPropertyListSerialization;

// The first character of UTF-8 that is well-formed.
char32_t takeCharacter(std::string_view& text) {
    const auto byte = [&text](std::size_t index) {
        return static_cast<char32_t>(static_cast<unsigned char>(text[index]));
    };
    const char32_t lead = byte(0);
    const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    char32_t character = length == 1 ? lead : lead & (0xFFU >> (length + 1));
    for (std::size_t index = 1; index < length; ++index)
        character = character << 6U | (byte(index) & 0x3FU);
    text.remove_prefix(length);
    return character;
}

void append(std::string& bytes, char32_t unit, std::size_t size, bool isBigEndian) {
    for (std::size_t index = 0; index < size; ++index) {
        const std::size_t place = isBigEndian ? size - 1 - index : index;
        bytes += static_cast<char>(static_cast<unsigned char>(unit >> (8 * place) & 0xFFU));
    }
}

std::string inWideUnits(std::string_view text, std::size_t size, bool isBigEndian) {
    std::string bytes;
    append(bytes, 0xFEFF, size, isBigEndian);
    while (!text.empty()) {
        const char32_t character = takeCharacter(text);
        if (size == 2 && character > 0xFFFF) {
            append(bytes, 0xD800 + ((character - 0x10000) >> 10U), size, isBigEndian);
            append(bytes, 0xDC00 + ((character - 0x10000) & 0x3FFU), size, isBigEndian);
        } else {
            append(bytes, character, size, isBigEndian);
        }
    }
    return bytes;
}

PropertyListValue readXML(std::string_view bytes, std::string_view promise) {
    const auto read = Serialization::propertyListWithData(bytes);
    require(!read.error, promise, bytes, read.error ? read.error->description() : "");
    require(read.format == PropertyListFormat::XML, "what was written is XML");
    return read.value;
}

void requireSameInOtherEncoding(std::string_view file, const PropertyListValue& tree,
                                std::size_t choice) {
    const std::string wide = inWideUnits(file, choice % 2 == 0 ? 2 : 4, choice / 2 % 2 == 0);
    const PropertyListValue other = readXML(wide, "every encoding is read");
    require(Fuzzing::isSameTree(other, tree), "every encoding gives the same tree", file);
    require(other == tree, "the same trees are equal", file);
}

void requireNoBeginningIsRead(std::string_view file, std::size_t choice) {
    const std::string_view withoutLineEnd = file.substr(0, file.size() - 1);
    const std::string_view beginning = file.substr(0, choice % withoutLineEnd.size());
    require(Serialization::propertyListWithData(beginning).error.has_value(),
            "a file that was cut off is refused", beginning);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto read = Serialization::propertyListWithData(Fuzzing::textOf(data, size));
    if (read.error || !Fuzzing::isQuicklyWritten(read.value)) return 0;
    const auto written = Serialization::dataWithPropertyList(read.value);
    require(!written.error, "what was read can be written",
            written.error ? written.error->description() : "");

    const PropertyListValue again = readXML(written.bytes, "what was written is read");
    require(Fuzzing::isSameTree(again, read.value, Fuzzing::wholeSecond),
            "what was written is read as the same tree", written.bytes);
    require(Serialization::dataWithPropertyList(again).bytes == written.bytes,
            "the same tree is written as the same bytes", written.bytes);

    const std::size_t choice = std::hash<std::string_view>()(Fuzzing::textOf(data, size));
    requireSameInOtherEncoding(written.bytes, again, choice);
    requireNoBeginningIsRead(written.bytes, choice);
    return 0;
}
