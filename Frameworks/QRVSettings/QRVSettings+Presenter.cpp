// SPDX-License-Identifier: MIT
// Changes by other processes: from the notification to the change handler, in three places that
// hand over to each other and never wait.
//
// presenterQueue:
// 1. Nothing happens unless the file is monitored and its modification date has changed.
// readQueue:
// 2. The file is read again and compared with the stored tree.
// 3. Key paths of this process's own recent saves are removed from the changes.
// Main queue:
// 4. The reload is stale when a save is pending, has ended since it began, or the stored tree is
// another one by now: then it is retried from 2, after the saves. Otherwise the store could end
// with a tree that the file no longer holds, and no notification would correct it.
// 5. Without changes the stored tree and the cache stay as they are.
// 6. The new tree becomes the stored one, and the cache is emptied.
// 7. The change handler is called.
//
// The watch notices only what happens after its start. So when it starts and the file is not the
// one that this process first read, or last reloaded, a reload runs from 2 on.
//
// There is one store, and these functions ask for it where they need it.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <system_error>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Files/FileFailures.h"
#include "Platform/Files/Files.h"
#include "Platform/Files/NSFileCoordinator.h"
#include "Platform/System/System.h"
#include "Platform/Threads/Threads.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings+State.h"
#include "QRVSettings/QRVSettings+StoredFile.h"
#include "QRVSettings/QRVSettings+WatchStart.h"
#include "QRVSettings/QRVSettings.h"

using QRVInside::StoredFile;
using QRVInside::StoreInside;

namespace {

QRVSettings& store() {
    return QRVSettings::sharedSettings();
}

struct Reload {
    NSDictionary before;  ///< the stored tree itself
    QRVInside::FileReading reading;
    NSArray changes;
    std::uint64_t endedSaves;  ///< when the reload began
};

bool isStale(const Reload& reload) {
    const QRVInside::SaveProgress& saves = StoreInside::state().saves;
    return saves.isPending() || reload.endedSaves != saves.ended() ||
           !reload.before.isIdenticalTo(store().storageCache());
}

void queueReload();

void retryAfterPendingSaves() {
    if (StoreInside::state().saves.isPending()) {
        store().queue().async(queueReload);
    } else {
        queueReload();
    }
}

/// The stored tree stays. A file that could not be read before is known now.
void keepTree(const QRVInside::FileReading& reading) {
    StoreInside::state().storedFile.update([&reading](StoredFile& file) {
        file.publishedUpTo = reading.identity;
        if (!reading.failed) file.mustBeBackedUp = false;
    });
}

void publish(const Reload& reload) {
    if (isStale(reload)) {  // 4
        retryAfterPendingSaves();
        return;
    }
    const QRVInside::FileReading& reading = reload.reading;
    if (reload.changes.count() == 0) {  // 5
        keepTree(reading);
        return;
    }
    NSLog("Prefs file changed");
    StoreInside::state().storedFile.store(  // 6
        {reading.root.mutableCopy(), reading.identity, reading.failed});
    store().cache().removeAllObjects();
    // A copy: the handler may install another one.
    const QRVSettings::ChangeHandler onChange = store().onChange();
    if (onChange) onChange(reload.changes);  // 7
}

void runReload() {
    const StoreInside::State& state = StoreInside::state();
    const std::uint64_t endedSaves = state.saves.ended();
    Reload reload{store().storageCache(), QRVInside::readSettingsFile(), nullptr, endedSaves};  // 2
    if (reload.reading.lackedMeans) {  // The file may not change again for a long time.
        DispatchMainQueue::shared().asyncAfter(QRVPlatform::filePollingInterval, queueReload);
        return;
    }
    const NSArray changes =
        NSDictionaryQRV::changedKeys(reload.before.copy(), reload.reading.root.copy());
    reload.changes = state.localChanges.withoutLocal(changes);  // 3
    DispatchMainQueue::shared().async([reload] { publish(reload); });
}

void queueReload() {
    store().readQueue().async(runReload);
}

/// To be called on the store's queue.
bool isLastSave(const QRVPlatform::FileIdentity& file) {
    return !file.isMissing() && file == StoreInside::state().lastSaved;
}

}  // namespace

void QRVInside::beginToWatchTheFile() {
    store().setPresenterQueue(std::make_shared<NSOperationQueue>());
    if (store().location().empty()) {
        QRVPlatform::FileFailures::reported("watch file", {},
                                            make_error_code(std::errc::no_such_file_or_directory));
        return;
    }
    NSFileCoordinator::addFilePresenter(store());
    const auto published = StoreInside::state().storedFile.read(
        [](const StoredFile& file) { return file.publishedUpTo; });
    if (!published || QRVPlatform::identityOfFileAtPath(store().location()) == *published) return;
    // This process itself may have changed it: its saves run before this does.
    store().queue().async([] {
        if (!isLastSave(QRVPlatform::identityOfFileAtPath(store().location()))) queueReload();
    });
}

std::string QRVSettings::presentedItemURL() const {
    return location();
}

std::shared_ptr<NSOperationQueue> QRVSettings::presentedItemOperationQueue() const {
    return presenterQueue();
}

bool QRVSettings::fileContentsDidChange() {
    // Not before the date is settled: of two changes with one date, the second would be missed.
    const auto attributes = QRVPlatform::settledAttributesOfItemAtPath(location());
    const std::optional<NSDate> known = modificationDate();
    if (attributes && known && *known == attributes->modificationDate) return false;
    setModificationDate(attributes ? std::optional(attributes->modificationDate) : std::nullopt);
    return true;
}

void QRVSettings::presentedItemDidChange() {
    if (!monitorFileChanges()) return;  // 1
    // The parent of a forked child may have seen a change that the child has not published.
    const unsigned forks = QRVPlatform::Threads::forkCount();
    if (state_->forksAtModificationDate.exchange(forks) != forks) setModificationDate({});
    if (!fileContentsDidChange()) return;
    queueReload();
}
