// SPDX-License-Identifier: MIT
// Reading the binary format, whole and damaged.

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <string>

#include "PropertyLists/PropertyListTesting.h"

namespace {

using namespace std::string_literals;

/// A file whose root is one object.
std::string single(std::string object) {
    return BinaryFile{.objects = {std::move(object)}}.bytes();
}

std::string doubleBytes(double value) {
    return bigEndian(std::bit_cast<std::uint64_t>(value), 8);
}

/// A file with this trailer field replaced; fields count from the end of the file.
std::string withTrailer(std::string file, std::size_t distanceFromEnd, const std::string& bytes) {
    return file.replace(file.size() - distanceFromEnd, bytes.size(), bytes);
}

BinaryFile smallDictionary() {
    return {.objects = {binaryContainer(0xD0, 1, {1, 2}), "\x51k", "\x10\x07"}};
}

}  // namespace

TEST(BinaryReading, ReadsDictionariesAndArrays) {
    EXPECT_TRUE(sameTree(readableBinary(smallDictionary().bytes()), NSDictionary{{"k", 7}}));
    const BinaryFile array{.objects = {binaryContainer(0xA0, 3, {1, 2, 1}), "\x09", "\x50"}};
    const auto value = readableBinary(array.bytes());
    EXPECT_TRUE(sameTree(value, NSArray{true, "", true}));
    EXPECT_FALSE(value.array().isMutable());
    EXPECT_TRUE(sameTree(readableBinary(single("\xA0")), NSArray{}));
    EXPECT_TRUE(sameTree(readableBinary(single("\xD0")), NSDictionary{}));
}

TEST(BinaryReading, IntegersOfEverySizeAreRead) {
    EXPECT_TRUE(sameTree(readableBinary(single("\x10\xFF")), 255));
    EXPECT_TRUE(sameTree(readableBinary(single("\x11\xFF\xFF")), 65535));
    EXPECT_TRUE(sameTree(readableBinary(single("\x12\xFF\xFF\xFF\xFF")), 4294967295LL));
    EXPECT_TRUE(sameTree(readableBinary(single("\x13" + bigEndian(~std::uint64_t{0}, 8))), -1));
    EXPECT_TRUE(sameTree(readableBinary(single("\x13" + bigEndian(std::uint64_t{1} << 63U, 8))),
                         std::numeric_limits<std::int64_t>::min()));
    EXPECT_TRUE(
        sameTree(readableBinary(single("\x14" + bigEndian(0, 8) + bigEndian(~std::uint64_t{0}, 8))),
                 std::numeric_limits<std::uint64_t>::max()));
    EXPECT_TRUE(sameTree(readableBinary(single("\x14" + bigEndian(~std::uint64_t{0}, 8) +
                                               bigEndian(std::uint64_t{1} << 63U, 8))),
                         std::numeric_limits<std::int64_t>::min()));
}

TEST(BinaryReading, IntegersOutOfRangeAreRefused) {
    EXPECT_EQ(refusal(single("\x14" + bigEndian(1, 8) + bigEndian(0, 8))),
              "an integer is out of range, byte 8");
    EXPECT_EQ(refusal(single("\x14" + bigEndian(~std::uint64_t{0}, 8) + bigEndian(1, 8))),
              "an integer is out of range, byte 8");
    EXPECT_EQ(refusal(single("\x15" + std::string(32, '\0'))), "bad size of a number, byte 8");
}

