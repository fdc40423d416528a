// SPDX-License-Identifier: MIT
#include "RowCounts.h"

#include <stdexcept>

#include "Own/OwnStore.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "Rows/RowList.h"
#include "ThreadCost.h"

namespace {

using Tool::SettingsSnapshot;

constexpr std::size_t settingsInAll = 10'000;

/// Each call gives a tree of its own, as each reading of a file does.
NSDictionary readTree(const std::vector<Workload::Setting>& settings,
                      const PropertyListValue& firstValue) {
    const NSMutableDictionary tree = treeOf(settings);
    NSDictionaryQRV::setObjectAtKeyPath(tree, firstValue, settings.front().keyPath);
    return NSPropertyListSerialization::propertyListWithData(
               NSPropertyListSerialization::dataWithPropertyList(tree).bytes)
        .value.dictionary();
}

void require(bool condition, const char* what) {
    if (!condition) throw std::runtime_error(what);
}

void countFilter(const std::string& name, Tool::RowList& list, const char* text) {
    countCost(name, settingsInAll, [&] {
        list.setFilter(Tool::RowFilter(text));
        list.arrange();
    });
    require(list.matchCount() > 0, "the filter lets nothing through");
}

}  // namespace

void countRows() {
    const auto settings = Workload::generatedSettings(settingsInAll);
    const SettingsSnapshot before = Tool::snapshotOfSettings(readTree(settings, "before"));
    const SettingsSnapshot after = Tool::snapshotOfSettings(readTree(settings, "after"));
    const Tool::KnownLists lists = Tool::KnownLists::read();
    Tool::SettingsTable table(lists);
    countCost("RowsFirst", settingsInAll, [&] { table.update(before); });
    require(table.rows().size() > settingsInAll, "there are too few rows");
    Tool::SettingsTable::Change change;
    countCost("RowsOneChange", settingsInAll, [&] { change = table.update(after); });
    require(change.changed.size() == 1 && change.added.empty(), "not one row has changed");

    Tool::RowList list(table);
    list.setAllExpanded(true);
    countCost("RowsArranged", settingsInAll, [&] { list.arrange(); });
    require(list.lines().size() > settingsInAll, "there are too few lines");
    countFilter("RowsFirstLetter", list, "e");
    countFilter("RowsNextLetter", list, "en");
}
