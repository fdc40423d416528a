// SPDX-License-Identifier: MIT
// Reading any bytes as a property list gives a value, or an error with its cause and place. A value
// that was read can be written. A text that is given back while it is read gives the same.

#include <algorithm>
#include <string>
#include <string_view>

#include "Fuzzing.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Platform/PropertyLists/ReadingOnce.h"

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

// Whether the file refers to characters that XML 1.0 does not have.
bool holdsRefusedReference(std::string_view file) {
    for (std::size_t found = file.find("&#"); found != std::string_view::npos;
         found = file.find("&#", found + 1)) {
        const std::string_view reference = file.substr(found, file.find(';', found) - found + 1);
        if (reference != "&#13;" && reference != "&#127;") return true;
    }
    return false;
}

void requireNamedRefusals(const PropertyListValue& value, std::string_view file) {
    constexpr std::size_t most = 8;
    const auto refusals = NSPropertyListSerialization::refusalsOfStrictReaders(value, most);
    require(refusals.empty() != holdsRefusedReference(file), "all refused text is named", file);
    require(refusals.size() <= most, "no more refusals than asked for");
    for (const PropertyListError& refusal : refusals) {
        require(refusal.place == PropertyListError::Place::KeyPath, "refusals have a key path");
        requireOneLine(refusal.description());
    }
}

void requireWritable(const PropertyListReadResult& read) {
    require(!read.mayBeCutOff ||
                (read.format == PropertyListFormat::OldStyle && read.value.isDictionary()),
            "only old-style lines may be cut off");
    if (!Fuzzing::isQuicklyWritten(read.value)) return;
    const auto written = NSPropertyListSerialization::dataWithPropertyList(read.value);
    require(!written.error, "what was read can be written",
            written.error ? written.error->description() : "");
    requireNamedRefusals(read.value, written.bytes);
}

// What is given back is overwritten, so that it cannot be read again.
void requireSameWhileGivenBack(const PropertyListReadResult& read, std::string_view file) {
    if (read.format == PropertyListFormat::Binary) return;
    constexpr std::size_t step = 16;
    std::string memory(file);
    const auto again = QRVPlatform::PropertyLists::propertyListReadOnce(
        memory,
        [&memory](const char* place) {
            std::fill(memory.data(), memory.data() + (place - memory.data()), '\xAA');
        },
        step);
    require(again.error.has_value() == read.error.has_value(), "text that is given back is read");
    if (read.error)
        require(again.error->description() == read.error->description(),
                "text that is given back has the same error", read.error->description(),
                again.error->description());
    else
        require(Fuzzing::isSameTree(again.value, read.value),
                "text that is given back gives the same tree");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto read =
        NSPropertyListSerialization::propertyListWithData(Fuzzing::textOf(data, size));
    require(read.value.isNull() == read.error.has_value(), "there is a value or an error");
    requireSameWhileGivenBack(read, Fuzzing::textOf(data, size));
    if (read.error)
        requireUsefulError(read, size);
    else
        requireWritable(read);
    return 0;
}
