// SPDX-License-Identifier: MIT
#pragma once

// Saves that bring only what this process wrote, and reloads that keep what it has not saved yet.

#include <optional>
#include <string>

#include "Platform/Values/PropertyListValue.h"
#include "QRVSettings/KeyPath.h"
#include "QRVSettings/QRVSettings+StoredFile.h"

namespace QRVInside {

/// @name On the host's thread
/// @{

/// As QRVSettingsSaveObjectWithLog.
void queueMergingSave(const NSDictionary& object, const NSArray& log);
/// Of one write, whose value need not be frozen; `tree` is the stored tree after it. During a batch
/// the write only joins the batch.
void queueMergingSaveOfWrite(const NSMutableDictionary& tree, ChangeRecord record,
                             const PropertyListValue& value, bool isOfEmpty);
/// Of the stored tree at the end of a batch, with the records that the batch has gathered.
void queueMergingSaveOfBatch(const NSDictionary& tree, const NSArray& log);

/// Writes during its life are left out of a merging save when the file has the value at the key
/// path (or any, when `value` is empty): another process has done the same meanwhile.
class UnlessSettled {
  public:
    UnlessSettled(QRVKeyPath keyPath, std::optional<PropertyListValue> value);
    UnlessSettled(const UnlessSettled&) = delete;
    UnlessSettled& operator=(const UnlessSettled&) = delete;
    ~UnlessSettled();
};
/// @}

/// Reads the file, and publishes what others have changed in it. On `readQueue`.
void runMergingReload();

}  // namespace QRVInside
