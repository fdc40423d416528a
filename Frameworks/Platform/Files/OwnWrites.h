// SPDX-License-Identifier: MIT
#pragma once

#include <string>

class NSFilePresenter;

/// While it lives, replacements of the file at `path` on this thread are writes of the performer's
/// own. Lives on the stack.
class OwnWrites {
  public:
    /// No performer: of nobody's.
    OwnWrites(const NSFilePresenter* performer, const std::string& path);
    OwnWrites(const OwnWrites&) = delete;
    OwnWrites& operator=(const OwnWrites&) = delete;
    ~OwnWrites();

    /// Who replaces the file at `path` on this thread now; null for nobody in particular.
    static const NSFilePresenter* performerAt(const std::string& path);

  private:
    const NSFilePresenter* performer_;
    const std::string& path_;
    const OwnWrites* outer_;
};
