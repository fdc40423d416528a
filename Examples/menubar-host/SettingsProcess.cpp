// SPDX-License-Identifier: MIT
// Plays the part of a settings window: each line of input stands for a control that was used.

#include "SettingsProcess.h"

#include <iostream>
#include <map>
#include <optional>
#include <sstream>
#include <string>

#include "KeyPaths.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/System/NSAppearance.h"
#include "Processes.h"
#include "QRVSettings/QRVSettings.h"
#include "RememberedChanges.h"
#include "StartUp.h"

const char* const settingsCommands =
    "  profile NAME                     the profile to show and to change\n"
    "  appearance dark|light            the appearance of the menu bar\n"
    "  show|hide cpu|memory|network     an item of the menu bar\n"
    "  labels on|off                    the labels of the memory item\n"
    "  width POINTS                     the width of the processor graph\n"
    "  frequency SECONDS                the time between updates of the display\n"
    "  color RED GREEN BLUE             of a connected network, each from 0 to 1\n"
    "  changes                          prints who changed what last\n";

namespace {

void showProfile(const std::string& name) {
    QRVSettingsSetObjectForKeyPath(name, KeyPaths::activeProfile);
    QRVSettings::sharedSettings().setActiveProfile(name);
}

bool setAppearance(const std::string& name) {
    if (name != "dark" && name != "light") return false;
    QRVSettingsSetCurrentAppearance(name == "dark" ? NSAppearanceNameDarkAqua : "");
    return true;
}

bool setVisible(const std::string& item, bool isVisible) {
    static const std::map<std::string, const char*> keyPaths = {
        {"cpu", KeyPaths::cpuEnabled},
        {"memory", KeyPaths::memoryEnabled},
        {"network", KeyPaths::networkEnabled},
    };
    const auto found = keyPaths.find(item);
    if (found == keyPaths.end()) return false;
    QRVSettingsProfileSetObjectForKeyPath(isVisible, found->second);
    return true;
}

bool setLabels(const std::string& state) {
    if (state != "on" && state != "off") return false;
    // An integer like the default: a boolean would not equal it, and would be stored.
    QRVSettingsProfileSetObjectForKeyPath(state == "on" ? 1 : 0, KeyPaths::memoryLabels);
    return true;
}

bool setWidth(std::istream& words) {
    int points = 0;
    if (!(words >> points)) return false;
    QRVSettingsProfileSetObjectForKeyPath(points, KeyPaths::graphWidth);
    return true;
}

bool setFrequency(std::istream& words) {
    int seconds = 0;
    if (!(words >> seconds)) return false;
    QRVSettingsSetObjectForKeyPath(seconds, KeyPaths::updateFrequency);
    return true;
}

bool setColor(std::istream& words) {
    NSColor color;
    if (!(words >> color.redComponent >> color.greenComponent >> color.blueComponent)) return false;
    QRVSettingsSetColorForKeyPath(color, QRVSettingsProfileKeyForKey(KeyPaths::connectedColor));
    return true;
}

bool showChanges() {
    printRememberedChanges();
    return true;
}

bool perform(const std::string& line) {
    std::istringstream words(line);
    std::string command;
    words >> command;
    if (command == "changes") return showChanges();
    if (command == "width") return setWidth(words);
    if (command == "frequency") return setFrequency(words);
    if (command == "color") return setColor(words);
    std::string argument;
    if (!(words >> argument)) return false;
    if (command == "appearance") return setAppearance(argument);
    if (command == "show" || command == "hide") return setVisible(argument, command == "show");
    if (command == "labels") return setLabels(argument);
    if (command != "profile") return false;
    showProfile(argument);
    return true;
}

void beginInTheShownProfile() {
    const PropertyListValue profile = QRVSettingsObjectForKeyPath(KeyPaths::activeProfile);
    if (profile.isString()) QRVSettings::sharedSettings().setActiveProfile(profile.stringValue());
}

}  // namespace

int runSettingsProcess() {
    startUp(nullptr);
    beginInTheShownProfile();
    int status = 0;
    while (const std::optional<std::string> line = nextLineOfInput()) {
        if (line->empty() || perform(*line)) continue;
        std::cerr << "not understood: " << *line << '\n' << settingsCommands;
        status = 1;
    }
    return endUp(status);
}
