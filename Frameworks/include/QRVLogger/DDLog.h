// SPDX-License-Identifier: MIT
#pragma once

/// The log for developers: messages with all their circumstances, handed to a sink.

#include <functional>
#include <string>
#include <vector>

#include "Platform/Export.h"
#include "Platform/Values/PropertyListValue.h"

inline constexpr int DDLogLevelAll = 31;
inline constexpr int DDLogFlagDebug = 8;

struct QRV_EXPORT DDLogMessage {
    bool asynchronous = true;  ///< as the sender says it; delivery is asynchronous all the same
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

/// Every function may be called on any thread but that of a sink at work, where `flush` and
/// `setSink` throw std::logic_error. Not for use in a forked child.
class QRV_EXPORT DDLog {
  public:
    using Sink = std::function<void(const DDLogMessage& message)>;

    DDLog() = delete;

    /// Returns at once. The sink gets the message later, on a thread of the log's own, one message
    /// at a time, those of one thread in the order logged. A process that exits without `flush()`
    /// may lose the last ones.
    static void log(DDLogMessage message);

    /// Replaces the sink, or restores the default (null): the text goes to the system log at
    /// level debug. In order with the messages: those logged before have reached the sink before
    /// when this returns, and that one is no longer used. An exception from a sink ends the
    /// program.
    static void setSink(Sink sink);

    /// Returns when every message that this thread has logged has reached the sink.
    static void flush();
};
