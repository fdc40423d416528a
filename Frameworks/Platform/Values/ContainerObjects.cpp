// SPDX-License-Identifier: MIT
#include "Platform/Values/ContainerObjects.h"

#include <algorithm>
#include <bit>
#include <memory>
#include <stdexcept>

namespace QRVPlatform::ValueObjects {
namespace {

// A slot of an index has no room for larger numbers.
constexpr std::size_t maximumCapacity = std::size_t{1} << 30U;

std::uint32_t checkedCapacity(std::size_t capacity) {
    if (capacity > maximumCapacity) throw std::length_error("a container of too many values");
    return static_cast<std::uint32_t>(capacity);
}

constexpr std::size_t roomOfSlots(unsigned slotBits) noexcept {
    const std::size_t slots = std::size_t{1} << slotBits;
    return slots - (slots + 3) / 4;  // a search ends at a free slot
}

constexpr std::uint8_t slotBitsFor(std::size_t capacity) noexcept {
    auto bits = static_cast<std::uint8_t>(std::bit_width(capacity));  // never too many
    while (roomOfSlots(bits) < capacity) ++bits;
    return bits;
}

static_assert(roomOfSlots(0) == 0 && roomOfSlots(1) == 1 && roomOfSlots(2) == 3);
static_assert(sizeof(DictionaryContents) % alignof(DictionaryContents::Entry) == 0);
static_assert(sizeof(DictionaryContents) == 16 && sizeof(ArrayContents) == 16);

}  // namespace

Reference<ArrayContents> ArrayContents::make(std::size_t capacity, ValuePages* pages) {
    const std::uint32_t checked = checkedCapacity(capacity);
    const ObjectMemory memory =
        ObjectMemory::take(sizeof(ArrayContents) + capacity * sizeof(PropertyListValue), pages);
    return Reference(new (memory.place) ArrayContents(checked, memory.isInPage));
}

std::size_t ArrayContents::grownCapacity(std::size_t needed) noexcept {
    return std::max(std::size_t{4}, needed + needed / 2);
}

Reference<ArrayContents> ArrayContents::clone(const ArrayContents& original, std::size_t capacity) {
    Reference<ArrayContents> result = make(capacity);
    for (const PropertyListValue& element : original.elements()) result->append(element);
    return result;
}

void ArrayContents::destroy(ArrayContents* contents) noexcept {
    std::destroy_n(contents->begin(), contents->count_);
    ObjectMemory::destroy(contents);
}

void ArrayContents::append(PropertyListValue value) noexcept {
    new (begin() + count_) PropertyListValue(std::move(value));
    ++count_;
}

ArrayContents::Removed ArrayContents::remove(std::span<const std::size_t> places) {
    Removed removed = make(places.size());
    PropertyListValue* kept = begin();
    auto place = places.begin();
    for (std::size_t index = 0; index < count_; ++index) {
        PropertyListValue& element = begin()[index];
        if (place != places.end() && *place == index) {
            removed->append(std::move(element));
            ++place;
        } else {
            (kept++)->swap(element);
        }
    }
    std::destroy(kept, begin() + count_);
    count_ = static_cast<std::uint32_t>(kept - begin());
    return removed;
}

void ArrayContents::takeAll(ArrayContents& other) noexcept {
    std::uninitialized_move_n(other.begin(), other.count_, begin() + count_);
    count_ += other.count_;
}

Reference<DictionaryContents> DictionaryContents::make(std::size_t capacity, ValuePages* pages) {
    const std::uint32_t checked = checkedCapacity(capacity);
    const std::uint8_t slotBits = slotBitsFor(capacity);
    const ObjectMemory memory = ObjectMemory::take(
        sizeof(DictionaryContents) + sizeOfIndex(slotBits) + capacity * sizeof(Entry), pages);
    auto* const contents =
        new (memory.place) DictionaryContents(slotBits, checked, memory.isInPage);
    std::fill_n(contents->slots(), std::size_t{1} << slotBits, 0U);
    return Reference(contents);
}

std::size_t DictionaryContents::grownCapacity(std::size_t needed) noexcept {
    return roomOfSlots(slotBitsFor(needed));
}

Reference<DictionaryContents> DictionaryContents::clone(const DictionaryContents& original,
                                                        std::size_t capacity) {
    Reference<DictionaryContents> result = make(capacity);
    for (const Entry& entry : original.entries()) result->append(entry.key, entry.value);
    return result;
}

void DictionaryContents::destroy(DictionaryContents* contents) noexcept {
    std::destroy_n(contents->begin(), contents->count_);
    ObjectMemory::destroy(contents);
}

void DictionaryContents::append(Reference<StringObject> key, PropertyListValue value) noexcept {
    insertSlot(key->hash, count_);
    new (begin() + count_) Entry{std::move(key), std::move(value)};
    ++count_;
}

void DictionaryContents::set(Reference<StringObject> key, PropertyListValue value) noexcept {
    const std::uint32_t mask = slotMask();
    const std::uint32_t hash = key->hash;
    std::uint32_t* const index = slots();
    std::uint32_t slot = hash & mask;
    for (; index[slot] != 0; slot = (slot + 1) & mask) {
        if (((index[slot] ^ hash) & ~mask) != 0) continue;
        Entry& entry = begin()[(index[slot] & mask) - 1];
        if (isSameText(entry.key->view(), key->view())) return entry.value.swap(value);
    }
    new (begin() + count_) Entry{std::move(key), std::move(value)};
    index[slot] = (hash & ~mask) | ++count_;
}

DictionaryContents::Removed DictionaryContents::exchange(std::size_t index,
                                                         PropertyListValue value) noexcept {
    begin()[index].value.swap(value);
    return value;
}

DictionaryContents::Removed DictionaryContents::remove(std::size_t index) noexcept {
    const std::size_t last = count_ - 1;
    const std::uint32_t slot = slotOf(index);
    std::uint32_t& slotOfLast = slots()[slotOf(last)];
    slotOfLast = (slotOfLast & ~slotMask()) | static_cast<std::uint32_t>(index + 1);
    std::swap(begin()[index], begin()[last]);
    removeSlot(slot);
    Removed removed = std::move(begin()[last].value);
    std::destroy_at(begin() + last);
    --count_;
    return removed;
}

void DictionaryContents::takeAll(DictionaryContents& other) noexcept {
    for (Entry& entry : std::span(other.begin(), other.count_))
        append(std::move(entry.key), std::move(entry.value));
}

std::uint32_t DictionaryContents::slotOf(std::size_t entryIndex) const noexcept {
    const std::uint32_t mask = slotMask();
    std::uint32_t slot = entries()[entryIndex].key->hash & mask;
    while ((slots()[slot] & mask) != entryIndex + 1) slot = (slot + 1) & mask;
    return slot;
}

void DictionaryContents::insertSlot(std::uint32_t hash, std::size_t entryIndex) noexcept {
    const std::uint32_t mask = slotMask();
    std::uint32_t slot = hash & mask;
    while (slots()[slot] != 0) slot = (slot + 1) & mask;
    slots()[slot] = (hash & ~mask) | static_cast<std::uint32_t>(entryIndex + 1);
}

// A gap would end the search for later slots too early, so slots behind it move into it where their
// own search allows.
void DictionaryContents::removeSlot(std::uint32_t slot) noexcept {
    const std::uint32_t mask = slotMask();
    std::uint32_t* const index = slots();
    std::uint32_t gap = slot;
    for (std::uint32_t next = (gap + 1) & mask; index[next] != 0; next = (next + 1) & mask) {
        const std::uint32_t home = entries()[(index[next] & mask) - 1].key->hash & mask;
        if (((next - home) & mask) >= ((next - gap) & mask)) {
            index[gap] = index[next];
            gap = next;
        }
    }
    index[gap] = 0;
}

template <typename ObjectType>
void Editing<ObjectType>::replaceContents(std::size_t more, bool isUnshared) {
    const std::size_t needed = contents_->count() + more;
    const std::size_t capacity = more == 0 ? needed : Contents::grownCapacity(needed);
    Reference<Contents> larger =
        isUnshared ? Contents::make(capacity) : Contents::clone(*contents_.get(), capacity);
    if (isUnshared) larger->takeAll(*contents_.get());
    replaced_ = std::exchange(contents_, std::move(larger));
}

template class Editing<ArrayObject>;
template class Editing<DictionaryObject>;

}  // namespace QRVPlatform::ValueObjects
