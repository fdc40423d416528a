// SPDX-License-Identifier: MIT
#pragma once

/// The settings store: every user-visible option of the application, in one property-list file that
/// several processes read and write at the same time.
///
/// A setting is addressed by a dotted key path. A read searches three layers in this order, and the
/// first that holds the key path answers: the cache of this process, the stored values, the
/// built-in defaults. A write takes effect in this process at once; the file is replaced later, as
/// a whole, on the store's own queue.
///
///     QRVSettingsSetObjectForKeyPath(true, "CPU.Menubar.Enabled");
///     if (QRVSettingsBoolForKeyPath("CPU.Menubar.Enabled")) ...
///
/// Threads: a function that does not say "any thread" belongs to the main thread of the host, which
/// also has to drain the main queue (`DispatchMainQueue`). In a build with assertions, the first
/// thread that calls such a function counts as the host's, and a call on another thread ends the
/// process with a message that names the function. In other builds such a call is undefined
/// behaviour.
///
/// Values that the store returns are its own objects, not copies: callers must not change them. Nor
/// does it copy what it is given: a mutable container in a written value, in the defaults or in a
/// tree that was set may be changed on the host's thread only, because the store reads it there
/// without a lock.
///
/// Nothing: an absent value, dictionary or array is null (`isNull()`). A null dictionary is not an
/// empty one: there is no settings file that can be read, or the defaults are not loaded. `NSNull`
/// is a value of its own, with which the cache marks a key path that no layer holds; reads give
/// null for it. Text or a date that may be absent is a `std::optional`, and a path is empty when
/// there is none.
///
/// Errors: a missing setting and a null key path give null (false for booleans). A save that fails
/// is reported to the handler of `setFileFailureHandler` (`Platform/Files/Files.h`), and
/// `QRVSettingsWaitForSaves` tells of it; reads go on giving what was written. The one error that
/// reaches a caller is NSInvalidArgumentException from a write.
///
/// Shortages: no function fails because the system has no descriptor, thread or watch left. Reads
/// and writes go on in memory, the handler of `setFileFailureHandler` is called, and the next save,
/// or the next use of a queue, tries again.
///
/// Forks: a fork waits for the saves of this process, at most `QRVPlatform::forkTimeout`, so that a
/// program that goes to the background loses none when its first process ends. The child has the
/// store as its parent had it, with no save pending. The thread that forked is its main thread. It
/// reads, writes and saves like any other process. Where the parent watched the file, the child
/// watches it from its next write or use of the main queue on.
///
/// Site: with `setUsesSiteDefaults(true)`, files of the machine's administrator change defaults and
/// lock key paths; `QRVSettingsIsLocked` has the rules.
///
/// Several writers: every host should call `setMergesSaves(true)` at its start. Then no process
/// loses what another has written. Otherwise each save replaces the whole file by the tree of its
/// own process: of two processes that save at nearly the same time, the later one wins.
///
/// What is not promised: a save that has not run when the process ends is lost.
/// `QRVSettingsWaitForSaves` waits for it.

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Dispatch/NSOperationQueue.h"
#include "Platform/Export.h"
#include "Platform/Files/NSFilePresenter.h"
#include "Platform/Values/PropertyListValue.h"
#include "QRVSettings/FileChange.h"
#include "QRVSettings/KeyPath.h"

namespace QRVInside {
struct StoreInside;
}

/// The one store object of a process.
///
/// `localChanges` and `batchLogChanges` hold change records: dictionaries of exactly "key" (the key
/// path written) and "time" (seconds since 1970, a real number).
class QRV_EXPORT QRVSettings : public NSFilePresenter {
  public:
    /// Receives the key paths that another process changed, each once, in no defined order.
    using ChangeHandler = std::function<void(const NSArray& changedKeyPaths)>;

    /// The store. The first call creates it, exactly once, and reads nothing from disk; it is never
    /// destroyed. Any thread.
    static QRVSettings& sharedSettings();

