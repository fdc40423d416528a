// SPDX-License-Identifier: MIT
// Saving the settings file, and waiting for saves.
//
// A save of a whole tree, on the store's queue:
// 1. The tree is serialised.
// 2. The old file is backed up when its bytes would be lost.
// 3. The records are posted to the main queue, so that no notification of the new file overtakes
// them.
// 4. The file is replaced.
//
// All copies are shallow: a nested dictionary that a write made mutable is shared by the trees of
// several queued saves, and a save that runs after a later write may contain that write's change.
//
// QRVSettings+Merging.cpp has the saves that bring only what this process wrote.

#include "QRVSettings/QRVSettings+Saving.h"

#include <algorithm>
#include <utility>

#include "Platform/Coordination/CoordinatedWrite.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Dispatch/ProcessQueues.h"
#include "Platform/Dispatch/WorkQueue.h"
#include "Platform/Files/FileFailures.h"
#include "Platform/Files/Files.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Platform/System/System.h"
#include "QRVSettings/QRVSettings+FileChange.h"
#include "QRVSettings/QRVSettings+HostThread.h"
#include "QRVSettings/QRVSettings+Log.h"
#include "QRVSettings/QRVSettings+Merging.h"
#include "QRVSettings/QRVSettings+State.h"
#include "QRVSettings/QRVSettings+StoredFile.h"
#include "QRVSettings/QRVSettings.h"

using QRVInside::OldFile;
using QRVInside::originOfWrites;
using QRVInside::requireHostThread;
using QRVInside::SaveOutcome;
using QRVInside::StoredFile;
using QRVInside::StoreInside;
using QRVPlatform::WorkQueue;

namespace {

enum class SaveMessageLine : int {
    MissingValue = 88,
    SerialisationError = 115,
    ExceptionRaised = 119,
    ObjectOfException = 120,
};

void logSaveMessage(SaveMessageLine line, const char* format,
                    std::vector<PropertyListValue> arguments) {
    QRVInside::logMessage("QRVSettingsSaveObjectWithLog_block_invoke", static_cast<int>(line),
                          format, std::move(arguments));
}

std::string backedUp(const std::string& url, const char* reason) {
    const QRVPlatform::FileBackup backup = QRVPlatform::backUpFile(url);
    if (backup.error) {
        NSLog("Prefs file not saved, the old one %@ and cannot be backed up: %@, %@",
              {reason, backup.error.message(), url});
        return "the old file cannot be backed up: " + backup.error.message();
    }
    NSLog("Prefs file %@, it is backed up as %@", {reason, backup.path});
    StoreInside::state().storedFile.update([](StoredFile& file) { file.mustBeBackedUp = false; });
    return {};
}

std::vector<std::string> keyPathsOf(const NSArray& log) {
    std::vector<std::string> keyPaths;
    for (const PropertyListValue& record : log)
        keyPaths.push_back(record.dictionary().objectForKey("key").stringValue());
    return keyPaths;
}

/// The point in time after the timeout, which may be negative or longer than the clock can count.
std::chrono::steady_clock::time_point deadlineAfter(std::chrono::milliseconds timeout) {
    constexpr std::chrono::hours longest(24 * 365);
    return std::chrono::steady_clock::now() +
           std::clamp<std::chrono::milliseconds>(timeout, {}, longest);
}

/// A tree on its way to the file.
struct TreeSave {
    NSDictionary tree;  ///< frozen when the file is observed
    NSArray log;
    QRVInside::KnownText::Written written{};
    /// For the observer; empty when there is none.
    std::optional<QRVFileChange> change = std::nullopt;
};

std::string saveTree(QRVPlatform::WriteAccess& access, TreeSave& save) {
    StoreInside::State& state = StoreInside::state();
    std::optional<QRVFileChange>& change = save.change;
    if (change) {
        change->isBeforeKnown = true;
        change->before = state.lastSavedTree;
        change->fileBefore = state.lastSaved;
    }
    // The file of this process's last save is not damaged, and need not be read to know that.
    const bool isBeforeMissing = change && change->before.isNull();
    if (state.lastSaved.isMissing() || isBeforeMissing ||
        QRVPlatform::identityOfFileAtPath(access.path()) != state.lastSaved) {  // 2
        const OldFile old = QRVInside::readOldFile(access.path());
        std::string failure = QRVInside::secured(old, access.path());
        if (!failure.empty()) return failure;
        if (change) {
            change->isBeforeKnown = old.condition != OldFile::Condition::Damaged;
            change->before = old.root;
            change->fileBefore = old.file.identity();
        }
    }
    QRVInside::postRecords(save.log);                                     // 3
    std::string failure = QRVInside::replacedFile(access, save.written);  // 4
    if (change && failure.empty()) {
        state.lastSavedTree = save.tree;
        change->fileAfter = state.lastSaved;
    }
    return failure;
}

/// When the tree cannot be serialised, the outcome says why.
void serialise(TreeSave& save, SaveOutcome& outcome) {
    save.written = StoreInside::state().knownText.write(save.tree);
    const auto& error = save.written.error();
    if (!error) return;
    logSaveMessage(SaveMessageLine::SerialisationError, "%@", {error->description()});
    outcome.failure = error->description();
    outcome.refused.push_back({error->keyPath, outcome.failure});
    QRVInside::reportUnsaved(error->keyPath);
}

SaveOutcome save(const NSDictionary& object, const NSArray& log, std::string origin) {
    SaveOutcome outcome;
    outcome.wasWholeTree = true;
    outcome.keyPaths = keyPathsOf(log);
    if (object.isNull()) {
        QRVInside::logMissingValue();
        outcome.wasWithoutTree = true;
        return outcome;
    }
    TreeSave save{object, log};
    if (QRVInside::isFileChangeObserved()) {
        save.tree = QRVInside::frozen(object).dictionary();
        save.change.emplace();
        save.change->origin = std::move(origin);
        save.change->after = save.tree;
    }
    QRVInside::guardedSave(object, outcome, [&] {
        serialise(save, outcome);  // 1
        if (!outcome.failure.empty()) return;
        QRVInside::coordinateSave(
            outcome, [&](QRVPlatform::WriteAccess& access) { return saveTree(access, save); });
    });
    if (save.change && outcome.failure.empty()) QRVInside::noteFileChange(*save.change);
    return outcome;
}

/// Runs once. So small that a queue holds it without an allocation.
struct SaveOfWrite {
    NSDictionary tree;
    QRVInside::ChangeRecord record;

