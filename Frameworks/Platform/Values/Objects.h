// SPDX-License-Identifier: MIT
#pragma once

// The shared objects behind the handles of PropertyListValue.h. Inner header of this folder.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/Values/PropertyListValue.h"
#include "Platform/Values/ShortLock.h"

namespace ValueObjects {

using Kind = PropertyListValue::Kind;

/// Gives one reference up; answers whether it was the last. Whoever holds the only one need not
/// write, which is much cheaper: nobody is left who could take another.
inline bool isLastReference(std::atomic<std::uint32_t>& references) noexcept {
    return references.load(std::memory_order_acquire) == 1 ||
           references.fetch_sub(1, std::memory_order_acq_rel) == 1;
}

struct Object {
    explicit Object(Kind objectKind) noexcept : kind(objectKind) {}
    std::atomic<std::uint32_t> references{1};
    const Kind kind;
};

/// Characters follow the object in the same allocation.
struct StringObject : Object {
    const std::uint32_t hash;
    const std::size_t length;

    static Reference<StringObject> make(std::string_view text);
    [[nodiscard]] std::string_view view() const noexcept {
        return {reinterpret_cast<const char*>(this + 1), length};
    }

  private:
    StringObject(std::uint32_t hashOfText, std::size_t lengthOfText) noexcept
        : Object(Kind::String), hash(hashOfText), length(lengthOfText) {}
};

std::uint64_t makeHashSeed() noexcept;

inline std::uint64_t hashSeed() noexcept {
    static const std::uint64_t seed = makeHashSeed();
    return seed;
}

inline std::uint64_t mix(std::uint64_t left, std::uint64_t right) noexcept {
    __extension__ using Wide = unsigned __int128;
    const Wide product = Wide{left} * right;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64U);
}

inline std::uint32_t hashOf(std::string_view text) noexcept {
    constexpr std::uint64_t oddConstant = 0x9e3779b97f4a7c15ULL;
    std::uint64_t state = hashSeed() ^ text.size();
    while (text.size() >= sizeof(std::uint64_t)) {
        std::uint64_t chunk = 0;
        std::memcpy(&chunk, text.data(), sizeof chunk);
        state = mix(state ^ chunk, oddConstant);
        text.remove_prefix(sizeof chunk);
    }
    std::uint64_t rest = 0;
    if (!text.empty()) std::memcpy(&rest, text.data(), text.size());
    state = mix(state ^ rest, oddConstant);
    return static_cast<std::uint32_t>(state ^ (state >> 32U));
}

struct DataObject : Object {
    explicit DataObject(std::string_view contents) : Object(Kind::Data), bytes(contents) {}
    const std::string bytes;
};

struct ColorObject : Object {
    explicit ColorObject(const NSColor& value) : Object(Kind::Color), color(value) {}
    const NSColor color;
};

/// Contents that several objects and iterations share until one of them changes.
template <typename Self, typename SharedType>
struct SharedContents {
    using Contents = SharedType;
    Contents contents;
    mutable std::atomic<std::uint32_t> references{1};

    void retain() const noexcept { references.fetch_add(1, std::memory_order_relaxed); }
    void release() const noexcept {
        if (isLastReference(references)) delete static_cast<const Self*>(this);
    }
    [[nodiscard]] bool isShared() const noexcept {
        return references.load(std::memory_order_acquire) != 1;
    }
};

/// A container object: its own identity and mutability over contents that may be shared.
///
/// An immutable object's contents never change, so it takes no lock. A mutable object's contents
/// are read and changed under the lock; contents that somebody else holds are cloned before a
/// change.
template <typename Snapshot>
struct ContainerObject : Object {
    using Contents = typename Snapshot::Contents;

    ContainerObject(Kind objectKind, bool mutableObject, const Snapshot* shared) noexcept
        : Object(objectKind), isMutable(mutableObject), shared_(shared) {}
    ContainerObject(const ContainerObject&) = delete;
    ContainerObject& operator=(const ContainerObject&) = delete;
    ~ContainerObject() { shared_->release(); }

    const bool isMutable;

