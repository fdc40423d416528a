// SPDX-License-Identifier: MIT
// Prints every setting that another process changes: a host with the main loop of GLib. SIGTERM and
// SIGINT end it.

#include <glib-unix.h>

#include <csignal>
#include <iostream>

#include "Platform/Dispatch/Adapters/GLib.h"
#include "QRVSettings/QRVSettings.h"

namespace {

gboolean quit(gpointer loop) {
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return G_SOURCE_CONTINUE;
}

}  // namespace

int main() {
    GMainLoop* const loop = g_main_loop_new(nullptr, FALSE);
    for (const int signal : {SIGTERM, SIGINT}) g_unix_signal_add(signal, quit, loop);
    const GLibMainQueue mainQueue;  // from here on the default main context drains it

    QRVSettings& store = QRVSettings::sharedSettings();
    store.setMergesSaves(true);
    store.setUsesSiteDefaults(true);
    store.setMonitorFileChanges(true);  // before prepare
    store.setOnChange([](const NSArray& keyPaths) {
        for (const PropertyListValue& keyPath : keyPaths)
            std::cout << keyPath.stringView() << ": "
                      << QRVSettingsObjectForKeyPath(keyPath.stringValue()) << std::endl;
    });
    store.loadDefaults();
    store.prepare();
    std::cout << "watching " << store.location() << std::endl;

    g_main_loop_run(loop);
    g_main_loop_unref(loop);

    const QRVSaveStatus saves = QRVSettingsWaitForSaves(std::chrono::seconds(5));
    return saves.state == QRVSaveStatus::State::Saved ? 0 : 1;
}
