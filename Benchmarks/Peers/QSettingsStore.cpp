// SPDX-License-Identifier: MIT
#include "Peers/QSettingsStore.h"

namespace {

QVariant variantOf(const Workload::Value& value) {
    if (const auto* const items = std::get_if<std::vector<Workload::Item>>(&value)) {
        QVariantList list;
        for (const Workload::Item& item : *items)
            list.append(QVariantMap{{"source", static_cast<qlonglong>(item.source)},
                                    {"label", QString::fromStdString(item.label)}});
        return list;
    }
    if (const auto* const text = std::get_if<std::string>(&value))
        return QString::fromStdString(*text);
    if (const auto* const number = std::get_if<std::int64_t>(&value))
        return static_cast<qlonglong>(*number);
    return std::get<bool>(value);
}

}  // namespace

QString QSettingsStore::pathIn(const std::filesystem::path& folder) {
    return QString::fromStdString((folder / "settings.ini").string());
}

void QSettingsStore::prepare(const std::filesystem::path& folder,
                             const std::vector<Workload::Setting>& settings) {
    std::filesystem::create_directories(folder);
    QSettings file(pathIn(folder), QSettings::IniFormat);
    for (const Workload::Setting& setting : settings)
        file.setValue(handle(setting.keyPath, Workload::kindOf(setting.value)),
                      variantOf(setting.value));
    file.sync();
}

QSettingsStore::QSettingsStore(const std::filesystem::path& folder)
    : settings_(std::make_unique<QSettings>(pathIn(folder), QSettings::IniFormat)) {}

QSettingsStore::Handle QSettingsStore::handle(std::string_view keyPath, Workload::Kind /*kind*/) {
    return QString::fromLatin1(keyPath.data(), static_cast<int>(keyPath.size())).replace('.', '/');
}
