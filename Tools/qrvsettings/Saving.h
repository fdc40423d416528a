// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Platform/Values/PropertyListValue.h"

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

/// Runs `write`, which saves by itself, and returns when the file is what this process has stored,
/// as a whole. Does not start up. Throws Failure (NotWritten) when it does not become so.
void saveWhole(const std::function<void()>& write);

/// Runs `write`, which writes at these key paths. Throws Failure (WrongValue) that names the stored
/// value in its way.
void writeOrName(const std::vector<std::string>& keyPaths, const std::function<void()>& write);

/// Whether the file holds the value as it is, and not without the fractions of its dates.
bool isKeptWhole(const PropertyListValue& value);
/// Names on standard error the stored key path of a value that lost a part on its way to the file.
void tellWhatIsNotKept(const PropertyListValue& value, const std::string& keyPath);

}  // namespace Tool
