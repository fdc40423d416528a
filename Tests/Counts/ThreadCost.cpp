// SPDX-License-Identifier: MIT
#include "ThreadCost.h"

#include <cstdlib>
#include <iostream>
#include <new>

// Without the header of valgrind, allocations are counted alone.
#if __has_include(<valgrind/callgrind.h>)
#include <valgrind/callgrind.h>
#else
#define CALLGRIND_ZERO_STATS
#define CALLGRIND_TOGGLE_COLLECT
#define CALLGRIND_DUMP_STATS_AT(name)
#endif

namespace {

thread_local std::size_t allocations = 0;
thread_local std::size_t allocationsBefore = 0;

void* allocate(std::size_t size, std::size_t alignment) {
    ++allocations;
    const std::size_t rounded = (size + alignment - 1) / alignment * alignment;
    void* const memory = std::aligned_alloc(alignment, rounded);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

}  // namespace

void* operator new(std::size_t size) {
    return allocate(size, alignof(std::max_align_t));
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::align_val_t /*alignment*/) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept {
    std::free(memory);
}

void beginCost() {
    allocationsBefore = allocations;
    CALLGRIND_ZERO_STATS;
    CALLGRIND_TOGGLE_COLLECT;
}

void endCost(const std::string& name, std::size_t operations) {
    CALLGRIND_TOGGLE_COLLECT;
    CALLGRIND_DUMP_STATS_AT(name.c_str());
    std::cout << name << ' ' << operations << ' ' << allocations - allocationsBefore << std::endl;
}

void countCost(const std::string& name, std::size_t operations, const std::function<void()>& run) {
    beginCost();
    run();
    endCost(name, operations);
}
