// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

/// How often the calling thread has called `operator new`, which is replaced to count its calls.
std::size_t allocationsOfThread() noexcept;
