// SPDX-License-Identifier: MIT
#include "Platform/PropertyLists/TreeWalk.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <iterator>

#include "Platform/PropertyLists/Unicode.h"

namespace QRVPlatform::PropertyLists {
namespace {

void appendReadable(std::string& text, std::string_view key) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    while (!key.empty()) {
        const std::size_t length = lengthOfFirstCharacter(key);
        if (length == 0) {
            const auto byte = static_cast<unsigned char>(key.front());
            text += {'\\', 'x', digits[byte >> 4U], digits[byte & 0xFU]};
        }
        text += key.substr(0, length);
        key.remove_prefix(std::max<std::size_t>(1, length));
    }
}

}  // namespace

std::uint64_t TreeWalk::beginningOf(std::string_view key) {
    std::uint64_t beginning = 0;
    if (key.size() >= sizeof beginning) {
        std::memcpy(&beginning, key.data(), sizeof beginning);
        return std::endian::native == std::endian::big ? beginning : __builtin_bswap64(beginning);
    }
    for (const char character : key)
        beginning = beginning << 8U | static_cast<unsigned char>(character);
    return key.empty() ? 0 : beginning << (sizeof beginning - key.size()) * 8;
}

bool TreeWalk::isBefore(const Entry& left, const Entry& right) {
    return left.beginning != right.beginning ? left.beginning < right.beginning
                                             : left.key < right.key;
}

TreeWalk::Step TreeWalk::next() {
    if (frames_.empty()) {
        if (value_ != nullptr) return Step::EndOfTree;
        value_ = &root_;
        return Step::Value;
    }
    auto* const element = std::get_if<NSArray::Iterator>(&frames_.back().contents);
    return element != nullptr ? nextOfArray(*element) : nextOfDictionary();
}

TreeWalk::Step TreeWalk::nextOfArray(NSArray::Iterator& element) {
    hasKey_ = false;
    if (element == std::default_sentinel) {
        frames_.pop_back();
        return Step::EndOfArray;
    }
    value_ = &*element;
    ++element;
    ++frames_.back().next;
    return Step::Value;
}

TreeWalk::Step TreeWalk::nextOfDictionary() {
    Frame& frame = frames_.back();
    hasKey_ = frame.next != entries_.size();
    if (!hasKey_) {
        entries_.resize(frame.first);
        frames_.pop_back();
        return Step::EndOfDictionary;
    }
    value_ = entries_[frame.next++].value;
    return Step::Value;
}

bool TreeWalk::enter() {
    return value_->isArray() ? enterArray(value_->array()) : enterDictionary(value_->dictionary());
}

bool TreeWalk::enterArray(const NSArray& array) {
    NSArray::Iterator element = array.begin();
    if (element == std::default_sentinel) return false;
    frames_.push_back({.contents = std::move(element), .first = 0, .next = 0});
    return true;
}

bool TreeWalk::enterDictionary(const NSDictionary& dictionary) {
    NSDictionary::Iterator contents = dictionary.begin();
    const std::size_t first = entries_.size();
    for (; contents != std::default_sentinel; ++contents) {
        const NSDictionary::Entry entry = *contents;
        entries_.push_back(
            {.key = entry.key, .beginning = beginningOf(entry.key), .value = &entry.value});
    }
    if (entries_.size() == first) return false;
    std::sort(entries_.begin() + static_cast<std::ptrdiff_t>(first), entries_.end(), isBefore);
    frames_.push_back({.contents = std::move(contents), .first = first, .next = first});
    return true;
}

std::string TreeWalk::keyPath() const {
    std::string keyPath;
    for (const Frame& frame : frames_) {
        if (std::holds_alternative<NSArray::Iterator>(frame.contents)) {
            keyPath += "[" + std::to_string(frame.next - 1) + "]";
        } else {
            if (!keyPath.empty()) keyPath += '.';
            appendReadable(keyPath, currentEntry(frame).key);
        }
    }
    return keyPath;
}

}  // namespace QRVPlatform::PropertyLists
