// SPDX-License-Identifier: MIT
#pragma once

/// Innards of the value types: the iterator of arrays and dictionaries.

#include <cstddef>
#include <iterator>
#include <type_traits>
#include <utility>

#include "Platform/Export.h"
#include "Platform/Values/ObjectReference.h"

namespace QRVPlatform::ValueObjects {

/// A forward iterator over the contents of a container as they were at `begin()`: later changes do
/// not reach it. It shares the ownership of these contents, so that it may outlive the container.
/// Taking it costs one reference, a step costs none. `std::default_sentinel` is its end.
///
/// `Item` is what dereferencing gives. What it refers to lives as long as any iterator of the walk.
template <typename Item>
class ContainerIterator {
  public:
    using iterator_concept = std::forward_iterator_tag;
    using value_type = std::remove_cvref_t<Item>;
    using difference_type = std::ptrdiff_t;

    ContainerIterator() = default;
    ContainerIterator(ObjectReference contents, std::size_t count) noexcept
        : contents_(std::move(contents)), count_(count) {}

    Item operator*() const noexcept;
    ContainerIterator& operator++() noexcept {
        ++position_;
        return *this;
    }
    ContainerIterator operator++(int) noexcept {
        ContainerIterator before = *this;
        ++position_;
        return before;
    }
    friend bool operator==(const ContainerIterator& left, const ContainerIterator& right) noexcept {
        return left.position_ == right.position_ && left.contents_.get() == right.contents_.get();
    }
    friend bool operator==(const ContainerIterator& iterator, std::default_sentinel_t) noexcept {
        return iterator.position_ == iterator.count_;
    }

  private:
    ObjectReference contents_;
    std::size_t position_ = 0;
    std::size_t count_ = 0;
};

}  // namespace QRVPlatform::ValueObjects
