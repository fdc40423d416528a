// SPDX-License-Identifier: MIT
#pragma once

/// What tests of the window share. Each test runs in a process of its own that has a QApplication
/// on the platform `offscreen` (style Fusion, DejaVu Sans 10), the main queue in its event loop, a
/// home, configuration and state folder of its own, and no session bus. Edits are applied, and the
/// file is examined, by the window's program. Files and the tool of the test: `Tool/ToolSupport.h`.

#include <QImage>
#include <QString>
#include <QWidget>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace WindowSupport {

/// Generous, for builds with a sanitizer on a busy machine.
constexpr std::chrono::milliseconds deadline = std::chrono::seconds(30);

/// Runs the event loop until the condition holds. False when it does not until the deadline.
bool waitUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds longest = deadline);
/// Runs the event loop for a time, to see that something does not happen.
void spin(std::chrono::milliseconds time);

/// Shows the widget and waits until it is painted once.
void show(QWidget& widget);
/// What the widget looks like. Where the environment variable `QRV_PICTURES` names a folder, the
/// picture is written there too, as NAME.png.
QImage grab(QWidget& widget, const QString& name = QString());

/// Sets a value as another process does, with the real tool; the test fails when the tool does.
void setByTool(const std::string& keyPath, const std::string& value);
/// The tool with other arguments; returns its output.
std::string runTool(const std::vector<std::string>& arguments);

}  // namespace WindowSupport
