// SPDX-License-Identifier: MIT
// Key paths that are split and hashed once, and look-ups by them without a lock.
#include "QRVSettings/HashedKeyPath.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "QRVSettings/NSDictionary+QRV.h"
#include "Support/StoreSupport.h"

using NSDictionaryQRV::objectAtKeyPath;
using QRVInside::HashedKeyPath;
using QRVInside::valueOfTheWriter;
using QRVInside::valueOrNull;
using QRVPlatform::HashedKey;
using StoreSupport::SystemLogLines;
using testing::ElementsAre;

namespace {

std::vector<std::string> keysOf(const HashedKeyPath& keyPath) {
    std::vector<std::string> keys;
    for (const HashedKey& key : keyPath.keys()) keys.emplace_back(key.text());
    return keys;
}

std::vector<std::string> splitByHand(const std::string& text) {
    std::vector<std::string> keys(1);
    for (const char character : text) {
        if (character == '.')
            keys.emplace_back();
        else
            keys.back() += character;
    }
    return keys;
}

/// Of characters that differ from a separator in one bit, among others.
std::string randomText(std::mt19937& random, std::size_t length) {
    const std::string_view characters("..a/,\xae\x2f\x2d\0\xff", 10);
    std::string text;
    while (text.size() < length) text += characters[random() % characters.size()];
    return text;
}

}  // namespace

TEST(HashedKeyPath, IsSplitAtEverySeparator) {
    EXPECT_THAT(keysOf(HashedKeyPath("")), ElementsAre(""));
    EXPECT_THAT(keysOf(HashedKeyPath(".")), ElementsAre("", ""));
    EXPECT_THAT(keysOf(HashedKeyPath("CPU.Menubar.Enabled")),
                ElementsAre("CPU", "Menubar", "Enabled"));
    std::mt19937 random(1);
    for (std::size_t round = 0; round < 10'000; ++round) {
        const std::string text = randomText(random, random() % 40);
        const HashedKeyPath keyPath(text);
        ASSERT_EQ(keysOf(keyPath), splitByHand(text)) << testing::PrintToString(text);
        for (const HashedKey& key : keyPath.keys())
            ASSERT_EQ(key.hash, HashedKey::of(key.text()).hash);
    }
}

TEST(HashedKeyPath, MayHaveManyKeys) {
    std::string text = "0";
    for (int key = 1; key < 300; ++key) {
        text += '.';
        text += std::to_string(key);
        ASSERT_EQ(keysOf(HashedKeyPath(text)), splitByHand(text));
    }
}

TEST(HashedKeyPath, FindsWhatAnOrdinaryLookUpFinds) {
    const SystemLogLines log;
    std::mt19937 random(2);
    const auto randomKeyPath = [&random] {
        std::string keyPath(1, static_cast<char>('a' + random() % 3));
        for (std::size_t level = random() % 4; level > 0; --level) {
            keyPath += '.';
            keyPath += static_cast<char>('a' + random() % 3);
        }
        return keyPath;
    };
    for (int round = 0; round < 60; ++round) {
        const NSMutableDictionary root;
        for (int entry = 0; entry < 6; ++entry) {
            const std::string keyPath = randomKeyPath();
            try {
                NSDictionaryQRV::setObjectAtKeyPath(root, entry, keyPath);
            } catch (const NSInvalidArgumentException&) {
                continue;  // It leads through another entry.
            }
        }
        for (const NSDictionary& tree : {NSDictionary(root), root.copy()}) {
            for (int look = 0; look < 10; ++look) {
                const std::string keyPath = randomKeyPath();
                const auto before = log.lines().size();
                const PropertyListValue expected = objectAtKeyPath(tree, keyPath);
                const auto lines = log.lines().size() - before;
                ASSERT_TRUE(valueOrNull(valueOfTheWriter(tree, HashedKeyPath(keyPath)))
                                .isIdenticalTo(expected));
                ASSERT_EQ(log.lines().size(), before + 2 * lines);
            }
        }
    }
}

TEST(HashedKeyPath, FindsNothingWithoutATree) {
    EXPECT_EQ(valueOfTheWriter(nullptr, HashedKeyPath("A")), nullptr);
}
