// SPDX-License-Identifier: MIT
// Changes by other processes: from the notification to the change handler, in three places that
// hand over to each other and never wait. One thread may run the items of the first two, one after
// the other, which saves waking another thread (`WorkQueue::handOver`).
//
// presenterQueue:
// 1. Nothing happens unless the file is monitored and its modification date has changed.
// readQueue:
// 2. The file is read again and compared with the stored tree.
// 3. Key paths of this process's own recent saves are removed from the changes.
// Main queue:
// 4. When another reload has been published since 2, this one runs again from there. Without
// changes the stored tree and the cache stay as they are.
// 5. The new tree becomes the stored one, and the cache is emptied.
// 6. The change handler is called, unless the site has locked all that has changed.
// 7. A save of this process may have run beside the reload, or may be about to, and its writes may
// have gone from the stored tree in 5. So when one is pending, has ended since 2, or the stored
// tree was another one by 4, a second reload runs from 2, after the saves. It makes what the file
// then holds the stored tree even when 3 has left no changes.
//
// When the store merges saves, QRVSettings+Merging.cpp has 2 to 4: nothing this process wrote goes
// from the stored tree, and so neither 3 nor 7 is needed.
//
// The watch notices only what happens after its start. So when it starts and the file is not the
// one that this process first read, or last reloaded, a reload runs from 2 on.
//
// There is one store, and these functions ask for it where they need it.

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <utility>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Dispatch/WorkQueue.h"
#include "Platform/Files/FileFailures.h"
#include "Platform/Files/Files.h"
#include "Platform/Files/NSFileCoordinator.h"
#include "Platform/Presenters/PresenterNotifications.h"
#include "Platform/System/System.h"
#include "Platform/Threads/Threads.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings+FileChange.h"
#include "QRVSettings/QRVSettings+HostThread.h"
#include "QRVSettings/QRVSettings+Merging.h"
#include "QRVSettings/QRVSettings+Publication.h"
#include "QRVSettings/QRVSettings+Site.h"
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
    enum class Kind { First, AfterSaves };
    Kind kind;
    NSDictionary before;  ///< the stored tree itself
    QRVInside::FileReading reading;
    NSArray changes;             ///< without those of this process
    bool isOther;                ///< what was read differs from the stored tree
    std::uint64_t endedSaves;    ///< when the reload began
    std::uint64_t publications;  ///< likewise
};

bool wasBesideAWrite(const Reload& reload) {
    const QRVInside::SaveProgress& saves = StoreInside::state().saves;
    return saves.isPending() || reload.endedSaves != saves.ended() ||
           !reload.before.isIdenticalTo(store().storageCache());
}

void queueReload(Reload::Kind kind);

// One at a time: during steady writing each reload needs a second one, and they would multiply.
void queueSecondReload() {
    const unsigned ofThisProcess = QRVPlatform::Threads::forkCount() + 1;
    if (StoreInside::state().queuedSecondReload.exchange(ofThisProcess) == ofThisProcess) return;
    const auto reload = [] { queueReload(Reload::Kind::AfterSaves); };
    if (StoreInside::state().saves.isPending()) {
        store().queue().async(reload);
    } else {
        reload();
    }
}

/// Returns the old contents of the cache: the destruction of many values takes a while.
[[nodiscard]] NSDictionary takeOver(const QRVInside::FileReading& reading) {
    QRVInside::requireHostThread();
    NSMutableDictionary tree = reading.root.mutableCopy();
    StoreInside::state().storedFile.update([&reading, &tree](StoredFile& file) {
        file.publishedUpTo = reading.identity;
        file.mustBeBackedUp = reading.failed;
        file.wasAbsent = reading.root.isNull();
        file.unsaved.isTreeReplaced = false;
        return std::exchange(file.tree, std::move(tree));
    });
    NSDictionary cached = store().cache().copy();
    store().cache().removeAllObjects();
    ++StoreInside::state().publications;
    return cached;
}

/// The stored tree stays. A file that could not be read before is known now.
void keepTree(const QRVInside::FileReading& reading) {
    StoreInside::state().storedFile.update([&reading](StoredFile& file) {
        file.publishedUpTo = reading.identity;
        if (!reading.failed) file.mustBeBackedUp = false;
    });
}

