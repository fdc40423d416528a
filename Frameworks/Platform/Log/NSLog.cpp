// SPDX-License-Identifier: MIT
// The log of System.h, and the sink that replaces it.

#include <utility>

#include "Platform/Log/SystemLog.h"
#include "Platform/System/System.h"
#include "Platform/Threads/ReplaceableHandler.h"

using namespace QRVPlatform;

namespace {

/// Never destroyed: threads may log while the process exits.
ReplaceableHandler<const std::string&>& currentSink() {
    static auto& sink = *new ReplaceableHandler<const std::string&>;
    return sink;
}

}  // namespace

void NSLog(std::string_view format, std::initializer_list<PropertyListValue> arguments) {
    const std::string text = formattedText(format, {arguments.begin(), arguments.size()});
    if (currentSink().call(text)) return;
    SystemLog::writeToStandardError(text);
    SystemLog::write(SystemLog::Level::Notice, text);
}

NSLogSink setNSLogSink(NSLogSink sink) {
    return currentSink().replace(std::move(sink));
}
