// SPDX-License-Identifier: MIT
#include "Own/OwnStore.h"

#include <cstdlib>
#include <iostream>

#include "Platform/Dispatch/Dispatch.h"
#include "QRVSettings/NSDictionary+QRV.h"

namespace {

PropertyListValue propertyListValueOf(const Workload::Value& value) {
    if (const auto* const items = std::get_if<std::vector<Workload::Item>>(&value)) {
        NSMutableArray array;
        for (const Workload::Item& item : *items)
            array.addObject(NSDictionary{{"source", item.source}, {"label", item.label}});
        return array.copy();
    }
    if (const auto* const text = std::get_if<std::string>(&value)) return *text;
    if (const auto* const number = std::get_if<std::int64_t>(&value)) return *number;
    return std::get<bool>(value);
}

}  // namespace

NSMutableDictionary treeOf(const std::vector<Workload::Setting>& settings) {
    NSMutableDictionary tree;
    for (const Workload::Setting& setting : settings)
        NSDictionaryQRV::setObjectAtKeyPath(tree, propertyListValueOf(setting.value),
                                            setting.keyPath);
    return tree;
}

void OwnStore::prepare(const std::filesystem::path& folder,
                       const std::vector<Workload::Setting>& settings) {
    if (!QRVSettingsLocation().starts_with(folder.string())) {
        std::cerr << "the settings would be those of " << QRVSettingsLocation() << '\n';
        std::exit(EXIT_FAILURE);
    }
    QRVSettingsSaveObject(treeOf(settings));
    save();
}

OwnStore::OwnStore(const std::filesystem::path& /*folder*/) {
    QRVSettings::sharedSettings().setStorageCache(nullptr);
    QRVSettings::sharedSettings().setCache(NSMutableDictionary());
}

void OwnStore::save() {
    QRVSettings::sharedSettings().queue().sync([] {});
    DispatchMainQueue::shared().drain();
}
