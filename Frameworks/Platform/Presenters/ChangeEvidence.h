// SPDX-License-Identifier: MIT
#pragma once

/// Is it news to a presenter that something has happened to its file? Decided in two steps, without
/// access to the disk.
///
/// First, each event of the file's name, and of the file where it is watched itself, is noted until
/// the next decision. "Writing" is somebody who has the file open and has written to it.
///
///     event                     while nobody writes              while somebody writes
///     ------------------------  -------------------------------  ---------------------------------
///     Created                   new entry; writing begins        new entry
///     Written                   writing begins                   nothing
///     Attributes                must notify                      nothing: the end of writing does
///     WritingEnded              replaced or closed               replaced or closed; writing ends
///     MovedIn                   new entry; replaced or closed    the same; writing ends
///     Gone                      must notify                      must notify; writing ends
///     FolderLost, EventsLost    nothing: they are about more than the file
///
/// Attributes of the file itself that change neither its permissions nor its owner count as an
/// event of a neighbour, because hard links that are made or deleted are reported like that. Line 7
/// finds a new date.
///
/// Whenever writing ends, by an event or because it took too long, that is "must notify". The
/// presenter's own replacement is a MovedIn. A WritingEnded while nobody writes can belong to it
/// too, when a forked child had the new file open. All other events are somebody else's.
///
/// Then the first line that applies decides:
///
///     1. must notify                                                    news
///     2. the path names what the presenter put there, unchanged         no news
///     3. replaced or closed                                             news
///     4. there is no file, and there was none last time                 no news
///     5. the path leads another way than before                         news
///     6. somebody is writing                                            no news until that ends
///     7. the file is another one than last time, or has changed         news
///     8. otherwise                                                      no news
///
/// Line 7 ignores the time of the last status change where the path is watched: another name given
/// to the file changes it, which is an event of a neighbour. Where the path is polled it counts.

#include "Platform/Files/Files.h"
#include "Platform/Presenters/FolderWatch.h"

namespace QRVPlatform {

/// What was noted since the last decision.
struct ChangeEvidence {
    bool mustNotify = false;          ///< what the presenter's own replacement does not explain
    bool isReplacedOrClosed = false;  ///< perhaps that is the presenter's own replacement
    bool hasNewEntry = false;         ///< the name is given to something: perhaps to a link
    bool isRouteDoubtful = false;     ///< the path may lead elsewhere
    bool isNeighbourTouched = false;  ///< an event of something else in the file's folder

    /// Notes an event of the file's name; returns whether somebody writes afterwards.
    bool note(FolderWatch::Kind kind, bool isWriting);
    /// A new entry alone does not: it matters when it is a link, and then the route is doubtful.
    [[nodiscard]] bool wantsDecision() const {
        return mustNotify || isReplacedOrClosed || isRouteDoubtful || isNeighbourTouched;
    }
};

/// What is found when it is time to decide.
struct FoundFile {
    FileIdentity now;
    FileIdentity lastTime;    ///< when the presenter was notified, or replaced the file
    bool isOwn = false;       ///< what the presenter put there, unchanged
    bool isRouteNew = false;  ///< the path leads another way than before
    bool isWriting = false;   ///< somebody writes
    bool isPolled = false;    ///< the path cannot be watched
};

bool isNews(const ChangeEvidence& evidence, const FoundFile& file);

}  // namespace QRVPlatform
