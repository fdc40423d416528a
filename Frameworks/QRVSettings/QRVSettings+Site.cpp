// SPDX-License-Identifier: MIT
#include "QRVSettings/QRVSettings+Site.h"

#include <memory>
#include <utility>
#include <vector>

#include "Platform/Files/FileFailures.h"
#include "Platform/Files/UserFolders.h"
#include "QRVSettings/QRVSettings+HostThread.h"
#include "QRVSettings/QRVSettings+SiteFiles.h"
#include "QRVSettings/QRVSettings+State.h"
#include "QRVSettings/QRVSettings+StoredFile.h"

namespace QRVInside {

namespace {

/// The values of the site, those of the first folder last.
Writes valuesOf(const SiteFiles& files, Site& site) {
    Writes values;
    for (auto file = files.files.rbegin(); file != files.files.rend(); ++file) {
        for (const SiteValue& value : file->values) {
            values.add({value.keyPath, value.value});
            site.lists[value.keyPath] = file->path;
        }
    }
    return values;
}

void report(const std::vector<SiteFault>& faults) {
    for (const SiteFault& fault : faults)
        QRVPlatform::FileFailures::reportOnce("read site file", fault.file, fault.error,
                                              fault.keyPath);
}

/// Reported when the locks are not in use any more: the handler may load the defaults again.
class RefusedWrites {
  public:
    LockedWrite::Refusal refusal() {
        return [this](const std::string& keyPath, const std::string& file) {
            refused_.emplace_back(keyPath, file);
        };
    }
    void report() const {
        for (const auto& [keyPath, file] : refused_)
            QRVPlatform::FileFailures::reported("write locked setting", file,
                                                make_error_code(std::errc::operation_not_permitted),
                                                keyPath);
    }

  private:
    std::vector<std::pair<std::string, std::string>> refused_;
};

void install(std::unique_ptr<const Site> site) {
    StoreInside::State& state = StoreInside::state();
    state.locks = site && !site->locks.areNone() ? &site->locks : nullptr;
    state.site = std::move(site);
}

NSDictionary defaults() {
    return QRVSettings::sharedSettings().defaults();
}

const Locks& locks() {
    return *StoreInside::state().locks;
}

/// The file that locks the key path; empty when none does.
std::string lockFileOf(QRVKeyPath keyPath) {
    const Locks* const locks = StoreInside::state().locks;
    if (locks == nullptr || keyPath.isNull()) return {};
    return locks->at(keyPath.text()).file();
}

}  // namespace

void laySiteOver(const NSMutableDictionary& defaults) {
    const StoreInside::State& state = StoreInside::state();
    install(nullptr);
    if (!state.usesSiteDefaults) return;
    SiteFiles files =
        readSiteFiles(QRVPlatform::UserFolders::siteFolders(), settingsFileName(), state.location);
    report(files.faults);
    auto site = std::make_unique<Site>();
    const Writes values = valuesOf(files, *site);
    for (const SiteFile& file : files.files) {
        site->found.files.push_back(file.path);
        for (const std::string& keyPath : file.locks) site->locks.add(keyPath, file.path);
    }
    site->found.values = values.appliedTo(nullptr, Writes::Logging::Off);
    site->found.builtIn = defaults.copy();
    site->found.faults = std::move(files.faults);
    // The levels of the built-in defaults are shared, and stay as they are.
    if (!values.isEmpty())
        for (const auto& [key, value] : values.appliedTo(site->found.builtIn, Writes::Logging::Off))
            defaults.setObjectForKey(value, key);
    install(std::move(site));
}

PropertyListValue lockedValue(std::string_view keyPath) {
    const std::string_view plain = keyPathOfDefault(keyPath);
    return plain.empty() && !keyPath.empty() ? PropertyListValue(defaults())
                                             : valueAt(defaults(), plain);
}

PropertyListValue lockedView(std::string_view keyPath, const PropertyListValue& value) {
    return lockedView(locks().at(keyPath), value, lockedValue(keyPath), defaults());
}

std::optional<PropertyListValue> permittedWrite(const PropertyListValue& value, QRVKeyPath keyPath,
                                                QRVKeyPath keyPathOfDefault, bool isOfEmpty) {
    if (keyPath.isNull()) return value;
    Locks::Place place = locks().at(keyPath.text());
    if (place.isFree()) place = locks().at(keyPathOfDefault.text());
    if (place.isFree()) return value;
    const LockedWrite write{valueAt(storedTree(), keyPath.text()), value,
                            lockedValue(keyPathOfDefault.text()), std::string(keyPath.text())};
    RefusedWrites refused;
    auto permitted = write.permitted(place, defaults(), refused.refusal());
    if (!isOfEmpty) refused.report();
    return permitted;
}

NSDictionary permittedImport(const NSDictionary& settings) {
    const LockedWrite write{storedTree(), settings, defaults(), ""};
    RefusedWrites refused;
    const auto permitted = write.permitted(locks().root(), defaults(), refused.refusal());
    refused.report();
    return permitted.value_or(settings).dictionary();
}

NSArray withoutLocked(const NSArray& keyPaths) {
    const NSMutableArray others;
    for (const PropertyListValue& keyPath : keyPaths)
        if (!locks().at(keyPath.stringValue()).isLocked()) others.addObject(keyPath);
    return others.copy();
}

}  // namespace QRVInside

bool QRVSettings::usesSiteDefaults() const {
    return state_->usesSiteDefaults;
}
void QRVSettings::setUsesSiteDefaults(bool usesSiteDefaults) {
    QRVInside::requireHostThread();
    state_->usesSiteDefaults = usesSiteDefaults;
}

bool QRVSettingsIsLocked(QRVKeyPath keyPath) {
    QRVInside::requireHostThread();
    return !QRVInside::lockFileOf(keyPath).empty();
}

std::string QRVSettingsLockFileForKeyPath(QRVKeyPath keyPath) {
    QRVInside::requireHostThread();
    return QRVInside::lockFileOf(keyPath);
}

std::string QRVSettingsSiteFileForKeyPath(QRVKeyPath keyPath) {
    QRVInside::requireHostThread();
    const auto& site = QRVInside::StoreInside::state().site;
    if (!site || keyPath.isNull()) return {};
    const std::string_view plain = QRVInside::keyPathOfDefault(keyPath.text());
    const PropertyListValue value = QRVInside::valueAt(site->found.values, plain);
    const auto list = site->lists.find(plain);
    return value.isNull() || value.isDictionary() || list == site->lists.end() ? "" : list->second;
}

QRVSiteDefaults QRVSettingsSiteDefaults() {
    QRVInside::requireHostThread();
    const auto& site = QRVInside::StoreInside::state().site;
    return site ? site->found : QRVSiteDefaults{};
}
