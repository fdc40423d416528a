// SPDX-License-Identifier: MIT
#include "Peers/KConfigStore.h"

#include <QStringList>

#include "Peers/PeerSettings.h"

namespace {

QString pathIn(const std::filesystem::path& folder) {
    return QString::fromStdString((folder / "settingsrc").string());
}

void write(KConfigGroup group, const char* key, const Workload::Value& value) {
    if (const auto* const items = std::get_if<std::vector<Workload::Item>>(&value)) {
        QStringList list;
        for (const Workload::Item& item : *items)
            list.append(QString::fromStdString(Peers::textOf(item)));
        group.writeEntry(key, list);
    } else if (const auto* const text = std::get_if<std::string>(&value)) {
        group.writeEntry(key, QString::fromStdString(*text));
    } else if (const auto* const number = std::get_if<std::int64_t>(&value)) {
        group.writeEntry(key, static_cast<qlonglong>(*number));
    } else {
        group.writeEntry(key, std::get<bool>(value));
    }
}

}  // namespace

void KConfigStore::prepare(const std::filesystem::path& folder,
                           const std::vector<Workload::Setting>& settings) {
    std::filesystem::create_directories(folder);
    KConfigStore store(folder);
    for (const Workload::Setting& setting : settings) {
        const Handle of = store.handle(setting.keyPath, Workload::kindOf(setting.value));
        write(of.group, of.key.c_str(), setting.value);
    }
    store.save();
}

KConfigStore::KConfigStore(const std::filesystem::path& folder)
    : config_(std::make_unique<KConfig>(pathIn(folder), KConfig::SimpleConfig)) {}

KConfigStore::Handle KConfigStore::handle(std::string_view keyPath, Workload::Kind kind) {
    const auto [group, key] = Peers::splitKeyPath(keyPath);
    return {KConfigGroup(config_.get(),
                         QString::fromLatin1(group.data(), static_cast<int>(group.size()))),
            std::string(key), kind};
}

int KConfigStore::read(const Handle& handle) {
    switch (handle.kind) {
        case Workload::Kind::Boolean:
            return readBoolean(handle) ? 1 : 0;
        case Workload::Kind::Integer:
            return static_cast<int>(readInteger(handle));
        case Workload::Kind::Text:
            return handle.group.readEntry(handle.key.c_str(), QString()).size();
        case Workload::Kind::Items:
            return handle.group.readEntry(handle.key.c_str(), QStringList()).size();
    }
    return 0;
}
