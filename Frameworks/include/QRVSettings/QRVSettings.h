// SPDX-License-Identifier: MIT
#pragma once

/// The settings store: every user-visible option of the application, in one property-list file that
/// several processes read and write at the same time.
///
/// A setting is addressed by a dotted key path. A read asks three layers, and the first that knows
/// the key path answers: the cache of this process, the stored values, the built-in defaults. A
/// write takes effect in this process at once; the file is replaced later, whole, on a queue of the
/// store's own.
///
///     QRVSettingsSetObjectForKeyPath(true, "CPU.Menubar.Enabled");
///     if (QRVSettingsBoolForKeyPath("CPU.Menubar.Enabled")) ...
///
/// Threads: what does not say "any thread" belongs to the main thread of the host, which also has
/// to drain the main queue (`DispatchMainQueue`). In a build with assertions, the first thread that
/// calls such a function is taken for the host's, and a call on another one ends the process and
/// names the function; elsewhere what such a call does is not defined.
///
/// Values that the store returns are its own objects, not copies: callers must not change them.
///
/// Errors: a missing setting and a null key path give null (false for booleans). A save that fails
/// is logged at most, and told to the handler of `setFileFailureHandler`
/// (`Platform/Files/Files.h`); reads go on giving what was written. The one error that reaches a
/// caller is NSInvalidArgumentException from a write.
///
/// What is not promised: a save that has not run when the process ends is lost. Of two processes
/// that save at nearly the same time, the later one writes its own whole tree; nothing is merged.

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Dispatch/NSOperationQueue.h"
#include "Platform/Export.h"
#include "Platform/Files/NSFilePresenter.h"
#include "Platform/Values/PropertyListValue.h"
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

    /// The store; made by the first call, exactly once, and never destroyed. Nothing is read from
    /// disk by that. Any thread.
    static QRVSettings& sharedSettings();

    QRVSettings(const QRVSettings&) = delete;
    QRVSettings& operator=(const QRVSettings&) = delete;

    /// Whether there is anything at `location()`, a folder included. Asks the file system, takes no
    /// lock and reads nothing; false too when the folder above cannot be searched. Any thread.
    [[nodiscard]] bool exists() const;

    /// @name Called by the host at its start, on its main thread and before other threads read
    /// @{

    /// Restores the appearance, compares the machine with the one that last used the settings, and
    /// then builds `defaults()` anew; each time it is called. Until the first time there are no
    /// defaults, and what was read before may go on being null: the cache is not touched.
    ///
    /// The machine and its model are recorded in the settings. On another machine
    /// "Network.Menubar.Global.PrimaryInterface" is removed, on another model
    /// "Sensors.Global.Fans" and each profile's "Sensors.Menubar.Sensors". These are ordinary
    /// writes, and may throw as such.
    ///
    /// The defaults of clocks follow the short time pattern of the user's locale: LC_ALL, LC_TIME
    /// or LANG of the environment.
    void loadDefaults();

    /// The machine: 40 lowercase hexadecimal digits that do not tell its serial number. Null when
    /// it has none. Asks the system at each call. Any thread.
    [[nodiscard]] PropertyListValue deviceID() const;
    /// The machine's model, ASCII text; null when the system does not tell it. Asks the system at
    /// each call. Any thread.
    [[nodiscard]] PropertyListValue modelIdentifier() const;

    /// After `loadDefaults`: activates the profile "default", migrates, and, when
    /// `monitorFileChanges()` is set by now, begins to watch the file, once and for good. What
    /// others changed between this process's first read and now is published like a later change.
    void prepare();

    /// Brings stored settings of earlier versions into the present shape: merges the combined
    /// menu-bar items, and copies menu-bar settings into the profile "default". Each is done once
    /// for a settings file, as flags below "Migration" tell. `prepare` and `QRVSettingsImport` call
    /// it.
    void migrate();
    /// @}

    /// @name Set by the host
    /// @{

    /// Whether the file is to be watched for changes by other processes. Looked at by `prepare`,
    /// and again at each change: set to false later, it silences them. False at the start. Any
    /// thread.
    [[nodiscard]] bool monitorFileChanges() const;
    void setMonitorFileChanges(bool monitorFileChanges);

    /// Whether reads leave the cache alone. False at the start. Setting it, to whichever value,
    /// also throws the cache away for the rest of the process: from then on every read asks the
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
    /// dictionaries around them. Those that this process has itself saved within the last 3 seconds
    /// are not among the changes, now or later; reads give their new values. None at the start.
    [[nodiscard]] const ChangeHandler& onChange() const;
    void setOnChange(ChangeHandler onChange);
    /// @}

    /// @name State, kept by the store; hosts read it
    /// @{

    /// Full path of the settings file. Any thread.
    [[nodiscard]] const std::string& location() const;

    /// The built-in defaults as a tree; null until `loadDefaults`.
    [[nodiscard]] NSMutableDictionary defaults() const;
    void setDefaults(NSMutableDictionary defaults);

    /// What this process last read or wrote, by whole key path; `NSNull` for what is known to be in
    /// no layer. Empty at the start, null after `setDisableCache`. Any thread.
    [[nodiscard]] NSMutableDictionary cache() const;
    void setCache(NSMutableDictionary cache);

    /// The tree of the file as this process last read or changed it, at its top a mutable
    /// dictionary; null until the first read of a file, or write. Any thread.
    [[nodiscard]] NSDictionary storageCache() const;
    void setStorageCache(NSDictionary storageCache);

    /// The menu bar's appearance, "Dark" or "Light"; null until it is set or restored.
    [[nodiscard]] const PropertyListValue& currentAppearance() const;
    void setCurrentAppearance(PropertyListValue currentAppearance);

    /// Whether writes only gather their change records instead of saving. False at the start.
    [[nodiscard]] bool inBatchSave() const;
    void setInBatchSave(bool inBatchSave);

    /// Change records of this process's saves of the last 3 seconds. Any thread; changed on the
    /// main queue only.
    [[nodiscard]] NSMutableArray localChanges() const;
    /// Change records gathered while `inBatchSave()`.
    [[nodiscard]] NSMutableArray batchLogChanges() const;

    /// The file's modification date when it was last looked at for changes; empty at the start. Any
    /// thread.
    [[nodiscard]] std::optional<NSDate> modificationDate() const;
    void setModificationDate(std::optional<NSDate> modificationDate);

    /// Runs the saves, one at a time in the order of the writes. Any thread.
    [[nodiscard]] DispatchQueue& queue() const;
    /// Runs the re-reading after another process changed the file. Any thread.
    [[nodiscard]] DispatchQueue& readQueue() const;
    /// Runs the notifications of changes by others; null until the file is watched. Any thread.
    [[nodiscard]] std::shared_ptr<NSOperationQueue> presenterQueue() const;
    void setPresenterQueue(std::shared_ptr<NSOperationQueue> presenterQueue);
    /// @}

    /// @name The store as presenter of its file
    /// @{
    [[nodiscard]] std::string presentedItemURL() const override;
    [[nodiscard]] std::shared_ptr<NSOperationQueue> presentedItemOperationQueue() const override;
    /// Comes on `presenterQueue()`. When the file has changed, it is read again on `readQueue()`;
    /// what differs is then published on the main queue: "Prefs file changed" goes to the system
    /// log, and `onChange()` is called. Without any difference nothing happens. When this process
    /// has written since the reading, its pending saves run first and the file is read once more.
    void presentedItemDidChange() override;
    /// Whether the file's modification date is another than `modificationDate()`, which becomes
    /// that date. A file that is not there always counts as changed. One thread at a time.
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