TEST(BinaryReading, RealsAreRead) {
    EXPECT_TRUE(sameTree(
        readableBinary(single("\x22" + bigEndian(std::bit_cast<std::uint32_t>(0.1F), 4))), 0.1F));
    for (const double value : {1.0, -0.0, 5e-324, 1e308, std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_TRUE(sameTree(readableBinary(single("\x23" + doubleBytes(value))), value));
    }
    EXPECT_EQ(refusal(single("\x21\x01\x02")), "bad size of a number, byte 8");
    EXPECT_EQ(refusal(single("\x24" + std::string(16, '\0'))), "bad size of a number, byte 8");
}

TEST(BinaryReading, DatesKeepTheirFractions) {
    EXPECT_TRUE(sameTree(readableBinary(single("\x33" + doubleBytes(0.25))), NSDate(0.25)));
    EXPECT_TRUE(
        sameTree(readableBinary(single("\x33" + doubleBytes(-1e9 - 0.5))), NSDate(-1e9 - 0.5)));
    EXPECT_EQ(refusal(single("\x33" + doubleBytes(std::nan("")))), "a date is not finite, byte 8");
    EXPECT_EQ(refusal(single("\x33" + doubleBytes(std::numeric_limits<double>::infinity()))),
              "a date is not finite, byte 8");
    EXPECT_EQ(refusal(single("\x32" + std::string(4, '\0'))), "bad size of a date, byte 8");
}

TEST(BinaryReading, DatesOfAllYearsAreReadAndCanBeWritten) {
    constexpr double furthest = NSPropertyListSerialization::maximumDateInterval;
    for (const double seconds :
         {-63145526400.0, -63145526401.0, 252423993599.0, 252423993600.0, -6e10 * 1e3, 1e15,
          9007199254740993.0, -1e18, std::nextafter(furthest, 0.0), furthest, -furthest}) {
        const auto value = readableBinary(single("\x33" + doubleBytes(seconds)));
        EXPECT_TRUE(sameTree(value, NSDate(seconds))) << seconds;
        EXPECT_TRUE(sameTree(readableXML(written(value)), value)) << written(value);
    }
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const double seconds :
         {std::nextafter(furthest, infinity), std::nextafter(-furthest, -infinity), 1e300,
          -std::numeric_limits<double>::max()}) {
        EXPECT_EQ(refusal(single("\x33" + doubleBytes(seconds))),
                  "a date is more than 146 billion years from 2001, byte 8");
    }
}

TEST(BinaryReading, StringsOfOneByteACharacterMayHoldUTF8) {
    EXPECT_TRUE(
        sameTree(readableBinary(single("\x5A\u00e9\u20ac\U0001F600x")), "\u00e9\u20ac\U0001F600x"));
    const BinaryFile key{.objects = {binaryContainer(0xD0, 1, {1, 2}), "\x52\u00e9", "\x09"}};
    EXPECT_TRUE(sameTree(readableBinary(key.bytes()), NSDictionary{{"\u00e9", true}}));
    for (const char* bytes : {"\x51\x80", "\x51\xE9", "\x52\xC3(", "\x52\xC0\x80",
                              "\x53\xED\xA0\x80", "\x53x\xE2\x82", "\x54\xF4\x90\x80\x80"}) {
        EXPECT_EQ(refusal(single(bytes)), "a string is neither ASCII nor UTF-8, byte 8") << bytes;
    }
}

TEST(BinaryReading, StringsAreASCIIOrUTF16) {
    EXPECT_TRUE(sameTree(readableBinary(single("\x53"
                                               "abc")),
                         "abc"));
    EXPECT_TRUE(sameTree(readableBinary(single("\x51\0"s)), std::string_view("\0", 1)));
    EXPECT_TRUE(
        sameTree(readableBinary(single("\x63\x00\xE9\xD8\x3D\xDE\x00"s)), "\u00e9\U0001F600"));
    EXPECT_EQ(refusal(single("\x61\xD8\x3D")), "a string is not valid UTF-16, byte 8");
    EXPECT_EQ(refusal(single("\x61\xDE\x00"s)), "a string is not valid UTF-16, byte 8");
    EXPECT_EQ(refusal(single("\x62\xD8\x3D\x00\x41"s)), "a string is not valid UTF-16, byte 8");
}

TEST(BinaryReading, LongObjectsTellTheirSizeInAnIntegerOfAnySize) {
    const std::string text(300, 'x');
    EXPECT_TRUE(sameTree(readableBinary(single("\x5F\x11\x01\x2C" + text)), text));
    EXPECT_TRUE(
        sameTree(readableBinary(single("\x4F\x12" + bigEndian(300, 4) + text)), NSData(text)));
    EXPECT_TRUE(sameTree(readableBinary(single("\x5F\x13" + bigEndian(300, 8) + text)), text));
    EXPECT_TRUE(sameTree(readableBinary(single("\x5F\x10\x03"
                                               "abc")),
                         "abc"));
}

