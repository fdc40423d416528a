// SPDX-License-Identifier: MIT
// Many writes as one save: batches, and the import of a whole tree.
//
// A batch is the flag inBatchSave and nothing else. While it is set, writes add their records to
// batchLogChanges, and only a commit removes them. So an import, which clears the flag, leaves the
// records of an open batch and of its own migration to the next commit. It does not change the
// cache.

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
