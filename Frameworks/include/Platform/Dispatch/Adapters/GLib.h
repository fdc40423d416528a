// SPDX-License-Identifier: MIT
#pragma once

/// The main queue in a loop of GLib. The host links GLib; the library does not.

#include <glib-unix.h>

#include "Platform/Dispatch/Dispatch.h"

/// As long as it lives, a main context of GLib drains the main queue whenever there is work, in
/// nested loops too. Made, destroyed and iterated on the main thread. An exception from an item
/// ends the program (std::terminate): GLib knows no exceptions. When the system has no descriptor
/// left at the start, it drains every 100 milliseconds instead.
class GLibMainQueue {
  public:
    /// Without a context it is the default one.
    explicit GLibMainQueue(GMainContext* context = nullptr)
        : source_(makeSource(DispatchMainQueue::shared().fd())) {
        g_source_set_can_recurse(source_, TRUE);
        g_source_attach(source_, context);
    }
    GLibMainQueue(const GLibMainQueue&) = delete;
    GLibMainQueue& operator=(const GLibMainQueue&) = delete;
    ~GLibMainQueue() {
        g_source_destroy(source_);
        g_source_unref(source_);
    }

  private:
    static GSource* makeSource(int fd) {
        constexpr guint milliseconds = 100;
        GSource* const source =
            fd < 0 ? g_timeout_source_new(milliseconds) : g_unix_fd_source_new(fd, G_IO_IN);
        if (fd < 0)
            g_source_set_callback(source, &drainNow, nullptr, nullptr);
        else
            g_source_set_callback(source, G_SOURCE_FUNC(&drain), nullptr, nullptr);
        return source;
    }
    static gboolean drain(gint, GIOCondition, gpointer) noexcept { return drainNow(nullptr); }
    static gboolean drainNow(gpointer) noexcept {
        DispatchMainQueue::shared().drain();
        return G_SOURCE_CONTINUE;
    }
    GSource* source_;
};
