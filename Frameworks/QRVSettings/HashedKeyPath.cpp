// SPDX-License-Identifier: MIT
#include "QRVSettings/HashedKeyPath.h"

#include <bit>
#include <cstdint>

#include "Platform/System/System.h"
#include "Platform/Values/Hashing.h"
#include "QRVSettings/NSDictionary+QRV.h"

namespace QRVInside {

namespace {

constexpr char separator = '.';

// Eight bytes of text, the first one in the low bits.
std::uint64_t eightBytes(const char* bytes) {
    const auto word = QRVPlatform::ValueObjects::wordAt<std::uint64_t>(bytes);
    return std::endian::native == std::endian::little ? word : __builtin_bswap64(word);
}

// The upper bit of each byte that is a separator, exactly.
std::uint64_t separatorsIn(std::uint64_t bytes) {
    constexpr std::uint64_t one = 0x0101010101010101;
    constexpr std::uint64_t lowBits = 0x7f * one;
    const std::uint64_t differences = bytes ^ (separator * one);
    return ~(((differences & lowBits) + lowBits) | differences | lowBits);
}

}  // namespace

HashedKeyPath::HashedKeyPath(std::string_view keyPath) : text_(keyPath) {
    const char* const bytes = keyPath.data();
    std::size_t start = 0;
    const auto addUpTo = [this, bytes, &start](std::uint64_t found, std::size_t offset) {
        for (; found != 0; found &= found - 1) {
            const std::size_t end = offset + static_cast<unsigned>(std::countr_zero(found)) / 8;
            add({bytes + start, end - start});
            start = end + 1;
        }
    };
    std::size_t offset = 0;
    for (; offset + 8 <= keyPath.size(); offset += 8)
        addUpTo(separatorsIn(eightBytes(bytes + offset)), offset);
    if (keyPath.size() >= 8 && offset < keyPath.size()) {
        // The last eight bytes, without those that have been searched.
        const std::size_t last = keyPath.size() - 8;
        addUpTo(separatorsIn(eightBytes(bytes + last)) >> (offset - last) * 8, offset);
    } else {
        for (; offset < keyPath.size(); ++offset)
            if (bytes[offset] == separator) addUpTo(0x80, offset);
    }
    add({bytes + start, keyPath.size() - start});
}

void HashedKeyPath::add(std::string_view key) {
    const QRVPlatform::HashedKey hashed = QRVPlatform::HashedKey::of(key);
    if (count_ < fewKeys) {
        few_[count_] = hashed;
    } else {
        if (count_ == fewKeys) ofLongPath_.assign(few_.begin(), few_.end());
        ofLongPath_.push_back(hashed);
    }
    ++count_;
}

const PropertyListValue* valueOfTheWriter(const NSDictionary& root, const HashedKeyPath& keyPath) {
    if (root.isNull()) return nullptr;
    QRVPlatform::WritersDescent descent(root);
    return found(descent, keyPath);
}

// Short while all levels are there and are mutable, as they are after a first write.
void setValueOfTheWriter(const NSMutableDictionary& root, const PropertyListValue& value,
                         const HashedKeyPath& keyPath) {
    const auto keys = keyPath.keys();
    QRVPlatform::WritersEdit edit(root);
    for (const QRVPlatform::HashedKey& key : keys.first(keys.size() - 1))
        if (!edit.enter(key))
            return NSDictionaryQRV::setObjectAtKeyPath(root, value, keyPath.text());
    edit.set(value, keys.back());
}

void logValueOnTheWay(const HashedKeyPath& keyPath) {
    NSLog("object is not a dictionary");
    NSLog("%@", {keyPath.text()});
}

}  // namespace QRVInside
