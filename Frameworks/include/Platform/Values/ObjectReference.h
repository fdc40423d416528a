// SPDX-License-Identifier: MIT
#pragma once

/// Innards of the value types, which hosts compile but never name: the counted reference behind the
/// handles of `PropertyListValue.h`.

#include <utility>

#include "Platform/Export.h"

namespace QRVPlatform::ValueObjects {

/// A shared object with a thread-safe reference count: a string, bytes, a colour or a container.
struct Object;
/// The library's own way into the handles.
struct Access;

QRV_EXPORT void retain(Object* object) noexcept;
QRV_EXPORT void release(Object* object) noexcept;

/// Shares the ownership of one object, or of none.
class ObjectReference {
  public:
    ObjectReference() = default;
    /// Takes over one reference that the caller owns.
    explicit ObjectReference(Object* owned) noexcept : object_(owned) {}
    ObjectReference(const ObjectReference& other) noexcept : object_(other.object_) {
        if (object_ != nullptr) retain(object_);
    }
    ObjectReference(ObjectReference&& other) noexcept
        : object_(std::exchange(other.object_, nullptr)) {}
    ObjectReference& operator=(ObjectReference other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~ObjectReference() {
        if (object_ != nullptr) release(object_);
    }
    [[nodiscard]] Object* get() const noexcept { return object_; }
    /// Gives the reference up without releasing it: the caller owns it.
    [[nodiscard]] Object* leak() noexcept { return std::exchange(object_, nullptr); }

  private:
    Object* object_ = nullptr;
};

}  // namespace QRVPlatform::ValueObjects
