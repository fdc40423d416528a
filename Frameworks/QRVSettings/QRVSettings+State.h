// SPDX-License-Identifier: MIT
#pragma once

// The properties of the store object. Inner header of this folder.

#include <atomic>

#include "Platform/Threads/AtomicProperty.h"
#include "QRVSettings/QRVSettings.h"

struct QRVSettings::State {
    // Read or replaced on several threads.
    std::atomic<bool> monitorFileChanges = false;
    QRVPlatform::AtomicProperty<NSMutableDictionary> cache;
    QRVPlatform::AtomicProperty<NSDictionary> storageCache;
    QRVPlatform::AtomicProperty<std::optional<NSDate>> modificationDate;
    QRVPlatform::AtomicProperty<std::shared_ptr<NSOperationQueue>> presenterQueue;

    // Used on the main thread.
    bool disableCache = false;
    bool prepared = false;
    bool inBatchSave = false;
    NSMutableDictionary defaults = nullptr;
    std::optional<std::string> activeProfile;
    PropertyListValue currentAppearance;
    ChangeHandler onChange;

    // Set at creation and never replaced.
    std::string location;
    NSMutableArray localChanges;
    NSMutableArray batchLogChanges;
    std::unique_ptr<DispatchQueue> queue;
    std::unique_ptr<DispatchQueue> readQueue;
};
