// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>
#include <string>

/// What operations cost one thread; what other threads do meanwhile is not counted. One cost is
/// counted at a time.

/// Counts what the calling thread does from now on.
void beginCost();
/// Ends that, on the same thread. Prints a line `NAME OPERATIONS ALLOCATIONS`, where ALLOCATIONS
/// are calls of `operator new`. Under callgrind with `--collect-atstart=no`, it also dumps the
/// instructions, with the name as trigger.
void endCost(const std::string& name, std::size_t operations);

/// The cost of a call, on the calling thread. What it needs once should have happened before.
void countCost(const std::string& name, std::size_t operations, const std::function<void()>& run);
