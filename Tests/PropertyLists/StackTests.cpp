// SPDX-License-Identifier: MIT
// The deepest trees on the stack of a small thread.

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "PropertyLists/PropertyListTesting.h"

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define QRV_TESTS_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define QRV_TESTS_SANITIZED 1
#endif
#endif

// Sanitizers surround each variable with room that they watch, and need a stack for themselves.
#ifdef QRV_TESTS_SANITIZED
constexpr std::size_t allowedStack = std::size_t{1024} * 1024;
#else
constexpr std::size_t allowedStack = std::size_t{64} * 1024;
#endif

constexpr std::size_t levels = NSPropertyListSerialization::maximumLevels;

/// Runs `work` on a thread and returns how many bytes of its stack have been used. The stack is far
/// larger than allowed, so that work which uses too much fails the test instead of crashing it.
std::size_t usedStack(const std::function<void()>& work) {
    constexpr std::size_t size = std::size_t{8} * 1024 * 1024;
    constexpr char paint = '\x5A';
    void* const memory =
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    EXPECT_NE(memory, MAP_FAILED);
    auto* const bytes = static_cast<char*>(memory);
    std::fill_n(bytes, size, paint);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    EXPECT_EQ(pthread_attr_setstack(&attributes, memory, size), 0);
    const auto run = [](void* argument) -> void* {
        (*static_cast<const std::function<void()>*>(argument))();
        return nullptr;
    };
    pthread_t thread{};
    EXPECT_EQ(pthread_create(&thread, &attributes, run, const_cast<std::function<void()>*>(&work)),
              0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    const char* const deepest =
        std::find_if(bytes, bytes + size, [](char byte) { return byte != paint; });
    const auto used = static_cast<std::size_t>(bytes + size - deepest);
    munmap(memory, size);
    return used;
}

std::string xmlFile() {
    return repeated("<dict><key>k</key><array>", levels / 2) +
           repeated("</array></dict>", levels / 2);
}

std::string oldStyleFile() {
    return repeated("{k=(", levels / 2) + repeated(");}", levels / 2);
}

std::string bareFile() {
    return "k=" + repeated("(", levels - 1) + repeated(")", levels - 1) + ";";
}

std::string binaryFile() {
    BinaryFile file{.objects = {"\x51k"}, .topObject = 1, .referenceSize = 2};
    for (std::size_t level = 1; level < levels; ++level) {
        file.objects.push_back(level % 2 == 1 ? binaryContainer(0xD0, 1, {0, level + 1}, 2)
                                              : binaryContainer(0xA0, 1, {level + 1}, 2));
    }
    file.objects.push_back(binaryContainer(0xA0, 0, {}, 2));
    return file.bytes();
}

PropertyListValue treeOf(const std::string& file) {
    return NSPropertyListSerialization::propertyListWithData(file).value;
}

struct Deep {
    const char* name;
    std::string file;
};

std::vector<Deep> deepFiles() {
    return {{"XML", xmlFile()},
            {"old style", oldStyleFile()},
            {"without braces", bareFile()},
            {"binary", binaryFile()}};
}

}  // namespace

TEST(SmallStack, ReadingAndDestroyingTheDeepestTree) {
    for (const Deep& deep : deepFiles()) {
        bool isRead = false;
        EXPECT_LE(usedStack([&] { isRead = !treeOf(deep.file).isNull(); }), allowedStack)
            << deep.name;
        EXPECT_TRUE(isRead) << deep.name;
    }
}

TEST(SmallStack, RefusingATreeThatIsTooDeep) {
    const std::string file = repeated("<array>", levels + 1) + repeated("</array>", levels + 1);
    bool isRefused = false;
    EXPECT_LE(usedStack([&] { isRefused = treeOf(file).isNull(); }), allowedStack);
    EXPECT_TRUE(isRefused);
}

TEST(SmallStack, WritingTheDeepestTree) {
    for (const Deep& deep : deepFiles()) {
        const PropertyListValue tree = treeOf(deep.file);
        std::string bytes;
        const auto write = [&] {
            bytes = NSPropertyListSerialization::dataWithPropertyList(tree).bytes;
        };
        EXPECT_LE(usedStack(write), allowedStack) << deep.name;
        EXPECT_TRUE(treeOf(bytes) == tree) << deep.name;
    }
}

TEST(SmallStack, SearchingTheDeepestTreeForRefusedCharacters) {
    PropertyListValue tree = "\x01";
    for (std::size_t level = 0; level < levels; ++level) tree = NSArray::arrayWithObject(tree);
    std::size_t found = 0;
    const auto search = [&] {
        found = NSPropertyListSerialization::refusalsOfStrictReaders(tree, 2).size();
    };
    EXPECT_LE(usedStack(search), allowedStack);
    EXPECT_EQ(found, 1U);
}

TEST(SmallStack, ComparingAndCopyingTheDeepestTree) {
    for (const Deep& deep : deepFiles()) {
        const PropertyListValue tree = treeOf(deep.file);
        const PropertyListValue same = treeOf(deep.file);
        bool areEqual = false;
        EXPECT_LE(usedStack([&] { areEqual = tree == same; }), allowedStack) << deep.name;
        EXPECT_TRUE(areEqual) << deep.name;
        const auto copy = [&] {
            areEqual = tree.isDictionary() ? tree.dictionary().mutableCopy() == same.dictionary()
                                           : tree.array().mutableCopy() == same.array();
        };
        EXPECT_LE(usedStack(copy), allowedStack) << deep.name;
        EXPECT_TRUE(areEqual) << deep.name;
    }
}

TEST(SmallStack, DescribingTheDeepestTree) {
    for (const Deep& deep : deepFiles()) {
        const PropertyListValue tree = treeOf(deep.file);
        std::string text;
        EXPECT_LE(usedStack([&] { text = QRVPlatform::description(tree); }), allowedStack)
            << deep.name;
        EXPECT_NE(text.find("..."), std::string::npos) << deep.name;
    }
}
