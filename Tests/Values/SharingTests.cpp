// SPDX-License-Identifier: MIT
// Mutable containers read on one thread while another changes them.

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Values/DictionaryDescent.h"
#include "Platform/Values/PropertyListValue.h"

TEST(Sharing, AReaderSeesADictionaryBeforeOrAfterAChange) {
    // Every version holds the same number under all its keys.
    const auto version = [](int number) {
        const NSMutableDictionary result;
        for (int key = 0; key < 20; ++key) result.setObjectForKey(number, std::to_string(key));
        return result;
    };
    const NSMutableDictionary holder;
    holder.setObjectForKey(version(0), "tree");
    std::atomic<bool> finished = false;
    std::thread writer([&] {
        for (int number = 1; number < 2000; ++number)
            holder.setObjectForKey(version(number), "tree");
        finished = true;
    });
    while (!finished) {
        const NSDictionary seen = holder.objectForKey("tree").dictionary();
        const PropertyListValue first = seen.objectForKey("0");
        for (const auto& [key, value] : seen) ASSERT_EQ(value, first) << key;
    }
    writer.join();
}

TEST(Sharing, IteratingCopyingAndComparingDuringChangesIsSafe) {
    const NSMutableDictionary dictionary;
    const NSMutableArray array;
    std::atomic<bool> finished = false;
    std::thread writer([&] {
        for (int number = 0; number < 5000; ++number) {
            dictionary.setObjectForKey(number, std::to_string(number % 50));
            if (number % 3 == 0) dictionary.removeObjectForKey(std::to_string(number % 50));
            array.addObject(number);
            if (number % 10 == 0) array.removeAllObjects();
        }
        finished = true;
    });
    while (!finished) {
        std::size_t entries = 0;
        for (const auto& [key, value] : dictionary) entries += value.isInteger() ? 1U : 0U;
        EXPECT_LE(entries, 50U);
        EXPECT_LE(array.copy().count(), 10U);
        const NSDictionary copy = dictionary.copy();
        EXPECT_EQ(copy, copy.mutableCopy());
    }
    writer.join();
}

TEST(Sharing, OneObjectIsReleasedByManyThreads) {
    const NSArray shared{"text", NSDictionary{{"a", 1}}};
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([shared] {
            for (int round = 0; round < 5000; ++round) {
                const PropertyListValue element = shared.objectAtIndex(1);
                ASSERT_EQ(element.dictionary().count(), 1U);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(shared.count(), 2U);
}

TEST(Sharing, RemovalsByTwoThreadsLoseNoChange) {
    const NSMutableArray array;
    constexpr int elements = 300;
    const auto work = [&array](int start) {
        for (int number = start; number < elements; number += 2) {
            array.addObject(number);
            if (number % 3 == 0) array.removeObject(number);
        }
    };
    std::thread odd(work, 1);
    work(0);
    odd.join();
    EXPECT_EQ(array.count(), elements - elements / 3U);
    for (const PropertyListValue& element : array) EXPECT_NE(element.integerValue() % 3, 0);
}

TEST(Sharing, TheOneWriterReadsWithoutALockWhileOthersRead) {
    using QRVPlatform::HashedKey;
    const NSMutableDictionary level;
    const NSMutableDictionary root{{"level", level}};
    std::atomic<bool> finished = false;
    std::vector<std::thread> readers;
    for (int reader = 0; reader < 2; ++reader)
        readers.emplace_back([&] {
            while (!finished) {
                const NSDictionary seen = root.objectForKey("level").dictionary().copy();
                for (const auto& [key, value] : seen) ASSERT_EQ(value.stringView(), key);
                std::this_thread::yield();
            }
        });
    for (int number = 0; number < 5000; ++number) {
        const std::string key = "key " + std::to_string(number % 40);
        level.setObjectForKey(key, key);
        if (number % 3 == 0) level.removeObjectForKey("key " + std::to_string(number % 30));
        if (number % 500 == 0) level.removeAllObjects();
        QRVPlatform::WritersDescent descent(root);
        const PropertyListValue* const found = descent.find(HashedKey::of("level"));
        ASSERT_NE(found, nullptr);
        descent.enter(*found);
        const PropertyListValue* const value = descent.find(HashedKey::of(key));
        ASSERT_EQ(value == nullptr ? PropertyListValue() : *value, level.objectForKey(key));
    }
    finished = true;
    for (std::thread& reader : readers) reader.join();
}
