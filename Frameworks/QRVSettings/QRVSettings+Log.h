// SPDX-License-Identifier: MIT
#pragma once

// The store's messages to the developers' log.

#include <utility>
#include <vector>

#include "QRVLogger/DDLog.h"

namespace QRVInside {

/// `function` and `line` are constants of a message, so that a log of any version can be searched
/// for them.
inline void logMessage(const char* function, int line, const char* format,
                       std::vector<PropertyListValue> arguments) {
    DDLogMessage message;
    message.file = "Frameworks/QRVSettings/QRVSettings";
    message.function = function;
    message.line = line;
    message.format = format;
    message.arguments = std::move(arguments);
    DDLog::log(std::move(message));
}

}  // namespace QRVInside
