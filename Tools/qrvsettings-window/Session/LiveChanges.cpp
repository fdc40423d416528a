// SPDX-License-Identifier: MIT
#include "Session/LiveChanges.h"

#include <algorithm>
#include <iterator>

namespace QRVWindow {

LiveChanges::LiveChanges(std::size_t maximum, std::chrono::milliseconds markedFor, QObject* parent)
    : QObject(parent), maximum_(maximum), markedFor_(markedFor) {
    nextEnd_.setSingleShot(true);
    nextEnd_.setTimerType(Qt::PreciseTimer);
    connect(&nextEnd_, &QTimer::timeout, this, &LiveChanges::endMarks);
}

void LiveChanges::add(std::vector<LiveChange> changes) {
    if (changes.empty()) return;
    const Clock::time_point end = Clock::now() + markedFor_;
    std::vector<Tool::SettingPlace> marked;
    for (LiveChange& change : changes) {
        change.number = ++lastNumber_;
        if (change.by != LiveChange::By::AnotherProcess) continue;
        marked.push_back(change.place);
        marks_.insert_or_assign(change.place, Mark{change, end});
    }
    std::move(changes.begin(), changes.end(), std::back_inserter(changes_));
    if (changes_.size() > maximum_)
        changes_.erase(changes_.begin(), changes_.end() - static_cast<std::ptrdiff_t>(maximum_));
    if (!nextEnd_.isActive()) waitForNextEnd();
    Q_EMIT changed();
    if (!marked.empty()) Q_EMIT marksChanged(marked);
}

void LiveChanges::clear() {
    if (changes_.empty()) return;
    changes_.clear();
    Q_EMIT changed();
}

void LiveChanges::setPrograms(const std::map<quint64, QString>& programs) {
    if (programs.empty()) return;
    const auto fill = [&programs](LiveChange& change) {
        const auto program = programs.find(change.number);
        if (program != programs.end()) change.program = program->second;
    };
    std::for_each(changes_.begin(), changes_.end(), fill);
    for (auto& [place, mark] : marks_) fill(mark.change);
    Q_EMIT changed();
}

const LiveChange* LiveChanges::markedAt(const Tool::SettingPlace& place) const {
    const auto mark = marks_.find(place);
    return mark == marks_.end() ? nullptr : &mark->second.change;
}

void LiveChanges::endMarks() {
    const Clock::time_point now = Clock::now();
    std::vector<Tool::SettingPlace> ended;
    std::erase_if(marks_, [now, &ended](const auto& entry) {
        if (entry.second.end > now) return false;
        ended.push_back(entry.first);
        return true;
    });
    waitForNextEnd();
    if (!ended.empty()) Q_EMIT marksChanged(ended);
}

void LiveChanges::waitForNextEnd() {
    if (marks_.empty()) return;
    const auto next =
        std::min_element(marks_.begin(), marks_.end(), [](const auto& one, const auto& other) {
            return one.second.end < other.second.end;
        })->second.end;
    // A millisecond is not short of the end.
    nextEnd_.start(std::max(std::chrono::milliseconds(0),
                            std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now())));
}

}  // namespace QRVWindow
