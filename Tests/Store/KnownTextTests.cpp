// SPDX-License-Identifier: MIT
// Reading and writing large settings by what differs from the last known text.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <thread>

#include "Files/TestFiles.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings+KnownText.h"
#include "Support/StoreSupport.h"

using NSDictionaryQRV::objectAtKeyPath;
using NSDictionaryQRV::setObjectAtKeyPath;
using QRVInside::KnownText;
using StoreSupport::contentsOf;

namespace {

using Serialization = NSPropertyListSerialization;

std::string fullText(const NSDictionary& tree) {
    return Serialization::dataWithPropertyList(tree).bytes;
}

NSDictionary fullTree(const std::string& text) {
    return Serialization::propertyListWithData(text).value.dictionary();
}

std::string keyPathOf(std::size_t number) {
    return "Group" + std::to_string(number % 20) + ".Part" + std::to_string(number % 7) + ".Key" +
           std::to_string(number);
}

NSDictionary largeTree() {
    const NSMutableDictionary tree;
    for (std::size_t number = 0; number < 2000; ++number)
        setObjectAtKeyPath(tree, static_cast<int>(number), keyPathOf(number));
    return fullTree(fullText(tree));
}

PropertyListValue anyValue(std::mt19937& random) {
    switch (random() % 9) {
        case 0:
            return nullptr;
        case 1:
            return NSDate(static_cast<double>(random() % 100) / 4);
        case 2:
            return "two\n\t<lines> & more";
        case 3:
            return NSArray{"a", NSMutableDictionary{{"b", NSDate(0.5)}}};
        case 4:
            return NSDictionary{{"a", NSDictionary{{"b.c", 1.0}}}};
        case 5:
            return NSDictionary();
        case 6:
            return NSData("some bytes");
        default:
            return static_cast<int>(random());
    }
}

void writeSomewhere(const NSMutableDictionary& tree, std::mt19937& random) {
    const std::string keyPath = keyPathOf(random() % 2010);
    try {
        setObjectAtKeyPath(
            tree, anyValue(random),
            random() % 9 == 0 ? "Group1.Part" + std::to_string(random() % 9) : keyPath);
    } catch (const NSInvalidArgumentException&) {
        SUCCEED();  // A value is in the way.
    }
}

bool isReadAsAWhole(KnownText& known, const std::string& text, const NSDictionary& likely) {
    const auto read = known.read(text, "file", likely).result;
    return !read.error && read.value.dictionary() == fullTree(text) &&
           fullText(read.value.dictionary()) == text;
}

/// The text that a known text must have been used for: what has not changed is the same objects.
bool isReadByDifference(KnownText& known, const NSDictionary& before, const std::string& text,
                        const NSDictionary& likely = nullptr) {
    const NSDictionary read = known.read(text, "file", likely).result.value.dictionary();
    return read == fullTree(text) &&
           read.objectForKey("Group7").isIdenticalTo(before.objectForKey("Group7"));
}

NSDictionary with(const NSDictionary& tree, const PropertyListValue& value,
                  const std::string& keyPath) {
    const NSMutableDictionary result = fullTree(fullText(tree)).mutableCopy();
    setObjectAtKeyPath(result, value, keyPath);
    return result.copy();
}

void replaceFileWith(const std::string& text) {
    writePlainly("new file", text);
    std::filesystem::rename("new file", "file");
}

/// A known text of a tree, and its file.
struct Saved {
    explicit Saved(const NSDictionary& saved) : tree(saved) {
        // A text that was only saved once is not known.
        for (int time = 0; time < 2; ++time) {
            const KnownText::Written written = known.write(tree);
            text = written.bytes();
            replaceFileWith(text);
            known.noteReplaced(written, "file");
            if (!written.tree.isNull()) tree = written.tree;
        }
    }
    KnownText known;
    NSDictionary tree;
    std::string text;
};

}  // namespace

TEST(KnownText, ManySavesGiveTheFilesOfTheWholeTrees) {
    for (const unsigned seed : {1U, 2U, 3U}) {
        std::mt19937 random(seed);
        KnownText known;
        const NSMutableDictionary tree = largeTree().mutableCopy();
        for (int round = 0; round < 100; ++round) {
            for (std::size_t count = random() % 5; count > 0; --count) writeSomewhere(tree, random);
            const KnownText::Written written = known.write(tree);
            ASSERT_FALSE(written.error());
            ASSERT_EQ(written.bytes(), fullText(tree)) << "seed " << seed << " round " << round;
            if (random() % 10 == 0) continue;  // It could not be saved.
            replaceFileWith(std::string(written.bytes()));
            known.noteReplaced(written, "file");
        }
    }
}

