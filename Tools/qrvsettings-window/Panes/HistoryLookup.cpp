// SPDX-License-Identifier: MIT
#include "Panes/HistoryLookup.h"

#include <exception>
#include <utility>

#include "History/ToolHistory.h"

namespace QRVWindow {
namespace {

HistoryAnswer answerOf(const std::string& keyPath) {
    HistoryAnswer answer{keyPath, {}, {}};
    try {
        answer.saves =
            Tool::savesInHistory({.prefix = keyPath, .limit = HistoryLookup::maximumSaves});
    } catch (const std::exception& failure) {
        answer.whyNone = failure.what();
    }
    return answer;
}

}  // namespace

HistoryLookup::HistoryLookup(QObject* parent) : QObject(parent) {
    thread_.setMaxThreadCount(1);
    // Without this the thread wakes up to end itself.
    thread_.setExpiryTimeout(-1);
}

HistoryLookup::~HistoryLookup() {
    thread_.waitForDone();
}

void HistoryLookup::look(const std::string& storedKeyPath) {
    if (isLooking_)
        next_ = storedKeyPath;
    else
        start(storedKeyPath);
}

void HistoryLookup::start(const std::string& storedKeyPath) {
    isLooking_ = true;
    thread_.start([this, storedKeyPath] {
        const HistoryAnswer answer = answerOf(storedKeyPath);
        QMetaObject::invokeMethod(
            this, [this, answer] { finish(answer); }, Qt::QueuedConnection);
    });
}

void HistoryLookup::finish(const HistoryAnswer& answer) {
    isLooking_ = false;
    if (next_) start(*std::exchange(next_, std::nullopt));
    Q_EMIT found(answer);
}

}  // namespace QRVWindow
