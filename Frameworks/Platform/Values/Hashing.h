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

inline std::uint32_t hashOf(std::string_view text) noexcept {
    const HashSeed& seed = hashSeed();
    std::uint64_t state = seed.start ^ text.size();
    const char* bytes = text.data();
    std::size_t left = text.size();
    for (; left > 16; bytes += 16, left -= 16) {
        state = mix(wordAt<std::uint64_t>(bytes) ^ seed.factor,
                    wordAt<std::uint64_t>(bytes + 8) ^ state);
    }
    std::uint64_t last = 0;
    if (left > 8) {
        last = wordAt<std::uint64_t>(bytes + left - 8);
        left = 8;
    }
    const std::uint64_t first = left == 0 ? 0 : wordOfFew(bytes, left);
    state = mix(first ^ seed.factor, last ^ state);
    return static_cast<std::uint32_t>(state ^ (state >> 32U));
}

inline bool isSameText(std::string_view left, std::string_view right) noexcept {
    if (left.size() != right.size()) return false;
    std::size_t rest = left.size();
    const char* one = left.data();
    const char* other = right.data();
    for (; rest > 8; one += 8, other += 8, rest -= 8) {
        if (wordAt<std::uint64_t>(one) != wordAt<std::uint64_t>(other)) return false;
    }
    return rest == 0 || wordOfFew(one, rest) == wordOfFew(other, rest);
}

}  // namespace QRVPlatform::ValueObjects