    QRVSettings(const QRVSettings&) = delete;
    QRVSettings& operator=(const QRVSettings&) = delete;

    /// Whether there is anything at `location()`, a folder included; false also when the folder
    /// above cannot be searched. Takes no lock and reads nothing. Any thread.
    [[nodiscard]] bool exists() const;

    /// @name Called by the host at its start, on its main thread and before other threads read
    /// @{

    /// Restores the appearance, compares the machine with the one that last used the settings, and
    /// then rebuilds `defaults()`. Before the first call there are no defaults. The cache is left
    /// as it is: a key path that was read before the call, and had no value then, stays null.
    ///
    /// The machine and its model are recorded in the settings. On another machine
    /// "Network.Menubar.Global.PrimaryInterface" is removed, on another model
    /// "Sensors.Global.Fans" and each profile's "Sensors.Menubar.Sensors". These are ordinary
    /// writes, and throw as such.
    ///
    /// The defaults of clocks follow the short time pattern of the user's locale: LC_ALL, LC_TIME
    /// or LANG of the environment.
    void loadDefaults();

    /// The machine: 40 lowercase hexadecimal digits from which its identifier cannot be recovered.
    /// Null when the machine has no identifier. Asks the system at each call. Any thread.
    [[nodiscard]] PropertyListValue deviceID() const;
    /// The machine's model, ASCII text; null when it is not known. Asks the system at each call.
    /// Any thread.
    [[nodiscard]] PropertyListValue modelIdentifier() const;

    /// After `loadDefaults`: activates the profile "default", migrates, and, when
    /// `monitorFileChanges()` is set by now, starts to watch the file, once and for good. What
    /// others changed between this process's first read of the file and now is published like a
    /// later change, whichever function read it.
    void prepare();

    /// Migrates the stored settings of earlier versions: merges the combined menu-bar items, and
    /// copies menu-bar settings into the profile "default". Each is done once for a settings file,
    /// and recorded there by a flag below "Migration". `prepare` and `QRVSettingsImport` call it.
    void migrate();
    /// @}

    /// @name Set by the host
    /// @{

    /// Whether the file is watched for changes by other processes. `prepare` reads it, and so does
    /// each notification: set to false later, it stops the reloads. False at the start. Any thread.
    [[nodiscard]] bool monitorFileChanges() const;
    void setMonitorFileChanges(bool monitorFileChanges);

    /// Whether saves are merged with what the file holds. False at the start; to be set before
    /// `loadDefaults`. Any thread may ask.
    ///
    /// - A save brings only what this process wrote since its last save: values and removals, in
    ///   their order, on top of what the file then holds. A dictionary that was written is one
    ///   value. Of two saves of one key path the later wins. A write wins over a value that another
    ///   process stored on the way to its key path. Saves without change records
    ///   (`QRVSettingsSaveObject`, an import, the first save after `setStorageCache` with a tree)
    ///   replace the whole file.
    /// - What a save finds in the file is published like a change that the watch noticed, also when
    ///   the file is not watched. Publishing keeps unsaved writes, and those of an open batch, in
    ///   the stored tree.
    /// - This process's own saves are recognised by what was written: the change handler receives
    ///   every key path whose stored value another process has changed, and no other.
    /// - At most one save runs and one waits. What is written meanwhile joins the waiting one.
    /// - A value that no property list can hold is left out of the save, and reported to the
    ///   failure handler with its key path. Reads give it until the file is read again; then the
    ///   change handler receives its key path, too. The writes of a save that fails join the next
    ///   one.
    /// - A migration, or a reset for new hardware, that another process has already saved is not
    ///   done a second time.
    [[nodiscard]] bool mergesSaves() const;
    void setMergesSaves(bool mergesSaves);

