// SPDX-License-Identifier: MIT
// Listens to the desktop with the loop of GLib. The display sees the result as it sees every
// change: in the settings.

#include <glib-unix.h>

#include "AppearanceProcess.h"
#include "Platform/Dispatch/Adapters/GLib.h"
#include "Processes.h"
#include "QRVSettings/Adapters/GLibAppearance.h"
#include "StartUp.h"

namespace {

gboolean quit(gint, GIOCondition, gpointer loop) {
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return G_SOURCE_REMOVE;
}

}  // namespace

int runAppearanceProcess() {
    startUp(nullptr);
    const GLibMainQueue mainQueue;
    const GLibDesktopAppearance appearance;  // the menu bar follows as long as it lives
    GMainLoop* const loop = g_main_loop_new(nullptr, FALSE);
    g_unix_fd_add(endOfProcess(), G_IO_IN, &quit, loop);
    g_main_loop_run(loop);
    g_main_loop_unref(loop);
    return endUp(0);
}
