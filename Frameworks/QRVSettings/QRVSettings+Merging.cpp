// SPDX-License-Identifier: MIT
// Saves that bring only what this process wrote, and reloads that keep what it has not saved yet.
//
// The store holds three things that belong together (StoredFile): the settings that the file held
// when this process last read or replaced it (`known`), the writes that are not in the file yet
// (`unsaved`), and the stored tree that reads see. The stored tree is always `known` with `unsaved`
// on top, once what was found in the file has been published.
//
// A write, on the host's thread, joins the writes that wait. It queues a save only when none is
// queued, so that at most one save is running and one waits. To join is to append: the save drops
// what later writes replace.
//
// A save, on the store's queue:
// 1. It takes all writes that wait, applies them to `known`, and serialises the result.
// 2. Under the writers' lock: when the file is not `known`, it is read, and 1 is done again on top
//    of it. A damaged file is backed up; then `known` stays what it was.
// 3. The records are posted to the main queue, and the file is replaced.
// 4. `known` is what was written. When the save failed, its writes wait for the next save.
// 5. What others had written is published. When a reload has run beside the save, it may have read
//    what others wrote after 3, which 4 has put away; so it runs again.
//
// A reload, on readQueue: when the file is not `known`, it is read, becomes `known`, and is
// published. When a save has ended meanwhile, what was read may be older, so it is read again.
//
// A publication is prepared where the file was read, and runs on the main queue. When the stored
// tree or the file is another one by then, it is prepared again on the spot: it depends on nothing
// but the three things above, so it is right whenever it runs.

#include "QRVSettings/QRVSettings+Merging.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "Platform/Coordination/CoordinatedWrite.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Platform/System/System.h"
#include "Platform/Threads/Threads.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings+FileChange.h"
#include "QRVSettings/QRVSettings+HostThread.h"
#include "QRVSettings/QRVSettings+Publication.h"
#include "QRVSettings/QRVSettings+Saving.h"
#include "QRVSettings/QRVSettings+State.h"
#include "QRVSettings/QRVSettings.h"

namespace QRVInside {

namespace {

QRVPlatform::AtomicProperty<StoredFile>& storedFile() {
    return StoreInside::state().storedFile;
}

// --- Publication

struct MergedTree {
    NSDictionary before = nullptr;  ///< the stored tree itself
    std::uint64_t version = 0;
    FileReading reading;  ///< the root with what is unsaved on top
    NSArray changes = nullptr;
};

MergedTree mergedTree() {
    MergedTree merged;
    UnsavedWrites unsaved;
    storedFile().update([&](StoredFile& file) {
        file.unsaved.forgetThoseOfTheParent();
        merged.before = file.tree;
        merged.version = file.version;
        merged.reading.failed = file.mustBeBackedUp;
        if (file.known) {
            merged.reading.root = file.known->tree;
            merged.reading.identity = file.known->file.identity();
        }
        unsaved = file.unsaved;
    });
    NSDictionary& root = merged.reading.root;
    root = unsaved.onTopOf(root);
    merged.changes = NSDictionaryQRV::changedKeys(merged.before.copy(), root);
    return merged;
}

void publish(MergedTree merged) {
    const bool isCurrent = storedFile().read([&merged](const StoredFile& file) {
        return file.version == merged.version && file.tree.isIdenticalTo(merged.before);
    });
    if (!isCurrent) merged = mergedTree();
    publishChanges(withFoundByReading(merged.changes), merged.reading);
}

// One is enough: it publishes whatever has changed until it runs.
void queuePublication() {
    StoreInside::State& state = StoreInside::state();
    const unsigned ofThisProcess = QRVPlatform::Threads::forkCount() + 1;
    if (state.queuedPublication.exchange(ofThisProcess) == ofThisProcess) return;
    DispatchMainQueue::shared().async([&state, merged = mergedTree()] {
        state.queuedPublication = 0;
        publish(merged);
    });
}

// --- Saving

class MergingSave {
  public:
    MergingSave() : writes_(takeWaitingWrites()) {
        std::tie(known_, knownVersion_) = storedFile().read(
            [](const StoredFile& file) { return std::pair(file.known, file.knownVersion); });
    }