    /// Whether `loadDefaults` lays the defaults of the site over the built-in ones, and locks what
    /// the site locks. False at the start; to be set before `loadDefaults`.
    ///
    /// - The site's files are property lists named as the settings file, in the folder
    ///   `Preferences` of each folder of `$XDG_CONFIG_DIRS`, which is `/etc/xdg` when unset or
    ///   empty. Relative folders are ignored, and by a privileged program the variable, too.
    /// - They are laid over the defaults value by value: dictionaries are merged, and arrays are
    ///   values. Where two lists have a value at one key path, the list of the folder that comes
    ///   first gives it. The result is the default in every function that speaks of one: a write
    ///   that equals it is not stored.
    /// - A file that is named as a list with ".locks" at its end locks key paths, one on a line;
    ///   `QRVSettingsIsLocked` says what that does. "PREFIX.*" is the same as "PREFIX": both lock
    ///   the key path with all that is below it. White space at both ends of a line is ignored, and
    ///   so are empty lines and those that begin with "#". The locks of all folders count. There
    ///   may be locks without a list.
    /// - `loadDefaults` reads the files at each call, and nothing watches them.
    /// - A file that cannot be read, is damaged or too large (a file of locks: 1 MiB) is left out;
    ///   so is a value that no key path reaches, one below "Device", "Migration", "Profiles" or
    ///   "MenubarCurrentApperance", which are the store's and the user's, and a line that is no
    ///   key path. The failure handler is called for each once in the life of the process, and
    ///   `QRVSettingsSiteDefaults` tells of them.
    [[nodiscard]] bool usesSiteDefaults() const;
    void setUsesSiteDefaults(bool usesSiteDefaults);

    /// How long a save waits while another process is writing the file; empty for as long as it
    /// takes, as at the start. A save that has waited so long fails with std::errc::timed_out and
    /// changes nothing. Holds for saves that begin to wait later. Any thread.
    [[nodiscard]] std::optional<std::chrono::milliseconds> saveLockTimeout() const;
    void setSaveLockTimeout(std::optional<std::chrono::milliseconds> saveLockTimeout);

    /// Whether reads leave the cache unchanged. False at the start. Setting it, to true or false,
    /// also discards the cache for the rest of the process: from then on every read searches the
    /// layers below.
    [[nodiscard]] bool disableCache() const;
    void setDisableCache(bool disableCache);

    /// A flag for the host's own use. False at the start.
    [[nodiscard]] bool prepared() const;
    void setPrepared(bool prepared);

    /// The name of the profile that the profile functions work in, read at each call; empty at the
    /// start, "default" after `prepare`.
    [[nodiscard]] const std::optional<std::string>& activeProfile() const;
    void setActiveProfile(std::optional<std::string> activeProfile);

    /// Called from the main queue after another process changed settings, with `storageCache()`
    /// holding the new tree and `cache()` emptied. Key paths are those of values, not of the
    /// dictionaries around them. None at the start.
    ///
    /// When `mergesSaves()` is false, a key path in `localChanges()` is left out, whoever changed
    /// it:
    /// - When nothing else has changed, the handler is not called, and reads keep this process's
    ///   own value until something else changes. With that change the key path is reported, unless
    ///   it is still in `localChanges()`.
    /// - When something else has changed too, the whole tree of the file is taken over: reads give
    ///   the other process's value, and the key path is not reported later.
    [[nodiscard]] const ChangeHandler& onChange() const;
    void setOnChange(ChangeHandler onChange);

    /// The host's name for what it writes next, such as "undo": an observer of the file receives
    /// it with each save that was queued meanwhile. Empty at the start: the store names its saves
    /// itself (QRVChangeOrigins).
    [[nodiscard]] const std::optional<std::string>& changeOrigin() const;
    void setChangeOrigin(std::optional<std::string> changeOrigin);

