// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <system_error>

#include "Platform/Files/Files.h"
#include "Platform/Presenters/OwnFile.h"
#include "Platform/Presenters/PresenterNotifications.h"
#include "Platform/Presenters/RouteWatch.h"

namespace QRVPlatform {

/// One presenter and the file that it presents: makes notifications of events. All calls happen
/// under one lock.
class ChangeDetector {
  public:
    using Time = FolderWatch::Time;

    ChangeDetector(std::string absolutePath, std::shared_ptr<PresenterNotifications> notifications);

    /// Changes are noticed from here on.
    void begin(FolderWatch& folders, Time now);
    void end(FolderWatch& folders);
    /// In a forked child: lets go of what is open.
    void closeInChild() { ownFile_ = {}; }

    void note(const FolderWatch::Event& event, Time now);
    /// Draws the conclusions from what was noted, and from the time.
    void settle(FolderWatch& folders, Time now);
    /// When to settle at the latest, events or none.
    [[nodiscard]] std::optional<Time> dueTime() const;

    /// Puts a file that the presenter has written in place; the event of that is its own.
    std::error_code replace(OwnFile newFile, const std::function<std::error_code()>& putInPlace);

    [[nodiscard]] PresenterNotifications& notifications() const { return *notifications_; }

  private:
    /// What was noted since the presentation was last settled.
    struct Noted {
        bool isChanged = false;        ///< certainly, and not by the presenter
        bool isPerhapsOurs = false;    ///< there is a file that is new, or was closed
        bool isPerhapsALink = false;   ///< something new is there
        bool isRouteDoubtful = false;  ///< the path may lead elsewhere
        bool isLookWanted = false;     ///< something happened nearby
    };
    void noteFileEvent(FolderWatch::Kind kind, Time now);
    void writingHasEnded();
    void noteTime(Time now);
    bool arm(FolderWatch& folders, Time now);
    [[nodiscard]] bool isNews(const FileIdentity& state, bool isRouteNew) const;
    [[nodiscard]] bool differsFromLastSeen(const FileIdentity& state) const;

    std::shared_ptr<PresenterNotifications> notifications_;
    RouteWatch watch_;
    Noted noted_;
    /// The state that the presenter was notified of, or has made.
    FileIdentity lastSeen_;
    OwnFile ownFile_;
    /// Somebody is writing to the file: when to tell at the latest.
    std::optional<Time> writingEnd_;
    /// The path cannot be watched: when to look again.
    std::optional<Time> nextLook_;
};

}  // namespace QRVPlatform
