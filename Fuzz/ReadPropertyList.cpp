// SPDX-License-Identifier: MIT
// Reading any bytes as a property list gives a value, or an error with its cause and place. A value
// that was read can be written, except for dates that XML cannot hold.

#include <string>

#include "Fuzzing.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"

using Fuzzing::require;

namespace {

// A character of two bytes in UTF-16 may take three in UTF-8.
std::size_t largestOffset(std::size_t size, PropertyListFormat format) {
    return format == PropertyListFormat::Binary ? size : size * 3 / 2;
}

void requireOneLine(const std::string& description) {
    for (const char character : description)
        require(static_cast<unsigned char>(character) >= ' ' && character != '\x7F',
                "a description is one line", description);
    require(!NSPropertyListSerialization::dataWithPropertyList(description).error,
            "a description is UTF-8", description);
}

void requireUsefulError(const PropertyListReadResult& read, std::size_t size) {
    const PropertyListError& error = *read.error;
    const bool isText = error.place == PropertyListError::Place::LineAndColumn;
    require(!error.message.empty(), "an error has a message");
    require(isText == (read.format != PropertyListFormat::Binary), "text errors have a line");
    require(error.place != PropertyListError::Place::KeyPath, "errors of reading have no key path");
    require(error.offset <= largestOffset(size, read.format), "an offset lies in the input",
            error.description());
    require(isText == (error.line > 0) && isText == (error.column > 0), "lines count from 1");
    require(error.line + error.column <= error.offset + 2, "lines and columns are of characters",
            error.description());
    requireOneLine(error.description());
}

// The first and the last second that an XML property list can hold, from 2001.
constexpr double firstSecond = -63145526400;
constexpr double endOfSeconds = 252423993600;

bool holdsFarDate(const PropertyListValue& value) {
    if (value.isDate()) {
        const double seconds = value.date().timeIntervalSinceReferenceDate();
        return !(seconds >= firstSecond && seconds < endOfSeconds);
    }
    for (const PropertyListValue& element : value.array())
        if (holdsFarDate(element)) return true;
    for (const auto& [key, element] : value.dictionary())
        if (holdsFarDate(element)) return true;
    return false;
}

// Only the binary format holds dates that cannot be written.
void requireWritable(const PropertyListReadResult& read) {
    if (!Fuzzing::isQuicklyWritten(read.value)) return;
    const auto written = NSPropertyListSerialization::dataWithPropertyList(read.value);
    require(written.bytes.empty() == written.error.has_value(), "everything is written or nothing");
    require(holdsFarDate(read.value) == written.error.has_value(), "what was read can be written");
    if (!written.error) return;
    require(read.format == PropertyListFormat::Binary, "text formats hold writable dates only");
    require(written.error->place == PropertyListError::Place::KeyPath,
            "errors of writing have a key path");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto read =
        NSPropertyListSerialization::propertyListWithData(Fuzzing::textOf(data, size));
    require(read.value.isNull() == read.error.has_value(), "there is a value or an error");
    if (read.error)
        requireUsefulError(read, size);
    else
        requireWritable(read);
    return 0;
}
