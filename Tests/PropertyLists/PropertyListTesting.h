// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/PropertyLists/NSPropertyListSerialization.h"

/// Equal and of the same kinds throughout: 1 and 1.0 differ, 0.0 and -0.0 differ, NaN is NaN.
bool isSameTree(const PropertyListValue& left, const PropertyListValue& right);

/// Passes when both are the same tree; otherwise shows both.
testing::AssertionResult sameTree(const PropertyListValue& actual,
                                  const PropertyListValue& expected);

/// Reads bytes that must be readable, and in this format.
PropertyListValue readable(std::string_view bytes, PropertyListFormat format);
PropertyListValue readableXML(std::string_view bytes);
PropertyListValue readableBinary(std::string_view bytes);
PropertyListValue readableOldStyle(std::string_view bytes);

/// The description of why the bytes cannot be read; empty, and a failure, when they can.
std::string refusal(std::string_view bytes);

/// Writes a value that must be writable.
std::string written(const PropertyListValue& value);

/// The text between `<plist>` and `</plist>` of a written value, without the line end.
std::string writtenElement(const PropertyListValue& value);

/// The description of why the value cannot be written; empty, and a failure, when it can.
std::string writeRefusal(const PropertyListValue& value);

/// `text` as it is between `<plist>` tags.
std::string plist(std::string_view text);

/// `count` copies of `text`.
std::string repeated(std::string_view text, std::size_t count);

/// Arrays within arrays, `levels` of them.
PropertyListValue nestedArrays(std::size_t levels);

/// ASCII text as UTF-16 or UTF-32 without byte-order mark.
std::string widened(std::string_view ascii, std::size_t unitSize, bool isBigEndian);

/// Builds a file in the binary format from its parts, correct or not.
struct BinaryFile {
    std::vector<std::string> objects;
    std::uint64_t topObject = 0;
    std::uint8_t offsetSize = 2;
    std::uint8_t referenceSize = 1;

    [[nodiscard]] std::string bytes() const;
};

/// `size` bytes of an unsigned number, the highest first.
std::string bigEndian(std::uint64_t number, std::size_t size);

/// An array or dictionary object of the binary format: marker (0xA0 or 0xD0), count, references.
std::string binaryContainer(unsigned marker, std::size_t count,
                            const std::vector<std::uint64_t>& references,
                            std::size_t referenceSize = 1);
