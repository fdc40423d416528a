// SPDX-License-Identifier: MIT
#include "Platform/Presenters/ChangeDetector.h"

#include <algorithm>
#include <utility>

namespace QRVPlatform {

namespace {

/// For those who write without ever closing, and for those who cannot be watched.
constexpr std::chrono::seconds patience(2);

}  // namespace

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

/// True when the route is another one than before.
bool ChangeDetector::arm(FolderWatch& folders, Time now) {
    const auto before = watch_.route();
    const bool isWatched = watch_.arm(folders);
    nextLook_ = isWatched ? std::nullopt : std::optional(now + patience);
    return watch_.route() != before;
}

void ChangeDetector::note(const FolderWatch::Event& event, Time now) {
    if (event.kind == FolderWatch::Kind::EventsLost) {
        noted_.isRouteDoubtful = noted_.isChanged = true;
        return;
    }
    switch (watch_.meaningOf(event)) {
        case RouteWatch::Meaning::Nothing:
            break;
        case RouteWatch::Meaning::Neighbour:
            noted_.isLookWanted = true;
            break;
        case RouteWatch::Meaning::File:
            noteFileEvent(event.kind, now);
            break;
        case RouteWatch::Meaning::Route:
            noted_.isRouteDoubtful = true;
            break;
    }
}

// The presenter's own replacement is a MovedIn, nothing else; a WritingEnded without writing can
// belong to it, when a forked child had the new file open too. All other events are somebody
// else's.
void ChangeDetector::noteFileEvent(FolderWatch::Kind kind, Time now) {
    using Kind = FolderWatch::Kind;
    switch (kind) {
        case Kind::Created:
            noted_.isPerhapsALink = true;
            [[fallthrough]];
        case Kind::Written:
            if (!writingEnd_) writingEnd_ = now + patience;
            break;
        case Kind::Attributes:
            if (!writingEnd_) noted_.isChanged = true;
            break;
        case Kind::MovedIn:
            noted_.isPerhapsALink = true;
            [[fallthrough]];
        case Kind::WritingEnded:
            writingHasEnded();
            noted_.isPerhapsOurs = true;
            break;
        case Kind::Gone:
            noted_.isChanged = true;
            writingHasEnded();
            break;
        case Kind::FolderLost:
        case Kind::EventsLost:
            break;
    }
}

void ChangeDetector::writingHasEnded() {
    if (writingEnd_) noted_.isChanged = true;
    writingEnd_.reset();
}

void ChangeDetector::noteTime(Time now) {
    if (writingEnd_ && *writingEnd_ <= now) writingHasEnded();
    // Perhaps it can be watched again.
    if (nextLook_ && *nextLook_ <= now) noted_.isRouteDoubtful = true;
}

void ChangeDetector::settle(FolderWatch& folders, Time now) {
    noteTime(now);
    if (noted_.isPerhapsALink && watch_.fileHasBecomeALink()) noted_.isRouteDoubtful = true;
    if (!noted_.isChanged && !noted_.isPerhapsOurs && !noted_.isRouteDoubtful &&
        !noted_.isLookWanted)
        return;
    const bool isRouteNew = noted_.isRouteDoubtful && arm(folders, now);
    if (isRouteNew) writingEnd_.reset();
    // From the watch on and before the notification: what happens later makes another event.
    const FileIdentity state = identityOfFileAtPath(watch_.path());
    if (!ownFile_.is(state)) ownFile_ = {};
    if (isNews(state, isRouteNew)) {
        lastSeen_ = state;
        notifications_->notify();
    }
    noted_ = {};
}

bool ChangeDetector::isNews(const FileIdentity& state, bool isRouteNew) const {
    if (noted_.isChanged) return true;
    if (ownFile_.is(state)) return false;
    if (noted_.isPerhapsOurs) return true;
    if (state.isMissing() && lastSeen_.isMissing()) return false;
    return isRouteNew || (!writingEnd_ && differsFromLastSeen(state));
}

// A neighbour's event can be another name given to the file, which changes its change time.
bool ChangeDetector::differsFromLastSeen(const FileIdentity& state) const {
    return nextLook_ ? state != lastSeen_ : !isSameFile(state, lastSeen_);
}

std::optional<ChangeDetector::Time> ChangeDetector::dueTime() const {
    if (writingEnd_ && nextLook_) return std::min(*writingEnd_, *nextLook_);
    return writingEnd_ ? writingEnd_ : nextLook_;
}

// What somebody else has put there, and this replaces before its event is looked at, would be taken
// for the presenter's own then: so it is told now.
std::error_code ChangeDetector::replace(OwnFile newFile,
                                        const std::function<std::error_code()>& putInPlace) {
    const bool isOthersUntold = !isSameFile(identityOfFileAtPath(watch_.path()), lastSeen_);
    const std::error_code error = putInPlace();
    const FileIdentity state = identityOfFileAtPath(watch_.path());
    if (!error && newFile.is(state)) {
        ownFile_ = std::move(newFile);
        lastSeen_ = state;
    }
    if (isOthersUntold) notifications_->notify();
    return error;
}

}  // namespace QRVPlatform