    /// What `look(contents)` returns.
    template <typename Look>
    auto read(Look&& look) const {
        if (!isMutable) return look(shared_->contents);
        const std::lock_guard guard(lock_);
        return look(shared_->contents);
    }

    /// The contents as they are now; the caller releases them.
    [[nodiscard]] const Snapshot* snapshot() const noexcept {
        if (isMutable) {
            const std::lock_guard guard(lock_);
            shared_->retain();
            return shared_;
        }
        shared_->retain();
        return shared_;
    }

    /// Lets `edit(contents)` change the contents and returns what it returns: the values it took
    /// out, so that they are destroyed outside the lock.
    template <typename Edit>
    auto change(Edit&& edit) {
        const Snapshot* replaced = nullptr;
        auto removed = [&] {
            const std::lock_guard guard(lock_);
            if (shared_->isShared()) {
                auto* own = new Snapshot{{shared_->contents}};
                replaced = std::exchange(shared_, own);
            }
            // The one place where shared contents lose their const: nobody else holds them here.
            return edit(const_cast<Contents&>(shared_->contents));
        }();
        if (replaced != nullptr) replaced->release();
        return removed;
    }

  private:
    mutable ShortLock lock_;
    const Snapshot* shared_;
};

struct ArraySnapshot : SharedContents<ArraySnapshot, std::vector<PropertyListValue>> {};

/// Entries in the order of their arrival, with a hash index once a walk along them would cost more.
class EntryTable {
  public:
    struct Entry {
        Reference<StringObject> key;
        PropertyListValue value;
    };

    [[nodiscard]] const std::vector<Entry>& entries() const noexcept { return entries_; }
    [[nodiscard]] const PropertyListValue* find(std::string_view key) const noexcept;
    /// Returns the value that was there before.
    PropertyListValue set(Reference<StringObject> key, PropertyListValue value);
    /// The same under a key that need not be an object yet: none is made when it is there.
    PropertyListValue set(std::string_view key, PropertyListValue value);
    /// Returns the entry that was removed. The last entry takes its place.
    Entry remove(std::string_view key);
    void reserve(std::size_t count);

  private:
    struct Slot {
        std::uint32_t hash = 0;
        std::uint32_t number = 0;  // of the entry, counted from 1; 0 marks a free slot
    };
    static constexpr std::size_t walkLimit = 8;
    static constexpr std::size_t notFound = static_cast<std::size_t>(-1);

    void append(Reference<StringObject> key, PropertyListValue value);
    [[nodiscard]] std::size_t indexOf(std::string_view key, std::uint32_t hash) const noexcept;
    [[nodiscard]] std::size_t slotOf(std::size_t entryIndex) const noexcept;
    void insertSlot(std::uint32_t hash, std::size_t entryIndex) noexcept;
    void removeSlot(std::size_t slot) noexcept;
    void rebuildIndex(std::size_t capacity);

    std::vector<Entry> entries_;
    std::vector<Slot> slots_;  // empty up to walkLimit entries, else a power of two
};

inline const PropertyListValue* EntryTable::find(std::string_view key) const noexcept {
    const std::size_t index = indexOf(key, slots_.empty() ? 0 : hashOf(key));
    return index == notFound ? nullptr : &entries_[index].value;
}

inline std::size_t EntryTable::indexOf(std::string_view key, std::uint32_t hash) const noexcept {
    if (slots_.empty()) {
        for (std::size_t index = 0; index < entries_.size(); ++index) {
            if (entries_[index].key->view() == key) return index;
        }
        return notFound;
    }
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t slot = hash & mask; slots_[slot].number != 0; slot = (slot + 1) & mask) {
        const std::size_t index = slots_[slot].number - 1;
        if (slots_[slot].hash == hash && entries_[index].key->view() == key) return index;
    }
    return notFound;
}

struct DictionarySnapshot : SharedContents<DictionarySnapshot, EntryTable> {};

struct ArrayObject : ContainerObject<ArraySnapshot> {
    using ContainerObject::ContainerObject;
};

struct DictionaryObject : ContainerObject<DictionarySnapshot> {
    using ContainerObject::ContainerObject;
};

}  // namespace ValueObjects