TEST(BinaryReading, SizesThatTheFileCannotHoldAreRefused) {
    EXPECT_EQ(refusal(single("\x54"
                             "abc")),
              "an object is cut off, byte 8");
    EXPECT_EQ(refusal(single("\x5F\x13" + bigEndian(~std::uint64_t{0}, 8))),
              "an object is cut off, byte 8");
    EXPECT_EQ(refusal(single("\x6F\x13" + bigEndian(std::uint64_t{1} << 63U, 8))),
              "an object is cut off, byte 8");
    EXPECT_EQ(refusal(single("\xAF\x13" + bigEndian(std::uint64_t{1} << 60U, 8))),
              "an object is cut off, byte 8");
    EXPECT_EQ(refusal(single("\xDF\x12\x7F\xFF\xFF\xFF")), "an object is cut off, byte 8");
    EXPECT_EQ(refusal(single("\x5F")), "an object is cut off, byte 8");
    EXPECT_EQ(refusal(single("\x5F\x14" + std::string(16, '\0'))), "bad size of an object, byte 9");
    EXPECT_EQ(refusal(single("\x5F\x51"
                             "a")),
              "bad size of an object, byte 9");
    EXPECT_EQ(refusal(single("\x13\0"s)), "an object is cut off, byte 8");
}

TEST(BinaryReading, ObjectsThatNoPropertyListHoldsAreRefused) {
    EXPECT_EQ(refusal(single("\0"s)), "null is no value of a property list, byte 8");
    EXPECT_EQ(refusal(single("\x0F")), "a fill byte is no value of a property list, byte 8");
    EXPECT_EQ(refusal(single("\x80\x01")), "a UID is no value of a property list, byte 8");
    EXPECT_EQ(refusal(single("\xB0")), "a set is no value of a property list, byte 8");
    EXPECT_EQ(refusal(single("\xC0")), "a set is no value of a property list, byte 8");
    for (const unsigned marker : {0x01U, 0x0CU, 0x0EU, 0x70U, 0x90U, 0xE0U, 0xF0U}) {
        EXPECT_EQ(refusal(single(bigEndian(marker, 1))), "unknown object, byte 8") << marker;
    }
}

TEST(BinaryReading, OfEqualKeysTheLastWinsAndOtherKeysThanStringsAreRefused) {
    const BinaryFile twice{.objects = {binaryContainer(0xD0, 2, {1, 2, 3, 4}), "\x51k", "\x51k",
                                       "\x10\x01", "\x10\x02"}};
    EXPECT_TRUE(sameTree(readableBinary(twice.bytes()), NSDictionary{{"k", 2}}));
    const BinaryFile number{.objects = {binaryContainer(0xD0, 1, {1, 1}), "\x10\x01"}};
    EXPECT_EQ(refusal(number.bytes()), "a key is not a string, byte 8");
}

TEST(BinaryReading, SharedReferencesGiveEqualValuesAtEachPlace) {
    const BinaryFile file{
        .objects = {binaryContainer(0xA0, 2, {1, 1}), binaryContainer(0xA0, 1, {2}), "\x51x"}};
    EXPECT_TRUE(sameTree(readableBinary(file.bytes()), NSArray{NSArray{"x"}, NSArray{"x"}}));
}

TEST(BinaryReading, CyclesAreRefused) {
    EXPECT_EQ(refusal(single(binaryContainer(0xA0, 1, {0}))), "a container holds itself, byte 8");
    const BinaryFile throughDictionary{
        .objects = {binaryContainer(0xD0, 1, {1, 2}), "\x51k", binaryContainer(0xA0, 1, {0})}};
    EXPECT_EQ(refusal(throughDictionary.bytes()), "a container holds itself, byte 8");
    const BinaryFile throughKey{.objects = {binaryContainer(0xD0, 1, {0, 1}), "\x51k"}};
    EXPECT_EQ(refusal(throughKey.bytes()), "a container holds itself, byte 8");
}

TEST(BinaryReading, ReferencesAndOffsetsOfEverySizeAreRead) {
    for (std::uint8_t size = 1; size <= 8; ++size) {
        const BinaryFile file{.objects = {binaryContainer(0xA0, 1, {1}, size), "\x51x"},
                              .offsetSize = size,
                              .referenceSize = size};
        EXPECT_TRUE(sameTree(readableBinary(file.bytes()), NSArray{"x"})) << int{size};
    }
}

TEST(BinaryReading, TheTopObjectNeedNotBeTheFirst) {
    const BinaryFile file{.objects = {"\x51x", binaryContainer(0xA0, 1, {0})}, .topObject = 1};
    EXPECT_TRUE(sameTree(readableBinary(file.bytes()), NSArray{"x"}));
}

TEST(BinaryReading, ReferencesToObjectsThatDoNotExistAreRefused) {
    EXPECT_EQ(refusal(single(binaryContainer(0xA0, 1, {1}))),
              "a reference to an object that does not exist, byte 9");
    const BinaryFile wide{.objects = {binaryContainer(0xA0, 1, {~std::uint64_t{0}}, 8)},
                          .referenceSize = 8};
    EXPECT_EQ(refusal(wide.bytes()), "a reference to an object that does not exist, byte 9");
}

