// SPDX-License-Identifier: MIT
// The memory that the values of one file share, and how long it lives.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Platform/Values/ValuePages.h"
#include "Support/AllocatedBytes.h"
#include "Support/Shortages.h"

using QRVPlatform::ValueObjects::ValuePages;

namespace {

constexpr std::size_t largeFile = std::size_t{1} << 20U;

std::string keyOf(int number) {
    return "A key of some length " + std::to_string(number);
}

std::string textOf(int number) {
    return "Some text " + std::to_string(number) +
           std::string(static_cast<std::size_t>(number) % 60, 'x');
}

/// Keys and strings that no two entries share, and a few containers.
std::string fileOf(int entries) {
    const NSMutableDictionary tree;
    for (int number = 0; number < entries; ++number) {
        PropertyListValue value = textOf(number);
        if (number % 5 == 0) value = NSArray{value, NSDictionary{{"inner", value}}};
        tree.setObjectForKey(value, keyOf(number));
    }
    return NSPropertyListSerialization::dataWithPropertyList(tree).bytes;
}

NSDictionary treeOf(const std::string& file) {
    return NSPropertyListSerialization::propertyListWithData(file).value.dictionary();
}

std::string textIn(const PropertyListValue& value) {
    if (!value.isArray()) return std::string(value.stringView());
    return value.array().objectAtIndex(1).dictionary().objectForKey("inner").stringValue();
}

bool hasAllTexts(const NSDictionary& tree, int entries) {
    for (int number = 0; number < entries; ++number) {
        if (textIn(tree.objectForKey(keyOf(number))) != textOf(number)) return false;
    }
    return tree.count() == static_cast<std::size_t>(entries);
}

}  // namespace

TEST(ValuePages, ObjectsLieBesideEachOther) {
    if (!ValuePages::areUsed) GTEST_SKIP() << "each object has an allocation of its own";
    ValuePages pages(largeFile);
    std::map<char*, std::size_t> taken;
    for (std::size_t count = 0; count < 5000; ++count) {
        const std::size_t size = 16 + count * 7 % 240;
        void* const place = pages.take(size);
        ASSERT_NE(place, nullptr);
        ASSERT_EQ(reinterpret_cast<std::uintptr_t>(place) % 8, 0U);
        std::memset(place, 0xAA, size);
        taken[static_cast<char*>(place)] = size;
    }
    EXPECT_EQ(taken.size(), 5000U);
    for (auto next = taken.begin(), object = next++; next != taken.end(); object = next++)
        EXPECT_LE(object->first + object->second, next->first);
    for (const auto& [place, size] : taken) ValuePages::release(place);
}

TEST(ValuePages, LargeObjectsAndSmallFilesDoWithoutPages) {
    ValuePages ofLargeFile(largeFile);
    EXPECT_EQ(ofLargeFile.take(ValuePages::pageSize), nullptr);
    ValuePages ofSmallFile(ValuePages::smallestFile - 1);
    EXPECT_EQ(ofSmallFile.take(16), nullptr);
}

TEST(ValuePages, AValueOutlivesItsFileAndItsTree) {
    const std::string file = fileOf(2000);
    std::vector<PropertyListValue> kept;
    {
        const NSDictionary tree = treeOf(file);
        for (int number = 0; number < 2000; number += 100)
            kept.push_back(tree.objectForKey(keyOf(number)));
    }
    const NSDictionary another = treeOf(file);
    for (int index = 0; index < 20; ++index)
        EXPECT_EQ(textIn(kept[static_cast<std::size_t>(index)]), textOf(index * 100));
    EXPECT_TRUE(hasAllTexts(another, 2000));
}

TEST(ValuePages, AContainerOfAPageCanBeChangedInACopy) {
    const NSMutableDictionary changed = treeOf(fileOf(50)).mutableCopy();
    for (int number = 0; number < 50; number += 2) changed.removeObjectForKey(keyOf(number));
    for (int number = 50; number < 500; ++number)
        changed.setObjectForKey(textOf(number), keyOf(number));
    for (int number = 0; number < 50; number += 2)
        changed.setObjectForKey(textOf(number), keyOf(number));
    EXPECT_TRUE(hasAllTexts(changed, 500));
}

TEST(ValuePages, AKeptStringKeepsAPageAndNotTheFile) {
    if (isSanitized) GTEST_SKIP() << "the memory of a sanitizer is another";
    const std::string file = fileOf(5000);
    PropertyListValue kept;
    std::size_t before = 0;
    std::size_t withTree = 0;
    for (int round = 0; round < 2; ++round) {  // the first one makes what lives for ever
        kept = nullptr;
        before = allocatedBytes();
        const NSDictionary tree = treeOf(file);
        withTree = allocatedBytes();
        kept = tree.objectForKey(keyOf(2501));
    }
    const std::size_t after = allocatedBytes();
    EXPECT_GT(withTree - before, 300'000U);
    EXPECT_LE(after, before + 2 * ValuePages::pageSize);
    EXPECT_EQ(kept, textOf(2501));
}

TEST(ValuePages, AllMemoryGoesBackWithTheTree) {
    if (isSanitized) GTEST_SKIP() << "the memory of a sanitizer is another";
    const std::string file = fileOf(3000);
    treeOf(file);
    const std::size_t before = allocatedBytes();
    for (int round = 0; round < 3; ++round) {
        EXPECT_TRUE(hasAllTexts(treeOf(file), 3000));
        // A file that is refused in its middle leaves nothing behind either.
        EXPECT_TRUE(treeOf(file.substr(0, file.size() / 2)).isNull());
    }
    // The heap counts what it caches for a thread as allocated; a tree has ten times as much.
    EXPECT_LE(allocatedBytes(), before + 60'000);
}

TEST(ValuePages, ManyThreadsReleaseTheValuesOfOneFile) {
    const std::string file = fileOf(2000);
    for (int round = 0; round < 5; ++round) {
        std::vector<std::vector<PropertyListValue>> shares(4);
        {
            const NSDictionary tree = treeOf(file);
            for (int number = 0; number < 2000; ++number)
                shares[static_cast<std::size_t>(number) % 4].push_back(
                    tree.objectForKey(keyOf(number)));
        }
        std::vector<std::thread> threads;
        for (std::size_t share = 0; share < shares.size(); ++share) {
            threads.emplace_back([share, values = std::move(shares[share])]() mutable {
                for (std::size_t index = 0; index < values.size(); ++index) {
                    const int number = static_cast<int>(index * 4 + share);
                    ASSERT_EQ(textIn(values[index]), textOf(number));
                    values[index] = nullptr;
                }
            });
        }
        for (std::thread& thread : threads) thread.join();
    }
}

TEST(ValuePages, AForkedChildReleasesAndReadsWhileTheParentDoes) {
    if (isSanitized) GTEST_SKIP() << "a sanitizer does not follow a fork beside threads";
    const std::string file = fileOf(1000);
    const NSDictionary shared = treeOf(file);
    std::atomic<bool> finished = false;
    std::thread other([&] {
        while (!finished) EXPECT_TRUE(hasAllTexts(treeOf(file), 1000));
    });
    for (int round = 0; round < 20; ++round) {
        PropertyListValue kept = shared.objectForKey(keyOf(round));
        const pid_t child = fork();
        if (child == 0) {
            const bool isWhole = hasAllTexts(shared, 1000) && hasAllTexts(treeOf(file), 1000) &&
                                 textIn(std::exchange(kept, nullptr)) == textOf(round);
            _exit(isWhole ? 0 : 1);
        }
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    finished = true;
    other.join();
}
