// SPDX-License-Identifier: MIT
#pragma once

// All state of the store.

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Files/Files.h"
#include "Platform/System/System.h"
#include "Platform/Threads/AtomicProperty.h"
#include "Platform/Threads/ThreadAffinity.h"
#include "QRVSettings/QRVSettings+KnownText.h"
#include "QRVSettings/QRVSettings+LocalChanges.h"
#include "QRVSettings/QRVSettings+SaveProgress.h"
#include "QRVSettings/QRVSettings+Site.h"
#include "QRVSettings/QRVSettings+StoredFile.h"
#include "QRVSettings/QRVSettings.h"

namespace QRVInside {

/// The application identifier and `ending`.
std::string queueLabel(std::string_view ending);

/// The name of the settings file in its folder.
std::string settingsFileName();

}  // namespace QRVInside

struct QRVSettings::State {
    // Read or replaced on several threads.
    std::atomic<bool> monitorFileChanges = false;
    std::atomic<bool> mergesSaves = false;
    /// A reload that follows another one is queued, and has not begun: then the number of forks
    /// that led to the process that queued it, plus 1; else 0.
    std::atomic<unsigned> queuedSecondReload = 0;
    /// How often what was read has become the stored tree.
    std::atomic<std::uint64_t> publications = 0;
    /// The same as `queuedSecondReload` of a publication of merged settings.
    std::atomic<unsigned> queuedPublication = 0;
    QRVPlatform::AtomicProperty<std::optional<std::chrono::milliseconds>> saveLockTimeout;
    QRVPlatform::AtomicProperty<NSMutableDictionary> cache{NSMutableDictionary()};
    QRVPlatform::AtomicProperty<QRVInside::StoredFile> storedFile;
    QRVInside::KnownText knownText;
    QRVInside::SaveProgress saves;
    QRVPlatform::AtomicProperty<std::optional<NSDate>> modificationDate;
    /// Whether the date is of this process: `Threads::forkCount` when it was asked last.
    std::atomic<unsigned> forksAtModificationDate = 0;
    QRVPlatform::AtomicProperty<std::shared_ptr<NSOperationQueue>> presenterQueue;
    /// Whether there is a `fileChangeHandler`.
    std::atomic<bool> isFileChangeObserved = false;
    QRVPlatform::AtomicProperty<std::shared_ptr<const QRVFileChangeHandler>> fileChangeHandler;

    /// The thread that called the store first; used in builds with assertions.
    QRVPlatform::ThreadAffinity hostThread{[](const char* function) {
        NSLog("%@ was called on a thread other than the one that it belongs to", {function});
    }};

    // Used on the main thread.
    bool disableCache = false;
    bool prepared = false;
    bool inBatchSave = false;
    bool usesSiteDefaults = false;
    std::unique_ptr<const QRVInside::Site> site;
    /// Those of the site; null while nothing is locked.
    const QRVInside::Locks* locks = nullptr;
    NSMutableDictionary defaults = nullptr;
    std::optional<std::string> activeProfile;
    /// Grows whenever the profile is set.
    std::uint64_t numberOfActiveProfile = 0;
    PropertyListValue currentAppearance;
    ChangeHandler onChange;
    std::optional<std::string> changeOrigin;
    /// What the store itself calls the writes of this moment.
    std::string_view ownOrigin = QRVChangeOrigins::set;
    /// What makes the writes of this moment unnecessary; null for writes that are always needed.
    std::shared_ptr<const QRVInside::Settled> unless;
    /// Its records any thread may read.
    QRVInside::LocalChanges localChanges;

    // Used on `queue`.
    /// The file that the last save left behind; missing when it failed.
    QRVPlatform::FileIdentity lastSaved;
    /// What it holds, frozen; null when nobody observes the file, and after a merging save.
    NSDictionary lastSavedTree = nullptr;

    // Set at creation and never replaced.
    const std::string location = QRVSettingsLocation();
    const NSMutableArray batchLogChanges;
    DispatchQueue queue{QRVInside::queueLabel(".settings"), DispatchQueue::AtFork::FinishWork};
    DispatchQueue readQueue{QRVInside::queueLabel(".settings.read"),
                            DispatchQueue::AtFork::FinishWork};
};

namespace QRVInside {

/// The one door to the state for the sources of this folder.
struct StoreInside {
    using State = QRVSettings::State;
    static State& state() {
        static State& ofTheStore = *QRVSettings::sharedSettings().state_;
        return ofTheStore;
    }
};

}  // namespace QRVInside