    void operator()() { run({}); }
    void run(std::string origin) {
        const NSArray log = NSArray::arrayWithObject(std::move(record).dictionary());
        StoreInside::state().saves.end(save(tree, log, std::move(origin)));
    }
};
static_assert(sizeof(SaveOfWrite) <= QRVPlatform::WorkItem::roomInside);

}  // namespace

void QRVInside::saveTreeOfWrite(NSDictionary tree, ChangeRecord record) {
    StoreInside::State& state = StoreInside::state();
    if (state.inBatchSave) return state.batchLogChanges.addObject(record.dictionary());
    state.saves.begin();
    WorkQueue& queue = WorkQueue::of(state.queue);
    std::string origin = originOfWrites();
    if (origin.empty())
        queue.async(SaveOfWrite{std::move(tree), std::move(record)});
    else
        queue.async([save = SaveOfWrite{std::move(tree), std::move(record)},
                     origin = std::move(origin)]() mutable { save.run(std::move(origin)); });
}

void QRVInside::logMissingValue() {
    logSaveMessage(SaveMessageLine::MissingValue, "Trying to save settings with missing value", {});
}

void QRVInside::guardedSave(const NSDictionary& object, SaveOutcome& outcome,
                            const std::function<void()>& work) {
    try {
        work();
    } catch (const NSInvalidArgumentException& exception) {
        logSaveMessage(SaveMessageLine::ExceptionRaised, "%@", {exception.what()});
        logSaveMessage(SaveMessageLine::ObjectOfException, "%@", {object});
        outcome.failure = exception.what();  // Not reported: the handler itself may have raised it.
    }
}

void QRVInside::reportUnsaved(const std::string& keyPath) {
    QRVPlatform::FileFailures::reported("save settings", QRVSettings::sharedSettings().location(),
                                        make_error_code(std::errc::invalid_argument), keyPath);
}

// With the store as presenter, so that it is not notified of its own write.
void QRVInside::coordinateSave(
    SaveOutcome& outcome, const std::function<std::string(QRVPlatform::WriteAccess&)>& accessor) {
    const QRVSettings& store = QRVSettings::sharedSettings();
    QRVPlatform::LockWait wait;
    if (const auto timeout = store.saveLockTimeout()) wait.deadline = deadlineAfter(*timeout);
    const std::error_code error = QRVPlatform::coordinateWriting(
        NSFileCoordinator(&store), store.location(),
        NSFileCoordinator::WritingOptions::ForReplacing,
        [&](QRVPlatform::WriteAccess& access) { outcome.failure = accessor(access); }, wait);
    if (error) outcome.failure = error.message();
}

