// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "Platform/Descriptors/FileDescriptor.h"

namespace QRVPlatform {

/// Watches folders and files, and reports the system's events there. Not for two threads at a time,
/// except `wait` and `wake`.
class FolderWatch {
  public:
    using Time = std::chrono::steady_clock::time_point;

    /// What to report, of a folder: Names: events of names and attributes in it; NamesAndContents:
    /// also of writing; NamesInUse: names that are deleted or renamed, and nothing of a file that
    /// is created, written and closed. Of a file: Contents: writing and attributes.
    enum class Interest { Names, NamesAndContents, NamesInUse, Contents };
    enum class Kind {
        Created,
        Written,       ///< some bytes; the writer still has the file open
        WritingEnded,  ///< a file that was open for writing was closed
        Attributes,    ///< dates, permissions
        MovedIn,       ///< a rename to this name
        Gone,          ///< deleted, or renamed from this name
        FolderLost,    ///< what is watched itself is gone, moved, or no longer watched
        EventsLost     ///< anything may have happened anywhere
    };
    struct Event {
        Kind kind;
        int watch;
        std::string name;  ///< empty when it is about what is watched itself
    };
    struct Watch {
        int number;  ///< -1 on error
        std::error_code error;
    };
    struct Descriptors {
        int events = -1;
        int wakeUps = -1;
    };

    FolderWatch() = default;
    FolderWatch(const FolderWatch&) = delete;
    FolderWatch& operator=(const FolderWatch&) = delete;

    /// Watches a folder, or a file for `Contents`, no link to one. The number stands for the
    /// folder or file itself, whatever its path: the same one has the same number, and a number is
    /// never used again for another one. To be released as often as it was added. More may be
    /// reported than what is of interest.
    Watch add(const std::string& path, Interest interest);
    void release(int number, Interest interest);
    /// Replaces an interest in an added folder by a smaller one. `folder` is the last known path.
    void narrow(int number, const std::string& folder, Interest from, Interest to);

    /// The events since the last call, in order.
    std::vector<Event> takeEvents();

    /// What `wait` needs. Valid forever, but `add` may open others.
    [[nodiscard]] Descriptors descriptors() const;
    /// Returns when there are events, after `wake`, at the time given, or earlier.
    static void wait(Descriptors descriptors, std::optional<Time> until);
    void wake();

    /// In a forked child: closes the descriptors, so that the parent keeps its events.
    void closeInChild();

  private:
    using Uses = std::array<int, 4>;  ///< by interest

    FileDescriptor events_;
    FileDescriptor wakeUps_;
    std::map<int, Uses> uses_;
    bool areEventsLost_ = false;
};

}  // namespace QRVPlatform
