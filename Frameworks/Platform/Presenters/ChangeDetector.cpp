// SPDX-License-Identifier: MIT
#include "Platform/Presenters/ChangeDetector.h"

#include <algorithm>
#include <utility>

#include "Platform/Files/FileFailures.h"

namespace QRVPlatform {

ChangeDetector::ChangeDetector(std::string absolutePath,
                               std::shared_ptr<PresenterNotifications> notifications)
    : notifications_(std::move(notifications)), watch_(std::move(absolutePath)) {}

void ChangeDetector::begin(FolderWatch& folders, Time now) {
    arm(folders, now);
    lastSeen_ = identityOfFileAtPath(watch_.path());
}

void ChangeDetector::end(FolderWatch& folders) {
    watch_.release(folders);
}

// The parent may have noticed a change that the child has not handled.
std::unique_ptr<ChangeDetector> ChangeDetector::moveToChild() {
    auto child = std::make_unique<ChangeDetector>(watch_.path(), notifications_->copyForChild());
    child->lastSeen_ = lastSeen_;
    child->evidence_.isRouteDoubtful = child->evidence_.mustNotify = true;
    ownFile_ = {};
    return child;
}

/// True when the route is another one than before.
bool ChangeDetector::arm(FolderWatch& folders, Time now) {
    const auto before = watch_.route();
    const std::error_code error = watch_.arm(folders);
    nextPoll_ = error ? std::optional(now + filePollingInterval) : std::nullopt;
    const bool wasShort = std::exchange(isShort_, FileFailures::isShortage(error));
    if (isShort_ && !wasShort) newShortage_ = error;
    return watch_.route() != before;
}

void ChangeDetector::note(const FolderWatch::Event& event) {
    if (event.kind == FolderWatch::Kind::EventsLost) {
        evidence_.isRouteDoubtful = evidence_.mustNotify = true;
        return;
    }
    switch (watch_.meaningOf(event)) {
        case RouteWatch::Meaning::Nothing:
            break;
        case RouteWatch::Meaning::Neighbour:
            evidence_.isNeighbourTouched = true;
            break;
        case RouteWatch::Meaning::Contents:
            fileEvents_.push_back({event.kind, event.watch});
            break;
        case RouteWatch::Meaning::File:
            fileEvents_.push_back({event.kind, std::nullopt});
            break;
        case RouteWatch::Meaning::Route:
            evidence_.isRouteDoubtful = true;
            break;
    }
}

bool ChangeDetector::hasNameEvent() const {
    return std::any_of(fileEvents_.begin(), fileEvents_.end(),
                       [](const FileEvent& event) { return !event.watch; });
}

// Events of a file that is no longer watched do not count: it no longer has the name.
void ChangeDetector::noteFileEvents(Time now) {
    for (const auto& [kind, watch] : std::exchange(fileEvents_, {})) {
        if (watch && *watch != watch_.fileWatch()) continue;
        // The system reports hard links that are made or deleted as attributes, too.
        if (watch && kind == FolderWatch::Kind::Attributes && !watch_.hasAccessChanged())
            evidence_.isNeighbourTouched = true;
        else
            noteFileEvent(kind, now);
    }
}

void ChangeDetector::noteFileEvent(FolderWatch::Kind kind, Time now) {
    const bool isWriting = evidence_.note(kind, writingEnd_.has_value());
    if (!isWriting)
        writingEnd_.reset();
    else if (!writingEnd_)
        writingEnd_ = now + openWriterTimeout;
}

void ChangeDetector::noteTime(Time now) {
    if (writingEnd_ && *writingEnd_ <= now) {
        evidence_.mustNotify = true;
        writingEnd_.reset();
    }
    // Perhaps it can be watched again.
    if (nextPoll_ && *nextPoll_ <= now) evidence_.isRouteDoubtful = true;
}

void ChangeDetector::settle(FolderWatch& folders, Time now) {
    noteTime(now);
    const bool hasNameEvents = hasNameEvent();
    if (hasNameEvents && !watch_.followFile(folders)) evidence_.isRouteDoubtful = true;
    noteFileEvents(now);
    if (evidence_.hasNewEntry && watch_.fileHasBecomeALink()) evidence_.isRouteDoubtful = true;
    if (!evidence_.wantsDecision()) return;
    const bool isRouteNew = evidence_.isRouteDoubtful && arm(folders, now);
    if (isRouteNew) writingEnd_.reset();
    // After the watch is armed and before the notification: a later change makes another event.
    const FileIdentity state = identityOfFileAtPath(watch_.path());
    if (!ownFile_.is(state)) ownFile_ = {};
    // Its attributes may have changed before it was watched.
    const bool isTouched = hasNameEvents && state != lastSeen_;
    if (isNews(evidence_, {.now = state,
                           .lastTime = lastSeen_,
                           .isOwn = ownFile_.is(state) && !isTouched,
                           .isRouteNew = isRouteNew,
                           .isWriting = writingEnd_.has_value(),
                           .isPolled = nextPoll_.has_value()})) {
        lastSeen_ = state;
        hasNews_ = true;
    }
    evidence_ = {};
}

std::optional<ChangeDetector::Time> ChangeDetector::dueTime() const {
    if (writingEnd_ && nextPoll_) return std::min(*writingEnd_, *nextPoll_);
    return writingEnd_ ? writingEnd_ : nextPoll_;
}

// If this replaces what somebody else has put there, before the event of that is handled, that
// event would be taken for the presenter's own: so the presenter is notified of it now.
std::error_code ChangeDetector::replace(OwnFile newFile,
                                        const std::function<std::error_code()>& putInPlace) {
    const bool isOthersPending = !isSameFile(identityOfFileAtPath(watch_.path()), lastSeen_);
    const std::error_code error = putInPlace();
    const FileIdentity state = identityOfFileAtPath(watch_.path());
    if (!error && newFile.is(state)) {
        ownFile_ = std::move(newFile);
        lastSeen_ = state;
    }
    if (isOthersPending) hasNews_ = true;
    return error;
}

}  // namespace QRVPlatform
