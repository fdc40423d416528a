// SPDX-License-Identifier: MIT
#pragma once

// The shared objects behind arrays and dictionaries. Inner header of this folder.
//
// An immutable container is one block of memory, its contents, that never changes. A mutable
// container refers to such a block: a copy of it, a walk over it and a mutable copy of it all hold
// that block, and a change works on the block in place while nobody else holds it, else on a clone.

#include <span>
#include <utility>

#include "Platform/Threads/ShortLock.h"
#include "Platform/Values/Objects.h"

namespace QRVPlatform::ValueObjects {

struct ArrayObject : Object {
    using Contents = ArrayContents;
    explicit ArrayObject(bool mutableObject) noexcept : Object(Kind::Array, mutableObject) {}
};

struct DictionaryObject : Object {
    using Contents = DictionaryContents;
    explicit DictionaryObject(bool mutableObject) noexcept
        : Object(Kind::Dictionary, mutableObject) {}
};

/// Elements follow the object in the same allocation.
class ArrayContents final : public ArrayObject {
  public:
    static Reference<ArrayContents> make(std::size_t capacity);
    /// At least `needed`, and so much that growing time and again costs little.
    static std::size_t grownCapacity(std::size_t needed) noexcept;
    /// The same elements, the values shared, in a block with room for more.
    static Reference<ArrayContents> clone(const ArrayContents& original, std::size_t capacity);
    static void destroy(ArrayContents* contents) noexcept;

    [[nodiscard]] std::span<const PropertyListValue> elements() const noexcept {
        return {reinterpret_cast<const PropertyListValue*>(this + 1), count_};
    }
    [[nodiscard]] std::size_t count() const noexcept { return count_; }
    [[nodiscard]] std::size_t capacity() const noexcept { return capacity_; }

    /// @name While nobody else holds the object
    /// @{
    /// There must be room.
    void append(PropertyListValue value) noexcept;
    void takeAll(ArrayContents& other) noexcept;
    /// @}

  private:
    explicit ArrayContents(std::uint32_t capacity) noexcept
        : ArrayObject(false), capacity_(capacity) {}
    [[nodiscard]] PropertyListValue* begin() noexcept {
        return reinterpret_cast<PropertyListValue*>(this + 1);
    }
    std::uint32_t count_ = 0;
    std::uint32_t capacity_;
};

/// Entries in the order of their arrival, and a hash index of them. The index and then the entries
/// follow the object in the same allocation.
///
/// A slot of the index holds the number of an entry, counted from 1, in its low bits and the high
/// bits of the key's hash in the others; a free slot is 0. The low bits of the hash say where the
/// search for a slot begins, so that all of the hash is compared before a key is looked at.
class DictionaryContents final : public DictionaryObject {
  public:
    struct Entry {
        Reference<StringObject> key;
        PropertyListValue value;
    };

    static Reference<DictionaryContents> make(std::size_t capacity);
    static std::size_t grownCapacity(std::size_t needed) noexcept;
    /// The same entries, keys and values shared, in a block with room for more.
    static Reference<DictionaryContents> clone(const DictionaryContents& original,
                                               std::size_t capacity);
    static void destroy(DictionaryContents* contents) noexcept;

    [[nodiscard]] std::span<const Entry> entries() const noexcept {
        return {const_cast<DictionaryContents*>(this)->begin(), count_};
    }
    [[nodiscard]] std::size_t count() const noexcept { return count_; }
    [[nodiscard]] std::size_t capacity() const noexcept { return capacity_; }
    static constexpr std::size_t notFound = static_cast<std::size_t>(-1);
    /// The place of the key among the entries.
    [[nodiscard]] std::size_t indexOf(std::string_view key, std::uint32_t hash) const noexcept;
    /// The value under the key, and null where there is none.
    [[nodiscard, gnu::always_inline]] inline const PropertyListValue* find(
        std::string_view key, std::uint32_t hash) const noexcept {
        const std::size_t index = indexOf(key, hash);
        return index == notFound ? nullptr : &entries()[index].value;
    }

    /// @name While nobody else holds the object
    /// @{
    /// The key must not be there, and there must be room.
    void append(Reference<StringObject> key, PropertyListValue value) noexcept;
    /// Returns the value that was there before.
    PropertyListValue exchange(std::size_t index, PropertyListValue value) noexcept;
    /// Returns the entry that was removed, if any. The last entry takes its place.
    Entry remove(std::string_view key) noexcept;
    void takeAll(DictionaryContents& other) noexcept;
    /// @}

