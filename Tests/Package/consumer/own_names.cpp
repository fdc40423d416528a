// SPDX-License-Identifier: MIT
// A host whose names were the library's own once, or could be. Both are linked, and each keeps its
// own.
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "QRVSettings/QRVSettings.h"

bool isSavePending();
bool isSavePending() {
    return true;
}

std::string storedTree();
std::string storedTree() {
    return "a tree of the host";
}

void writeSetting(const PropertyListValue& value, QRVKeyPath keyPath, QRVKeyPath keyPathOfDefault);
void writeSetting(const PropertyListValue&, QRVKeyPath, QRVKeyPath) {
    std::cout << "the host's writeSetting was called\n";
}

void restoreAppearance();
void restoreAppearance() {
    std::cout << "the host's restoreAppearance was called\n";
}

std::vector<int> stepsToFile(const std::string& path);
std::vector<int> stepsToFile(const std::string& path) {
    return std::vector<int>(path.size());
}

std::optional<std::string> hardwareModel();
std::optional<std::string> hardwareModel() {
    return "of the host";
}

bool isSameFile(const std::string& first, const std::string& second);
bool isSameFile(const std::string& first, const std::string& second) {
    return first == second;
}

bool scalarsEqual(const PropertyListValue& first, const PropertyListValue& second);
bool scalarsEqual(const PropertyListValue&, const PropertyListValue&) {
    return false;
}

struct KeyPath {
    int steps = 3;
};

class FileLock {
  public:
    FileLock();
    ~FileLock();
    static FileLock shared(const std::string& path);
    [[nodiscard]] bool isHeld() const;
};

FileLock::FileLock() = default;
FileLock::~FileLock() = default;
FileLock FileLock::shared(const std::string&) {
    return {};
}
bool FileLock::isHeld() const {
    return true;
}

int main() {
    QRVSettings::sharedSettings().loadDefaults();
    QRVSettingsSetObjectForKeyPath(60, "CPU.Menubar.Mode.HistoryGraph.Width");
    QRVSettings::sharedSettings().queue().sync([] {});
    const bool isAllOurs = isSavePending() && storedTree() == "a tree of the host" &&
                           stepsToFile("12").size() == 2 && hardwareModel() == "of the host" &&
                           isSameFile("1", "1") && !scalarsEqual(1, 1) && KeyPath().steps == 3 &&
                           FileLock::shared("1").isHeld();
    if (isAllOurs) std::cout << QRVSettingsStorage().objectForKey("CPU") << '\n';
}
