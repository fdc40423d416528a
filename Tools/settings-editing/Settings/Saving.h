// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <set>
#include <string>

namespace Tool {

/// Calls `queueSave`, which queues a save, and waits until it has ended. What the store logs about
/// it becomes notices. Throws Failure when a setting is not in the file: TimedOut when another
/// process kept it locked for longer than `saveLockTimeout`, and NotWritten otherwise, with the
/// reason and those of `keyPaths` that are not saved.
void saveAndWait(const std::function<void()>& queueSave,
                 const std::set<std::string>& keyPaths = {});

}  // namespace Tool
