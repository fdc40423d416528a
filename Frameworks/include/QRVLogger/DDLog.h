// SPDX-License-Identifier: MIT
#pragma once

/// The log for developers: messages with their origin, passed to a sink.

#include <functional>
#include <string>
#include <vector>

#include "Platform/Export.h"
#include "Platform/Values/PropertyListValue.h"

inline constexpr int DDLogLevelAll = 31;
inline constexpr int DDLogFlagDebug = 8;

struct QRV_EXPORT DDLogMessage {
    bool asynchronous = true;  ///< as the sender set it; delivery is asynchronous in either case
    int level = DDLogLevelAll;
    int flag = DDLogFlagDebug;
    int context = 0;
    std::string file;
    std::string function;
    int line = 0;
    PropertyListValue tag;  ///< null for none
    std::string format;     ///< as for formattedText
    std::vector<PropertyListValue> arguments;
    NSDate timestamp = NSDate::now();

    /// The format with its arguments filled in.
    [[nodiscard]] std::string text() const;
};

/// Every function may be called on any thread; inside a sink, `flush` and `setSink` throw
/// std::logic_error. Not for use in a forked child.
class QRV_EXPORT DDLog {
  public:
    using Sink = std::function<void(const DDLogMessage& message)>;

    DDLog() = delete;

    /// Returns at once. The sink gets the message later, on the log's own thread, one message at a
    /// time; messages of one thread come in the order logged. A process that exits without
    /// `flush()` may lose the last ones.
    static void log(DDLogMessage message);

    /// Replaces the sink; null restores the default, which writes the text to the system log at
    /// level debug. When this returns, every message logged earlier has reached the old sink, and
    /// the old sink is no longer used. An exception from a sink ends the program.
    static void setSink(Sink sink);

    /// Returns when every message that this thread has logged has reached the sink.
    static void flush();
};
