// SPDX-License-Identifier: MIT
#pragma once

#include <concepts>
#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace QRVPlatform {

/// What a queue runs: like `std::function<void()>`, but it can only be moved, and it allocates
/// nothing for work of up to `roomInside` bytes. A std::function is such work, too.
class WorkItem {
  public:
    static constexpr std::size_t roomInside = 5 * sizeof(void*);

    /// Holds no work, and must not be run.
    WorkItem() noexcept = default;
    template <typename Work>
    requires(!std::same_as<Work, WorkItem> && std::invocable<Work&>) WorkItem(Work work) {
        if constexpr (fits<Work>)
            hold(std::move(work));
        else
            hold([owned = std::make_unique<Work>(std::move(work))] { (*owned)(); });
    }
    WorkItem(WorkItem&& other) noexcept { take(other); }
    WorkItem& operator=(WorkItem&& other) noexcept {
        if (this == &other) return *this;
        clear();
        take(other);
        return *this;
    }
    ~WorkItem() { clear(); }

    void operator()() { operations_->run(room_); }

  private:
    struct Operations {
        void (*run)(std::byte* work);
        /// Moves the work, and destroys what is left of it.
        void (*move)(std::byte* from, std::byte* to) noexcept;
        void (*destroy)(std::byte* work) noexcept;
    };

    static constexpr std::size_t alignmentInside = alignof(void*);
    template <typename Work>
    static constexpr bool fits = std::is_nothrow_move_constructible_v<Work> &&
                                 sizeof(Work) <= roomInside && alignof(Work) <= alignmentInside;
    template <typename Work>
    static Work& in(std::byte* room) noexcept {
        return *std::launder(reinterpret_cast<Work*>(room));
    }
    template <typename Work>
    static constexpr Operations operationsOf = {
        [](std::byte* work) { in<Work>(work)(); },
        [](std::byte* from, std::byte* to) noexcept {
            new (to) Work(std::move(in<Work>(from)));
            std::destroy_at(&in<Work>(from));
        },
        [](std::byte* work) noexcept { std::destroy_at(&in<Work>(work)); }};

    template <typename Work>
    void hold(Work work) noexcept {
        static_assert(fits<Work>);
        new (room_) Work(std::move(work));
        operations_ = &operationsOf<Work>;
    }
    void take(WorkItem& other) noexcept {
        operations_ = std::exchange(other.operations_, nullptr);
        if (operations_ != nullptr) operations_->move(other.room_, room_);
    }
    void clear() noexcept {
        if (operations_ != nullptr) std::exchange(operations_, nullptr)->destroy(room_);
    }

    const Operations* operations_ = nullptr;
    alignas(alignmentInside) std::byte room_[roomInside];
};

}  // namespace QRVPlatform
