// SPDX-License-Identifier: MIT
#pragma once

// Settings for tests of rows: chosen ones, and random ones that are the same in every run.

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Platform/Values/PropertyListValue.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVKnownSettings.h"
#include "Rows/RowList.h"
#include "Rows/SettingsSnapshot.h"
#include "Rows/SettingsTable.h"
#include "Settings/KnownLists.h"
#include "Support/SiteSupport.h"
#include "Text/KeyPaths.h"

namespace RowsSupport {

/// What no start of the application migrates, with settings by key path.
inline NSMutableDictionary migrated(const NSDictionary& valuesByKeyPath = {}) {
    NSMutableDictionary tree{
        {"Migration", NSDictionary{{"CombinedPowerItems", true}, {"Profiles", true}}}};
    for (const auto& [keyPath, value] : valuesByKeyPath)
        NSDictionaryQRV::setObjectAtKeyPath(tree, value, keyPath);
    return tree;
}

/// The same tree as another reading of a file has it.
inline NSDictionary readAgain(const NSDictionary& tree) {
    return NSPropertyListSerialization::propertyListWithData(
               NSPropertyListSerialization::dataWithPropertyList(tree).bytes)
        .value.dictionary();
}

/// Sets a value, or removes it where it is null. What is in its way is replaced.
inline void putAt(const NSMutableDictionary& tree, const PropertyListValue& value,
                  const std::string& keyPath) {
    if (const auto obstacle = Tool::leafAbove(tree, keyPath))
        NSDictionaryQRV::setObjectAtKeyPath(tree, nullptr, *obstacle);
    NSDictionaryQRV::setObjectAtKeyPath(tree, value, keyPath);
}

inline std::vector<std::string> keyPathsOf(const Tool::SettingsTable& table) {
    std::vector<std::string> keyPaths;
    for (const Tool::SettingRow& row : table.rows()) keyPaths.push_back(row.keyPath);
    return keyPaths;
}

inline std::vector<std::string> shownRows(const Tool::RowList& list) {
    std::vector<std::string> keyPaths;
    for (const Tool::RowLine& line : list.lines())
        if (!line.isLevel()) keyPaths.push_back(line.keyPath);
    return keyPaths;
}

/// A table of what the site and a settings file say.
struct Settings {
    explicit Settings(const NSDictionary& stored, const std::string& profile = "") {
        table.setProfile(profile);
        table.update(Tool::snapshotOfSettings(stored));
    }
    [[nodiscard]] const Tool::SettingRow& row(const std::string& keyPath) const {
        const Tool::SettingRow* const found = table.at(keyPath);
        if (found == nullptr) throw std::runtime_error("no row " + keyPath);
        return *found;
    }

    Tool::KnownLists lists = Tool::KnownLists::read();
    Tool::SettingsTable table{lists};
};

class Random {
  public:
    explicit Random(unsigned seed) : engine_(seed) {}

    std::size_t below(std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(engine_);
    }
    bool oneIn(std::size_t count) { return below(count) == 0; }
    template <typename Type>
    const Type& of(const std::vector<Type>& choices) {
        return choices[below(choices.size())];
    }

    /// Of a known setting, or of few names, so that one is often above another.
    std::string plainKeyPath() {
        if (oneIn(3))
            return std::string(QRVKnownSettings()[below(QRVKnownSettings().size())].keyPath);
        static const std::vector<std::string> names = {"A",   "B",       "A-B", "Color",
                                                       "CPU", "Menubar", ""};
        std::string keyPath = of(names);
        for (std::size_t more = below(4); more > 0; --more) keyPath += "." + of(names);
        return keyPath;
    }
    std::string keyPath() {
        static const std::vector<std::string> starts = {"", "", "Profiles.Settings.default.",
                                                        "Profiles.Settings.work.",
                                                        "Profiles.Settings.a.b."};
        const std::string start = of(starts);
        return start + plainKeyPath();
    }

    PropertyListValue value() {
        static const std::vector<PropertyListValue> values = {true,
                                                              false,
                                                              0,
                                                              1,
                                                              1.0,
                                                              40,
                                                              "text",
                                                              "1 0.5 0 1",
                                                              "5",
                                                              NSDate(5),
                                                              NSData("bytes"),
                                                              NSArray{},
                                                              NSArray{1, "a"},
                                                              NSArray{1.0, "a"},
                                                              NSDictionary{},
                                                              NSDictionary{{"B", 1}, {"A.B", 2}},
                                                              NSDictionary{{"B", NSDictionary{}}}};
        return of(values);
    }

    /// Sets or removes one value.
    void change(const NSMutableDictionary& tree) {
        const std::string place = keyPath();
        putAt(tree, oneIn(4) ? PropertyListValue() : value(), place);
    }

    NSMutableDictionary tree() {
        NSMutableDictionary tree = migrated();
        for (std::size_t changes = below(40); changes > 0; --changes) change(tree);
        return tree;
    }

  private:
    std::mt19937 engine_;
};

}  // namespace RowsSupport
