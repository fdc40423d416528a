// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "Platform/Presenters/ChangeEvidence.h"
#include "Platform/Presenters/OwnFile.h"
#include "Platform/Presenters/PresenterNotifications.h"
#include "Platform/Presenters/RouteWatch.h"

namespace QRVPlatform {

/// Finds out when something has happened to a presenter's file that is news to it. All calls happen
/// under one lock; the notification is sent without it.
class ChangeDetector {
  public:
    using Time = FolderWatch::Time;

    ChangeDetector(std::string absolutePath, std::shared_ptr<PresenterNotifications> notifications);

    /// Changes are noticed from here on.
    void begin(FolderWatch& folders, Time now);
    void end(FolderWatch& folders);
    /// In a forked child: one that goes on from there with the next `settle`, which is news to the
    /// presenter. Closes what is open here.
    std::unique_ptr<ChangeDetector> moveToChild();

    void note(const FolderWatch::Event& event);
    /// Decides on what was noted, and on what is due by now.
    void settle(FolderWatch& folders, Time now);
    /// Whether the presenter has to be notified, since the last call.
    bool takeNews() { return std::exchange(hasNews_, false); }
    /// Why the file has to be polled since the last call: the system has no means left to watch it.
    std::error_code takeShortage() { return std::exchange(newShortage_, {}); }
    /// When to settle at the latest, events or none.
    [[nodiscard]] std::optional<Time> dueTime() const;

    /// Puts a file that the presenter has written in place; the event of that is its own.
    std::error_code replace(OwnFile newFile, const std::function<std::error_code()>& putInPlace);

    [[nodiscard]] const std::shared_ptr<PresenterNotifications>& notifications() const {
        return notifications_;
    }
    [[nodiscard]] const std::string& path() const { return watch_.path(); }

  private:
    struct FileEvent {
        FolderWatch::Kind kind;
        std::optional<int> watch;  ///< of the file itself; empty when it is of its name
    };
    [[nodiscard]] bool hasNameEvent() const;
    void noteFileEvents(Time now);
    void noteFileEvent(FolderWatch::Kind kind, Time now);
    void noteTime(Time now);
    bool arm(FolderWatch& folders, Time now);

    std::shared_ptr<PresenterNotifications> notifications_;
    RouteWatch watch_;
    ChangeEvidence evidence_;
    /// Since the last decision, in order.
    std::vector<FileEvent> fileEvents_;
    /// What the presenter was last notified of, or has put in place.
    FileIdentity lastSeen_;
    OwnFile ownFile_;
    /// Set while somebody writes: when that counts as ended at the latest.
    std::optional<Time> writingEnd_;
    /// Set while the path cannot be watched: when to poll it next.
    std::optional<Time> nextPoll_;
    std::error_code newShortage_;
    bool isShort_ = false;
    bool hasNews_ = false;
};

}  // namespace QRVPlatform
