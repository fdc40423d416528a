// SPDX-License-Identifier: MIT
#include "Platform/PropertyLists/NSPropertyListSerialization.h"

#include <algorithm>
#include <utility>

#include "Platform/PropertyLists/PassedText.h"
#include "Platform/PropertyLists/Readers.h"
#include "Platform/PropertyLists/ReadingOnce.h"
#include "Platform/PropertyLists/Scalars.h"
#include "Platform/PropertyLists/Unicode.h"
#include "Platform/PropertyLists/XMLWriter.h"

using namespace QRVPlatform;

namespace {

using PropertyLists::ReadFailure;

bool isBinary(std::string_view bytes) {
    constexpr std::string_view signature = "bplist";
    const auto isDigit = [](char character) { return character >= '0' && character <= '9'; };
    if (!bytes.starts_with(signature) || bytes.size() < signature.size() + 2) return false;
    const char version = bytes[signature.size()];
    return version == '0' || (isDigit(version) && isDigit(bytes[signature.size() + 1]));
}

// "<" begins XML and, followed by hexadecimal digits alone, old-style data. No element of a
// property list has such a name.
bool isXML(std::string_view text) {
    text = PropertyLists::withoutSpaceAround(text);
    if (!text.starts_with('<')) return false;
    const std::string_view name = text.substr(1, text.find('>') - 1);
    return !std::all_of(name.begin(), name.end(), [](char character) {
        return PropertyLists::isSpace(character) || PropertyLists::hexadecimalDigit(character);
    });
}

void locate(PropertyListError& error, const PropertyLists::PassedText& text) {
    const PropertyLists::TextPlace place = text.placeOf(error.offset);
    error.place = PropertyListError::Place::LineAndColumn;
    error.line = place.line;
    error.column = place.column;
}

PropertyListReadResult failedRead(const ReadFailure& failure, PropertyListFormat format) {
    PropertyListReadResult result{.value = nullptr, .format = format, .error = {}};
    result.error.emplace().message = failure.message;
    result.error->offset = failure.offset;
    return result;
}

PropertyListReadResult readBinary(std::string_view bytes) {
    try {
        return {PropertyLists::readBinary(bytes), PropertyListFormat::Binary, std::nullopt};
    } catch (const ReadFailure& failure) {
        return failedRead(failure, PropertyListFormat::Binary);
    }
}

// XML may end with U+0000, as text does that was saved with its terminator. Elsewhere, and in the
// other text format, zeros are a sign of a damaged file.
void checkNul(PropertyLists::DecodedText& decoded, PropertyListFormat format) {
    const std::size_t nul = decoded.text.find('\0');
    if (nul == std::string_view::npos) return;
    const auto isBlank = [](char character) {
        return character == '\0' || PropertyLists::isSpace(character);
    };
    const std::string_view tail = decoded.text.substr(nul);
    decoded.text = decoded.text.substr(0, nul);
    const bool isTerminator = format == PropertyListFormat::XML && decoded.fault.empty() &&
                              std::all_of(tail.begin(), tail.end(), isBlank);
    if (!isTerminator) decoded.fault = "the text contains the character U+0000";
}

PropertyListReadResult readText(std::string_view bytes,
                                const PropertyLists::PassedText::GiveBack& giveBack,
                                std::size_t step) {
    std::string converted;
    PropertyLists::DecodedText decoded = PropertyLists::decodeText(bytes, converted);
    const auto format =
        isXML(decoded.text) ? PropertyListFormat::XML : PropertyListFormat::OldStyle;
    checkNul(decoded, format);
    PropertyLists::PassedText text(decoded.text, converted.empty() ? giveBack : nullptr, step);
    try {
        if (!decoded.fault.empty()) PropertyLists::fail(decoded.fault, decoded.text.size());
        if (format == PropertyListFormat::XML)
            return {PropertyLists::readXML(decoded.text, text), format, std::nullopt};
        PropertyLists::OldStyleList list = PropertyLists::readOldStyle(decoded.text);
        return {std::move(list.value), format, std::nullopt, !list.hasOuterBraces};
    } catch (const ReadFailure& failure) {
        PropertyListReadResult result = failedRead(failure, format);
        locate(*result.error, text);
        return result;
    }
}

// Messages and key paths quote the contents of files: control characters become \xNN.
std::string onOneLine(std::string_view text) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string line;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < ' ' || byte == 0x7F)
            line += {'\\', 'x', digits[byte >> 4U], digits[byte & 0xFU]};
        else
            line += character;
    }
    return line;
}

}  // namespace

std::string PropertyListError::description() const {
    const std::string what = onOneLine(message);
    switch (place) {
        case Place::Byte:
            return what + ", byte " + std::to_string(offset);
        case Place::LineAndColumn:
            return what + ", line " + std::to_string(line) + ", column " + std::to_string(column);
        case Place::KeyPath:
            break;
    }
    return what + (keyPath.empty() ? ", at the root" : ", key path " + onOneLine(keyPath));
}

PropertyListReadResult NSPropertyListSerialization::propertyListWithData(std::string_view bytes) {
    return PropertyLists::propertyListReadOnce(bytes, nullptr);
}

PropertyListReadResult PropertyLists::propertyListReadOnce(std::string_view bytes,
                                                           const PassedText::GiveBack& giveBack,
                                                           std::size_t step) {
    const bool binary = isBinary(bytes);
    if (bytes.size() > maximumSize) {
        return failedRead({tooLarge(), maximumSize},
                          binary ? PropertyListFormat::Binary : PropertyListFormat::XML);
    }
    return binary ? ::readBinary(bytes) : readText(bytes, giveBack, step);
}

PropertyListWriteResult NSPropertyListSerialization::dataWithPropertyList(
    const PropertyListValue& value) {
    try {
        return {PropertyLists::writeXML(value), std::nullopt};
    } catch (const PropertyLists::WriteFailure& failure) {
        PropertyListError error;
        error.message = failure.message;
        error.place = PropertyListError::Place::KeyPath;
        error.keyPath = failure.keyPath;
        return {{}, std::move(error)};
    }
}
