// SPDX-License-Identifier: MIT
#pragma once

// The shared objects behind the handles of PropertyListValue.h that hold no other objects, and how
// the sources of this folder get at them.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/Values/Hashing.h"
#include "Platform/Values/PropertyListValue.h"
#include "Platform/Values/ValuePages.h"

namespace QRVPlatform::ValueObjects {

using Kind = PropertyListValue::Kind;

struct Object {
    explicit Object(Kind objectKind, bool mutableObject = false, bool objectInPage = false) noexcept
        : kind(objectKind), isMutable(mutableObject), isInPage(objectInPage) {}
    std::atomic<std::uint32_t> references{1};
    const Kind kind;
    const bool isMutable;
    const bool isInPage;  // or in an allocation of its own
};

/// For an object that its contents follow.
struct ObjectMemory {
    void* place;
    bool isInPage;

    /// Without pages, or without room in them, an allocation of its own.
    static ObjectMemory take(std::size_t bytes, ValuePages* pages) {
        void* const place = pages == nullptr ? nullptr : pages->take(bytes);
        if (place != nullptr) return {place, true};
        return {::operator new(bytes), false};
    }
    void release() const noexcept {
        if (isInPage)
            ValuePages::release(place);
        else
            ::operator delete(place);
    }
    /// Ends the life of the object too.
    template <typename ObjectType>
    static void destroy(ObjectType* object) noexcept {
        const ObjectMemory memory{object, object->isInPage};
        object->~ObjectType();
        memory.release();
    }
};

/// Releases one reference and says whether it was the last. The holder of the only reference need
/// not write, which is much cheaper: nobody is left who could take another.
inline bool isLastReference(Object& object) noexcept {
    return object.references.load(std::memory_order_acquire) == 1 ||
           object.references.fetch_sub(1, std::memory_order_acq_rel) == 1;
}

/// An `ObjectReference` to an object of a known type.
template <typename ObjectType>
class Reference {
  public:
    Reference() = default;
    /// Takes over one reference that the caller owns.
    explicit Reference(ObjectType* owned) noexcept : object_(owned) {}
    [[nodiscard]] ObjectType* get() const noexcept {
        return static_cast<ObjectType*>(object_.get());
    }
    ObjectType* operator->() const noexcept { return get(); }
    [[nodiscard]] ObjectType* leak() noexcept { return static_cast<ObjectType*>(object_.leak()); }

  private:
    ObjectReference object_;
};

/// What the handles keep private.
struct Access {
    /// The object of an array, a dictionary or data; null when there is none.
    template <typename Handle>
    static Object* objectOf(const Handle& handle) noexcept {
        return handle.object_.get();
    }
    /// The object of a value of the kind `String` or a later one.
    static Object* objectOf(const PropertyListValue& value) noexcept {
        return value.payload_.object;
    }
    /// Another handle of an object; null for null.
    template <typename Handle>
    static Handle handleOf(Object* object) noexcept {
        if (object != nullptr) retain(object);
        return Handle(ObjectReference(object));
    }
    /// The handle takes over one reference that the caller owns.
    template <typename Handle>
    static Handle handleOwning(Object* owned) noexcept {
        return Handle(ObjectReference(owned));
    }
    /// The value takes over one reference that the caller owns.
    static PropertyListValue valueOwning(Object* owned) noexcept {
        PropertyListValue value;
        value.kind_ = owned->kind;
        value.payload_.object = owned;
        return value;
    }
    /// The same bits; the reference that they may stand for is not counted.
    static PropertyListValue uncountedCopy(const PropertyListValue& value) noexcept {
        PropertyListValue copy;
        copy.kind_ = value.kind_;
        copy.isBeyondSigned_ = value.isBeyondSigned_;
        copy.payload_ = value.payload_;
        return copy;
    }
    /// Makes the value null without releasing its object: the caller owns that reference.
    static Object* leak(PropertyListValue& value) noexcept {
        value.kind_ = Kind::Null;
        return value.payload_.object;
    }
};

/// Characters follow the object in the same allocation.
struct StringObject : Object {
    const std::uint32_t hash;
    const std::uint32_t length;

    /// Throws std::length_error beyond 4 GiB.
    static Reference<StringObject> make(std::string_view text);
    static Reference<StringObject> make(std::string_view text, std::uint32_t hashOfText,
                                        ValuePages* pages = nullptr);
    [[nodiscard]] std::string_view view() const noexcept {
        return {reinterpret_cast<const char*>(this + 1), length};
    }

  private:
    StringObject(std::uint32_t hashOfText, std::uint32_t lengthOfText, bool objectInPage) noexcept
        : Object(Kind::String, false, objectInPage), hash(hashOfText), length(lengthOfText) {}
};

struct DataObject : Object {
    explicit DataObject(std::string_view contents) : Object(Kind::Data), bytes(contents) {}
    const std::string bytes;
};

struct ColorObject : Object {
    explicit ColorObject(const NSColor& value) : Object(Kind::Color), color(value) {}
    const NSColor color;
};

}  // namespace QRVPlatform::ValueObjects
