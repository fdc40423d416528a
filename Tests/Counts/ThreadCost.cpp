// SPDX-License-Identifier: MIT
#include "ThreadCost.h"

#include <iostream>

#include "Own/AllocationCount.h"

// Without the header of valgrind, allocations are counted alone.
#if __has_include(<valgrind/callgrind.h>)
#include <valgrind/callgrind.h>
#else
#define CALLGRIND_ZERO_STATS
#define CALLGRIND_TOGGLE_COLLECT
#define CALLGRIND_DUMP_STATS_AT(name)
#endif

namespace {

thread_local std::size_t allocationsBefore = 0;

}  // namespace

void beginCost() {
    allocationsBefore = allocationsOfThread();
    CALLGRIND_ZERO_STATS;
    CALLGRIND_TOGGLE_COLLECT;
}

void endCost(const std::string& name, std::size_t operations) {
    CALLGRIND_TOGGLE_COLLECT;
    CALLGRIND_DUMP_STATS_AT(name.c_str());
    std::cout << name << ' ' << operations << ' ' << allocationsOfThread() - allocationsBefore
              << std::endl;
}

void countCost(const std::string& name, std::size_t operations, const std::function<void()>& run) {
    beginCost();
    run();
    endCost(name, operations);
}