    SaveOutcome run() {
        guardedSave(known_ ? known_->tree : nullptr, outcome_, [this] {
            if (known_) serialise();  // 1
            coordinateSave(outcome_,
                           [this](QRVPlatform::WriteAccess& access) { return replace(access); });
        });
        outcome_.keyPaths = writes_->keyPaths();
        outcome_.wasWholeTree = writes_->replaceTheTree();
        end();
        if (isSaved_ && isFileChangeObserved()) noteFileChange(change_);
        return std::move(outcome_);
    }

  private:
    using SharedWrites = std::shared_ptr<const Writes>;

    // Others may read the writes that are being saved, so those of this save are a copy.
    static SharedWrites takeWaitingWrites() {
        const auto taken = std::make_shared<Writes>();
        storedFile().update([&taken](StoredFile& file) {
            file.unsaved.isSaveQueued = false;
            std::swap(*taken, file.unsaved.waiting);
            file.unsaved.beingSaved = taken;
        });
        const auto writes = std::make_shared<Writes>(*taken);
        writes->settle();
        return writes;
    }

    KnownText::Written writtenOnTopOfKnown(Writes::Logging logging) {
        tree_ = writes_->appliedTo(known_->tree, logging);
        if (tree_.isNull()) tree_ = NSDictionary();
        return StoreInside::state().knownText.write(tree_);
    }

    void serialise() {
        written_ = writtenOnTopOfKnown(Writes::Logging::On);
        if (written_.error()) {
            leaveOutRefusedWrites();
            written_ = writtenOnTopOfKnown(Writes::Logging::Off);
        }
        const auto& error = written_.error();
        failure_ = error ? error->description() : std::string();
        if (error) reportUnsaved(error->keyPath);
    }

    void leaveOutRefusedWrites() {
        const auto others = std::make_shared<Writes>(*writes_);
        std::vector<RefusedWrite> refusedWrites = others->removeRefused();
        writes_ = others;  // First: the failure handler may raise an exception.
        for (RefusedWrite& refused : refusedWrites) {
            outcome_.refused.push_back(std::move(refused));
            NSLog("Prefs value not saved: %@", {outcome_.refused.back().reason});
            reportUnsaved(outcome_.refused.back().keyPath);
        }
    }

    std::string replace(QRVPlatform::WriteAccess& access) {
        if (!known_ || !known_->file.isAt(access.path())) {  // 2
            std::string failure = readAgain(access.path());
            if (!failure.empty()) return failure;
            serialise();
        }
        if (!failure_.empty()) return failure_;
        postRecords(writes_->records());  // 3
        arePosted_ = true;
        std::string failure = replacedFile(access, written_);
        isSaved_ = failure.empty();
        if (!isSaved_) return failure;
        const KnownFile replaced = std::exchange(*known_, KnownFile{tree_, access.newFile()});
        change_.origin = writes_->origins();
        change_.before = replaced.tree;
        change_.after = tree_;
        change_.fileBefore = replaced.file.identity();
        change_.fileAfter = known_->file.identity();
        return {};
    }

    std::string readAgain(const std::string& path) {
        const OldFile old = readOldFile(path);
        // Nothing of a file that is merged gets lost.
        if (old.condition == OldFile::Condition::Settings && !writes_->replaceTheTree())
            storedFile().update([](StoredFile& file) { file.mustBeBackedUp = false; });
        std::string failure = secured(old, path);
        if (!failure.empty()) return failure;
        change_.isBeforeKnown = old.condition != OldFile::Condition::Damaged;
        if (old.condition != OldFile::Condition::Damaged) {
            known_ = KnownFile{old.root, old.file};
            isFound_ = true;
        } else if (!known_) {
            known_ = KnownFile{};
        }
        return {};
    }

