// SPDX-License-Identifier: MIT
#include "PropertyLists/PropertyListTesting.h"

#include <bit>
#include <cmath>

namespace {

bool isSameReal(double left, double right) {
    if (std::isnan(left) || std::isnan(right)) return std::isnan(left) && std::isnan(right);
    return std::bit_cast<std::uint64_t>(left) == std::bit_cast<std::uint64_t>(right);
}

bool isSameArray(const NSArray& left, const NSArray& right) {
    if (left.count() != right.count()) return false;
    for (std::size_t index = 0; index < left.count(); ++index) {
        if (!isSameTree(left.objectAtIndex(index), right.objectAtIndex(index))) return false;
    }
    return true;
}

bool isSameDictionary(const NSDictionary& left, const NSDictionary& right) {
    if (left.count() != right.count()) return false;
    for (const auto& [key, value] : left) {
        if (!isSameTree(value, right.objectForKey(key))) return false;
    }
    return true;
}

}  // namespace

bool isSameTree(const PropertyListValue& left, const PropertyListValue& right) {
    if (left.kind() != right.kind()) return false;
    if (left.isReal()) return isSameReal(left.doubleValue(), right.doubleValue());
    if (left.isArray()) return isSameArray(left.array(), right.array());
    if (left.isDictionary()) return isSameDictionary(left.dictionary(), right.dictionary());
    return left == right;
}

testing::AssertionResult sameTree(const PropertyListValue& actual,
                                  const PropertyListValue& expected) {
    if (isSameTree(actual, expected)) return testing::AssertionSuccess();
    return testing::AssertionFailure() << actual << " is not " << expected;
}

PropertyListValue readable(std::string_view bytes, PropertyListFormat format) {
    auto result = NSPropertyListSerialization::propertyListWithData(bytes);
    EXPECT_FALSE(result.error) << result.error->description();
    EXPECT_EQ(result.format, format);
    EXPECT_EQ(result.value.isNull(), result.error.has_value());
    return result.value;
}

PropertyListValue readableXML(std::string_view bytes) {
    return readable(bytes, PropertyListFormat::XML);
}

PropertyListValue readableBinary(std::string_view bytes) {
    return readable(bytes, PropertyListFormat::Binary);
}

PropertyListValue readableOldStyle(std::string_view bytes) {
    return readable(bytes, PropertyListFormat::OldStyle);
}

std::string refusal(std::string_view bytes) {
    const auto result = NSPropertyListSerialization::propertyListWithData(bytes);
    EXPECT_TRUE(result.error) << "was read as " << result.value;
    EXPECT_TRUE(result.value.isNull());
    return result.error ? result.error->description() : std::string();
}

std::string written(const PropertyListValue& value) {
    auto result = NSPropertyListSerialization::dataWithPropertyList(value);
    EXPECT_FALSE(result.error) << result.error->description();
    return result.bytes;
}

std::string writtenElement(const PropertyListValue& value) {
    const std::string bytes = written(value);
    constexpr std::string_view opening = "<plist version=\"1.0\">\n";
    constexpr std::string_view closing = "\n</plist>\n";
    const std::size_t begin = bytes.find(opening);
    EXPECT_NE(begin, std::string::npos);
    EXPECT_TRUE(bytes.ends_with(closing));
    if (begin == std::string::npos || !bytes.ends_with(closing)) return {};
    const std::size_t first = begin + opening.size();
    return bytes.substr(first, bytes.size() - closing.size() - first);
}

std::string writeRefusal(const PropertyListValue& value) {
    const auto result = NSPropertyListSerialization::dataWithPropertyList(value);
    EXPECT_TRUE(result.error) << "was written";
    EXPECT_EQ(result.bytes, "");
    return result.error ? result.error->description() : std::string();
}

std::string plist(std::string_view text) {
    return "<plist version=\"1.0\">" + std::string(text) + "</plist>";
}

std::string repeated(std::string_view text, std::size_t count) {
    std::string result;
    result.reserve(text.size() * count);
    for (std::size_t index = 0; index < count; ++index) result += text;
    return result;
}

PropertyListValue nestedArrays(std::size_t levels) {
    PropertyListValue value = NSArray();
    for (std::size_t level = 1; level < levels; ++level) value = NSArray{value};
    return value;
}

std::string widened(std::string_view ascii, std::size_t unitSize, bool isBigEndian) {
    std::string result;
    for (const char character : ascii) {
        std::string unit(unitSize, '\0');
        (isBigEndian ? unit.back() : unit.front()) = character;
        result += unit;
    }
    return result;
}

std::string bigEndian(std::uint64_t number, std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t index = size; index-- > 0; number >>= 8U) {
        bytes[index] = static_cast<char>(static_cast<unsigned char>(number));
    }
    return bytes;
}

std::string binaryContainer(unsigned marker, std::size_t count,
                            const std::vector<std::uint64_t>& references,
                            std::size_t referenceSize) {
    std::string bytes = count < 15 ? bigEndian(marker | count, 1)
                                   : bigEndian(marker | 0xFU, 1) + "\x12" + bigEndian(count, 4);
    for (const std::uint64_t reference : references) bytes += bigEndian(reference, referenceSize);
    return bytes;
}

std::string BinaryFile::bytes() const {
    std::string file = "bplist00";
    std::string offsets;
    for (const std::string& object : objects) {
        offsets += bigEndian(file.size(), offsetSize);
        file += object;
    }
    const std::size_t offsetTable = file.size();
    file += offsets;
    file += std::string(6, '\0') + bigEndian(offsetSize, 1) + bigEndian(referenceSize, 1);
    return file + bigEndian(objects.size(), 8) + bigEndian(topObject, 8) +
           bigEndian(offsetTable, 8);
}
