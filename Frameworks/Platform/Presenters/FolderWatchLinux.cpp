// SPDX-License-Identifier: MIT
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>

#include "Platform/Files/FileFailures.h"
#include "Platform/Files/NSFilePresenter.h"
#include "Platform/Presenters/FolderWatch.h"

namespace QRVPlatform {

namespace {

using Kind = FolderWatch::Kind;

// Without IN_EXCL_UNLINK a writer of the file that was replaced would look like one of the new
// file.
constexpr std::uint32_t namesMask = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO |
                                    IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR |
                                    IN_DONT_FOLLOW | IN_EXCL_UNLINK | IN_MASK_ADD;
constexpr std::uint32_t contentsMask = namesMask | IN_MODIFY | IN_CLOSE_WRITE;

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

FolderWatch::Watch FolderWatch::add(const std::string& folder, Interest interest) {
    if (!wakeUps_.isOpen()) wakeUps_ = FileDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!events_.isOpen()) events_ = FileDescriptor(inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    if (!events_.isOpen()) return {-1, FileFailures::lastError()};
    const int number =
        inotify_add_watch(events_.number(), folder.c_str(),
                          interest == Interest::NamesAndContents ? contentsMask : namesMask);
    if (number < 0) return {-1, FileFailures::lastError()};
    ++uses_[number];
    return {number, {}};
}

void FolderWatch::release(int number) {
    const auto entry = uses_.find(number);
    if (entry == uses_.end() || --entry->second > 0) return;
    uses_.erase(entry);
    // Fails when the folder is gone, and its watch with it.
    inotify_rm_watch(events_.number(), number);
}

std::vector<FolderWatch::Event> FolderWatch::takeEvents() {
    std::uint64_t wakeUps = 0;
    // Fails when there was no wake-up.
    static_cast<void>(read(wakeUps_.number(), &wakeUps, sizeof wakeUps) < 0);
    std::vector<Event> events;
    std::array<char, 16384> buffer{};
    for (;;) {
        const ssize_t size = read(events_.number(), buffer.data(), buffer.size());
        if (size < 0 && errno == EINTR) continue;
        if (size <= 0) return events;
        appendEvents(events, buffer.data(), static_cast<std::size_t>(size));
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
