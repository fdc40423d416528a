// SPDX-License-Identifier: MIT
#pragma once

// The shared objects behind arrays and dictionaries.
//
// An immutable container is one block of memory, its contents, that never changes. A mutable
// container refers to such a block. Copies of the container and walks over it share that block. A
// change edits the block in place while nobody else shares it, and a clone of it otherwise.

#include <span>
#include <utility>

#include "Platform/Threads/ShortLock.h"
#include "Platform/Values/Objects.h"

namespace QRVPlatform::ValueObjects {

class ArrayContents;
class DictionaryContents;

struct ArrayObject : Object {
    using Contents = ArrayContents;
    explicit ArrayObject(bool mutableObject, bool objectInPage = false) noexcept
        : Object(Kind::Array, mutableObject, objectInPage) {}
};

struct DictionaryObject : Object {
    using Contents = DictionaryContents;
    explicit DictionaryObject(bool mutableObject, bool objectInPage = false) noexcept
        : Object(Kind::Dictionary, mutableObject, objectInPage) {}
};

/// Elements follow the object in the same allocation.
class ArrayContents final : public ArrayObject {
  public:
    static Reference<ArrayContents> make(std::size_t capacity, ValuePages* pages = nullptr);
    /// At least `needed`, and enough that repeated growth costs little.
    static std::size_t grownCapacity(std::size_t needed) noexcept;
    /// The same elements, the values shared, in a block with room for more.
    static Reference<ArrayContents> clone(const ArrayContents& original, std::size_t capacity);
    static void destroy(ArrayContents* contents) noexcept;

    [[nodiscard]] std::span<const PropertyListValue> elements() const noexcept {
        return {reinterpret_cast<const PropertyListValue*>(this + 1), count_};
    }
    [[nodiscard]] std::size_t count() const noexcept { return count_; }
    [[nodiscard]] std::size_t capacity() const noexcept { return capacity_; }

    /// What `remove` took out.
    using Removed = Reference<ArrayContents>;

    /// @name Only while nobody else holds the object
    /// @{
    /// There must be room.
    void append(PropertyListValue value) noexcept;
    /// Removes the elements at `places`, which are in ascending order, and returns them.
    [[nodiscard]] Removed remove(std::span<const std::size_t> places);
    /// Moves all elements of `other` to the end. There must be room.
    void takeAll(ArrayContents& other) noexcept;
    /// @}

  private:
    ArrayContents(std::uint32_t capacity, bool objectInPage) noexcept
        : ArrayObject(false, objectInPage), capacity_(capacity) {}
    [[nodiscard]] PropertyListValue* begin() noexcept {
        return reinterpret_cast<PropertyListValue*>(this + 1);
    }
    std::uint32_t count_ = 0;
    std::uint32_t capacity_;
};

/// Entries in the order of insertion, and a hash index of them. The index and then the entries
/// follow the object in the same allocation.
///
/// A slot of the index holds the number of an entry, counted from 1, in its low bits and the high
/// bits of the key's hash in the others; a free slot is 0. The low bits of the hash say where the
/// search for a slot begins, so the whole hash has been compared before a key is compared.
class DictionaryContents final : public DictionaryObject {
  public:
    struct Entry {
        Reference<StringObject> key;
        PropertyListValue value;
    };

    static Reference<DictionaryContents> make(std::size_t capacity, ValuePages* pages = nullptr);
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
    /// The place of the key among the entries, or `notFound`.
    [[nodiscard]] std::size_t indexOf(std::string_view key, std::uint32_t hash) const noexcept;
    /// The value under the key; null when the key is missing.
    [[nodiscard, gnu::always_inline]] inline const PropertyListValue* find(
        std::string_view key, std::uint32_t hash) const noexcept {
        const std::size_t index = indexOf(key, hash);
        return index == notFound ? nullptr : &entries()[index].value;
    }

    /// What `exchange` or `remove` took out.
    using Removed = PropertyListValue;

    /// @name Only while nobody else holds the object
    /// @{
    /// The key must be missing, and there must be room.
    void append(Reference<StringObject> key, PropertyListValue value) noexcept;
    /// Appends an entry, or replaces the value of the one that has the key. There must be room.
    void set(Reference<StringObject> key, PropertyListValue value) noexcept;
    /// Replaces the value of an entry and returns the previous one.
    [[nodiscard]] Removed exchange(std::size_t index, PropertyListValue value) noexcept;
    /// Removes an entry and returns its value. The last entry takes its place.
    [[nodiscard]] Removed remove(std::size_t index) noexcept;
    /// Moves all entries of `other` to the end. There must be room, and the keys must be missing.
    void takeAll(DictionaryContents& other) noexcept;
    /// @}

