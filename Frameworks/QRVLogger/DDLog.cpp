// SPDX-License-Identifier: MIT
#include "QRVLogger/DDLog.h"

#include <utility>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Log/SystemLog.h"
#include "Platform/System/System.h"

namespace {

void writeToSystemLog(const DDLogMessage& message) {
    QRVPlatform::SystemLog::write(QRVPlatform::SystemLog::Level::Debug, message.text());
}

struct Delivery {
    DispatchQueue queue{"log"};
    /// Used on the queue only.
    DDLog::Sink sink = writeToSystemLog;
};

/// Never destroyed: threads may log while the process exits.
Delivery& delivery() {
    static Delivery& instance = *new Delivery;
    return instance;
}

}  // namespace

std::string DDLogMessage::text() const {
    return QRVPlatform::formattedText(format, arguments);
}

void DDLog::log(DDLogMessage message) {
    delivery().queue.async([message = std::move(message)] { delivery().sink(message); });
}

void DDLog::setSink(Sink sink) {
    if (!sink) sink = writeToSystemLog;
    delivery().queue.sync([&sink] { delivery().sink.swap(sink); });
}

void DDLog::flush() {
    delivery().queue.sync([] {});
}