    /// Called after each save of this process that has replaced the file, on `queue()`, and with
    /// what a reload has read, on `readQueue()`. A reload may also have read what this process
    /// saved itself. The calls of saves are in their order, and have been made before
    /// `QRVSettingsWaitForSaves` returns. The next save waits for the handler: it should pass the
    /// change on to a queue of its own and return. An exception from it ends the program. Null, as
    /// at the start, for none: then saves do nothing more than without it. To be set before
    /// `loadDefaults`. Any thread.
    void setFileChangeHandler(QRVFileChangeHandler handler);
    /// The handler, for another one that passes on to it what it receives. Any thread.
    [[nodiscard]] QRVFileChangeHandler fileChangeHandler() const;
    /// @}

    /// @name State of the store, for hosts to read
    /// @{

    /// Full path of the settings file. Any thread.
    [[nodiscard]] const std::string& location() const;

    /// The built-in defaults as a tree, with those of the site, mutable at the top only; null until
    /// `loadDefaults`.
    [[nodiscard]] NSMutableDictionary defaults() const;
    void setDefaults(NSMutableDictionary defaults);

    /// What this process last read or wrote, by whole key path; `NSNull` where no layer held the
    /// key path. Empty at the start, null after `setDisableCache`. Any thread may ask for it and
    /// read it; it is set and changed on the host's thread.
    [[nodiscard]] NSMutableDictionary cache() const;
    void setCache(NSMutableDictionary cache);

    /// The tree of the file as this process last read or changed it, a mutable dictionary at the
    /// top; null until the file is first read with success, or a setting is written. Any thread may
    /// ask for it and read it; it is set and changed on the host's thread.
    [[nodiscard]] NSDictionary storageCache() const;
    void setStorageCache(NSDictionary storageCache);

    /// The menu bar's appearance, "Dark" or "Light"; null until it is set or restored.
    [[nodiscard]] const PropertyListValue& currentAppearance() const;
    void setCurrentAppearance(PropertyListValue currentAppearance);

    /// Whether writes only gather their change records instead of saving. False at the start.
    [[nodiscard]] bool inBatchSave() const;
    void setInBatchSave(bool inBatchSave);

    /// Change records of this process's saves of the last 3 seconds, counted from when the main
    /// queue takes them up. Always the same array. Any thread; changed on the main queue only.
    [[nodiscard]] NSMutableArray localChanges() const;
    /// Change records gathered while `inBatchSave()`.
    [[nodiscard]] NSMutableArray batchLogChanges() const;

    /// The file's modification date when `fileContentsDidChange` was last called; empty when there
    /// was no file, and at the start. Any thread.
    [[nodiscard]] std::optional<NSDate> modificationDate() const;
    void setModificationDate(std::optional<NSDate> modificationDate);

    /// Runs the saves, one at a time in the order of the writes. Any thread.
    [[nodiscard]] DispatchQueue& queue() const;
    /// Runs the reloads after another process changed the file. Any thread.
    [[nodiscard]] DispatchQueue& readQueue() const;
    /// Runs the notifications of changes by others; null until the file is watched. Any thread.
    [[nodiscard]] std::shared_ptr<NSOperationQueue> presenterQueue() const;
    void setPresenterQueue(std::shared_ptr<NSOperationQueue> presenterQueue);
    /// @}

    /// @name The store as presenter of its file
    /// @{
    [[nodiscard]] std::string presentedItemURL() const override;
    [[nodiscard]] std::shared_ptr<NSOperationQueue> presentedItemOperationQueue() const override;
    /// Called on `presenterQueue()`. When the file has changed, it is read again on `readQueue()`;
    /// the differences are then published on the main queue: "Prefs file changed" goes to the
    /// system log, and `onChange()` is called. Without differences nothing happens. When this
    /// process has written meanwhile and `mergesSaves()` is false, the file is read once more after
    /// the pending saves, so that the stored tree ends as the file.
    void presentedItemDidChange() override;
    /// Whether the file's modification date differs from `modificationDate()`, which becomes that
    /// date. A missing file always counts as changed. One thread at a time.
    [[nodiscard]] bool fileContentsDidChange();
    /// @}

