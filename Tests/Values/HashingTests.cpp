// SPDX-License-Identifier: MIT
// Hashes and comparison of keys, of every length that is read in another way.
#include "Platform/Values/Hashing.h"

#include <gtest/gtest.h>

#include <string>

using QRVPlatform::ValueObjects::hashOf;
using QRVPlatform::ValueObjects::isSameText;

namespace {

constexpr std::size_t lengths = 60;

std::string textOf(std::size_t length) {
    std::string text;
    for (std::size_t index = 0; index < length; ++index)
        text += static_cast<char>('a' + index % 26);
    return text;
}

}  // namespace

TEST(Hashing, TextIsTheSameWhereverItLies) {
    for (std::size_t length = 0; length < lengths; ++length) {
        const std::string text = textOf(length);
        const std::string around = "x" + text + "y";
        const auto within = std::string_view(around).substr(1, length);
        EXPECT_TRUE(isSameText(text, within)) << length;
        EXPECT_EQ(hashOf(text), hashOf(within)) << length;
    }
}

TEST(Hashing, EveryByteCounts) {
    for (std::size_t length = 0; length < lengths; ++length) {
        const std::string text = textOf(length);
        for (std::size_t index = 0; index < length; ++index) {
            std::string other = text;
            other[index] ^= 1;
            EXPECT_FALSE(isSameText(text, other)) << index << " of " << length;
            EXPECT_NE(hashOf(text), hashOf(other)) << index << " of " << length;
        }
    }
}

TEST(Hashing, TheLengthCounts) {
    for (std::size_t length = 1; length < lengths; ++length) {
        const std::string zeros(length, '\0');
        EXPECT_FALSE(isSameText(zeros, std::string_view(zeros).substr(1))) << length;
        EXPECT_NE(hashOf(zeros), hashOf(std::string_view(zeros).substr(1))) << length;
    }
}
