// SPDX-License-Identifier: MIT
#pragma once

// The end of every reload, on the main queue.

#include "Platform/Values/PropertyListValue.h"
#include "QRVSettings/QRVSettings+StoredFile.h"

namespace QRVInside {

/// `changes` and the key paths that a read has found where nothing was, each once. When the store
/// does not merge saves, those of this process's recent saves are not added.
NSArray withFoundByReading(const NSArray& changes);

/// Without changes the stored tree and the cache stay as they are. Otherwise what was read becomes
/// the stored tree, the cache is emptied, and the change handler is called with those that
/// the site has not locked.
void publishChanges(const NSArray& changes, const FileReading& reading);

}  // namespace QRVInside
