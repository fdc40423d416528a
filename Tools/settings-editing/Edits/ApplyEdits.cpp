// SPDX-License-Identifier: MIT
#include "Edits/ApplyEdits.h"

#include <algorithm>
#include <condition_variable>
#include <csignal>
#include <iostream>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <thread>
#include <utility>

#include "History/ToolHistory.h"
#include "Platform/Files/Files.h"
#include "Platform/System/System.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Reporting/Notices.h"
#include "Settings/PendingChanges.h"
#include "Settings/ProfileScope.h"
#include "Settings/SettingsFileCondition.h"
#include "Text/FileForm.h"
#include "Text/KeyPaths.h"

namespace Tool {
namespace {

using WaitReport = std::function<void(const std::string& description)>;

/// While it lives: reports what this process waits for, on a thread of its own.
class WaitReporter {
  public:
    WaitReporter(std::function<std::string()> description, const WaitReport& report)
        : description_(std::move(description)), report_(report) {
        try {
            thread_ = std::thread([this] { reportLater(); });
        } catch (const std::system_error&) {  // No thread is left: the work matters more.
        }
    }
    WaitReporter(const WaitReporter&) = delete;
    WaitReporter& operator=(const WaitReporter&) = delete;
    ~WaitReporter() {
        if (!thread_.joinable()) return;
        {
            const std::lock_guard guard(mutex_);
            isOver_ = true;
        }
        ended_.notify_one();
        thread_.join();
    }

  private:
    void reportLater() {
        std::string last;
        std::unique_lock lock(mutex_);
        while (!ended_.wait_for(lock, timeUntilWaiting, [this] { return isOver_; })) {
            std::string description = description_();
            if (description != last) report_(description);
            last = std::move(description);
        }
    }

    std::function<std::string()> description_;
    const WaitReport& report_;
    std::mutex mutex_;
    std::condition_variable ended_;
    bool isOver_ = false;
    std::thread thread_;
};

PropertyListValue valueIn(const NSDictionary& tree, const PendingEdit& edit) {
    return NSDictionaryQRV::objectAtKeyPath(tree, edit.place.storedKeyPath());
}

/// The edits at whose places the tree holds neither what was there nor what is to be there.
std::vector<EditConflict> conflictsWith(const NSDictionary& tree,
                                        const std::vector<PendingEdit>& edits) {
    std::vector<EditConflict> conflicts;
    for (const PendingEdit& edit : edits) {
        const PropertyListValue theirs = valueIn(tree, edit);
        if (!areSameInKind(theirs, edit.base) && !areSameInKind(theirs, edit.value))
            conflicts.push_back({edit, theirs});
    }
    return conflicts;
}

/// Whether a damaged file is to go: it holds nothing that an edit could be compared with. To be
/// called once it was opened.
bool replacesDamagedFile(const ApplyRequest& request) {
    return request.replacesDamagedFile && QRVSettings::sharedSettings().storageCache().isNull() &&
           !conditionOfSettingsFile().damage.empty();
}

/// What equals the default is not stored.
bool isHeldBy(const NSDictionary& tree, const PendingEdit& edit) {
    const PropertyListValue found = valueIn(tree, edit);
    return areSameInKind(found, asInFile(edit.value)) ||
           (found.isNull() && edit.value == QRVSettingsDefaultForKeyPath(edit.place.keyPath));
}

/// The save of this process, as the observer of the file receives it.
class SaveOfThisProcess {
  public:
    SaveOfThisProcess() {
        QRVSettings& store = QRVSettings::sharedSettings();
        store.setFileChangeHandler(
            [save = save_, next = store.fileChangeHandler()](const QRVFileChange& change) {
                if (change.by == QRVFileChange::By::ThisProcess) {
                    const std::lock_guard guard(save->mutex);
                    save->change = change;
                }
                if (next) next(change);
            });
    }
    /// To be called after the saves were waited for; empty when the file was not replaced.
    [[nodiscard]] std::optional<QRVFileChange> change() const {
        const std::lock_guard guard(save_->mutex);
        return save_->change;
    }

