// SPDX-License-Identifier: MIT
#pragma once

/// The system's log. Every function may be called on any thread.

#include <functional>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

#include "Platform/Export.h"
#include "Platform/Values/PropertyListValue.h"

namespace QRVPlatform {

/// `format` with every "%@" replaced by the description of the next argument ("(null)" for null and
/// when there are no more arguments) and "%%" by "%". Everything else stays as it is, other uses of
/// "%" too; surplus arguments are ignored.
QRV_EXPORT std::string formattedText(std::string_view format,
                                     std::span<const PropertyListValue> arguments);

}  // namespace QRVPlatform

/// Logs the formatted text. Text from elsewhere belongs into an argument, never
/// into `format`.
///
/// By default it becomes a line on standard error, in one write, and a message of level notice in
/// the system log. The line gives local time, program and process: `2026-11-21 08:42:38.123
/// monitor[4711] text`. Errors of writing either are ignored.
QRV_EXPORT void NSLog(std::string_view format,
                      std::initializer_list<PropertyListValue> arguments = {});

/// Receives each text logged, without time and program, on the thread that logs it; calls may
/// overlap.
using NSLogSink = std::function<void(const std::string& text)>;

/// Replaces the default, or restores it (null); returns the previous sink, null when that was the
/// default. A call under way on another thread may still use the previous one after this returns.
QRV_EXPORT NSLogSink setNSLogSink(NSLogSink sink);
