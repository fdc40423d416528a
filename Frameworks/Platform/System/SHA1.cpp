// SPDX-License-Identifier: MIT
// FIPS 180-4, section 6.1. Here it only makes an identifier of a text; a library for it would cost
// every process more at its start than all that it computes.

#include <bit>
#include <cstddef>

#include "Platform/System/MachineIdentity.h"

namespace {

using State = std::array<std::uint32_t, 5>;
constexpr std::size_t blockSize = 64;

std::uint32_t bigEndianWord(std::string_view bytes) {
    std::uint32_t word = 0;
    for (const char byte : bytes.substr(0, 4)) word = word << 8U | static_cast<std::uint8_t>(byte);
    return word;
}

std::array<std::uint32_t, 80> scheduleOf(std::string_view block) {
    std::array<std::uint32_t, 80> words{};
    for (std::size_t t = 0; t < 16; ++t) words[t] = bigEndianWord(block.substr(4 * t));
    for (std::size_t t = 16; t < words.size(); ++t)
        words[t] = std::rotl(words[t - 3] ^ words[t - 8] ^ words[t - 14] ^ words[t - 16], 1);
    return words;
}

/// The function of round `t`, and its constant.
std::uint32_t mixed(std::size_t t, std::uint32_t x, std::uint32_t y, std::uint32_t z) {
    if (t < 20) return ((x & y) ^ (~x & z)) + 0x5a827999U;
    if (t < 40) return (x ^ y ^ z) + 0x6ed9eba1U;
    if (t < 60) return ((x & y) ^ (x & z) ^ (y & z)) + 0x8f1bbcdcU;
    return (x ^ y ^ z) + 0xca62c1d6U;
}

void addBlock(State& state, std::string_view block) {
    const std::array<std::uint32_t, 80> words = scheduleOf(block);
    auto [a, b, c, d, e] = state;
    for (std::size_t t = 0; t < words.size(); ++t) {
        const std::uint32_t next = std::rotl(a, 5) + mixed(t, b, c, d) + e + words[t];
        e = d;
        d = c;
        c = std::rotl(b, 30);
        b = a;
        a = next;
    }
    state = {state[0] + a, state[1] + b, state[2] + c, state[3] + d, state[4] + e};
}

/// What follows the last whole block: the rest of the text, a bit that is set, zeros, and the
/// length in bits.
std::string paddedEnd(std::string_view bytes) {
    constexpr std::size_t lengthSize = 8;
    std::string end(bytes.substr(bytes.size() / blockSize * blockSize));
    end += '\x80';
    while (end.size() % blockSize != blockSize - lengthSize) end += '\0';
    const std::uint64_t bits = std::uint64_t{bytes.size()} * 8;
    for (unsigned shift = 64; shift > 0; shift -= 8)
        end += static_cast<char>(static_cast<std::uint8_t>(bits >> (shift - 8)));
    return end;
}

}  // namespace

SHA1Digest CC_SHA1(std::string_view bytes) {
    State state = {0x67452301U, 0xefcdab89U, 0x98badcfeU, 0x10325476U, 0xc3d2e1f0U};
    const std::string end = paddedEnd(bytes);
    for (; bytes.size() >= blockSize; bytes.remove_prefix(blockSize))
        addBlock(state, bytes.substr(0, blockSize));
    for (std::string_view rest = end; !rest.empty(); rest.remove_prefix(blockSize))
        addBlock(state, rest.substr(0, blockSize));
    SHA1Digest digest{};
    for (std::size_t index = 0; index < digest.size(); ++index)
        digest.at(index) = static_cast<std::uint8_t>(state.at(index / 4) >> (24 - index % 4 * 8));
    return digest;
}
