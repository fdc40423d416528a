// SPDX-License-Identifier: MIT
// Many writes as one save: batches, and the import of a whole tree.
//
// A batch is the flag inBatchSave and nothing else. While it is set, writes add their records to
// batchLogChanges, and only a commit removes them. So an import, which clears the flag, leaves the
// records of an open batch and of its own migration to the next commit. It does not change the
// cache.

#include "QRVSettings/QRVSettings+FileChange.h"
#include "QRVSettings/QRVSettings+HostThread.h"
#include "QRVSettings/QRVSettings+Merging.h"
#include "QRVSettings/QRVSettings+Site.h"
#include "QRVSettings/QRVSettings+State.h"
#include "QRVSettings/QRVSettings.h"

using QRVInside::requireHostThread;

namespace {

/// Ends with the batch closed also when a migration throws.
class BatchDuringImport {
  public:
    BatchDuringImport() { QRVSettings::sharedSettings().setInBatchSave(true); }
    BatchDuringImport(const BatchDuringImport&) = delete;
    BatchDuringImport& operator=(const BatchDuringImport&) = delete;
    ~BatchDuringImport() { QRVSettings::sharedSettings().setInBatchSave(false); }
};

}  // namespace

void QRVSettingsPrepareBatchSave() {
    requireHostThread();
    QRVSettings::sharedSettings().setInBatchSave(true);
}

void QRVSettingsCommitBatchSave() {
    requireHostThread();
    const QRVInside::OriginScope origin(QRVChangeOrigins::batch);
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setInBatchSave(false);
    const NSArray log = store.batchLogChanges().copy();
    if (store.mergesSaves())
        QRVInside::queueMergingSaveOfBatch(store.storageCache(), log);
    else
        QRVSettingsSaveObjectWithLog(store.storageCache().copy(), log);
    store.batchLogChanges().removeAllObjects();
}

void QRVSettingsImport(const NSDictionary& settings) {
    requireHostThread();
    const QRVInside::OriginScope origin(QRVChangeOrigins::import);
    QRVSettings& store = QRVSettings::sharedSettings();
    const bool isLocked = QRVInside::StoreInside::state().locks != nullptr;
    const NSDictionary tree = isLocked ? QRVInside::permittedImport(settings) : settings;
    store.setStorageCache(tree.mutableCopy());
    {
        const BatchDuringImport batch;
        store.migrate();
    }
    QRVSettingsSaveObjectWithLog(store.storageCache().copy(), nullptr);
}
