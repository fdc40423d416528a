// SPDX-License-Identifier: MIT
#pragma once

// What the store knows of its file, and the one place where the file is read.

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

#include "Platform/Files/Files.h"
#include "Platform/Files/HeldFile.h"
#include "Platform/Values/PropertyListValue.h"
#include "QRVSettings/QRVSettings+KnownText.h"
#include "QRVSettings/QRVSettings+Writes.h"

namespace QRVInside {

struct FileReading {
    NSDictionary root = nullptr;  ///< null when there is no file that holds settings
    /// The file as it was just before it was read.
    QRVPlatform::FileIdentity identity;
    /// The file that was read, when the store merges saves; unknown when it holds no settings, or
    /// may have been cut off, so that a save reads it again and backs it up.
    QRVPlatform::HeldFile file;
    /// The last known text, which this reading has replaced.
    KnownText::Forgotten forgotten = nullptr;
    bool failed = false;  ///< there is a file, and what it holds is not known
    /// It failed because the system has no means left: this says nothing of the file.
    bool lackedMeans = false;
};

/// Reads the settings file under file coordination. `likely` is a tree that may hold most of what
/// the file holds, or null. Any thread; changes no state but the known text.
FileReading readSettingsFile(const NSDictionary& likely = nullptr);

/// A file and the settings that it holds.
struct KnownFile {
    NSDictionary tree = nullptr;  ///< frozen; null when there is no file
    QRVPlatform::HeldFile file;
};

/// The writes of this process that are not in the file yet, from the oldest to the newest.
struct UnsavedWrites {
    std::shared_ptr<const Writes> beingSaved;  ///< null when no save is under way
    Writes waiting;                            ///< for the next save
    Writes ofBatch;                            ///< of an open batch; its commit makes them wait
    /// A save of the waiting writes is queued.
    bool isSaveQueued = false;
    unsigned forks = 0;  ///< of this process, when a save was last queued
    /// The stored tree is one that the host has set, so the next save replaces the whole file.
    bool isTreeReplaced = false;

    [[nodiscard]] bool isEmpty() const {
        return !beingSaved && waiting.isEmpty() && ofBatch.isEmpty();
    }
    /// In a forked child, what its parent saves is no longer unsaved.
    void forgetThoseOfTheParent();
    /// Frozen. `tree` is frozen or null.
    [[nodiscard]] NSDictionary onTopOf(const NSDictionary& tree) const;
};

/// The parts belong together, and are changed together.
struct StoredFile {
    /// `QRVSettings::storageCache`.
    NSDictionary tree = nullptr;
    /// The state of the file up to which changes by others have been published, or need not be:
    /// that of this process's first reading, and of each reload since. Empty when the file was
    /// never read.
    std::optional<QRVPlatform::FileIdentity> publishedUpTo;
    /// The tree was begun without the settings of a file that was there and could not be read.
    bool mustBeBackedUp = false;
    /// Settings were read or published as absent, and reads may have cached that.
    bool wasAbsent = false;
    /// Key paths of settings that a read of this process has found where none were before, and that
    /// the next reload publishes.
    NSArray foundByReading = nullptr;

    /// @name When the store merges saves
    /// @{
    /// What the file held when this process last read or replaced it; empty when that is not known.
    std::optional<KnownFile> known;
    /// Grows whenever `known` changes.
    std::uint64_t knownVersion = 0;
    UnsavedWrites unsaved;
    /// Grows whenever `known` or what is unsaved changes.
    std::uint64_t version = 0;
    /// @}

    /// Returns the old one.
    std::optional<KnownFile> know(KnownFile file) {
        ++knownVersion;
        ++version;
        return std::exchange(known, std::move(file));
    }
    /// To be called for each reading of the file but a reload.
    void noteReading(const QRVPlatform::FileIdentity& identity) {
        if (!publishedUpTo) publishedUpTo = identity;
    }
};

/// The stored tree itself, of which QRVSettingsStoredValues is a copy; reads the file while there
/// is no tree. Not to be kept: the next write replaces it. For the host's thread, which alone
/// replaces the tree, and so reads it without a lock.
const NSDictionary& storedTree();

/// Makes `tree` the stored one, as part of a write or an import.
void replaceStoredTree(NSDictionary tree);

}  // namespace QRVInside
