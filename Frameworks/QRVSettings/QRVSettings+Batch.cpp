// SPDX-License-Identifier: MIT
// Many writes as one save: batches, and the import of a whole tree.
//
// The flag inBatchSave is all there is of a batch. While it is set, writes gather their records in
// batchLogChanges, and only a commit takes them out. An import therefore ends an open batch and
// leaves its records, and those of its own migration, to the next commit. It leaves the cache as it
// is, too.

#include "QRVSettings/QRVSettings+HostThread.h"
#include "QRVSettings/QRVSettings.h"

using QRVInside::requireHostThread;

void QRVSettingsPrepareBatchSave() {
    requireHostThread();
    QRVSettings::sharedSettings().setInBatchSave(true);
}

void QRVSettingsCommitBatchSave() {
    requireHostThread();
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setInBatchSave(false);
    QRVSettingsSaveObjectWithLog(store.storageCache().copy(), store.batchLogChanges().copy());
    store.batchLogChanges().removeAllObjects();
}

void QRVSettingsImport(const NSDictionary& settings) {
    requireHostThread();
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setStorageCache(settings.mutableCopy());
    store.setInBatchSave(true);
    store.migrate();
    store.setInBatchSave(false);
    QRVSettingsSaveObjectWithLog(store.storageCache().copy(), nullptr);
}