TEST(BinaryReading, WrongTrailersAreRefused) {
    const std::string file = smallDictionary().bytes();
    const std::string huge = bigEndian(~std::uint64_t{0}, 8);
    for (const int size : {0, 9, 255}) {
        const std::string byte = bigEndian(static_cast<unsigned>(size), 1);
        EXPECT_NE(refusal(withTrailer(file, 26, byte)), "") << size;
        EXPECT_NE(refusal(withTrailer(file, 25, byte)), "") << size;
    }
    for (const std::string& count : {bigEndian(0, 8), bigEndian(2, 8), bigEndian(4, 8), huge}) {
        EXPECT_NE(refusal(withTrailer(file, 24, count)), "");
    }
    for (const std::string& top : {bigEndian(3, 8), huge}) {
        EXPECT_NE(refusal(withTrailer(file, 16, top)), "");
    }
    for (const std::string& table : {bigEndian(0, 8), bigEndian(8, 8), bigEndian(file.size(), 8),
                                     huge, bigEndian(file.size() - 32, 8)}) {
        EXPECT_NE(refusal(withTrailer(file, 8, table)), "");
    }
    EXPECT_EQ(refusal(withTrailer(file, 8, huge)),
              "the offset table is outside the file, byte " + std::to_string(file.size() - 8));
}

TEST(BinaryReading, OffsetsOutsideTheObjectsAreRefused) {
    std::string file = single("\x51x");
    const std::size_t table = file.size() - 32 - 2;
    for (const std::uint64_t offset : {std::uint64_t{0}, std::uint64_t{7}, std::uint64_t{table},
                                       std::uint64_t{file.size()}, std::uint64_t{0xFFFF}}) {
        file.replace(table, 2, bigEndian(offset, 2));
        EXPECT_EQ(refusal(file),
                  "the offset of an object is outside the file, byte " + std::to_string(table))
            << offset;
    }
}

TEST(BinaryReading, TheSecondDigitOfTheVersionMayBeAnyByte) {
    std::string file = smallDictionary().bytes();
    const PropertyListValue expected = readableBinary(file);
    for (unsigned byte = 0; byte < 256; ++byte) {
        file[7] = static_cast<char>(static_cast<unsigned char>(byte));
        EXPECT_TRUE(sameTree(readableBinary(file), expected)) << byte;
    }
}

TEST(BinaryReading, OtherVersionsAndShortFilesAreRefused) {
    std::string file = smallDictionary().bytes();
    EXPECT_EQ(refusal("bplist00"), "the file is too short, byte 8");
    EXPECT_EQ(refusal("bplist0?"), "the file is too short, byte 8");
    EXPECT_EQ(NSPropertyListSerialization::propertyListWithData("bplist0").format,
              PropertyListFormat::OldStyle);
    EXPECT_EQ(refusal(std::string(file).replace(6, 2, "10")),
              "unknown version of the binary format, byte 6");
    EXPECT_NE(refusal(std::string(file).replace(6, 2, "a0")), "");
    EXPECT_NE(refusal(std::string(file).replace(5, 1, "T")), "");
    EXPECT_EQ(refusal(file.replace(6, 2, "15")), "unknown version of the binary format, byte 6");
}

// Each object claims the rest of the file: together they would take far more memory than the file
// has.
TEST(BinaryReading, OverlappingObjectsAreRefused) {
    constexpr std::uint64_t count = 200;
    const std::size_t first = 8 + 2 + 4 + count;
    std::string file = "bplist00\xAF\x12" + bigEndian(count, 4);
    for (std::uint64_t index = 1; index <= count; ++index) file += bigEndian(index, 1);
    for (std::uint64_t index = 0; index < count; ++index) file += "\x4F\x11\x0F\xFF";
    file += std::string(4096, 'x');
    const std::size_t table = file.size();
    file += bigEndian(8, 2);
    for (std::uint64_t index = 0; index < count; ++index) file += bigEndian(first + 4 * index, 2);
    file += std::string(6, '\0') + "\x02\x01" + bigEndian(count + 1, 8) + bigEndian(0, 8) +
            bigEndian(table, 8);
    EXPECT_TRUE(refusal(file).starts_with("objects overlap, byte ")) << refusal(file);
}
