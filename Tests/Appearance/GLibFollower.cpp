// SPDX-License-Identifier: MIT
// A host with the loop of GLib that says what the desktop prefers.

#include <glib-unix.h>

#include "Follower.h"
#include "Platform/Dispatch/Adapters/GLib.h"
#include "QRVSettings/Adapters/GLibAppearance.h"

namespace {

struct Host {
    GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
    GLibMainQueue mainQueue{};
    Follower<GLibDesktopAppearance> follower{};
};

gboolean readInput(gint, GIOCondition, gpointer data) {
    auto* const host = static_cast<Host*>(data);
    if (!host->follower.readInput()) g_main_loop_quit(host->loop);
    return G_SOURCE_CONTINUE;
}

}  // namespace

int main() {
    Host host;
    g_unix_fd_add(STDIN_FILENO, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP), &readInput, &host);
    g_main_loop_run(host.loop);
    g_main_loop_unref(host.loop);
    return host.follower.end();
}
