// SPDX-License-Identifier: MIT
#pragma once

// The tables of the history.
//
//   files    each settings file: the version that the history knows last (the head)
//   leaves   what that version holds, by key path
//   saves    each save, from one version of a file to another, with its place in the order
//   changes  what each save changed
//
// A version is one state of a settings file: inode, size and modification time tell it from all
// others, because every atomic replacement has a time of its own.

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Files/Files.h"
#include "SQLite.h"
#include "Values.h"

namespace QRVHistoryInside {

/// As long as a call waits for the process that writes.
inline constexpr std::chrono::milliseconds busyTime(2'000);

struct Version {
    std::string name;
    std::int64_t time = 0;  ///< nanoseconds since 1970

    Version() = default;
    Version(std::string itsName, std::int64_t itsTime) : name(std::move(itsName)), time(itsTime) {}
    /// The absence of a file is a version, too, of the time given here.
    Version(const QRVPlatform::FileIdentity& identity, std::int64_t timeOfAbsence);
    [[nodiscard]] bool isAbsence() const;
    bool operator==(const Version& other) const { return name == other.name; }
};

struct Head {
    std::int64_t file = 0;           ///< the row of `files`
    std::optional<Version> version;  ///< empty before the first entry
};

/// Who saved; unknown when it has no program.
struct Writer {
    std::string program;
    std::int64_t process = 0;
    std::string origin;
};

struct SaveRow {
    std::int64_t id = 0;
    double position = 0;
    double time = 0;  ///< seconds since 1970
    Version from;
    Version to;
};

/// Positions of saves between which there is none.
struct Gap {
    double begin = 0;
    double end = 0;
};

/// Functions throw SQLiteError. Used within a transaction, but for the reading of saves.
class Database {
  public:
    enum class Access { ReadAndWrite, Read };
    /// Opens the file that is there, and makes the tables unless it is only read.
    Database(const std::string& path, Access access, std::chrono::milliseconds busy = busyTime);

    [[nodiscard]] const Connection& connection() const { return connection_; }
    /// False for an empty database that is only read.
    [[nodiscard]] bool hasTables() const;

    Head head(const std::string& settingsFile);
    void setHead(Head& head, const Version& version);
    Leaves leaves(const Head& head);
    /// The leaves change with what the head's next version holds.
    void changeLeaves(const Head& head, const Changes& changes);
    void setLeaves(const Head& head, const Leaves& leaves);

    /// A save of an unknown program that ends at `to` or begins at `from`.
    std::optional<SaveRow> unknownSaveAt(const Head& head, const Version& from, const Version& to);
    /// One during which a version of that time was there.
    std::optional<SaveRow> unknownSaveAround(const Head& head, std::int64_t time);
    bool hasSave(const Head& head, const Version& to, const Writer& writer);
    Changes changesOf(std::int64_t save);
    /// What the version at the end of the save at `position` holds.
    Leaves leavesAfter(const Head& head, double position);

    /// `id` 0 for the next one.
    void insert(const Head& head, const SaveRow& row, const Writer& writer, const Changes& changes);
    void remove(std::int64_t save);
    /// Behind all others.
    double nextPosition(const Head& head);
    /// Between the save at `position` and the one before it, wide enough for others. The saves from
    /// that one on may move to make room; it is at the end then.
    Gap gapBefore(const Head& head, double position);
    /// Between the saves before and after a time.
    double positionAt(const Head& head, std::int64_t time);

    /// Removes what is too old or too much; `now` in seconds since 1970.
    void prune(double now);
    void removeAll(const std::string& settingsFile);

  private:
    Connection connection_;
};

}  // namespace QRVHistoryInside
