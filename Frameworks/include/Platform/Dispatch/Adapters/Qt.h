// SPDX-License-Identifier: MIT
#pragma once

/// The main queue in the event loop of Qt. The host links Qt Core, version 5 or 6; the library does
/// not.

#include <QEvent>
#include <QSocketNotifier>

#include "Platform/Dispatch/Dispatch.h"

/// As long as it lives, the event loop of the main thread drains the main queue whenever there is
/// work, in nested loops too. Made after the application object and destroyed before it, on the
/// main thread. An exception from an item ends the program (std::terminate): Qt hands none on. When
/// the system has no descriptor left at the start, it drains every 100 milliseconds instead.
class QtMainQueue : public QSocketNotifier {
  public:
    explicit QtMainQueue(QObject* parent = nullptr)
        : QSocketNotifier(DispatchMainQueue::shared().fd(), QSocketNotifier::Read, parent) {
        constexpr int milliseconds = 100;
        if (DispatchMainQueue::shared().fd() < 0) startTimer(milliseconds);
    }

    bool event(QEvent* event) noexcept override {
        if (event->type() != QEvent::SockAct && event->type() != QEvent::Timer)
            return QSocketNotifier::event(event);
        DispatchMainQueue::shared().drain();
        return true;
    }
};
