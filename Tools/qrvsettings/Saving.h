// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace Tool {

enum class StartUp { MustSucceed, MayFail };

/// Starts up, runs `write`, saves everything once, and returns when the file holds at each of the
/// key paths what this process has stored there. What start-up and the saves have to say goes to
/// the user.
///
/// Throws Failure: WrongValue when a stored value is in the way of `write` or, unless it may fail,
/// of the start-up; then nothing is saved. NotWritten, with the reason, when the file does not hold
/// the change.
void save(const std::vector<std::string>& keyPaths, const std::function<void()>& write,
          StartUp startUp = StartUp::MustSucceed);

}  // namespace Tool