/// The path of the settings file, computed afresh: `userLibraryFolder()`, "Preferences/", the
/// application identifier and ".menubar.7.plist". Empty when the user has no home folder. Any
/// thread.
QRV_EXPORT std::string QRVSettingsLocation();

/// The root of the settings file, freshly read under file coordination; null when the file is
/// missing, unreadable, not a property list or one whose root is not a dictionary. Touches no
/// layer. Any thread.
QRV_EXPORT NSDictionary QRVSettingsStorage();

/// The stored values, an immutable shallow copy; reads the file when this process has not yet. Null
/// when nothing is stored.
QRV_EXPORT NSDictionary QRVSettingsStoredValues();

/// The stored value, without cache and defaults.
QRV_EXPORT PropertyListValue QRVSettingsStoredObjectForKeyPath(QRVKeyPath keyPath);

/// The effective value: of the cache, else stored, else the default. The layers are never merged: a
/// stored dictionary answers alone.
QRV_EXPORT PropertyListValue QRVSettingsObjectForKeyPath(QRVKeyPath keyPath);

/// The built-in default.
QRV_EXPORT PropertyListValue QRVSettingsDefaultForKeyPath(QRVKeyPath keyPath);

/// The effective value as a boolean (`PropertyListValue::boolValue`).
QRV_EXPORT bool QRVSettingsBoolForKeyPath(QRVKeyPath keyPath);
/// @}

/// @name Writing
/// @{

/// Writes a setting and queues a save. A null value removes it, and so does a value that is equal
/// to the default and of its kind; reads of this process give it all the same. `withCache` has no
/// effect.
///
/// Throws NSInvalidArgumentException for a null key path and where the path leads through a stored
/// value that is not a dictionary; then nothing is saved.
QRV_EXPORT void QRVSettingsSetObjectForKeyPathWithCache(const PropertyListValue& value,
                                                        QRVKeyPath keyPath, bool withCache);
QRV_EXPORT void QRVSettingsSetObjectForKeyPath(const PropertyListValue& value, QRVKeyPath keyPath);

