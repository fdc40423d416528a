// SPDX-License-Identifier: MIT
#pragma once

/// Who changed which setting when, and the way back. A library of its own (libQRVHistory) on top of
/// the store, in a database that all processes share:
///
///     #include "QRVHistory/QRVHistory.h"
///     QRVHistoryStart();  // before loadDefaults
///
/// From then on, each save of this process is entered as one save with its changes. Changes of
/// programs that do not take part are entered as those of an unknown program, by whichever process
/// that takes part notices them first: when it starts, when its store reloads the file, and when it
/// finds them at a save. If it turns out later that a save of a process that takes part was among
/// them, it is entered as that process's, and the rest stays unknown. A process that is killed
/// between a save and its entry is such an unknown program.
///
/// The database is `QRVHistoryLocation()`. The file is of mode 0600, folders that are missing are
/// made with 0700. It has entries of each settings file that programs of this user have used under
/// this location; all functions are about the file of `QRVSettingsLocation()`.
///
/// The history never delays, fails or loses a save: entries are written on a queue of its own.
/// What cannot be written (full disk, locked database, folder that is missing or read-only) is
/// reported once to the handler of `QRVPlatform::setFileFailureHandler` and to the system log,
/// kept in memory (at most `QRVHistoryMaximumPending` saves), and retried with the next entry. A
/// damaged database is renamed to its name and ".damaged-1" (or the next free number), and a new
/// one is begun.
///
/// `QRVSETTINGS_HISTORY=0` in the environment switches it off: then nothing is entered. A
/// privileged program does not follow its environment.
///
/// What is not promised: an entry of two changes within the timestamp granularity of the file
/// system that keep inode and size; the order of entries while the clock is set back; values of
/// dates finer than a second.
///
/// A change is one leaf of the tree (a value other than a dictionary): dictionaries without leaves
/// are no changes, and an integer is equal to the same real.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Export.h"
#include "Platform/Values/NSDate.h"
#include "Platform/Values/PropertyListValue.h"

/// @name Bounds
/// The oldest saves are removed first, and only as a whole; the last one always stays.
/// @{
inline constexpr std::size_t QRVHistoryMaximumChanges = 10'000;
inline constexpr std::chrono::hours QRVHistoryMaximumAge{24 * 90};
/// Of all values together, in bytes of text.
inline constexpr std::int64_t QRVHistoryMaximumBytes = std::int64_t{64} * 1024 * 1024;
/// Saves that wait in memory while the database cannot be written. The oldest are forgotten first:
/// what they changed is then entered as of an unknown program. The bytes are those of the settings
/// files that they made; the latest save always stays.
inline constexpr std::size_t QRVHistoryMaximumPending = 1'000;
inline constexpr std::uint64_t QRVHistoryMaximumPendingBytes = std::uint64_t{64} * 1024 * 1024;
/// @}

/// @name Taking part
/// @{

/// This process takes part from now on; its host calls it on its main thread, before
/// `loadDefaults`. A second call does nothing. `program` is what entries call this program; empty
/// for the name of its executable. False when the history is switched off, or the user has no home
/// folder.
///
/// It installs the file-change handler of the store (`QRVSettings::setFileChangeHandler`).
QRV_EXPORT bool QRVHistoryStart(std::string_view program = {});

/// Waits for the saves of this process (`QRVSettingsWaitForSaves`) and then until they, and what
/// others have changed, are entered: for the end of a short program. True when that is so; a
/// process that does not take part has nothing to enter. False when the timeout has passed, and at
/// once when something cannot be entered. On the host's main thread.
QRV_EXPORT bool QRVHistoryWait(std::chrono::milliseconds timeout);
/// @}

/// @name Reading
/// These open the database at each call. They wait up to 2 seconds for a process that writes it.
/// Any thread. A process need not take part.
/// @{

struct QRVHistoryChange {
    std::string keyPath;
    PropertyListValue before;  ///< as it was stored; null when nothing was
    PropertyListValue after;   ///< likewise
};

/// What one save changed: one atomic replacement of the settings file. Of unknown programs it is
/// what one or several saves changed together.
struct QRVHistorySave {
    /// Names this save for good, unless it is of an unknown program: then the number may become
    /// that of a part of it, which a process has entered as its own. A save that is entered later
    /// has a greater one in general; it need not be a later save.
    std::int64_t id = 0;
    /// A later save of the file has a greater one. It may change when other saves are entered.
    double order = 0;
    NSDate time{0};
    std::string program;       ///< empty when it is unknown
    std::int64_t process = 0;  ///< process id; 0 when it is unknown
    /// Why it was saved (`QRVFileChange::origin`); empty when that is unknown.
    std::string origin;
    std::vector<QRVHistoryChange> changes;  ///< sorted by key path
};

