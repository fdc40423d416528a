// SPDX-License-Identifier: MIT
// The store object: its creation and its properties.

#include "QRVSettings/QRVSettings.h"

#include <utility>

#include "Platform/Files/Files.h"
#include "QRVSettings/QRVSettings+HostThread.h"
#include "QRVSettings/QRVSettings+State.h"
#include "QRVSettings/QRVSettings+WatchStart.h"

using QRVInside::requireHostThread;

namespace {
constexpr std::string_view applicationIdentifier = QRV_APPLICATION_IDENTIFIER;
}

std::string QRVInside::queueLabel(std::string_view ending) {
    return std::string(applicationIdentifier) + std::string(ending);
}

std::string QRVInside::settingsFileName() {
    return std::string(applicationIdentifier) + ".menubar.7.plist";
}

QRVSettings& QRVSettings::sharedSettings() {
    // Never destroyed: its queues may be at work while the process exits.
    static auto* const shared = new QRVSettings;
    return *shared;
}

QRVSettings::QRVSettings() : state_(std::make_unique<State>()) {}

std::string QRVSettingsLocation() {
    const std::string library = QRVPlatform::userLibraryFolder();
    if (library.empty()) return {};
    return library + "/Preferences/" + QRVInside::settingsFileName();
}

bool QRVSettings::exists() const {
    return QRVPlatform::fileExistsAtPath(state_->location);
}

// Never called; the destructor of a presenter is virtual and has to exist.
QRVSettings::~QRVSettings() = default;

void QRVSettings::prepare() {
    requireHostThread();
    setActiveProfile("default");
    migrate();
    if (!monitorFileChanges() || presenterQueue()) return;
    QRVInside::beginToWatchTheFile();
}

bool QRVSettings::monitorFileChanges() const {
    return state_->monitorFileChanges;
}
void QRVSettings::setMonitorFileChanges(bool monitorFileChanges) {
    state_->monitorFileChanges = monitorFileChanges;
}

bool QRVSettings::mergesSaves() const {
    return state_->mergesSaves;
}
void QRVSettings::setMergesSaves(bool mergesSaves) {
    requireHostThread();
    state_->mergesSaves = mergesSaves;
}

std::optional<std::chrono::milliseconds> QRVSettings::saveLockTimeout() const {
    return state_->saveLockTimeout.load();
}
void QRVSettings::setSaveLockTimeout(std::optional<std::chrono::milliseconds> saveLockTimeout) {
    state_->saveLockTimeout.store(saveLockTimeout);
}

bool QRVSettings::disableCache() const {
    return state_->disableCache;
}
void QRVSettings::setDisableCache(bool disableCache) {
    requireHostThread();
    state_->disableCache = disableCache;
    // Whatever the flag is: nothing creates another cache, so that a host that once set it reads
    // the layers below for good.
    state_->cache.store(nullptr);
}

bool QRVSettings::prepared() const {
    return state_->prepared;
}
void QRVSettings::setPrepared(bool prepared) {
    requireHostThread();
    state_->prepared = prepared;
}

const std::optional<std::string>& QRVSettings::activeProfile() const {
    return state_->activeProfile;
}
void QRVSettings::setActiveProfile(std::optional<std::string> activeProfile) {
    requireHostThread();
    state_->activeProfile = std::move(activeProfile);
    ++state_->numberOfActiveProfile;
}

const QRVSettings::ChangeHandler& QRVSettings::onChange() const {
    return state_->onChange;
}
void QRVSettings::setOnChange(ChangeHandler onChange) {
    requireHostThread();
    state_->onChange = std::move(onChange);
}

const std::string& QRVSettings::location() const {
    return state_->location;
}

NSMutableDictionary QRVSettings::defaults() const {
    return state_->defaults;
}
void QRVSettings::setDefaults(NSMutableDictionary defaults) {
    requireHostThread();
    state_->defaults = std::move(defaults);
}

NSMutableDictionary QRVSettings::cache() const {
    return state_->cache.load();
}
void QRVSettings::setCache(NSMutableDictionary cache) {
    requireHostThread();
    state_->cache.store(std::move(cache));
}

NSDictionary QRVSettings::storageCache() const {
    return state_->storedFile.read([](const QRVInside::StoredFile& file) { return file.tree; });
}
void QRVSettings::setStorageCache(NSDictionary storageCache) {
    requireHostThread();
    state_->storedFile.update([&storageCache](QRVInside::StoredFile& file) {
        file.unsaved.isTreeReplaced = !storageCache.isNull();
        return std::exchange(file.tree, std::move(storageCache));
    });
}

const PropertyListValue& QRVSettings::currentAppearance() const {
    return state_->currentAppearance;
}
void QRVSettings::setCurrentAppearance(PropertyListValue currentAppearance) {
    requireHostThread();
    state_->currentAppearance = std::move(currentAppearance);
}

bool QRVSettings::inBatchSave() const {
    return state_->inBatchSave;
}
void QRVSettings::setInBatchSave(bool inBatchSave) {
    requireHostThread();
    state_->inBatchSave = inBatchSave;
}

NSMutableArray QRVSettings::localChanges() const {
    return state_->localChanges.records();
}
NSMutableArray QRVSettings::batchLogChanges() const {
    return state_->batchLogChanges;
}

std::optional<NSDate> QRVSettings::modificationDate() const {
    return state_->modificationDate.load();
}
void QRVSettings::setModificationDate(std::optional<NSDate> modificationDate) {
    state_->modificationDate.store(modificationDate);
}

DispatchQueue& QRVSettings::queue() const {
    return state_->queue;
}
DispatchQueue& QRVSettings::readQueue() const {
    return state_->readQueue;
}

std::shared_ptr<NSOperationQueue> QRVSettings::presenterQueue() const {
    return state_->presenterQueue.load();
}
void QRVSettings::setPresenterQueue(std::shared_ptr<NSOperationQueue> presenterQueue) {
    state_->presenterQueue.store(std::move(presenterQueue));
}
