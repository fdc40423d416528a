// SPDX-License-Identifier: MIT
#pragma once

/// The desktop's light or dark for hosts with the event loop of Qt. The host links Qt D-Bus,
/// version 5 or 6; the library does not.

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QObject>
#include <QThread>
#include <QTimer>
#include <utility>

#include "QRVSettings/Adapters/DesktopAppearance.h"

/// As long as it lives, the menu bar's appearance follows the desktop's, or the handler is called
/// with that. Made after the application object and `loadDefaults`, and destroyed before the
/// application object, on the main thread, not in the handler.
///
/// It works in the event loop and never waits for an answer. All objects of this class share one
/// connection, which a thread of its own opens, because Qt waits for the bus then, and which stays
/// open until the process ends. A portal that is not running is started if the bus knows how; one
/// that appears later or starts again is asked then. When the bus ends, the host goes on without a
/// preference. An exception from the handler ends the program (std::terminate): Qt hands none on.
class QtDesktopAppearance : public QObject {
  public:
    explicit QtDesktopAppearance(DesktopAppearanceHandler handler = setAppearanceOfDesktop,
                                 QObject* parent = nullptr)
        : QObject(parent), answers_(std::move(handler)) {
        const QString address = QString::fromStdString(Answers::busAddress());
        if (address.isEmpty()) return;
        QThread* const opening = QThread::create(
            [address] { QDBusConnection::connectToBus(address, connectionName()); });
        connect(opening, &QThread::finished, this, [this] { follow(); });
        connect(opening, &QThread::finished, opening, &QObject::deleteLater);
        opening->start();
    }

    /// What the desktop prefers at the moment; no preference until a portal has answered.
    [[nodiscard]] DesktopAppearance preference() const { return answers_.preference(); }

  private:
    using Answers = DesktopAppearanceAnswers;

    /// Hosts may have forbidden to make a QString of characters in passing.
    static QString latin(const char* text) { return QString::fromLatin1(text); }
    static QString connectionName() { return QStringLiteral("QtDesktopAppearance"); }
    void follow() {
        connection_ = QDBusConnection(connectionName());
        if (!connection_.isConnected()) return;
        askAgain_.setSingleShot(true);
        connect(&askAgain_, &QTimer::timeout, this, [this] { ask(); });
        askWhen(Answers::object, Answers::interface, Answers::changeSignal,
                {latin(Answers::settingNamespace), latin(Answers::settingKey)});
        askWhen("/org/freedesktop/DBus/Local", "org.freedesktop.DBus.Local", "Disconnected", {});

        owners_.setConnection(connection_);
        owners_.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
        owners_.addWatchedService(latin(Answers::service));
        connect(&owners_, &QDBusServiceWatcher::serviceOwnerChanged, this,
                [this](const QString&, const QString&, const QString& owner) {
                    if (owner.isEmpty())
                        lose();
                    else
                        ask();
                });
        ask();
    }
    /// A signal can start a timer without a class that the meta-object compiler has seen. It may
    /// come from anyone, because it only makes us ask the portal.
    void askWhen(const char* path, const char* ofInterface, const char* signal,
                 const QStringList& arguments) {
        connection_.connect(QString(), latin(path), latin(ofInterface), latin(signal), arguments,
                            QString(), &askAgain_, SLOT(start()));
    }
    void lose() {
        ++question_;
        answers_.absent();
    }

    /// Of several questions, the answer to the last one counts.
    void ask() {
        call(Answers::readMethod, [this](const QDBusMessage& answer) {
            if (QDBusError(answer).type() == QDBusError::UnknownMethod)
                call(Answers::oldReadMethod, [this](const QDBusMessage& old) { take(old); });
            else
                take(answer);
        });
    }
    template <typename Answered>
    void call(const char* method, Answered answered) {
        QDBusMessage message =
            QDBusMessage::createMethodCall(latin(Answers::service), latin(Answers::object),
                                           latin(Answers::interface), latin(method));
        message << latin(Answers::settingNamespace) << latin(Answers::settingKey);
        auto* const waiting = new QDBusPendingCallWatcher(connection_.asyncCall(message), this);
        connect(waiting, &QDBusPendingCallWatcher::finished, this,
                [this, answered, question = ++question_](auto* finished) noexcept {
                    finished->deleteLater();
                    if (question == question_) answered(finished->reply());
                });
    }
    /// A number in one variant, or in two as the old method gives it.
    void take(const QDBusMessage& answer) {
        QVariant value = answer.arguments().value(0);
        while (value.userType() == qMetaTypeId<QDBusVariant>())
            value = value.value<QDBusVariant>().variant();
        if (answer.type() == QDBusMessage::ReplyMessage && value.userType() == QMetaType::UInt)
            answers_.answered(value.toUInt());
        else
            answers_.absent();
    }

    Answers answers_;
    QDBusConnection connection_{QString()};
    QTimer askAgain_;
    QDBusServiceWatcher owners_;
    unsigned question_ = 0;  // the number of the last one
};
