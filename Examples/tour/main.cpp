// SPDX-License-Identifier: MIT
// The code of Documentation/Tour.md, in its order, and of the README's typed keys. Prints what it
// sees.

#include <iostream>

#include "Platform/Files/Files.h"
#include "QRVSettings/QRVHeldKeys.h"
#include "QRVSettings/QRVKeys.h"
#include "QRVSettings/QRVSettings.h"

namespace {

void read() {
    if (QRVSettingsBoolForKeyPath("CPU.Menubar.Enabled")) std::cout << "CPU: in the menu bar\n";

    const PropertyListValue width =
        QRVSettingsObjectForKeyPath("CPU.Menubar.Mode.HistoryGraph.Width");
    if (width.isInteger()) std::cout << "graph: " << width.integerValue() << " points wide\n";

    const QRVHeldKey showsCPU(Keys::CPU::Menubar::Enabled);
    for (int frame = 0; frame < 3; ++frame)
        if (showsCPU.value()) std::cout << "CPU: drawn\n";

    std::cout << "unknown: " << QRVSettingsObjectForKeyPath("No.Such.Setting").isNull() << '\n';
}

void write() {
    QRVSettingsSetObjectForKeyPath(60, "CPU.Menubar.Mode.HistoryGraph.Width");
    QRVSettingsSetObjectForKeyPath(nullptr,
                                   "CPU.Menubar.Mode.HistoryGraph.Width");  // the default again

    const NSArray items{NSDictionary{{"source", 1}},
                        NSDictionary{{"source", 21}, {"label", "Power"}}};
    QRVSettingsSetObjectForKeyPath(items, "Combined.Menubar.Items");
    for (const PropertyListValue& item :
         QRVSettingsObjectForKeyPath("Combined.Menubar.Items").array())
        std::cout << "item: " << item.dictionary().objectForKey("source") << '\n';

    if (QRVSettingsIsLocked("UpdateFrequency")) std::cout << "the administrator has chosen this\n";
}

void writeTogether() {
    QRVSettingsPrepareBatchSave();
    QRVSettingsSetObjectForKeyPath(false, "CPU.Menubar.Enabled");
    QRVSettingsSetObjectForKeyPath(false, "Memory.Menubar.Enabled");
    QRVSettingsCommitBatchSave();  // one save, one change for those who watch
}

void useProfiles() {
    QRVSettings::sharedSettings().setActiveProfile("travel");
    QRVSettingsProfileSetObjectForKeyPath(true, "Battery.Menubar.Enabled");
    std::cout << "in " << QRVSettingsProfileKeyForKey("Battery.Menubar.Enabled") << ": "
              << QRVSettingsProfileObjectForKeyPath("Battery.Menubar.Enabled") << '\n';
}

void useColours() {
    const char* const noAddress = "Network.Menubar.Mode.Status.NoIP.Color";
    QRVSettingsSetColorForKeyPath(NSColor{1, 0.5, 0, 1}, noAddress);
    const NSColor color = QRVSettingsColorForKeyPath(noAddress).color();
    std::cout << "colour: " << color.redComponent << ' ' << color.greenComponent << '\n';
}

constexpr QRVKey<std::int64_t> interval("Host.Interval");  // a key of the host's own

void useKeys() {
    if (QRVSettingsProfileValue(Keys::CPU::Menubar::Enabled)) std::cout << "typed: a bool\n";
    QRVSettingsSetValue("violet", Keys::Menu::Theme::Dark);
    QRVSettingsSetValue(nullptr, Keys::Menu::Theme::Dark);        // the default again
    const std::int64_t seconds = QRVSettingsValue(interval, 30);  // 30 until somebody sets it
    std::cout << "every " << seconds << " s\n";
}

void meetErrors() {
    try {
        QRVSettingsSetObjectForKeyPath(1, "CPU.Menubar.Enabled.Deeper");
    } catch (const NSInvalidArgumentException& error) {
        std::cout << error.what() << '\n';
    }

    QRVPlatform::setFileFailureHandler(
        [](const QRVPlatform::FileFailure& failure) {  // on the thread that saves
            std::cerr << failure.operation << ' ' << failure.path << ": " << failure.error.message()
                      << '\n';
        });
}

}  // namespace

int main() {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setMergesSaves(true);       // no process loses what another has written
    store.setUsesSiteDefaults(true);  // defaults of this machine's administrator hold
    store.loadDefaults();
    store.prepare();

    read();
    write();
    writeTogether();
    useProfiles();
    useColours();
    useKeys();
    meetErrors();

    const QRVSaveStatus saves = QRVSettingsWaitForSaves(std::chrono::seconds(5));
    if (saves.state != QRVSaveStatus::State::Saved) {
        std::cerr << "not saved: " << saves.keyPaths << ' ' << saves.reason << '\n';
        return 1;
    }
}
