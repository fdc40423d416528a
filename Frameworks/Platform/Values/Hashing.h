// SPDX-License-Identifier: MIT
#pragma once

// Hashes and comparison of short text, a machine word at a time: the work of every look-up.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace QRVPlatform::ValueObjects {

/// Random in each process, so that nobody can make a settings file whose keys all collide.
struct HashSeed {
    std::uint64_t start;
    std::uint64_t factor;
};
HashSeed makeHashSeed();

inline const HashSeed& hashSeed() {
    static const HashSeed seed = makeHashSeed();
    return seed;
}

template <typename Word>
Word wordAt(const char* bytes) noexcept {
    Word word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

inline std::uint64_t mix(std::uint64_t left, std::uint64_t right) noexcept {
    __extension__ using Wide = unsigned __int128;
    const Wide product = Wide{left} * right;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64U);
}

/// All of 1 to 8 bytes in one word; from 4 on some may be in it twice.
inline std::uint64_t wordOfFew(const char* bytes, std::size_t count) noexcept {
    if (count >= 4) {
        return std::uint64_t{wordAt<std::uint32_t>(bytes)} << 32U |
               wordAt<std::uint32_t>(bytes + count - 4);
    }
    return std::uint64_t{static_cast<unsigned char>(bytes[0])} << 16U |
           std::uint64_t{static_cast<unsigned char>(bytes[count / 2])} << 8U |
           static_cast<unsigned char>(bytes[count - 1]);
}

/// Of text of more than 8 bytes, words are read up to its end, and so the last ones overlap.
inline std::uint32_t hashOf(std::string_view text) noexcept {
    const HashSeed& seed = hashSeed();
    std::uint64_t state = seed.start ^ text.size();
    const char* bytes = text.data();
    const char* const end = bytes + text.size();
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    if (text.size() > 16) {
        for (; end - bytes > 16; bytes += 16) {
            state = mix(wordAt<std::uint64_t>(bytes) ^ seed.factor,
                        wordAt<std::uint64_t>(bytes + 8) ^ state);
        }
        first = wordAt<std::uint64_t>(end - 16);
        last = wordAt<std::uint64_t>(end - 8);
    } else if (text.size() > 8) {
        first = wordAt<std::uint64_t>(bytes);
        last = wordAt<std::uint64_t>(end - 8);
    } else if (!text.empty()) {
        first = wordOfFew(bytes, text.size());
    }
    state = mix(first ^ seed.factor, last ^ state);
    return static_cast<std::uint32_t>(state ^ (state >> 32U));
}

inline bool isSameText(std::string_view left, std::string_view right) noexcept {
    if (left.size() != right.size()) return false;
    const char* one = left.data();
    const char* other = right.data();
    if (left.size() <= 8)
        return left.empty() || wordOfFew(one, left.size()) == wordOfFew(other, left.size());
    const std::size_t last = left.size() - 8;
    for (std::size_t place = 0; place < last; place += 8) {
        if (wordAt<std::uint64_t>(one + place) != wordAt<std::uint64_t>(other + place))
            return false;
    }
    return wordAt<std::uint64_t>(one + last) == wordAt<std::uint64_t>(other + last);
}

}  // namespace QRVPlatform::ValueObjects
