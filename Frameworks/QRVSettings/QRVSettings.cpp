// SPDX-License-Identifier: MIT
// The store object: its creation and its properties.

#include "QRVSettings/QRVSettings.h"

#include "Platform/Files/Files.h"
#include "QRVSettings/QRVSettings+HostThread.h"
#include "QRVSettings/QRVSettings+State.h"
#include "QRVSettings/QRVSettings+Watching.h"

namespace {
constexpr std::string_view applicationIdentifier = QRV_APPLICATION_IDENTIFIER;
}

QRVSettings& QRVSettings::sharedSettings() {
    // Never destroyed: its queues may be at work while the process exits.
    static auto* const shared = new QRVSettings;
    return *shared;
}

QRVSettings::QRVSettings() : state_(std::make_unique<State>()) {
    const std::string identifier(applicationIdentifier);
    state_->location = QRVSettingsLocation();
    state_->cache.store(NSMutableDictionary());
    state_->storageCache.store(nullptr);
    state_->queue = std::make_unique<DispatchQueue>(identifier + ".settings");
    state_->readQueue = std::make_unique<DispatchQueue>(identifier + ".settings.read");
}

std::string QRVSettingsLocation() {
    const std::string library = QRVPlatform::userLibraryFolder();
    if (library.empty()) return {};
    return library + "/Preferences/" + std::string(applicationIdentifier) + ".menubar.7.plist";
}

bool QRVSettings::exists() const {
    return QRVPlatform::fileExistsAtPath(state_->location);
}

// Never destroyed, but the destructor of the presenter that it is has to be there.
QRVSettings::~QRVSettings() = default;

void QRVSettings::prepare() {
    requireHostThread();
    setActiveProfile("default");
    migrate();
    if (!monitorFileChanges() || presenterQueue()) return;
    beginToWatchTheFile();
}

bool QRVSettings::monitorFileChanges() const {
    return state_->monitorFileChanges;
}
void QRVSettings::setMonitorFileChanges(bool monitorFileChanges) {
    state_->monitorFileChanges = monitorFileChanges;
}

bool QRVSettings::disableCache() const {
    return state_->disableCache;
}
void QRVSettings::setDisableCache(bool disableCache) {
    requireHostThread();
    state_->disableCache = disableCache;
    // Whatever the flag: nothing makes a cache again, so a host that once touched it reads the
    // layers below for good.
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
    state_->cache.store(std::move(cache));
}

NSDictionary QRVSettings::storageCache() const {
    return state_->storageCache.load();
}
void QRVSettings::setStorageCache(NSDictionary storageCache) {
    state_->storageCache.store(std::move(storageCache));
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
    return state_->localChanges;
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
    return *state_->queue;
}
DispatchQueue& QRVSettings::readQueue() const {
    return *state_->readQueue;
}

std::shared_ptr<NSOperationQueue> QRVSettings::presenterQueue() const {
    return state_->presenterQueue.load();
}
void QRVSettings::setPresenterQueue(std::shared_ptr<NSOperationQueue> presenterQueue) {
    state_->presenterQueue.store(std::move(presenterQueue));
}