TEST(KnownText, ReadingsAndSavesInTurnGiveWhatTheWholeGives) {
    for (const unsigned seed : {1U, 2U, 3U}) {
        std::mt19937 random(seed);
        KnownText known;
        NSMutableDictionary tree = largeTree().mutableCopy();
        for (int round = 0; round < 60; ++round) {
            for (std::size_t count = random() % 5; count > 0; --count) writeSomewhere(tree, random);
            if (random() % 2 == 0) {
                const KnownText::Written written = known.write(tree);
                ASSERT_EQ(written.bytes(), fullText(tree));
                replaceFileWith(std::string(written.bytes()));
                known.noteReplaced(written, "file");
                continue;
            }
            const std::string text = fullText(tree);
            replaceFileWith(text);
            ASSERT_TRUE(isReadAsAWhole(known, text, random() % 2 == 0 ? tree : nullptr))
                << "seed " << seed << " round " << round;
            tree = fullTree(text).mutableCopy();
        }
    }
}

TEST(KnownText, WhatHasNotChangedStaysTheSameObjects) {
    Saved saved(largeTree());
    const std::string text = fullText(with(saved.tree, "changed", keyPathOf(5)));
    replaceFileWith(text);
    EXPECT_TRUE(isReadByDifference(saved.known, saved.tree, text));
}

TEST(KnownText, TheFirstReloadUsesTheTreeThatIsThere) {
    KnownText known;
    const NSDictionary tree = largeTree();
    const std::string text = fullText(with(tree, "changed", keyPathOf(5)));
    EXPECT_FALSE(isReadByDifference(known, tree, text));
    EXPECT_TRUE(isReadByDifference(known, tree, text, tree));
}

TEST(KnownText, ASnapshotHoldsNothingThatCanStillChange) {
    const NSMutableDictionary tree = largeTree().mutableCopy();
    setObjectAtKeyPath(tree, 1, keyPathOf(3));
    Saved saved(tree);
    setObjectAtKeyPath(tree, 2, keyPathOf(3));
    setObjectAtKeyPath(tree, 2, "Group3.New");
    EXPECT_EQ(fullText(saved.tree), saved.text);
    const KnownText::Written written = saved.known.write(tree);
    EXPECT_EQ(written.bytes(), fullText(tree));
    EXPECT_EQ(fullText(written.tree), written.bytes());
    EXPECT_TRUE(
        written.tree.objectForKey("Group7").isIdenticalTo(saved.tree.objectForKey("Group7")));
}