  private:
    friend struct QRVInside::StoreInside;
    QRV_HIDDEN QRVSettings();
    QRV_HIDDEN ~QRVSettings() override;

    struct QRV_HIDDEN State;
    std::unique_ptr<State> state_;
};

/// @name Reading
/// @{

/// The path of the settings file, computed at each call: `userLibraryFolder()`, "Preferences/", the
/// application identifier and ".menubar.7.plist". Empty when the user has no home folder. Any
/// thread.
QRV_EXPORT std::string QRVSettingsLocation();

/// The root of the settings file, read at each call under file coordination; null when the file is
/// missing, unreadable, not a property list, or a property list whose root is not a dictionary.
/// Changes no layer. Any thread.
QRV_EXPORT NSDictionary QRVSettingsStorage();

/// The stored values, an immutable shallow copy; reads the file while `storageCache()` is null.
/// Null when nothing is stored.
QRV_EXPORT NSDictionary QRVSettingsStoredValues();

/// The stored value, without cache and defaults.
QRV_EXPORT PropertyListValue QRVSettingsStoredObjectForKeyPath(QRVKeyPath keyPath);

/// The effective value: of the cache, else stored, else the default. The layers are never merged: a
/// stored dictionary answers alone.
QRV_EXPORT PropertyListValue QRVSettingsObjectForKeyPath(QRVKeyPath keyPath);

/// The default of the site, else the built-in one.
QRV_EXPORT PropertyListValue QRVSettingsDefaultForKeyPath(QRVKeyPath keyPath);

/// The effective value as a boolean (`PropertyListValue::boolValue`).
QRV_EXPORT bool QRVSettingsBoolForKeyPath(QRVKeyPath keyPath);
/// @}

/// @name Writing
/// @{

/// Writes a setting and queues a save. Null removes the stored value, and so does a value that
/// equals the default and is of its kind; reads of this process return the written value in either
/// case. `withCache` has no effect.
///
/// Throws NSInvalidArgumentException for a null key path, and where the path leads through a stored
/// value that is not a dictionary; then nothing is saved.
QRV_EXPORT void QRVSettingsSetObjectForKeyPathWithCache(const PropertyListValue& value,
                                                        QRVKeyPath keyPath, bool withCache);
QRV_EXPORT void QRVSettingsSetObjectForKeyPath(const PropertyListValue& value, QRVKeyPath keyPath);

/// Removes the stored dictionaries above the key path that are empty, up to the first that is not:
/// a read of an empty one answers with it, and not with the default. One write and one save for
/// each. A merging save leaves those that another process has filled meanwhile.
QRV_EXPORT void QRVSettingsRemoveEmptyLevelsAbove(QRVKeyPath keyPath);

/// Queues a save of the whole tree, with the change records (or null) that belong to it; while
/// `inBatchSave()` it only gathers the records. The tree goes to the file as it is when the save
/// runs.
///
/// Whether the save merges with what is on disk, `mergesSaves()` says. It backs up an old file that
/// is not a settings file, or that this process could not read before and would replace as a whole
/// (`backUpFile`). Where that fails, or the old file cannot be read, it replaces nothing and writes
/// a line to the system log.
QRV_EXPORT void QRVSettingsSaveObjectWithLog(const NSDictionary& object, const NSArray& log);

/// Queues a save of a shallow copy of the tree, without records. Changes no layer: reads of this
/// process give what they gave before.
QRV_EXPORT void QRVSettingsSaveObject(const NSDictionary& object);

/// Removes the cached value of exactly this key path.
QRV_EXPORT void QRVSettingsClearCacheForKeyPath(QRVKeyPath keyPath);

/// Does nothing; `QRVSettingsWaitForSaves` waits. Any thread.
QRV_EXPORT void QRVSettingsSynchronize();

