// SPDX-License-Identifier: MIT
#pragma once

// Who observes the settings file, and what the writes of this moment are.

#include <string>
#include <string_view>

#include "QRVSettings/FileChange.h"
#include "QRVSettings/QRVSettings+StoredFile.h"

namespace QRVInside {

/// Whether there is a handler. Without one, nothing else of this header needs to be called. Any
/// thread.
bool isFileChangeObserved();

/// Calls the handler.
void noteFileChange(const QRVFileChange& change);

/// The same for what a reload has read.
void noteReload(const FileReading& reading);

/// What a save that is queued now is called; empty when nobody observes. On the host's thread.
std::string originOfWrites();

/// What the writes during its life are, unless the host says it. On the host's thread.
class OriginScope {
  public:
    explicit OriginScope(std::string_view origin);
    OriginScope(const OriginScope&) = delete;
    OriginScope& operator=(const OriginScope&) = delete;
    ~OriginScope();

  private:
    std::string_view outer_;
};

}  // namespace QRVInside