struct QRVHistoryQuery {
    /// Only changes at this key path and below it; saves without any are left out. Empty for all.
    std::string prefix{};
    /// Only saves at this time or later.
    std::optional<NSDate> since{};
    /// Only these saves; empty for all.
    std::vector<std::int64_t> ids{};
    /// Only so many saves, the latest ones; 0 for all.
    std::size_t limit = 0;
};

struct QRVHistoryAnswer {
    std::vector<QRVHistorySave> saves;  ///< the latest first
    /// Why there is no answer, one line for people; empty when there is one. A history that does
    /// not exist yet is an empty one.
    std::string failure;
};

QRV_EXPORT QRVHistoryAnswer QRVHistorySaves(const QRVHistoryQuery& query = {});

/// The last save that changed this key path or one below it, with only these changes: at most one
/// save.
QRV_EXPORT QRVHistoryAnswer QRVHistoryLastChange(std::string_view keyPath);

/// `QRVPlatform::userStateFolder()`, "/", the application identifier and "/history.sqlite". Empty
/// when the user has no home folder.
QRV_EXPORT std::string QRVHistoryLocation();

/// Whether `QRVSETTINGS_HISTORY` switches the history off.
QRV_EXPORT bool QRVHistoryIsSwitchedOff();
/// @}

/// @name The way back
/// @{

/// One write of an undo. A null value removes.
struct QRVHistoryWrite {
    std::string keyPath;
    PropertyListValue value;
};

/// A key path that somebody has changed since.
struct QRVHistoryConflict {
    std::string keyPath;
    PropertyListValue expected;  ///< what the changes to be undone left there
    PropertyListValue now;       ///< what is stored there
    PropertyListValue value;     ///< what an undo would write
};

struct QRVHistoryInverse {
    /// In the order in which to make them, as one batch. None where the stored value is already
    /// the one of before.
    std::vector<QRVHistoryWrite> writes;
    std::vector<QRVHistoryConflict> conflicts;  ///< sorted by key path
};

enum class QRVHistoryConflicts {
    LeaveOut,   ///< `writes` has none at the key paths of conflicts
    Overwrite,  ///< `writes` has them, too, and removes a value on their way
};

/// What takes back these saves, or the changes of them that the caller leaves in: each key path is
/// to have the value before the oldest of its changes. A conflict is a key path
///
/// - at which something else is stored than the newest of its changes left there,
/// - that has another change between those of `saves`, or
/// - that leads through a value, or above values, stored there since.
///
/// `stored` is the tree of now (`QRVSettingsStoredValues`). Asks neither database nor store. The
/// saves may be in any order.
QRV_EXPORT QRVHistoryInverse
QRVHistoryInverseOf(const std::vector<QRVHistorySave>& saves, const NSDictionary& stored,
                    QRVHistoryConflicts conflicts = QRVHistoryConflicts::LeaveOut);

/// Removes all entries of this settings file, and their values from the disk. What was renamed as
/// damaged stays. Why it could not; empty when it could. Any thread.
QRV_EXPORT std::string QRVHistoryClear();
/// @}

/// @name Without linking the library
/// A program that seldom needs the history may load the library, and SQLite with it, only when it
/// does:
///
///     void* const library = dlopen("libQRVHistory.so.7", RTLD_NOW);
///     const auto functions = reinterpret_cast<const QRVHistoryTable* (*)()>(
///         dlsym(library, "QRVHistoryFunctions"))();
///
/// It must stay loaded until the process ends, because it has threads.
/// @{

/// The functions of this header, under their names. A later version may add some at the end.
struct QRVHistoryTable {
    decltype(&QRVHistoryStart) start;
    decltype(&QRVHistoryWait) wait;
    decltype(&QRVHistorySaves) saves;
    decltype(&QRVHistoryLastChange) lastChange;
    decltype(&QRVHistoryLocation) location;
    decltype(&QRVHistoryIsSwitchedOff) isSwitchedOff;
    decltype(&QRVHistoryInverseOf) inverseOf;
    decltype(&QRVHistoryClear) clear;
};

/// Never null. Any thread.
extern "C" QRV_EXPORT const QRVHistoryTable* QRVHistoryFunctions();
/// @}