/// What has become of everything that this process has written.
struct QRVSaveStatus {
    enum class State {
        Saved,    ///< it is on the disk
        Failed,   ///< some of it is not, and the saves have ended
        Pending,  ///< a save has not ended yet, or an open batch has writes
    };
    State state = State::Saved;
    /// Of the writes whose save has failed: their last value is not in the file. Empty when the
    /// whole tree could not be saved.
    NSArray keyPaths;
    /// Why the last save that failed did so, one line for people.
    std::string reason;
};

/// Waits until the saves queued so far have ended, or the timeout has passed; 0 only asks. For the
/// end of a process, and before people read that something is saved. Retries nothing: the next save
/// does. Where the system gives no thread, the saves run on the calling one, whatever the timeout.
QRV_EXPORT QRVSaveStatus QRVSettingsWaitForSaves(std::chrono::milliseconds timeout);
/// @}

/// @name Batches and import
/// @{

/// Opens a batch: writes take effect in this process only, and the commit saves them. There is one
/// batch at a time; opening an open batch does nothing.
QRV_EXPORT void QRVSettingsPrepareBatchSave();

/// Ends the batch and queues one save of everything, with the batch's change records; also when
/// nothing was written, and when no batch is open.
QRV_EXPORT void QRVSettingsCommitBatchSave();

/// Replaces all stored settings by a tree, migrates it and queues one save. An open batch ends, and
/// its writes are discarded. The cache is left as it is: reads of a cached key path give the old
/// value until it is cleared (`QRVSettingsClearCacheForKeyPath`).
QRV_EXPORT void QRVSettingsImport(const NSDictionary& settings);

/// Always false: the store migrates by itself. Any thread.
QRV_EXPORT bool QRVSettingsMigrationNeeded();
/// Does nothing. Any thread.
QRV_EXPORT void QRVSettingsPerformMigration();
/// @}

/// @name Settings of the active profile
/// Each profile stores its own values; the defaults are those of the plain key paths, which these
/// functions take. A "." in a profile's name adds a level. Without an active profile the name is
/// "(null)".
/// @{

/// The key path of the setting inside the active profile: "Profiles.Settings.", the name, "." and
/// `keyPath`.
QRV_EXPORT std::string QRVSettingsProfileKeyForKey(QRVKeyPath keyPath);

/// The profile's value, else the default; never a value stored at the plain key path. The answer is
/// cached even when `disableCache()` is set.
QRV_EXPORT PropertyListValue QRVSettingsProfileObjectForKeyPath(QRVKeyPath keyPath);

/// Writes into the profile, and otherwise does what `QRVSettingsSetObjectForKeyPathWithCache` does.
/// A null key path is "(null)".
QRV_EXPORT void QRVSettingsProfileSetObjectForKeyPathWithCache(const PropertyListValue& value,
                                                               QRVKeyPath keyPath, bool withCache);
QRV_EXPORT void QRVSettingsProfileSetObjectForKeyPath(const PropertyListValue& value,
                                                      QRVKeyPath keyPath);

/// Removes the profile's cached value of exactly this key path.
QRV_EXPORT void QRVSettingsProfileClearCacheForKeyPath(QRVKeyPath keyPath);
/// @}

/// @name Defaults and locks of the site
/// Everything here is as of the last `loadDefaults`, and empty unless `usesSiteDefaults()` was set
/// before it.
/// @{

/// Whether the site has locked the key path, or one above it: then the default answers above the
/// cache and the stored value; that of the site, or where it has none the built-in one. A locked
/// key path is locked in every profile. (In a profile whose name holds a ".", only functions that
/// take the plain key path see that.)
///
/// - A write of the host, of whatever kind, changes nothing at a locked key path: neither the
///   stored value nor the cache. A write above one, such as that of a dictionary or an import,
///   changes everything else. What is no dictionary cannot be written above a locked key path.
///   Unless the locked value is what was written or is what was stored, the failure handler is
///   called with "write locked setting", the path of the file of locks, and the key path.
/// - A read of a dictionary above a locked key path gives the locked value in its place there.
/// - `onChange` is not called for a locked key path, whoever changed the stored value there.
/// - Stored values stay: they answer again when the lock is gone. The functions for stored values
///   and for whole trees (`QRVSettingsStoredObjectForKeyPath`, `QRVSettingsSaveObject`,
///   `setStorageCache`, ...) know no locks, nor does what the store changes for itself
///   (`loadDefaults`, `migrate`).
///
/// A lock is no guard against the user: it holds for programs that ask for the site's defaults, in
/// folders that the user's environment names.
QRV_EXPORT bool QRVSettingsIsLocked(QRVKeyPath keyPath);