/// Queues a save of the whole tree, with the change records (or null) that belong to it; while
/// `inBatchSave()` it only gathers the records. The tree goes to the file as it is when the save
/// runs.
///
/// The save never merges with what is on disk. A file that exists and is no settings file is kept
/// beside the new one (`keepAside`); where that fails, or the old file cannot be opened, the save
/// leaves it alone and says so in the system log.
QRV_EXPORT void QRVSettingsSaveObjectWithLog(const NSDictionary& object, const NSArray& log);

/// Queues a save of a shallow copy of the tree, without records. Touches no layer: this process
/// goes on reading its own.
QRV_EXPORT void QRVSettingsSaveObject(const NSDictionary& object);

/// Forgets the cached value of exactly this key path.
QRV_EXPORT void QRVSettingsClearCacheForKeyPath(QRVKeyPath keyPath);

/// Does nothing. To wait for the saves, use `sharedSettings().queue().sync`. Any thread.
QRV_EXPORT void QRVSettingsSynchronize();
/// @}

/// @name Batches and import
/// @{

/// From here on writes take effect in this process only; a commit saves them. There is one batch at
/// a time: opening it twice is opening it once.
QRV_EXPORT void QRVSettingsPrepareBatchSave();

/// Ends the batch and queues one save of everything, with the batch's change records; also when
/// nothing was written, and when no batch is open.
QRV_EXPORT void QRVSettingsCommitBatchSave();

/// Replaces all stored settings by a tree, migrates it and queues one save. An open batch ends, its
/// writes are gone. What this process has cached stays readable under its key path; clear what the
/// tree changes (`QRVSettingsClearCacheForKeyPath`).
QRV_EXPORT void QRVSettingsImport(const NSDictionary& settings);

/// Always false: a migration is never left to the host. Any thread.
QRV_EXPORT bool QRVSettingsMigrationNeeded();
/// Does nothing. Any thread.
QRV_EXPORT void QRVSettingsPerformMigration();
/// @}

/// @name Settings of the active profile
/// Stored apart for each profile, with one default for all: that of the plain key path, which is
/// what these functions take. A profile whose name holds a "." adds levels. Without an active
/// profile the name is "(null)".
/// @{

/// The key path of the setting inside the active profile: "Profiles.Settings.", the name, "." and
/// `keyPath`.
QRV_EXPORT std::string QRVSettingsProfileKeyForKey(QRVKeyPath keyPath);

/// The profile's value, else the default. A value stored at the plain key path is not looked at.
/// The answer is cached also when `disableCache()` is set.
QRV_EXPORT PropertyListValue QRVSettingsProfileObjectForKeyPath(QRVKeyPath keyPath);

/// Writes into the profile, and otherwise as `QRVSettingsSetObjectForKeyPathWithCache` does. A null
/// key path is "(null)".
QRV_EXPORT void QRVSettingsProfileSetObjectForKeyPathWithCache(const PropertyListValue& value,
                                                               QRVKeyPath keyPath, bool withCache);
QRV_EXPORT void QRVSettingsProfileSetObjectForKeyPath(const PropertyListValue& value,
                                                      QRVKeyPath keyPath);

/// Forgets the profile's cached value of exactly this key path.
QRV_EXPORT void QRVSettingsProfileClearCacheForKeyPath(QRVKeyPath keyPath);
/// @}

/// @name Appearance of the menu bar
/// An appearance is known to the platform by a name (`Platform/System/NSAppearance.h`). Exactly the
/// four names there are dark; any other, and null, is light.
/// @{

/// Makes "Dark" or "Light" the current appearance, and writes it to the settings.
QRV_EXPORT void QRVSettingsSetCurrentAppearance(const PropertyListValue& appearanceName);

/// "Dark" or "Light", or null when it was never set. What `loadDefaults` found in the settings
/// stands as it is.
QRV_EXPORT PropertyListValue QRVSettingsCurrentAppearance();

/// The menu theme for an appearance, "dark" or "light". Changes nothing. Any thread.
QRV_EXPORT std::string QRVSettingsMenuThemeForAppearance(const PropertyListValue& appearanceName);
/// @}

/// @name Colours
/// A colour is kept as text: red, green, blue and alpha, usually from 0 to 1, with single spaces
/// between them, as "1 0.321 0.341 1".
/// @{

/// The colour stored, else the default colour; null when neither is the text of a colour. In a text
/// of four pieces a piece that is no number counts as 0; components have the precision of a float,
/// and are not clamped.
///
/// Colours are cached under their key path together with other values: what another read has cached
/// there is returned as it is.
QRV_EXPORT PropertyListValue QRVSettingsColorForKeyPath(QRVKeyPath keyPath);

/// Writes a colour's text, each component in the fewest digits that read back to the same double;
/// null removes it, so that the default holds again. Throws NSInvalidArgumentException when `color`
/// is something else, and as `QRVSettingsSetObjectForKeyPath` does.
QRV_EXPORT void QRVSettingsSetColorForKeyPath(const PropertyListValue& color, QRVKeyPath keyPath);
/// @}
