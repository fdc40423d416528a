// SPDX-License-Identifier: MIT
#include "Session/Programs.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <string_view>
#include <utility>

#include "History/HistoryText.h"
#include "History/ToolHistory.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Reporting/Failure.h"
#include "Text/Differences.h"

namespace QRVWindow {
namespace {

using namespace std::chrono_literals;

/// How long after a change, or the last try, the history is asked.
constexpr std::array<std::chrono::milliseconds, 4> pauses{100ms, 300ms, 1000ms, 3000ms};

/// After which a change is not looked up any more.
constexpr int secondsOfTries = 5;

/// Of changes that nobody has looked up yet.
constexpr std::size_t maximumUnknown = 10'000;

/// An entry may bear a time before that at which its change was seen.
constexpr int secondsBefore = 60;

/// Never destroyed: a process may end while it waits for the history.
DispatchQueue& historyQueue() {
    static auto& queue = *new DispatchQueue("qrvsettings-window.history");
    return queue;
}

/// Key paths with the saves that changed them, the latest first.
using SavesByKeyPath =
    std::map<std::string_view,
             std::vector<std::pair<const QRVHistorySave*, const QRVHistoryChange*>>>;

SavesByKeyPath savesByKeyPath(const std::vector<QRVHistorySave>& saves) {
    SavesByKeyPath result;
    for (const QRVHistorySave& save : saves)
        for (const QRVHistoryChange& change : save.changes)
            result[change.keyPath].emplace_back(&save, &change);
    return result;
}

/// The latest save that has made the change; null when there is none.
const QRVHistorySave* saveOf(const LiveChange& change, const SavesByKeyPath& saves) {
    const auto found = saves.find(change.place.storedKeyPath());
    if (found == saves.end()) return nullptr;
    for (const auto& [save, entry] : found->second)
        if (entry->after == change.after) return save;
    return nullptr;
}

std::map<quint64, QString> programsOf(const std::vector<LiveChange>& changes) {
    QRVHistoryQuery query;
    query.since =
        NSDate(NSDate::now().timeIntervalSinceReferenceDate() -
               static_cast<double>(changes.front().time.secsTo(QDateTime::currentDateTime())) -
               secondsBefore);
    const std::vector<QRVHistorySave> answer = Tool::savesInHistory(query);
    const SavesByKeyPath saves = savesByKeyPath(answer);
    std::map<quint64, QString> programs;
    for (const LiveChange& change : changes) {
        const QRVHistorySave* const save = saveOf(change, saves);
        if (save != nullptr && !save->program.empty())
            programs[change.number] = QString::fromStdString(Tool::programText(*save));
    }
    return programs;
}

}  // namespace

struct Programs::Receiver {
    std::mutex mutex;
    Programs* programs;  ///< null once it is gone
};

Programs::Programs(QObject* parent) : QObject(parent), receiver_(std::make_shared<Receiver>()) {
    receiver_->programs = this;
    next_.setSingleShot(true);
    connect(&next_, &QTimer::timeout, this, &Programs::ask);
}

Programs::~Programs() {
    const std::lock_guard guard(receiver_->mutex);
    receiver_->programs = nullptr;
}

void Programs::lookUp(const std::vector<LiveChange>& changes) {
    if (changes.empty()) return;
    unknown_.insert(unknown_.end(), changes.begin(), changes.end());
    if (unknown_.size() > maximumUnknown)
        unknown_.erase(unknown_.begin(),
                       unknown_.end() - static_cast<std::ptrdiff_t>(maximumUnknown));
    tries_ = 0;
    if (!isAsking_ && !next_.isActive()) next_.start(pauses.front());
}

void Programs::ask() {
    isAsking_ = true;
    historyQueue().async([receiver = receiver_, changes = unknown_] {
        std::map<quint64, QString> programs;
        bool isHistory = true;
        try {
            programs = programsOf(changes);
        } catch (const Tool::Failure& failure) {
            isHistory = failure.fault() == Tool::Fault::UnreadableFile;  // perhaps later
        }
        const std::lock_guard guard(receiver->mutex);
        if (receiver->programs == nullptr) return;
        QMetaObject::invokeMethod(
            receiver->programs,
            [target = receiver->programs, programs = std::move(programs), isHistory] {
                target->take(programs, isHistory);
            },
            Qt::QueuedConnection);
    });
}

void Programs::take(const std::map<quint64, QString>& programs, bool isHistory) {
    isAsking_ = false;
    const QDateTime oldest = QDateTime::currentDateTime().addSecs(-secondsOfTries);
    std::erase_if(unknown_, [&](const LiveChange& change) {
        return !isHistory || programs.contains(change.number) || change.time < oldest;
    });
    tries_ = std::min(tries_ + 1, pauses.size() - 1);
    if (!unknown_.empty()) next_.start(pauses.at(tries_));
    if (!programs.empty()) Q_EMIT found(programs);
}

}  // namespace QRVWindow
