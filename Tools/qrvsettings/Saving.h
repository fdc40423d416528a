// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace Tool {

/// Watches over the saves of what is written during its life: nothing that goes wrong with them
/// reaches the writer otherwise. One at a time.
class Saving {
  public:
    Saving();
    Saving(const Saving&) = delete;
    Saving& operator=(const Saving&) = delete;
    ~Saving();

    /// Waits for the saves and reads the file afresh. What the store has to say about the saves
    /// goes to the user. Throws Failure (NotWritten), with the reason, unless the file holds at
    /// each key path what this process has stored there.
    void finish(const std::vector<std::string>& keyPaths);

  private:
    struct Observations;
    std::shared_ptr<Observations> observations_;
};

}  // namespace Tool
