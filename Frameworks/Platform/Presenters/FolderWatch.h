// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "Platform/Descriptors/FileDescriptor.h"

namespace QRVPlatform {

/// Watches folders, and reports the system's events there. Not for two threads at a time, except
/// `wait` and `wake`.
class FolderWatch {
  public:
    using Time = std::chrono::steady_clock::time_point;

    /// Names: events of names and attributes in the folder. NamesAndContents: also of writing.
    enum class Interest { Names, NamesAndContents };
    enum class Kind {
        Created,
        Written,       ///< some bytes; the writer still has the file open
        WritingEnded,  ///< a file that was open for writing was closed
        Attributes,    ///< dates, permissions
        MovedIn,       ///< a rename to this name
        Gone,          ///< deleted, or renamed from this name
        FolderLost,    ///< the watched folder itself is gone, moved, or no longer watched
        EventsLost     ///< anything may have happened anywhere
    };
    struct Event {
        Kind kind;
        int watch;
        std::string name;  ///< empty when it is about the folder itself
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

    /// Watches a folder, no link to one. The number stands for the folder itself, whatever its
    /// path: the same folder has the same number, and a number is never used again for another one.
    /// To be released as often as it was added.
    Watch add(const std::string& folder, Interest interest);
    void release(int number);

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
    FileDescriptor events_;
    FileDescriptor wakeUps_;
    std::map<int, int> uses_;
};

}  // namespace QRVPlatform
