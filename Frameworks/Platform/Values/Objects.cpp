// SPDX-License-Identifier: MIT
#include "Platform/Values/Objects.h"

#include <cstring>
#include <limits>
#include <random>
#include <stdexcept>
#include <vector>

#include "Platform/Values/ContainerObjects.h"

namespace QRVPlatform::ValueObjects {
namespace {

template <typename ObjectType>
void destroyContainer(ObjectType* container) noexcept {
    if (container->isMutable) {
        delete static_cast<MutableContainer<ObjectType>*>(container);
    } else {
        ObjectType::Contents::destroy(static_cast<typename ObjectType::Contents*>(container));
    }
}

void destroy(Object* object) noexcept {
    switch (object->kind) {
        case Kind::String:
            ObjectMemory::destroy(static_cast<StringObject*>(object));
            break;
        case Kind::Data:
            delete static_cast<DataObject*>(object);
            break;
        case Kind::Color:
            delete static_cast<ColorObject*>(object);
            break;
        case Kind::Array:
            destroyContainer(static_cast<ArrayObject*>(object));
            break;
        case Kind::Dictionary:
            destroyContainer(static_cast<DictionaryObject*>(object));
            break;
        case Kind::Null:
        case Kind::Boolean:
        case Kind::Integer:
        case Kind::Real:
        case Kind::Date:
        case Kind::NullMarker:
            break;  // held in the handle, never an object
    }
}

// Destroying a container releases its elements. A nested container that thereby loses its last
// reference is put on the outermost call's list instead of being destroyed on the spot, so that the
// depth of a tree costs no stack. A plain pointer, because values may be destroyed after the
// objects of a thread.
thread_local std::vector<Object*>* waitingForDestruction = nullptr;

void destroyNested(Object* object) noexcept {
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

std::uint32_t lengthOrThrow(std::string_view text) {
    if (text.size() > std::numeric_limits<std::uint32_t>::max())
        throw std::length_error("a string of more than 4 GiB");
    return static_cast<std::uint32_t>(text.size());
}

}  // namespace

HashSeed makeHashSeed() {
    std::random_device source;
    const auto number = [&source] { return (std::uint64_t{source()} << 32U) ^ source(); };
    return {number(), number()};
}

void retain(Object* object) noexcept {
    object->references.fetch_add(1, std::memory_order_relaxed);
}

void release(Object* object) noexcept {
    if (!isLastReference(*object)) return;
    if (object->kind >= Kind::Array) {
        destroyNested(object);
    } else {
        destroy(object);
    }
}

Reference<StringObject> StringObject::make(std::string_view text) {
    lengthOrThrow(text);  // before all of it is read
    return make(text, hashOf(text));
}

Reference<StringObject> StringObject::make(std::string_view text, std::uint32_t hashOfText,
                                           ValuePages* pages) {
    const std::uint32_t length = lengthOrThrow(text);
    const ObjectMemory memory = ObjectMemory::take(sizeof(StringObject) + length, pages);
    auto* const object = new (memory.place) StringObject(hashOfText, length, memory.isInPage);
    if (length != 0) std::memcpy(static_cast<void*>(object + 1), text.data(), length);
    return Reference(object);
}

}  // namespace QRVPlatform::ValueObjects
