// SPDX-License-Identifier: MIT
// A portal for tests, on the bus of the environment. It obeys lines of input:
//     own, release    begins and ends to be the portal
//     value TEXT      what it answers from now on, as GVariant writes it
//     changed         signals the value as the new one
//     other           signals that another setting has changed
//     old             does not know ReadOne from now on
//     unknown         does not know the setting from now on
//     keep            keeps questions without an answer from now on
//     answer          answers those
// It says what it has done, and "asked METHOD" for each question.

#include <gio/gio.h>
#include <glib-unix.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

namespace {

constexpr const char* service = "org.freedesktop.portal.Desktop";
constexpr const char* object = "/org/freedesktop/portal/desktop";
constexpr const char* interface = "org.freedesktop.portal.Settings";
constexpr const char* introspection = R"(<node><interface name="org.freedesktop.portal.Settings">
  <method name="Read"><arg type="s" direction="in"/><arg type="s" direction="in"/>
    <arg type="v" direction="out"/></method>
  <method name="ReadOne"><arg type="s" direction="in"/><arg type="s" direction="in"/>
    <arg type="v" direction="out"/></method>
  <signal name="SettingChanged"><arg type="s"/><arg type="s"/><arg type="v"/></signal>
</interface></node>)";

[[noreturn]] void fail(const std::string& what) {
    std::cerr << "portal: " << what << std::endl;
    std::exit(EXIT_FAILURE);
}

class Portal {
  public:
    Portal() {
        GError* error = nullptr;
        connection_ = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error);
        if (connection_ == nullptr) fail(error->message);
        static const GDBusInterfaceVTable table = {&asked, nullptr, nullptr, {}};
        GDBusNodeInfo* const node = g_dbus_node_info_new_for_xml(introspection, &error);
        if (node == nullptr) fail(error->message);
        if (g_dbus_connection_register_object(connection_, object, node->interfaces[0], &table,
                                              this, nullptr, &error) == 0)
            fail(error->message);
        g_dbus_node_info_unref(node);
        std::cout << "connected" << std::endl;
    }

    bool readInput() {
        std::string line;
        for (char byte = 0; read(STDIN_FILENO, &byte, 1) == 1;) {
            if (byte != '\n') {
                line += byte;
                continue;
            }
            obey(line);
            std::cout << "did " << line << std::endl;
            return true;
        }
        return false;
    }

  private:
    void obey(const std::string& line) {
        if (line == "own")
            request("RequestName", g_variant_new("(su)", service, 0U));
        else if (line == "release")
            request("ReleaseName", g_variant_new("(s)", service));
        else if (line.rfind("value ", 0) == 0)
            value_ = parsed(line.substr(6));
        else if (line == "changed")
            signal("color-scheme");
        else if (line == "other")
            signal("contrast");
        else if (line == "old")
            isOld_ = true;
        else if (line == "unknown")
            isUnknown_ = true;
        else if (line == "keep")
            keeps_ = true;
        else if (line == "answer")
            answerKept();
        else
            fail("cannot " + line);
    }
    static GVariant* parsed(const std::string& text) {
        GError* error = nullptr;
        GVariant* const value = g_variant_parse(nullptr, text.c_str(), nullptr, nullptr, &error);
        if (value == nullptr) fail(error->message);
        return value;
    }
    void request(const char* method, GVariant* arguments) {
        GError* error = nullptr;
        GVariant* const answer = g_dbus_connection_call_sync(
            connection_, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
            method, arguments, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, &error);
        if (answer == nullptr) fail(error->message);
        g_variant_unref(answer);
    }
    void signal(const char* key) {
        g_dbus_connection_emit_signal(
            connection_, nullptr, object, interface, "SettingChanged",
            g_variant_new("(ssv)", "org.freedesktop.appearance", key, value_), nullptr);
    }
    static void asked(GDBusConnection*, const gchar*, const gchar*, const gchar*,
                      const gchar* method, GVariant*, GDBusMethodInvocation* question,
                      gpointer data) {
        auto* const portal = static_cast<Portal*>(data);
        std::cout << "asked " << method << std::endl;
        if (portal->keeps_)
            portal->kept_.push_back(question);
        else
            portal->answer(question);
    }
    void answer(GDBusMethodInvocation* question) {
        const bool isReadOne =
            std::string(g_dbus_method_invocation_get_method_name(question)) == "ReadOne";
        if (isOld_ && isReadOne)
            g_dbus_method_invocation_return_error(question, G_DBUS_ERROR,
                                                  G_DBUS_ERROR_UNKNOWN_METHOD, "no such method");
        else if (isUnknown_)
            g_dbus_method_invocation_return_dbus_error(
                question, "org.freedesktop.portal.Error.NotFound", "no such setting");
        else
            g_dbus_method_invocation_return_value(
                question, isReadOne ? g_variant_new("(v)", value_)
                                    : g_variant_new("(v)", g_variant_new_variant(value_)));
    }
    void answerKept() {
        keeps_ = false;
        for (GDBusMethodInvocation* const question : kept_) answer(question);
        kept_.clear();
    }

    GDBusConnection* connection_ = nullptr;
    GVariant* value_ = g_variant_ref_sink(g_variant_new_uint32(0));
    std::vector<GDBusMethodInvocation*> kept_;
    bool isOld_ = false;
    bool isUnknown_ = false;
    bool keeps_ = false;
};

gboolean readInput(gint, GIOCondition, gpointer data) {
    if (!static_cast<Portal*>(data)->readInput()) std::_Exit(EXIT_SUCCESS);
    return G_SOURCE_CONTINUE;
}

}  // namespace

int main() {
    Portal portal;
    g_unix_fd_add(STDIN_FILENO, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP), &readInput, &portal);
    g_main_loop_run(g_main_loop_new(nullptr, FALSE));
}