  private:
    DictionaryContents(std::uint8_t slotBits, std::uint32_t capacity) noexcept
        : DictionaryObject(false), slotBits_(slotBits), capacity_(capacity) {}

    [[nodiscard]] std::uint32_t slotMask() const noexcept { return (1U << slotBits_) - 1; }
    [[nodiscard]] std::uint32_t* slots() noexcept {
        return reinterpret_cast<std::uint32_t*>(this + 1);
    }
    [[nodiscard]] const std::uint32_t* slots() const noexcept {
        return reinterpret_cast<const std::uint32_t*>(this + 1);
    }
    [[nodiscard]] Entry* begin() noexcept {
        return reinterpret_cast<Entry*>(reinterpret_cast<char*>(this + 1) + sizeOfIndex(slotBits_));
    }
    /// In bytes; entries follow at an address that is right for them.
    static constexpr std::size_t sizeOfIndex(unsigned slotBits) noexcept {
        return slotBits == 0 ? alignof(Entry) : sizeof(std::uint32_t) << slotBits;
    }

    [[nodiscard]] std::uint32_t slotOf(std::size_t entryIndex) const noexcept;
    void insertSlot(std::uint32_t hash, std::size_t entryIndex) noexcept;
    void removeSlot(std::uint32_t slot) noexcept;

    const std::uint8_t slotBits_;
    std::uint32_t count_ = 0;
    const std::uint32_t capacity_;
};

[[gnu::always_inline]] inline std::size_t DictionaryContents::indexOf(
    std::string_view key, std::uint32_t hash) const noexcept {
    const std::uint32_t mask = slotMask();
    const std::uint32_t* const index = slots();
    const Entry* const first = entries().data();
    for (std::uint32_t slot = hash & mask; index[slot] != 0; slot = (slot + 1) & mask) {
        if (((index[slot] ^ hash) & ~mask) != 0) continue;
        const std::size_t found = (index[slot] & mask) - 1;
        if (isSameText(first[found].key->view(), key)) return found;
    }
    return notFound;
}

/// A mutable array or dictionary. Its contents are taken, and changed, under the lock.
template <typename ObjectType>
class MutableContainer final : public ObjectType {
  public:
    using Contents = typename ObjectType::Contents;

    explicit MutableContainer(Reference<Contents> contents) noexcept
        : ObjectType(true), contents_(std::move(contents)) {}

    template <typename Look>
    auto read(Look&& look) const {
        const LockGuard guard(lock_);
        return look(std::as_const(*contents_.get()));
    }

    [[nodiscard]] Reference<Contents> contents() const {
        const LockGuard guard(lock_);
        return contents_;
    }

    /// Lets `edit(contents)` change the contents, after making room for `more(contents)` elements
    /// (which moves none of them to another place), and returns what it returns: the values it took
    /// out, so that they are destroyed outside the lock.
    template <typename More, typename Edit>
    auto change(More&& more, Edit&& edit) {
        Reference<Contents> replaced;
        const LockGuard guard(lock_);
        replaced = makeRoom(more(std::as_const(*contents_.get())));
        return edit(*contents_.get());
    }

    void setContents(Reference<Contents> contents) {
        const LockGuard guard(lock_);
        std::swap(contents_, contents);
    }

  private:
    Reference<Contents> makeRoom(std::size_t more) QRV_REQUIRES(lock_);

    mutable ShortLock lock_;
    Reference<Contents> contents_ QRV_GUARDED_BY(lock_);
};

/// The contents of an array or dictionary as they were when this was made. Those of an immutable
/// one cost no reference: the container must live as long as this.
template <typename ObjectType>
class CurrentContents {
  public:
    using Contents = typename ObjectType::Contents;

    explicit CurrentContents(const PropertyListValue& container) { enter(container); }
    explicit CurrentContents(const NSDictionary& dictionary) { enter(dictionary.object_.get()); }

    /// Goes on to a container that is among the contents.
    void enter(const PropertyListValue& container) {
        enter(static_cast<const ObjectType*>(container.payload_.object));
    }
    const Contents* operator->() const noexcept { return contents_; }

  private:
    void enter(const ObjectType* object) {
        if (!object->isMutable) {
            contents_ = static_cast<const Contents*>(object);
            return;
        }
        kept_ = static_cast<const MutableContainer<ObjectType>*>(object)->contents();
        contents_ = kept_.get();
    }

    // Holds all that has been entered since: what is in there does not go before it.
    Reference<Contents> kept_;
    const Contents* contents_ = nullptr;
};

}  // namespace QRVPlatform::ValueObjects
