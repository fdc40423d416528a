// SPDX-License-Identifier: MIT
// Formats the menu bar. Every call reads the settings again. This is cheap: the cache answers, and
// the store empties it when another process changes a setting.

#include "MenuBarLine.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iomanip>
#include <sstream>
#include <string_view>

#include "KeyPaths.h"
#include "QRVSettings/QRVSettings.h"

namespace {

constexpr const char* endOfColour = "\x1b[0m";

bool isOn(const char* keyPath) {
    return QRVSettingsProfileObjectForKeyPath(keyPath).boolValue();
}

/// The profile's colour, else that of the plain key path.
PropertyListValue profileColor(const char* keyPath) {
    PropertyListValue color = QRVSettingsColorForKeyPath(QRVSettingsProfileKeyForKey(keyPath));
    return color.isColor() ? color : QRVSettingsColorForKeyPath(keyPath);
}

int byteOf(double component) {
    return static_cast<int>(std::lround(std::clamp(component, 0.0, 1.0) * 255));
}

std::string painted(const std::string& text, const PropertyListValue& color, Colours colours) {
    if (colours == Colours::None || !color.isColor()) return text;
    const NSColor& components = color.color();
    std::ostringstream escape;
    escape << "\x1b[38;2;" << byteOf(components.redComponent) << ';'
           << byteOf(components.greenComponent) << ';' << byteOf(components.blueComponent) << 'm';
    return escape.str() + text + endOfColour;
}

/// A column for every 4 points of width.
std::string graph(const LoadHistory& history) {
    constexpr std::array<std::string_view, 8> levels = {"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
    const auto width = QRVSettingsProfileObjectForKeyPath(KeyPaths::graphWidth).integerValue();
    const auto columns = static_cast<std::size_t>(std::clamp<std::int64_t>(width, 0, 400) / 4);
    const std::size_t drawn = std::min(columns, history.size());
    std::string text(columns - drawn, ' ');
    for (std::size_t index = history.size() - drawn; index < history.size(); ++index) {
        const auto level = static_cast<std::size_t>(history[index].busy * levels.size());
        text += levels[std::min(level, levels.size() - 1)];
    }
    return text;
}

std::string cpuItem(const LoadHistory& history) {
    std::ostringstream text;
    text << "CPU " << std::setw(3) << std::lround(history.back().busy * 100) << "% ["
         << graph(history) << ']';
    return text.str();
}

std::string memoryItem(const SystemLoad& load) {
    constexpr double gigabyte = 1e9;
    const bool withLabels = isOn(KeyPaths::memoryLabels);
    std::ostringstream text;
    text << std::fixed << std::setprecision(1)  //
         << "memory " << static_cast<double>(load.usedMemory) / gigabyte
         << (withLabels ? " GB used " : " ") << static_cast<double>(load.freeMemory) / gigabyte
         << (withLabels ? " GB free" : "");
    return text.str();
}

std::string networkItem(const SystemLoad& load, Colours colours) {
    const char* const color =
        load.isConnected ? KeyPaths::connectedColor : KeyPaths::notConnectedColor;
    return "network " + painted("●", profileColor(color), colours);
}

/// The look of the menus: the appearance, and its theme.
std::string themeItem() {
    const bool isDark = QRVSettingsCurrentAppearance() == PropertyListValue("Dark");
    return (isDark ? "dark " : "light ") +
           QRVSettingsObjectForKeyPath(isDark ? KeyPaths::darkTheme : KeyPaths::lightTheme)
               .stringValue();
}

}  // namespace

std::string menuBarLine(const LoadHistory& history, Colours colours) {
    std::string line = themeItem();
    if (isOn(KeyPaths::cpuEnabled)) line += " | " + cpuItem(history);
    if (isOn(KeyPaths::memoryEnabled)) line += " | " + memoryItem(history.back());
    if (isOn(KeyPaths::networkEnabled)) line += " | " + networkItem(history.back(), colours);
    return line;
}