/// The file that locks the key path; empty when it is not locked.
QRV_EXPORT std::string QRVSettingsLockFileForKeyPath(QRVKeyPath keyPath);

/// The list that gives the default at the key path; empty when that is the built-in one, or a
/// dictionary.
QRV_EXPORT std::string QRVSettingsSiteFileForKeyPath(QRVKeyPath keyPath);

/// What was found in the site's files.
struct QRVSiteDefaults {
    /// Something that was left out.
    struct Fault {
        std::string file;
        std::string keyPath;    ///< of the value, or the text of the line; empty for the whole file
        std::error_code error;  ///< std::errc::invalid_argument for wrong contents
        std::string reason;     ///< one line for people
    };
    NSDictionary values = nullptr;   ///< of all lists, immutable; null when there is none
    NSDictionary builtIn = nullptr;  ///< the defaults without these values, immutable
    std::vector<std::string> files;  ///< that were read, of the first folder first
    std::vector<Fault> faults;
};
QRV_EXPORT QRVSiteDefaults QRVSettingsSiteDefaults();
/// @}

/// @name Appearance of the menu bar
/// The platform names appearances (`Platform/System/NSAppearance.h`). The four names there are
/// dark; every other name, and null, is light.
/// @{

/// Makes "Dark" or "Light" the current appearance, and writes it to the settings.
QRV_EXPORT void QRVSettingsSetCurrentAppearance(const PropertyListValue& appearanceName);

/// "Dark" or "Light", or null when it was never set. A stored value that `loadDefaults` restored is
/// returned unchanged, whatever it is.
QRV_EXPORT PropertyListValue QRVSettingsCurrentAppearance();

/// The menu theme for an appearance, "dark" or "light". Changes nothing. Any thread.
QRV_EXPORT std::string QRVSettingsMenuThemeForAppearance(const PropertyListValue& appearanceName);
/// @}

/// @name Colours
/// A colour is stored as text: red, green, blue and alpha, usually from 0 to 1, with single spaces
/// between them, as "1 0.321 0.341 1".
/// @{

/// The stored colour, else the default colour; null when neither is the text of a colour. In a text
/// of four pieces, a piece that is not a number counts as 0. Components have the precision of a
/// float, and are not clamped.
///
/// Colours share the cache with other values: what another read or write has cached under the key
/// path is returned as it is.
QRV_EXPORT PropertyListValue QRVSettingsColorForKeyPath(QRVKeyPath keyPath);

/// Writes a colour as text, each component in the fewest digits that read back to the same double;
/// null removes the stored colour, so that the default applies again. Throws
/// NSInvalidArgumentException when `color` is neither a colour nor null, and where
/// `QRVSettingsSetObjectForKeyPath` does.
QRV_EXPORT void QRVSettingsSetColorForKeyPath(const PropertyListValue& color, QRVKeyPath keyPath);

/// The colour that a text of the settings is, as `QRVSettingsColorForKeyPath` reads it; null for
/// everything else. Any thread.
QRV_EXPORT PropertyListValue QRVSettingsColorOfText(const PropertyListValue& text);
/// The text that `QRVSettingsSetColorForKeyPath` writes. Any thread.
QRV_EXPORT std::string QRVSettingsTextOfColor(const NSColor& color);
/// @}
