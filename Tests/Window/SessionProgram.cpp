// SPDX-License-Identifier: MIT
// A session in a process of its own, without a widget: applies numbers, one after the other, until
// the file holds a key path that ends it, and prints the settings that it then shows.
//
//     SessionProgram KEYPATH COUNT APPLIER

#include <unistd.h>

#include <QCoreApplication>
#include <iostream>
#include <string>

#include "Platform/System/System.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "Session/Applier.h"
#include "Session/Session.h"
#include "Text/JSON.h"
#include "Text/KeyPaths.h"

using QRVWindow::FileState;
using QRVWindow::Session;

namespace {

constexpr const char* endKeyPath = "Test.End";

class Writer {
  public:
    Writer(std::string keyPath, int count) : keyPath_(std::move(keyPath)), count_(count) {
        QObject::connect(&session_, &Session::fileStateChanged, &session_, [this] { follow(); });
        QObject::connect(&session_, &Session::applied, &session_,
                         [this](const Tool::ApplyOutcome& outcome) { take(outcome); });
        session_.start();
    }

  private:
    void follow() {
        if (session_.fileState().kind != FileState::Kind::Present) return;
        if (next_ == 0) applyNext();
        const bool isEnded =
            !NSDictionaryQRV::objectAtKeyPath(session_.stored(), endKeyPath).isNull();
        if (isEnded && next_ > count_ && !session_.isApplying()) printAndEnd();
    }
    void applyNext() {
        if (++next_ > count_) return follow();
        session_.edit(keyPath_, next_);
        session_.apply({});
    }
    void take(const Tool::ApplyOutcome& outcome) {
        if (outcome.state != Tool::ApplyOutcome::State::Applied) {
            std::cerr << outcome.reason << std::endl;
            return QCoreApplication::exit(1);
        }
        applyNext();
    }
    void printAndEnd() {
        const NSMutableDictionary shown;
        for (const Tool::SettingRow& row : session_.table().rows())
            if (!row.stored.isNull() && !row.isRecord)
                shown.setObjectForKey(row.stored, row.keyPath);
        std::cout << Tool::jsonText(shown) << std::endl;
        QCoreApplication::quit();
    }

    Session session_;
    std::string keyPath_;
    int count_;
    int next_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
    constexpr unsigned mostSeconds = 300;  // where a thousand saves wait for a slow disk
    alarm(mostSeconds);
    setNSLogSink([](const std::string&) {});
    const QCoreApplication application(argc, argv);
    if (argc != 4) return 2;
    QRVWindow::Applier::setProgram(QString::fromLocal8Bit(argv[3]));
    const Writer writer(argv[1], std::stoi(argv[2]));
    return QCoreApplication::exec();
}
