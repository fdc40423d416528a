// SPDX-License-Identifier: MIT
#include "Platform/Presenters/ChangeEvidence.h"

#include "Platform/Presenters/OwnFile.h"

namespace QRVPlatform {

bool ChangeEvidence::note(FolderWatch::Kind kind, bool isWriting) {
    using Kind = FolderWatch::Kind;
    switch (kind) {
        case Kind::Created:
            hasNewEntry = true;
            return true;
        case Kind::Written:
            return true;
        case Kind::Attributes:
            mustNotify = mustNotify || !isWriting;
            return isWriting;
        case Kind::WritingEnded:
            isReplacedOrClosed = true;
            mustNotify = mustNotify || isWriting;
            return false;
        case Kind::MovedIn:
            hasNewEntry = isReplacedOrClosed = true;
            mustNotify = mustNotify || isWriting;
            return false;
        case Kind::Gone:
            mustNotify = true;
            return false;
        case Kind::FolderLost:
        case Kind::EventsLost:
            break;
    }
    return isWriting;
}

bool isNews(const ChangeEvidence& evidence, const FoundFile& file) {
    if (evidence.mustNotify) return true;
    if (file.isOwn) return false;
    if (evidence.isReplacedOrClosed) return true;
    if (file.now.isMissing() && file.lastTime.isMissing()) return false;
    if (file.isRouteNew) return true;
    if (file.isWriting) return false;
    return file.isPolled ? file.now != file.lastTime : !isSameFile(file.now, file.lastTime);
}

}  // namespace QRVPlatform
