// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>
#include <string>

/// What an operation costs the thread that calls it; other threads are not counted.
///
/// Prints a line `NAME OPERATIONS ALLOCATIONS` for callgrind's reader, where ALLOCATIONS are calls
/// of `operator new`. Under callgrind with `--collect-atstart=no`, it also dumps the instructions,
/// with the name as trigger. `run` does `operations` of them; what it needs once should have
/// happened before.
void countCostOfCaller(const std::string& name, std::size_t operations,
                       const std::function<void()>& run);