OldFile QRVInside::readOldFile(const std::string& url) {
    OldFile old;
    old.file = QRVPlatform::HeldFile::at(url);
    const QRVPlatform::FileContents contents =
        QRVPlatform::contentsOfFile(url, NSPropertyListSerialization::maximumSize);
    if (contents.isMissing()) return old;
    if (contents.identity != old.file.identity()) old.file = {};
    if (contents.error && contents.error != std::errc::file_too_large) {
        old.condition = OldFile::Condition::Unreadable;
        old.error = contents.error;
        return old;
    }
    if (!contents.error && contents.bytes.empty()) return old;
    if (!contents.error) {
        const auto read = StoreInside::state().knownText.read(contents.bytes, url, nullptr).result;
        old.root = read.value.dictionary();
        old.mayBeCutOff = read.mayBeCutOff;
    }
    old.condition = old.root.isNull() ? OldFile::Condition::Damaged : OldFile::Condition::Settings;
    return old;
}

std::string QRVInside::secured(const OldFile& old, const std::string& url) {
    switch (old.condition) {
        case OldFile::Condition::Missing:
            return {};
        case OldFile::Condition::Unreadable:
            NSLog("Prefs file not saved, the old one cannot be read: %@, %@",
                  {old.error.message(), url});
            return "the old file cannot be read: " +
                   QRVPlatform::FileFailures::reported("read file", url, old.error).message();
        case OldFile::Condition::Damaged:
            return backedUp(url, "was damaged");
        case OldFile::Condition::Settings:
            break;
    }
    if (old.mayBeCutOff) return backedUp(url, "may have been cut off");
    const bool isUnknown = StoreInside::state().storedFile.read(
        [](const StoredFile& stored) { return stored.mustBeBackedUp; });
    return isUnknown ? backedUp(url, "could not be read before") : std::string();
}

void QRVInside::postRecords(const NSArray& log) {
    if (log.isNull()) return;
    StoreInside::State& state = StoreInside::state();
    DispatchMainQueue::shared().async([&state, log] { state.localChanges.add(log); });
}

std::string QRVInside::replacedFile(QRVPlatform::WriteAccess& access,
                                    const KnownText::Written& written) {
    StoreInside::State& state = StoreInside::state();
    state.lastSavedTree = nullptr;
    if (const std::error_code error = QRVPlatform::replaceFile(access, written.bytes())) {
        state.lastSaved = {};
        return error.message();
    }
    state.lastSaved = access.newFile().identity();
    state.knownText.noteReplaced(written, access.path());
    state.storedFile.update([](StoredFile& file) { file.mustBeBackedUp = false; });
    return {};
}

void QRVSettingsSaveObjectWithLog(const NSDictionary& object, const NSArray& log) {
    requireHostThread();
    StoreInside::State& state = StoreInside::state();
    const bool isUnnamedTree = log.isNull() && state.ownOrigin == QRVChangeOrigins::set;
    const QRVInside::OriginScope scope(isUnnamedTree ? QRVChangeOrigins::tree : state.ownOrigin);
    if (state.mergesSaves) {
        QRVInside::queueMergingSave(object, log);
        return;
    }
    if (state.inBatchSave) {
        state.batchLogChanges.addObjectsFromArray(log);
        return;
    }
    state.saves.begin();
    state.queue.async([&state, object, log, origin = originOfWrites()] {
        state.saves.end(save(object, log, origin));
    });
}

void QRVSettingsSaveObject(const NSDictionary& object) {
    QRVSettingsSaveObjectWithLog(object.copy(), nullptr);
}

void QRVSettingsSynchronize() {}

namespace {

// No later use of a queue would come to their help while this thread waits.
void runSavesThatHaveNoThread() {
    QRVPlatform::ProcessQueues::startMissingThreads();
    if (QRVPlatform::ProcessQueues::isThreadMissing())
        QRVSettings::sharedSettings().queue().sync([] {});
}

}  // namespace

QRVSaveStatus QRVSettingsWaitForSaves(std::chrono::milliseconds timeout) {
    requireHostThread();
    const auto deadline = deadlineAfter(timeout);
    const StoreInside::State& state = StoreInside::state();
    QRVSaveStatus status;
    if (timeout > std::chrono::milliseconds::zero()) runSavesThatHaveNoThread();
    const bool haveEnded = state.saves.waitUntil(deadline);
    const auto failures = state.saves.failures();
    status.reason = failures.reason;
    const NSMutableArray keyPaths;
    for (const std::string& keyPath : failures.keyPaths) keyPaths.addObject(keyPath);
    status.keyPaths = keyPaths.copy();
    if (!haveEnded || (state.inBatchSave && state.batchLogChanges.count() != 0))
        status.state = QRVSaveStatus::State::Pending;
    else if (!failures.reason.empty())
        status.state = QRVSaveStatus::State::Failed;
    return status;
}
