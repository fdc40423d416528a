// SPDX-License-Identifier: MIT
// Trees that are written and read again.

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <clocale>
#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "PropertyLists/GeneratedValues.h"
#include "PropertyLists/PropertyListTesting.h"

namespace {

bool everyWritableTreeIsReadBack() {
    return rc::check("what is written is read back", [] {
        const PropertyListValue value = *anyTree();
        const auto file = NSPropertyListSerialization::dataWithPropertyList(value);
        RC_ASSERT(!file.error);
        const auto read = NSPropertyListSerialization::propertyListWithData(file.bytes);
        RC_ASSERT(!read.error);
        RC_ASSERT(isSameTree(read.value, value));
    });
}

std::vector<std::string> wellFormedFiles() {
    const std::string xml = written(NSDictionary{
        {"a", NSArray{1, 2.5, true, NSDate(5)}}, {"b", NSData("bytes")}, {"c", "x & \u00e9\r"}});
    const BinaryFile binary{.objects = {binaryContainer(0xD0, 2, {1, 2, 3, 4}), "\x51k", "\x51l",
                                        binaryContainer(0xA0, 3, {5, 6, 7}),
                                        "\x62" + std::string("\0a\0b", 4),
                                        "\x33" + std::string(8, '\1'), "\x13" + bigEndian(77, 8),
                                        "\x43"
                                        "abc"}};
    return {
        xml,
        "\xFF\xFE" + widened("<plist><dict><key>k</key><real>1e5</real></dict></plist>", 2, false),
        "<array><string>a<![CDATA[b]]>&lt;<!-- c --></string><integer>0x1F</integer></array>",
        "{ a = \"b\\U00e9\\341\"; c = ( d, <0fbd>, { } ); /* x */ }",
        "a = b; c = (d);",
        binary.bytes()};
}

// A tree as it is written: dates lose their fractions.
PropertyListValue inWholeSeconds(const PropertyListValue& value) {
    if (value.isDate()) return NSDate(std::floor(value.date().timeIntervalSinceReferenceDate()));
    if (value.isArray()) {
        const NSMutableArray result;
        for (const PropertyListValue& element : value.array())
            result.addObject(inWholeSeconds(element));
        return result;
    }
    if (value.isDictionary()) {
        const NSMutableDictionary result;
        for (const auto& [key, element] : value.dictionary())
            result.setObjectForKey(inWholeSeconds(element), key);
        return result;
    }
    return value;
}

void requireOneOutcome(std::string_view file) {
    const auto read = NSPropertyListSerialization::propertyListWithData(file);
    RC_ASSERT(read.value.isNull() == read.error.has_value());
    if (read.error) {
        RC_ASSERT(!read.error->message.empty());
        RC_ASSERT(read.error->offset <= 2 * file.size());
        return;
    }
    const auto again = NSPropertyListSerialization::dataWithPropertyList(read.value);
    RC_ASSERT(!again.error);
    const auto reread = NSPropertyListSerialization::propertyListWithData(again.bytes);
    RC_ASSERT(!reread.error);
    RC_ASSERT(isSameTree(reread.value, inWholeSeconds(read.value)));
}

std::string mutated(std::string file, const std::vector<std::pair<std::size_t, char>>& changes) {
    for (const auto& [position, byte] : changes) file[position % file.size()] = byte;
    return file;
}

rc::Gen<char> byte() {
    return rc::gen::oneOf(rc::gen::arbitrary<char>(), rc::gen::element('<', '>', '&', '/', ';', '"',
                                                                       '\\', '{', '}', '(', '\0'));
}

}  // namespace

TEST(RoundTrip, EveryWritableTreeIsReadBack) {
    EXPECT_TRUE(everyWritableTreeIsReadBack());
}

TEST(RoundTrip, EveryWritableTreeIsReadBackInGerman) {
    ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr) << "the locale is not installed";
    EXPECT_TRUE(everyWritableTreeIsReadBack());
    EXPECT_EQ(writtenElement(1234.5), "<real>1234.5</real>");
}

TEST(RoundTrip, EveryWritableTreeIsReadBackInTurkish) {
    ASSERT_NE(std::setlocale(LC_ALL, "tr_TR.UTF-8"), nullptr) << "the locale is not installed";
    EXPECT_TRUE(everyWritableTreeIsReadBack());
    EXPECT_TRUE(
        sameTree(readableXML("<real>INFINITY</real>"), std::numeric_limits<double>::infinity()));
}

TEST(RoundTrip, WritingWhatWasReadGivesTheSameFile) {
    const bool holds = rc::check("equal trees give equal files", [] {
        const std::string file = written(*anyTree());
        RC_ASSERT(written(readableXML(file)) == file);
    });
    EXPECT_TRUE(holds);
}

TEST(Damage, ChangedBytesGiveAValueOrAnError) {
    const std::vector<std::string> files = wellFormedFiles();
    const bool holds = rc::check("changed bytes give a value or an error", [&files] {
        const std::string& file = *rc::gen::elementOf(files);
        const auto changes = *rc::gen::container<std::vector<std::pair<std::size_t, char>>>(
            rc::gen::pair(rc::gen::inRange<std::size_t>(0, 4096), byte()));
        requireOneOutcome(mutated(file, changes));
    });
    EXPECT_TRUE(holds);
}

TEST(Damage, EverySingleChangedByteGivesAValueOrAnError) {
    const bool holds = rc::check("one changed byte gives a value or an error", [] {
        const char replacement = *byte();
        for (std::string file : wellFormedFiles()) {
            for (char& changed : file) {
                const char kept = std::exchange(changed, replacement);
                requireOneOutcome(file);
                changed = kept;
            }
        }
    });
    EXPECT_TRUE(holds);
}

TEST(Damage, BytesLeftOutOrRepeatedGiveAValueOrAnError) {
    const std::vector<std::string> files = wellFormedFiles();
    const bool holds = rc::check("pieces out of place give a value or an error", [&files] {
        const std::string& file = *rc::gen::elementOf(files);
        const std::size_t begin = *rc::gen::inRange<std::size_t>(0, file.size());
        const std::size_t length = *rc::gen::inRange<std::size_t>(0, 40);
        requireOneOutcome(std::string(file).erase(begin, length));
        requireOneOutcome(std::string(file).insert(begin, file.substr(begin, length)));
    });
    EXPECT_TRUE(holds);
}

TEST(Damage, RandomBytesGiveAValueOrAnError) {
    const bool holds = rc::check("random bytes give a value or an error", [] {
        const std::string beginning =
            *rc::gen::element<std::string>("", "bplist00", "<plist>", "{", "(");
        requireOneOutcome(beginning + *rc::gen::container<std::string>(byte()));
    });
    EXPECT_TRUE(holds);
}