void publish(const Reload& reload) {
    // Another reload has been published since: its changes would be reported twice.
    if (reload.publications != StoreInside::state().publications) {
        queueReload(reload.kind);
        return;
    }
    const bool isSecondNeeded = wasBesideAWrite(reload);  // 7
    NSArray changes = reload.changes;
    // The saves that it ran behind may have recorded their key paths only since.
    if (reload.kind == Reload::Kind::AfterSaves)
        changes = StoreInside::state().localChanges.withoutLocal(changes);
    changes = QRVInside::withFoundByReading(changes);
    if (changes.count() == 0 && reload.kind == Reload::Kind::AfterSaves && reload.isOther)
        static_cast<void>(takeOver(reload.reading));
    else
        QRVInside::publishChanges(changes, reload.reading);
    if (isSecondNeeded) queueSecondReload();
}

void runReload(Reload::Kind kind) {
    StoreInside::State& state = StoreInside::state();
    if (kind == Reload::Kind::AfterSaves) state.queuedSecondReload = 0;
    if (state.mergesSaves) return QRVInside::runMergingReload();
    const std::uint64_t endedSaves = state.saves.ended();
    const std::uint64_t publications = state.publications;
    const NSDictionary before = store().storageCache();
    const QRVInside::FileReading reading = QRVInside::readSettingsFile(before);  // 2
    if (reading.lackedMeans) {  // The file may not change again for a long time.
        DispatchMainQueue::shared().asyncAfter(QRVPlatform::filePollingInterval,
                                               [kind] { queueReload(kind); });
        return;
    }
    QRVInside::noteReload(reading);
    Reload reload{kind, before, reading, nullptr, false, endedSaves, publications};
    const NSArray changes = NSDictionaryQRV::changedKeys(before.copy(), reading.root.copy());
    reload.isOther = changes.count() != 0;
    reload.changes = state.localChanges.withoutLocal(changes);  // 3
    DispatchMainQueue::shared().async([reload] { publish(reload); });
}

// A host that calls `presentedItemDidChange` itself may wait for the reload in the same item.
void queueReload(Reload::Kind kind) {
    QRVPlatform::WorkQueue& queue = QRVPlatform::WorkQueue::of(store().readQueue());
    const auto reload = [kind] { runReload(kind); };
    if (QRVPlatform::PresenterNotifications::isNotifyingHere(store()))
        queue.handOver(reload);
    else
        queue.async(reload);
}

/// To be called on the store's queue.
bool isLastSave() {
    const QRVPlatform::FileIdentity& saved = StoreInside::state().lastSaved;
    return !saved.isMissing() && QRVPlatform::identityOfFileAtPath(store().location()) == saved;
}

}  // namespace

NSArray QRVInside::withFoundByReading(const NSArray& changes) {
    StoreInside::State& state = StoreInside::state();
    NSArray found = state.storedFile.update(
        [](StoredFile& file) { return std::exchange(file.foundByReading, nullptr); });
    if (found.isNull()) return changes;
    if (!state.mergesSaves) found = state.localChanges.withoutLocal(found);
    std::set<std::string> keyPaths;
    for (const PropertyListValue& keyPath : changes) keyPaths.insert(keyPath.stringValue());
    for (const PropertyListValue& keyPath : found) keyPaths.insert(keyPath.stringValue());
    const NSMutableArray all;
    for (const std::string& keyPath : keyPaths) all.addObject(keyPath);
    return all.copy();
}

void QRVInside::publishChanges(const NSArray& changes, const FileReading& reading) {
    if (changes.count() == 0) {  // 4
        keepTree(reading);
        return;
    }
    const bool areLocked = StoreInside::state().locks != nullptr;
    const NSArray visible = areLocked ? withoutLocked(changes) : changes;
    if (visible.count() != 0) NSLog("Prefs file changed");
    const NSDictionary cached = takeOver(reading);  // 5
    // A copy: the handler may install another one.
    const QRVSettings::ChangeHandler onChange = store().onChange();
    if (onChange && visible.count() != 0) onChange(visible);  // 6
}

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
        if (!isLastSave()) queueReload(Reload::Kind::First);
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
    queueReload(Reload::Kind::First);
}