TEST(KnownText, AFileThatSomebodyOverwroteInPlaceIsNotReliedOn) {
    Saved saved(largeTree());
    struct stat status {};
    ASSERT_EQ(stat("file", &status), 0);
    {
        std::fstream file("file", std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(static_cast<std::streamoff>(saved.text.find(">77<") + 1)).put('8');
    }
    const std::array<timespec, 2> dates{status.st_atim, status.st_mtim};
    ASSERT_EQ(utimensat(AT_FDCWD, "file", dates.data(), 0), 0);
    const NSDictionary next = with(saved.tree, "changed", keyPathOf(5));
    EXPECT_EQ(saved.known.write(next).bytes(), fullText(next));
    const std::string overwritten = contentsOf("file");
    EXPECT_NE(overwritten, saved.text);
    EXPECT_TRUE(isReadAsAWhole(saved.known, overwritten, nullptr));
}

TEST(KnownText, AShortenedFileIsNotReliedOn) {
    Saved saved(largeTree());
    std::filesystem::resize_file("file", 1000);
    const NSDictionary next = with(saved.tree, "changed", keyPathOf(5));
    EXPECT_EQ(saved.known.write(next).bytes(), fullText(next));
}

TEST(KnownText, AFileInAnotherLayoutIsReadAsAWhole) {
    Saved saved(largeTree());
    std::string text = saved.text;
    for (const std::string added :
         {"<!-- a comment -->", " ", "\r", "\t<key>Group1</key><true/>"}) {
        std::string other = text;
        other.insert(other.find("\t<key>Group3"), added);
        const auto read = saved.known.read(other, "file", saved.tree).result;
        EXPECT_EQ(read.value.dictionary(), fullTree(other)) << added;
        saved.known.noteReplaced(
            {.whole = {text, {}}, .tree = saved.tree, .mark = QRVPlatform::HeldBytes::markOf(text)},
            "file");
    }
}

TEST(KnownText, ADamagedFileGivesTheErrorOfTheWhole) {
    Saved saved(largeTree());
    std::string text = saved.text;
    text.insert(text.find("\t<key>Group3"), "<unknown/>");
    const auto read = saved.known.read(text, "file", saved.tree).result;
    const auto whole = Serialization::propertyListWithData(text);
    ASSERT_TRUE(read.error);
    EXPECT_EQ(read.error->description(), whole.error->description());
}

TEST(KnownText, AValueThatCannotBeWrittenGivesTheErrorOfTheWhole) {
    Saved saved(largeTree());
    for (const PropertyListValue& refused :
         {PropertyListValue(NSNull{}), PropertyListValue("\xFF"), PropertyListValue(NSDate(1e300)),
          PropertyListValue(NSArray{1, NSNull{}})}) {
        const NSMutableDictionary next = saved.tree.mutableCopy();
        setObjectAtKeyPath(next, refused, keyPathOf(5));
        const KnownText::Written written = saved.known.write(next);
        ASSERT_TRUE(written.error());
        EXPECT_EQ(written.error()->description(),
                  Serialization::dataWithPropertyList(next).error->description());
        EXPECT_TRUE(written.tree.isNull());
    }
}

TEST(KnownText, ATreeOfTooManyLevelsGivesTheErrorOfTheWhole) {
    Saved saved(largeTree());
    PropertyListValue deep = 1;
    for (std::size_t level = 0; level <= Serialization::maximumLevels; ++level)
        deep = NSDictionary{{"a", deep}};
    const NSMutableDictionary next = saved.tree.mutableCopy();
    next.setObjectForKey(deep, "Deep");
    EXPECT_TRUE(saved.known.write(next).error());
}

TEST(KnownText, KeepsOneFileOpen) {
    const auto openFiles = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    const auto before = openFiles();
    Saved saved(largeTree());
    const auto save = [&saved](const NSDictionary& tree) {
        const KnownText::Written written = saved.known.write(tree);
        replaceFileWith(std::string(written.bytes()));
        saved.known.noteReplaced(written, "file");
    };
    for (int round = 0; round < 5; ++round) {
        save(with(saved.tree, round, keyPathOf(5)));
        EXPECT_EQ(openFiles(), before + 1);
        replaceFileWith(saved.text);
        EXPECT_TRUE(isReadAsAWhole(saved.known, saved.text, nullptr));
        EXPECT_EQ(openFiles(), before + 1);
    }
    saved.known.forget();
    EXPECT_EQ(openFiles(), before);
}

// A host writes, a save runs on one queue and a reload on another.
TEST(KnownText, IsUsedByThreadsAtOnce) {
    constexpr int rounds = 20;
    const NSDictionary before = largeTree();
    const std::string one = fullText(before);
    const std::string other = fullText(with(before, "changed", keyPathOf(5)));
    const NSMutableDictionary tree = before.mutableCopy();
    KnownText known;
    std::atomic<bool> haveEnded = false;
    std::thread host([&tree, &haveEnded] {
        for (int number = 0; !haveEnded; ++number)
            setObjectAtKeyPath(tree, number, keyPathOf(static_cast<std::size_t>(number) % 40));
    });
    std::thread saves([&tree, &known] {
        for (int round = 0; round < rounds; ++round) {
            const KnownText::Written written = known.write(tree);
            const std::string text(written.bytes());
            EXPECT_EQ(fullText(fullTree(text)), text);
            if (!written.tree.isNull()) {
                EXPECT_EQ(fullText(written.tree), text);
            }
            writePlainly("new saved", text);
            std::filesystem::rename("new saved", "saved");
            known.noteReplaced(written, "saved");
        }
    });
    for (int round = 0; round < rounds; ++round) {
        const std::string& text = round % 2 == 0 ? one : other;
        replaceFileWith(text);
        EXPECT_TRUE(isReadAsAWhole(known, text, before));
    }
    saves.join();
    haveEnded = true;
    host.join();
}

TEST(KnownText, NothingIsKnownOfASmallText) {
    Saved saved(NSDictionary{{"a", NSDictionary{{"b", 1}}}});
    const NSDictionary read =
        saved.known
            .read(fullText(NSDictionary{{"a", NSDictionary{{"b", 1}}}, {"c", 2}}), "file", nullptr)
            .result.value.dictionary();
    EXPECT_EQ(read.count(), 2U);
    EXPECT_FALSE(read.objectForKey("a").isIdenticalTo(saved.tree.objectForKey("a")));
}
