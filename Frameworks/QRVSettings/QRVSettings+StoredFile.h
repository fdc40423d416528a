// SPDX-License-Identifier: MIT
#pragma once

// What the store knows of its file, and the one place where the file is read.

#include <optional>

#include "Platform/Files/Files.h"
#include "Platform/Values/PropertyListValue.h"

namespace QRVInside {

struct FileReading {
    NSDictionary root = nullptr;  ///< null when there is no file that holds settings
    /// The file as it was just before it was read.
    QRVPlatform::FileIdentity identity;
    bool failed = false;  ///< there is a file, and what it holds is not known
    /// It failed because the system has no means left: this says nothing of the file.
    bool lackedMeans = false;
};

/// Reads the settings file under file coordination. Any thread; changes no state.
FileReading readSettingsFile();

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

    /// To be called for each reading of the file but a reload.
    void noteReading(const QRVPlatform::FileIdentity& identity) {
        if (!publishedUpTo) publishedUpTo = identity;
    }
};

/// The stored tree itself, of which QRVSettingsStoredValues is a copy; reads the file while there
/// is no tree. Not to be kept: the next write replaces it. For the host's thread.
NSDictionary storedTree();

}  // namespace QRVInside
