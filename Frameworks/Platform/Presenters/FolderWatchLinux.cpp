// SPDX-License-Identifier: MIT
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstring>
#include <utility>

#include "Platform/Files/FileFailures.h"
#include "Platform/Files/NSFilePresenter.h"
#include "Platform/Presenters/FolderWatch.h"

namespace QRVPlatform {

namespace {

using Kind = FolderWatch::Kind;

using Interest = FolderWatch::Interest;

// Without IN_EXCL_UNLINK a writer of the file that was replaced would look like one of the new
// file.
constexpr std::uint32_t folderMask = IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE_SELF |
                                     IN_MOVE_SELF | IN_ONLYDIR | IN_DONT_FOLLOW | IN_EXCL_UNLINK;
/// By interest.
constexpr std::array<std::uint32_t, 4> masks = {
    folderMask | IN_CREATE | IN_ATTRIB,
    folderMask | IN_CREATE | IN_ATTRIB | IN_MODIFY | IN_CLOSE_WRITE, folderMask,
    IN_MODIFY | IN_CLOSE_WRITE | IN_ATTRIB | IN_DONT_FOLLOW};

std::uint32_t maskOf(const std::array<int, 4>& uses) {
    std::uint32_t mask = 0;
    for (std::size_t interest = 0; interest < uses.size(); ++interest)
        if (uses[interest] > 0) mask |= masks[interest];
    return mask;
}

constexpr std::size_t longestEvent = sizeof(inotify_event) + NAME_MAX + 1;

Kind kindOf(std::uint32_t mask) {
    if ((mask & IN_Q_OVERFLOW) != 0) return Kind::EventsLost;
    if ((mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED | IN_UNMOUNT)) != 0)
        return Kind::FolderLost;
    if ((mask & IN_CREATE) != 0) return Kind::Created;
    if ((mask & IN_MODIFY) != 0) return Kind::Written;
    if ((mask & IN_CLOSE_WRITE) != 0) return Kind::WritingEnded;
    if ((mask & IN_MOVED_TO) != 0) return Kind::MovedIn;
    if ((mask & (IN_DELETE | IN_MOVED_FROM)) != 0) return Kind::Gone;
    return Kind::Attributes;
}

void appendEvents(std::vector<FolderWatch::Event>& events, const char* bytes, std::size_t size) {
    inotify_event event{};
    for (std::size_t offset = 0; offset + sizeof event <= size;
         offset += sizeof event + event.len) {
        std::memcpy(&event, bytes + offset, sizeof event);
        // The name is padded by at least one null.
        const char* name = event.len > 0 ? bytes + offset + sizeof event : "";
        events.push_back({kindOf(event.mask), event.wd, name});
    }
}

/// Rounded up, so that the wait does not end before the time.
int millisecondsUntil(std::optional<FolderWatch::Time> time) {
    using namespace std::chrono;
    if (!time) return -1;
    constexpr milliseconds longest = hours(1);
    const auto left = ceil<milliseconds>(*time - steady_clock::now());
    return static_cast<int>(std::clamp(left, milliseconds(0), longest).count());
}

}  // namespace

FolderWatch::Watch FolderWatch::add(const std::string& path, Interest interest) {
    if (!wakeUps_.isOpen()) wakeUps_ = FileDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!events_.isOpen()) events_ = FileDescriptor(inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    if (!events_.isOpen()) return {-1, FileFailures::lastError()};
    const auto index = static_cast<std::size_t>(interest);
    const int number =
        inotify_add_watch(events_.number(), path.c_str(), masks[index] | IN_MASK_ADD);
    if (number < 0) return {-1, FileFailures::lastError()};
    ++uses_[number][index];
    return {number, {}};
}

void FolderWatch::release(int number, Interest interest) {
    const auto entry = uses_.find(number);
    if (entry == uses_.end()) return;
    --entry->second[static_cast<std::size_t>(interest)];
    if (maskOf(entry->second) != 0) return;
    uses_.erase(entry);
    // Fails when the folder is gone, and its watch with it.
    inotify_rm_watch(events_.number(), number);
}

// The system takes a path. If that leads to another folder by now, the call has narrowed the watch
// of that folder. Its own interests are then added again, and its events count as lost.
void FolderWatch::narrow(int number, const std::string& folder, Interest from, Interest to) {
    Uses& uses = uses_[number];
    --uses[static_cast<std::size_t>(from)];
    ++uses[static_cast<std::size_t>(to)];
    const int found = inotify_add_watch(events_.number(), folder.c_str(), maskOf(uses));
    if (found == number || found < 0) return;
    const auto other = uses_.find(found);
    if (other == uses_.end()) {
        inotify_rm_watch(events_.number(), found);
        return;
    }
    inotify_add_watch(events_.number(), folder.c_str(), maskOf(other->second) | IN_MASK_ADD);
    areEventsLost_ = true;
    wake();
}

std::vector<FolderWatch::Event> FolderWatch::takeEvents() {
    std::uint64_t wakeUps = 0;
    // Fails when there was no wake-up.
    static_cast<void>(read(wakeUps_.number(), &wakeUps, sizeof wakeUps) < 0);
    std::vector<Event> events;
    if (std::exchange(areEventsLost_, false)) events.push_back({Kind::EventsLost, -1, {}});
    std::array<char, 4096> buffer{};
    for (;;) {
        const ssize_t size = read(events_.number(), buffer.data(), buffer.size());
        if (size < 0 && errno == EINTR) continue;
        if (size <= 0) return events;
        appendEvents(events, buffer.data(), static_cast<std::size_t>(size));
        // There was no further event: it would have fitted.
        if (buffer.size() - static_cast<std::size_t>(size) >= longestEvent) return events;
    }
}

FolderWatch::Descriptors FolderWatch::descriptors() const {
    return {.events = events_.number(), .wakeUps = wakeUps_.number()};
}

void FolderWatch::wait(Descriptors descriptors, std::optional<Time> until) {
    // Without a descriptor for wake-ups, this has to poll.
    const Time latest = std::chrono::steady_clock::now() + filePollingInterval;
    if (descriptors.wakeUps < 0) until = std::min(until.value_or(latest), latest);
    std::array<pollfd, 2> entries{
        {{descriptors.events, POLLIN, 0}, {descriptors.wakeUps, POLLIN, 0}}};
    poll(entries.data(), entries.size(), millisecondsUntil(until));
}

void FolderWatch::wake() {
    constexpr std::uint64_t one = 1;
    // Fails when the counter of wake-ups is full, which wakes as well.
    static_cast<void>(write(wakeUps_.number(), &one, sizeof one) < 0);
}

void FolderWatch::closeInChild() {
    events_.close();
    wakeUps_.close();
}

}  // namespace QRVPlatform
