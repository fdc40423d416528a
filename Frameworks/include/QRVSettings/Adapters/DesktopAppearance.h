// SPDX-License-Identifier: MIT
#pragma once

/// What the adapters that follow the desktop's appearance share. The desktop's portal tells it as
/// the setting `color-scheme` of `org.freedesktop.appearance`.

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "Platform/System/NSAppearance.h"
#include "QRVSettings/QRVSettings.h"

/// What the desktop asks applications for. Without a session bus, a portal, or an answer that can
/// be understood, it has no preference.
enum class DesktopAppearance : std::uint8_t { NoPreference, Dark, Light };

/// Receives what the desktop prefers, on the host's main thread. Called for the first answer of a
/// portal and for each answer that differs from the one before; an absent portal calls nothing.
using DesktopAppearanceHandler = std::function<void(DesktopAppearance)>;

/// The handler of a host that gives none: makes the menu bar as the desktop. A portal without a
/// preference means light, as it does to the desktop's own programs. Writes only what differs from
/// the current appearance.
inline void setAppearanceOfDesktop(DesktopAppearance appearance) {
    const bool isDark = appearance == DesktopAppearance::Dark;
    if (QRVSettingsCurrentAppearance() == PropertyListValue(isDark ? "Dark" : "Light")) return;
    QRVSettingsSetCurrentAppearance(isDark ? PropertyListValue(NSAppearanceNameDarkAqua)
                                           : PropertyListValue());
}

/// Where the portal is, and what its answers mean. For the adapters.
class DesktopAppearanceAnswers {
  public:
    static constexpr const char* service = "org.freedesktop.portal.Desktop";
    static constexpr const char* object = "/org/freedesktop/portal/desktop";
    static constexpr const char* interface = "org.freedesktop.portal.Settings";
    static constexpr const char* changeSignal = "SettingChanged";
    static constexpr const char* settingNamespace = "org.freedesktop.appearance";
    static constexpr const char* settingKey = "color-scheme";
    /// Portals of version 1 know the second method only.
    static constexpr const char* readMethod = "ReadOne";
    static constexpr const char* oldReadMethod = "Read";

    /// The address of the session bus; empty without one. Never starts a bus.
    static std::string busAddress() {
        const char* const address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
        if (address != nullptr && *address != '\0') return address;
        const char* const folder = std::getenv("XDG_RUNTIME_DIR");
        if (folder == nullptr || *folder != '/') return {};
        return "unix:path=" + std::string(folder) + "/bus";
    }

    explicit DesktopAppearanceAnswers(DesktopAppearanceHandler handler)
        : handler_(std::move(handler)) {}
    [[nodiscard]] DesktopAppearance preference() const { return preference_; }

    /// A portal has answered; 0, and numbers of later versions, are no preference.
    void answered(std::uint32_t colorScheme) {
        preference_ = colorScheme == 1   ? DesktopAppearance::Dark
                      : colorScheme == 2 ? DesktopAppearance::Light
                                         : DesktopAppearance::NoPreference;
        if (lastAnswer_ == preference_) return;
        lastAnswer_ = preference_;
        if (handler_) handler_(preference_);
    }
    /// No portal, or none that knows the setting.
    void absent() { preference_ = DesktopAppearance::NoPreference; }

  private:
    DesktopAppearanceHandler handler_;
    DesktopAppearance preference_ = DesktopAppearance::NoPreference;
    std::optional<DesktopAppearance> lastAnswer_;
};