  private:
    DictionaryContents(std::uint8_t slotBits, std::uint32_t capacity, bool objectInPage) noexcept
        : DictionaryObject(false, objectInPage), slotBits_(slotBits), capacity_(capacity) {}

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
    /// In bytes; the entries behind it are aligned.
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

template <typename ObjectType>
class Editing;

/// A mutable array or dictionary. Its contents are read under the lock, and changed by an
/// `Editing`.
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

    /// The contents without lock and reference, for a thread that alone changes the container: no
    /// other thread replaces them, or edits them in place. Valid until this thread changes it.
    [[nodiscard]] const Contents& contentsOfItsWriter() const noexcept QRV_NOT_CHECKED {
        return *contents_.get();
    }

    void setContents(Reference<Contents> contents) {
        const LockGuard guard(lock_);
        std::swap(contents_, contents);  // the previous ones are destroyed after the lock
    }

  private:
    friend class Editing<ObjectType>;

    mutable ShortLock lock_;
    Reference<Contents> contents_ QRV_GUARDED_BY(lock_);
};

/// The contents of a dictionary for a thread that alone changes it, if any thread does.
inline const DictionaryContents& contentsForTheWriter(const Object* dictionary) noexcept {
    if (!dictionary->isMutable) return *static_cast<const DictionaryContents*>(dictionary);
    return static_cast<const MutableContainer<DictionaryObject>*>(dictionary)
        ->contentsOfItsWriter();
}

/// Edits a mutable container under its lock, which is held as long as this lives:
///
///     Editing edit(container, 1);
///     edit->append(value);
///
/// Destroying a value may take long (a tree) and take other locks, so no value is destroyed under
/// this one: `discard` keeps what was taken out until the lock is free.
template <typename ObjectType>
class QRV_SCOPED_LOCK Editing {
  public:
    using Container = MutableContainer<ObjectType>;
    using Contents = typename ObjectType::Contents;

    /// Takes the lock. Nothing may be changed before `makeRoom`.
    explicit Editing(Container& container) QRV_ACQUIRES(container.lock_)
        : lock_(container.lock_), contents_(container.contents_) {
        lock_.lock();
    }
    /// Takes the lock and makes room for `more` elements.
    Editing(Container& container, std::size_t more) QRV_ACQUIRES(container.lock_)
        : Editing(container) {
        makeRoom(more);
    }
    Editing(const Editing&) = delete;
    Editing& operator=(const Editing&) = delete;
    ~Editing() QRV_RELEASES() { lock_.unlock(); }

    /// The contents as they are, perhaps shared.
    [[nodiscard]] const Contents& current() const noexcept { return *contents_.get(); }
    /// From here on the contents belong to the container alone and have room for `more` elements.
    /// No element changes its place.
    void makeRoom(std::size_t more) {
        const bool isUnshared = contents_->references.load(std::memory_order_acquire) == 1;
        if (!isUnshared || contents_->count() + more > contents_->capacity())
            replaceContents(more, isUnshared);
    }
    Contents* operator->() noexcept { return contents_.get(); }
    void discard(typename Contents::Removed removed) noexcept { removed_ = std::move(removed); }

  private:
    void replaceContents(std::size_t more, bool isUnshared);

    ShortLock& lock_;
    Reference<Contents>& contents_;
    // Members are destroyed after the destructor's body, that is, after the lock.
    Reference<Contents> replaced_;
    typename Contents::Removed removed_;
};

/// The contents of an array or dictionary as they were when this was made. Those of an immutable
/// one cost no reference: the container must live as long as this.
template <typename ObjectType>
class CurrentContents {
  public:
    using Contents = typename ObjectType::Contents;

    explicit CurrentContents(const PropertyListValue& container) { enter(container); }
    explicit CurrentContents(const NSDictionary& dictionary) {
        enter(static_cast<const ObjectType*>(Access::objectOf(dictionary)));
    }

    /// Continues with a container that is among the contents.
    void enter(const PropertyListValue& container) {
        enter(static_cast<const ObjectType*>(Access::objectOf(container)));
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

    // Keeps the contents of the last mutable level alive, and with them the immutable levels below.
    Reference<Contents> kept_;
    const Contents* contents_ = nullptr;
};

}  // namespace QRVPlatform::ValueObjects
