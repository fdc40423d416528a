// SPDX-License-Identifier: MIT
#include "Platform/Values/Objects.h"

#include <cstring>
#include <new>
#include <random>

namespace ValueObjects {
namespace {

void destroy(Object* object) noexcept {
    switch (object->kind) {
        case Kind::String:
            static_cast<StringObject*>(object)->~StringObject();
            ::operator delete(object);
            break;
        case Kind::Data:
            delete static_cast<DataObject*>(object);
            break;
        case Kind::Color:
            delete static_cast<ColorObject*>(object);
            break;
        case Kind::Array:
            delete static_cast<ArrayObject*>(object);
            break;
        default:
            delete static_cast<DictionaryObject*>(object);
            break;
    }
}

// Destroying a container releases its elements. A nested container that thereby loses its last
// reference is put on the outermost call's list instead of being destroyed on the spot, so that the
// depth of a tree costs no stack. A plain pointer, because values may outlive a thread's own
// objects.
thread_local std::vector<Object*>* waitingForDestruction = nullptr;

void destroyContainer(Object* object) noexcept {
    if (waitingForDestruction != nullptr) {
        waitingForDestruction->push_back(object);
        return;
    }
    std::vector<Object*> waiting;
    waitingForDestruction = &waiting;
    destroy(object);
    while (!waiting.empty()) {
        Object* next = waiting.back();
        waiting.pop_back();
        destroy(next);
    }
    waitingForDestruction = nullptr;
}

}  // namespace

// Seeded anew in each process, so that a settings file cannot be made whose keys all collide.
std::uint64_t makeHashSeed() noexcept {
    std::random_device source;
    return (std::uint64_t{source()} << 32U) ^ source();
}

void retain(Object* object) noexcept {
    object->references.fetch_add(1, std::memory_order_relaxed);
}

void release(Object* object) noexcept {
    if (!isLastReference(object->references)) return;
    if (object->kind >= Kind::Array) {
        destroyContainer(object);
    } else {
        destroy(object);
    }
}

Reference<StringObject> StringObject::make(std::string_view text) {
    auto* memory = static_cast<char*>(::operator new(sizeof(StringObject) + text.size()));
    if (!text.empty()) std::memcpy(memory + sizeof(StringObject), text.data(), text.size());
    return Reference<StringObject>(new (memory) StringObject(hashOf(text), text.size()));
}

PropertyListValue EntryTable::set(Reference<StringObject> key, PropertyListValue value) {
    const std::size_t index = indexOf(key->view(), key->hash);
    if (index == notFound) {
        append(std::move(key), std::move(value));
        return nullptr;
    }
    entries_[index].value.swap(value);
    return value;
}

PropertyListValue EntryTable::set(std::string_view key, PropertyListValue value) {
    const std::size_t index = indexOf(key, slots_.empty() ? 0 : hashOf(key));
    if (index == notFound) {
        append(StringObject::make(key), std::move(value));
        return nullptr;
    }
    entries_[index].value.swap(value);
    return value;
}

void EntryTable::append(Reference<StringObject> key, PropertyListValue value) {
    const std::uint32_t hash = key->hash;
    entries_.push_back({std::move(key), std::move(value)});
    const std::size_t needed = entries_.size() <= walkLimit ? 0 : entries_.size() * 2;
    if (needed > slots_.size()) {
        rebuildIndex(needed);
    } else if (!slots_.empty()) {
        insertSlot(hash, entries_.size() - 1);
    }
}

EntryTable::Entry EntryTable::remove(std::string_view key) {
    const std::size_t index = indexOf(key, slots_.empty() ? 0 : hashOf(key));
    if (index == notFound) return {};
    const std::size_t last = entries_.size() - 1;
    if (!slots_.empty()) {
        const std::size_t slotOfLast = slotOf(last);
        const std::size_t slot = slotOf(index);
        slots_[slotOfLast].number = static_cast<std::uint32_t>(index + 1);
        removeSlot(slot);
    }
    Entry removed = std::move(entries_[index]);
    if (index != last) entries_[index] = std::move(entries_[last]);
    entries_.pop_back();
    return removed;
}

void EntryTable::reserve(std::size_t count) {
    entries_.reserve(count);
    if (count > walkLimit && count * 2 > slots_.size()) rebuildIndex(count * 2);
}

std::size_t EntryTable::slotOf(std::size_t entryIndex) const noexcept {
    const std::size_t mask = slots_.size() - 1;
    std::size_t slot = entries_[entryIndex].key->hash & mask;
    while (slots_[slot].number != entryIndex + 1) slot = (slot + 1) & mask;
    return slot;
}

void EntryTable::insertSlot(std::uint32_t hash, std::size_t entryIndex) noexcept {
    const std::size_t mask = slots_.size() - 1;
    std::size_t slot = hash & mask;
    while (slots_[slot].number != 0) slot = (slot + 1) & mask;
    slots_[slot] = {hash, static_cast<std::uint32_t>(entryIndex + 1)};
}

// A gap would end the search of later slots too early, so each slot behind it that may move does.
void EntryTable::removeSlot(std::size_t slot) noexcept {
    const std::size_t mask = slots_.size() - 1;
    std::size_t gap = slot;
    for (std::size_t next = (gap + 1) & mask; slots_[next].number != 0; next = (next + 1) & mask) {
        const std::size_t home = slots_[next].hash & mask;
        if (((next - home) & mask) >= ((next - gap) & mask)) {
            slots_[gap] = slots_[next];
            gap = next;
        }
    }
    slots_[gap] = {};
}

void EntryTable::rebuildIndex(std::size_t capacity) {
    std::size_t size = walkLimit * 2;
    while (size < capacity) size *= 2;
    slots_.assign(size, {});
    for (std::size_t index = 0; index < entries_.size(); ++index) {
        insertSlot(entries_[index].key->hash, index);
    }
}

}  // namespace ValueObjects