  private:
    struct Save {
        std::mutex mutex;
        std::optional<QRVFileChange> change;
    };
    // The handler stays until the process ends.
    std::shared_ptr<Save> save_ = std::make_shared<Save>();
};

/// A value that keeps the application from starting can be removed, as by `qrvsettings unset`.
PendingChanges::Preparation preparationFor(const std::vector<PendingEdit>& edits) {
    const bool isRemoval =
        !edits.empty() && std::all_of(edits.begin(), edits.end(),
                                      [](const PendingEdit& edit) { return edit.value.isNull(); });
    return isRemoval ? PendingChanges::Preparation::MayFail
                     : PendingChanges::Preparation::MustSucceed;
}

/// Removals first: a value may stand in the way of another one.
void writeEdits(const std::vector<PendingEdit>& edits, PendingChanges& changes) {
    for (const bool removes : {true, false})
        for (const PendingEdit& edit : edits)
            if (edit.value.isNull() == removes)
                changes.set(edit.value, edit.place.keyPath, ProfileScope(edit.place.profile));
}

/// Names the settings that the file does not hold.
Failure notHeld(const std::vector<EditConflict>& missing) {
    std::string text = "the file does not hold what was saved: ";
    for (const EditConflict& one : missing)
        text += (&one == missing.data() ? "" : ", ") + keyPathText(one.edit.place.storedKeyPath());
    return {Fault::NotWritten, text};
}

/// What another process may have changed since the save has become a conflict. Anything else that
/// the file does not hold is a failure.
void readBack(const std::vector<PendingEdit>& edits, const std::optional<QRVFileChange>& save,
              ApplyOutcome& outcome) {
    const SettingsFileCondition file = conditionOfSettingsFile();
    if (!file.fault().empty())
        throw Failure(Fault::NotWritten, "saved, but not as it is to be: " + file.fault());
    for (const PendingEdit& edit : edits)
        if (!isHeldBy(file.settings, edit))
            outcome.conflicts.push_back({edit, valueIn(file.settings, edit)});
    if (outcome.conflicts.empty()) return;
    const bool isOwnFile =
        save && save->fileAfter == QRVPlatform::identityOfFileAtPath(QRVSettingsLocation());
    if (isOwnFile) throw notHeld(outcome.conflicts);
}

void apply(const ApplyRequest& request, ApplyOutcome& outcome) {
    try {
        takePartInHistory();
    } catch (const Failure& failure) {
        notice(failure.what());
    }
    const SaveOfThisProcess save;
    const WritingOptions options{
        .damagedFile = request.replacesDamagedFile ? DamagedFile::Replaced : DamagedFile::Refused,
        .readOnlyFile =
            request.replacesReadOnlyFile ? ReadOnlyFile::Replaced : ReadOnlyFile::Refused};
    openToWrite(options, {});
    if (!replacesDamagedFile(request))
        outcome.conflicts = conflictsWith(QRVSettingsStoredValues(), request.edits);
    if (!outcome.conflicts.empty()) {
        outcome.state = ApplyOutcome::State::Conflict;
        outcome.reason = "another process has changed some of the settings";
        return;
    }
    PendingChanges changes(preparationFor(request.edits));
    writeEdits(request.edits, changes);
    QRVSettings::sharedSettings().setChangeOrigin(request.origin.empty() ? "edit" : request.origin);
    static_cast<void>(changes.save());
    readBack(request.edits, save.change(), outcome);
    if (const auto change = save.change(); change && change->isBeforeKnown)
        outcome.overwritten = conflictsWith(change->before, request.edits);
    outcome.state = ApplyOutcome::State::Applied;
}

}  // namespace

ApplyOutcome applyEdits(const ApplyRequest& request, const WaitReport& isWaiting) {
    ApplyOutcome outcome;
    setNoticeHandler([&outcome](const std::string& text) { outcome.notices.push_back(text); });
    setWaitHandler([&isWaiting](const auto& description, const auto& work) {
        const WaitReporter reporter(description, isWaiting);
        work();
    });
    try {
        apply(request, outcome);
    } catch (const std::exception& error) {  // A failure, or the system is out of memory.
        outcome.state = ApplyOutcome::State::NotApplied;
        outcome.conflicts.clear();
        outcome.reason = error.what();
    }
    setWaitHandler(nullptr);
    setNoticeHandler(nullptr);
    return outcome;
}

int runApplyProcess() {
    // The store logs for hosts without a terminal; and a save goes on when nobody listens any more.
    setNSLogSink([](const std::string&) {});
    if (std::signal(SIGPIPE, SIG_IGN) == SIG_ERR) return 2;
    std::string line;
    std::getline(std::cin, line);
    ApplyRequest request;
    try {
        request = requestFromLine(line);
    } catch (const Failure& failure) {
        std::cerr << failure.what() << std::endl;
        return 2;
    }
    std::mutex mutex;  // Guards the output.
    const auto say = [&mutex](const std::string& text) {
        const std::lock_guard guard(mutex);
        std::cout << text << std::endl;
    };
    say(lineOf(applyEdits(
        request, [&say](const std::string& description) { say(lineOfWaiting(description)); })));
    waitForHistory();
    return 0;
}

}  // namespace Tool