    void end() {  // 4
        bool isOvertaken = false;
        storedFile().update([this, &isOvertaken](StoredFile& file) {
            UnsavedWrites& unsaved = file.unsaved;
            if (!isSaved_) {
                Writes writes = *writes_;
                if (arePosted_)
                    writes.dropRecords();
                else
                    writes.dropEarlierRecords();  // Saves may go on failing.
                writes.append(unsaved.waiting);
                std::swap(unsaved.waiting, writes);
            }
            ++file.version;
            isOvertaken = file.knownVersion != knownVersion_;
            const bool isKnown = isSaved_ || isFound_;
            return std::pair(std::exchange(unsaved.beingSaved, nullptr),
                             isKnown ? file.know(std::move(*known_)) : std::nullopt);
        });
        if (isFound_) queuePublication();  // 5
        if (isOvertaken) StoreInside::state().readQueue.async(runMergingReload);
    }

    SharedWrites writes_;
    std::optional<KnownFile> known_;
    std::uint64_t knownVersion_ = 0;
    NSDictionary tree_ = nullptr;
    KnownText::Written written_;
    std::string failure_;  ///< of the serialisation
    QRVFileChange change_{.isBeforeKnown = true};
    bool isFound_ = false;
    bool arePosted_ = false;
    bool isSaved_ = false;
    SaveOutcome outcome_;
};

// The waiting writes are saved by one job, however many there are.
void queueSaveUnlessQueued(bool isQueued) {
    if (isQueued) return;
    StoreInside::State& state = StoreInside::state();
    state.saves.begin();
    state.queue.async([&state] { state.saves.end(MergingSave().run()); });
}

void queueMissingValue() {
    StoreInside::State& state = StoreInside::state();
    storedFile().update([](StoredFile& file) {
        ++file.version;
        return std::exchange(file.unsaved.ofBatch, {});
    });
    state.saves.begin();
    state.queue.async([&state] {
        logMissingValue();
        SaveOutcome outcome;
        outcome.wasWithoutTree = true;
        state.saves.end(outcome);
    });
}

// The tree replaces the whole file.
void queueReplacement(const NSDictionary& object, const NSArray& log) {
    NSDictionary tree = frozen(object).dictionary();
    const std::string origin = originOfWrites();
    queueSaveUnlessQueued(storedFile().update([&](StoredFile& file) {
        ++file.version;
        UnsavedWrites& unsaved = file.unsaved;
        unsaved.forgetThoseOfTheParent();
        unsaved.waiting.replaceTree(std::move(tree));
        unsaved.waiting.addRecords(log);
        unsaved.waiting.addOrigins(origin);
        unsaved.ofBatch = {};
        unsaved.isTreeReplaced = false;
        return std::exchange(unsaved.isSaveQueued, true);
    }));
}

template <typename Add>
void joinBatch(Add&& add) {
    storedFile().update([&](StoredFile& file) {
        ++file.version;
        add(file.unsaved.ofBatch);
    });
}

/// `add` adds to the writes that wait, unless the next save replaces the whole file: then false.
/// A batch that is still there when a save is queued without it was ended by hand.
template <typename Add>
bool queueUnlessTreeIsReplaced(Add&& add) {
    const std::string origin = originOfWrites();
    bool isReplaced = false;
    const bool isQueued = storedFile().update([&](StoredFile& file) {
        UnsavedWrites& unsaved = file.unsaved;
        isReplaced = unsaved.isTreeReplaced;
        if (isReplaced) return true;
        ++file.version;
        unsaved.forgetThoseOfTheParent();
        if (!unsaved.ofBatch.isEmpty()) unsaved.waiting.append(std::exchange(unsaved.ofBatch, {}));
        add(unsaved.waiting);
        if (!origin.empty()) unsaved.waiting.addOrigins(origin);
        return std::exchange(unsaved.isSaveQueued, true);
    });
    queueSaveUnlessQueued(isQueued);
    return !isReplaced;
}

/// `add` adds the writes of a save of `tree` to those of the batch, or to those that wait.
template <typename Add>
void queueOrJoinBatch(const NSDictionary& tree, const NSArray& log, Add&& add) {
    if (StoreInside::state().inBatchSave) {
        StoreInside::state().batchLogChanges.addObjectsFromArray(log);
        return joinBatch(add);
    }
    const bool isQueued = queueUnlessTreeIsReplaced([&](Writes& writes) {
        add(writes);
        writes.addRecords(log);
    });
    if (!isQueued) queueReplacement(tree, log);
}

// What a tree holds at the key paths of its change records.
Writes writesOf(const NSDictionary& object, const NSArray& log) {
    Writes writes;
    for (const PropertyListValue& record : log) {
        std::string keyPath = record.dictionary().objectForKey("key").stringValue();
        PropertyListValue value = frozen(valueAt(object, keyPath));
        writes.add({std::move(keyPath), std::move(value), StoreInside::state().unless});
    }
    return writes;
}

}  // namespace

void UnsavedWrites::forgetThoseOfTheParent() {
    const unsigned now = QRVPlatform::Threads::forkCount();
    if (std::exchange(forks, now) == now) return;
    beingSaved = nullptr;
    waiting = {};
    isSaveQueued = false;
}

NSDictionary UnsavedWrites::onTopOf(const NSDictionary& tree) const {
    NSDictionary result = tree;
    if (beingSaved) result = beingSaved->appliedTo(result, Writes::Logging::Off);
    result = waiting.appliedTo(result, Writes::Logging::Off);
    return ofBatch.appliedTo(result, Writes::Logging::Off);
}

void queueMergingSaveOfWrite(const NSMutableDictionary& tree, ChangeRecord record,
                             const PropertyListValue& value, bool isOfEmpty) {
    const StoreInside::State& state = StoreInside::state();
    NewWrite write{std::move(record), !state.inBatchSave, isOfEmpty, frozen(value), state.unless};
    const auto join = [&write](Writes& writes) { writes.join(std::move(write)); };
    if (state.inBatchSave) {
        state.batchLogChanges.addObject(write.record.dictionary());
        joinBatch(join);
    } else if (!queueUnlessTreeIsReplaced(join)) {
        queueReplacement(tree, NSArray::arrayWithObject(write.record.dictionary()));
    }
}

void queueMergingSave(const NSDictionary& object, const NSArray& log) {
    if (StoreInside::state().inBatchSave && log.isNull()) return;
    if (object.isNull()) return queueMissingValue();
    if (log.isNull()) return queueReplacement(object, log);
    queueOrJoinBatch(object, log,
                     [own = writesOf(object, log)](Writes& writes) { writes.append(own); });
}

void queueMergingSaveOfBatch(const NSDictionary& tree, const NSArray& log) {
    if (tree.isNull()) return queueMissingValue();
    queueOrJoinBatch(tree, log, [](Writes&) {});
}

UnlessSettled::UnlessSettled(QRVKeyPath keyPath, std::optional<PropertyListValue> value) {
    StoreInside::state().unless =
        std::make_shared<const Settled>(Settled{std::string(keyPath.text()), std::move(value)});
}

UnlessSettled::~UnlessSettled() {
    StoreInside::state().unless = nullptr;
}

void runMergingReload() {
    const QRVSettings& store = QRVSettings::sharedSettings();
    std::optional<KnownFile> known;
    std::uint64_t version = 0;
    std::tie(known, version) = storedFile().read(
        [](const StoredFile& file) { return std::pair(file.known, file.knownVersion); });
    if (!known || !known->file.isAt(store.location())) {
        FileReading reading = readSettingsFile(known ? known->tree : nullptr);
        if (reading.lackedMeans) {  // The file may not change again for a long time.
            DispatchMainQueue::shared().asyncAfter(QRVPlatform::filePollingInterval, [] {
                StoreInside::state().readQueue.async(runMergingReload);
            });
            return;
        }
        noteReload(reading);
        bool isRead = false;
        storedFile().update([&](StoredFile& file) -> std::optional<KnownFile> {
            isRead = file.knownVersion == version;
            if (!isRead) return std::nullopt;
            file.mustBeBackedUp = reading.failed;
            return file.know({reading.root, reading.file});
        });
        if (!isRead) {
            StoreInside::state().readQueue.async(runMergingReload);
            return;
        }
    }
    queuePublication();
}

}  // namespace QRVInside
