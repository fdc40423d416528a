// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// Gathers during its life what is logged about saves: the store reports failures of a save in no
/// other way. Only one may exist at a time.
class SaveWatch {
  public:
    SaveWatch();
    SaveWatch(const SaveWatch&) = delete;
    SaveWatch& operator=(const SaveWatch&) = delete;
    ~SaveWatch();

    /// Waits until the queued saves have run, and asks `isSaved` about what the file then holds.
    /// What was logged becomes notices. Throws Failure (NotWritten), with the reason, when it is
    /// not saved.
    void finish(const std::function<bool(const NSDictionary& file)>& isSaved);

  private:
    struct Observations;
    // The sinks share them: a call under way may outlive this object.
    std::shared_ptr<Observations> observations_;
};

}  // namespace Tool
