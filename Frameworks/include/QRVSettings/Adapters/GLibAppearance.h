// SPDX-License-Identifier: MIT
#pragma once

/// The desktop's light or dark for hosts with a loop of GLib. The host links GIO; the library does
/// not.

#include <gio/gio.h>

#include <string>
#include <utility>

#include "QRVSettings/Adapters/DesktopAppearance.h"

/// As long as it lives, the menu bar's appearance follows the desktop's, or the handler is called
/// with that. Made after `loadDefaults` and destroyed on the main thread, not in the handler.
///
/// It works in the main context that is the thread's default when it is made, on a connection of
/// its own, and never waits for an answer. A portal that is not running is started if the bus
/// knows how; one that appears later or starts again is asked then. When the bus ends, the host
/// goes on without a preference. An exception from the handler ends the program (std::terminate):
/// GLib knows no exceptions.
class GLibDesktopAppearance {
  public:
    explicit GLibDesktopAppearance(DesktopAppearanceHandler handler = setAppearanceOfDesktop)
        : answers_(std::move(handler)), cancellable_(g_cancellable_new()) {
        const std::string address = DesktopAppearanceAnswers::busAddress();
        if (address.empty()) return;
        constexpr int flags = G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION;
        g_dbus_connection_new_for_address(address.c_str(), static_cast<GDBusConnectionFlags>(flags),
                                          nullptr, cancellable_, &connected, this);
    }
    GLibDesktopAppearance(const GLibDesktopAppearance&) = delete;
    GLibDesktopAppearance& operator=(const GLibDesktopAppearance&) = delete;
    ~GLibDesktopAppearance() {
        g_cancellable_cancel(cancellable_);
        g_object_unref(cancellable_);
        if (connection_ == nullptr) return;
        g_bus_unwatch_name(watch_);
        g_dbus_connection_signal_unsubscribe(connection_, subscription_);
        g_object_unref(connection_);
    }

    /// What the desktop prefers at the moment; no preference until a portal has answered.
    [[nodiscard]] DesktopAppearance preference() const { return answers_.preference(); }

  private:
    using Answers = DesktopAppearanceAnswers;

    static GLibDesktopAppearance& self(gpointer data) {
        return *static_cast<GLibDesktopAppearance*>(data);
    }
    /// Whether the object that asked is gone or has asked again. Frees the error.
    static bool wasCancelled(GError* error) {
        const bool isCancelled = g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED) != 0;
        g_clear_error(&error);
        return isCancelled;
    }

    static void connected(GObject*, GAsyncResult* result, gpointer data) noexcept {
        GError* error = nullptr;
        GDBusConnection* const connection =
            g_dbus_connection_new_for_address_finish(result, &error);
        if (connection == nullptr) {
            g_clear_error(&error);
            return;
        }
        self(data).follow(connection);
    }
    void follow(GDBusConnection* connection) {
        connection_ = connection;
        subscription_ = g_dbus_connection_signal_subscribe(
            connection, Answers::service, Answers::interface, Answers::changeSignal,
            Answers::object, Answers::settingNamespace, G_DBUS_SIGNAL_FLAGS_NONE, &changed, this,
            nullptr);
        watch_ = g_bus_watch_name_on_connection(connection, Answers::service,
                                                G_BUS_NAME_WATCHER_FLAGS_AUTO_START, &appeared,
                                                &vanished, this, nullptr);
    }
    static void appeared(GDBusConnection*, const gchar*, const gchar*, gpointer data) noexcept {
        self(data).ask();
    }
    static void vanished(GDBusConnection*, const gchar*, gpointer data) noexcept {
        self(data).renewCancellable();
        self(data).answers_.absent();
    }
    static void changed(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*,
                        GVariant* parameters, gpointer data) noexcept {
        if (isColorScheme(parameters)) self(data).ask();
    }

    static bool isColorScheme(GVariant* parameters) {
        if (g_variant_is_of_type(parameters, G_VARIANT_TYPE("(ssv)")) == 0) return false;
        const gchar* key = nullptr;
        g_variant_get_child(parameters, 1, "&s", &key);
        return g_str_equal(key, Answers::settingKey) != 0;
    }

    /// Of several questions, the answer to the last one counts.
    void ask() {
        renewCancellable();
        call(Answers::readMethod, &answeredRead);
    }
    void renewCancellable() {
        g_cancellable_cancel(cancellable_);
        g_object_unref(cancellable_);
        cancellable_ = g_cancellable_new();
    }
    void call(const char* method, GAsyncReadyCallback answer) {
        constexpr int defaultTimeout = -1;
        g_dbus_connection_call(
            connection_, Answers::service, Answers::object, Answers::interface, method,
            g_variant_new("(ss)", Answers::settingNamespace, Answers::settingKey), nullptr,
            G_DBUS_CALL_FLAGS_NONE, defaultTimeout, cancellable_, answer, this);
    }
    static void answeredRead(GObject* source, GAsyncResult* result, gpointer data) noexcept {
        GError* error = nullptr;
        GVariant* const answer =
            g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error);
        if (answer != nullptr)
            self(data).take(answer);
        else if (g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_METHOD) != 0)
            self(data).callOldMethod(error);
        else if (!wasCancelled(error))
            self(data).answers_.absent();
    }
    void callOldMethod(GError* error) {
        g_clear_error(&error);
        call(Answers::oldReadMethod, &answeredOldRead);
    }
    static void answeredOldRead(GObject* source, GAsyncResult* result, gpointer data) noexcept {
        GError* error = nullptr;
        GVariant* const answer =
            g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error);
        if (answer != nullptr)
            self(data).take(answer);
        else if (!wasCancelled(error))
            self(data).answers_.absent();
    }
    /// A number in one variant, or in two as the old method gives it.
    void take(GVariant* answer) {
        bool isWrapped = g_variant_is_of_type(answer, G_VARIANT_TYPE("(v)")) != 0;
        while (isWrapped) {
            GVariant* const inner = g_variant_get_child_value(answer, 0);
            g_variant_unref(answer);
            answer = inner;
            isWrapped = g_variant_is_of_type(answer, G_VARIANT_TYPE_VARIANT) != 0;
        }
        const bool isNumber = g_variant_is_of_type(answer, G_VARIANT_TYPE_UINT32) != 0;
        const guint32 number = isNumber ? g_variant_get_uint32(answer) : 0;
        g_variant_unref(answer);
        if (isNumber)
            answers_.answered(number);
        else
            answers_.absent();
    }

    Answers answers_;
    GCancellable* cancellable_;
    GDBusConnection* connection_ = nullptr;
    guint subscription_ = 0;
    guint watch_ = 0;
};
