// SPDX-License-Identifier: MIT
#include "Workload/GeneratedSettings.h"

#include <algorithm>
#include <array>
#include <random>
#include <string_view>

namespace Workload {

namespace {

// The engine's numbers are the same everywhere; those of the standard distributions are not.
using Random = std::mt19937;
constexpr Random::result_type seed = 20240229;
constexpr std::size_t settingsInADictionary = 8;

constexpr std::array<std::string_view, 12> modules = {
    "CPU",     "Memory", "Disks", "Network", "Sensors",  "Battery",
    "Weather", "Time",   "GPU",   "Menu",    "Combined", "Processes"};
constexpr std::array<std::string_view, 12> sections = {
    "Menubar", "Dropdown", "Global",  "Mode",   "History", "Graph",
    "Theme",   "Format",   "Colours", "Alerts", "Units",   "Notifications"};
constexpr std::array<std::string_view, 8> leaves = {"Enabled",  "Width",  "Label", "Items",
                                                    "Interval", "Height", "Order", "Style"};

template <typename List>
auto& oneOf(List& list, Random& random) {
    return list[random() % list.size()];
}

/// Key paths of dictionaries, by their number of components less two.
using Dictionaries = std::array<std::vector<std::string>, 4>;

std::string newDictionary(std::size_t depth, const Dictionaries& dictionaries, Random& random) {
    const std::string parent = depth == 0 ? std::string(oneOf(modules, random))
                                          : oneOf(dictionaries.at(depth - 1), random);
    return parent + '.' + std::string(oneOf(sections, random));
}

Dictionaries makeDictionaries(std::size_t count, Random& random) {
    Dictionaries dictionaries;
    for (std::size_t index = 0; index < std::max(count, dictionaries.size()); ++index) {
        const std::size_t depth = index % dictionaries.size();
        dictionaries.at(depth).push_back(newDictionary(depth, dictionaries, random));
    }
    return dictionaries;
}

std::vector<Item> makeItems(Random& random) {
    std::vector<Item> items(2 + random() % 3);
    for (Item& item : items) {
        item.source = static_cast<std::int64_t>(random() % 40);
        item.label = leaves.at(random() % leaves.size());
    }
    return items;
}

Value makeValue(std::size_t index, Random& random) {
    const std::size_t tenth = index % 10;
    if (tenth < 4) return random() % 2 == 0;
    if (tenth < 7) return static_cast<std::int64_t>(random() % 5000);
    if (tenth < 9)
        return std::string(oneOf(sections, random)) + ' ' + std::to_string(random() % 90);
    return makeItems(random);
}

}  // namespace

std::vector<Setting> generatedSettings(std::size_t count) {
    Random random(seed);
    const Dictionaries dictionaries = makeDictionaries(count / settingsInADictionary, random);
    std::vector<Setting> settings;
    settings.reserve(count);
    for (std::size_t index = 0; index < count; ++index) {
        const auto& ofOneDepth = oneOf(dictionaries, random);
        // The number tells a leaf from the others, and from any dictionary.
        settings.push_back({oneOf(ofOneDepth, random) + '.' + std::string(oneOf(leaves, random)) +
                                std::to_string(index),
                            makeValue(index, random)});
    }
    return settings;
}

}  // namespace Workload
