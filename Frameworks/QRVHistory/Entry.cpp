// SPDX-License-Identifier: MIT
// What is entered, by whom, in which order.
//
// The states of a settings file, its versions, are a chain: each atomic replacement makes the next
// one. The history knows a version (the head) and what it holds. A save of a process that takes
// part is known exactly: from which version, to which version, with both trees, as they were under
// the writers' lock. Its entry comes later, from another thread, and other processes may enter
// something first. All others only see that the file has another version than the head.
//
// So whoever sees a version that is not the head enters the difference as one save of an unknown
// program, and makes that version the head. Nobody waits for the process that may have saved it.
// When that process enters its save, the save is found among the unknown ones by its versions, and
// taken out of it:
//
// 1. The head is the version that the save replaced. The save is appended.
// 2. An unknown save ends or begins with a version of the save. It is split.
// 3. The save has made the head, and nothing unknown did: the history began with it. The save is
//    inserted, and the head stays.
// 4. The save is newer than the head: others have saved in between, and have not entered that yet.
//    Their part is appended as of an unknown program, and then the save.
// 5. An unknown save began before the save, and ended after it. It is split.
// 6. The save is older than all that is unknown. It is inserted by its time, and the head stays.
//
// Splitting: an unknown save from w to z, with the own save from x to y between them, becomes an
// unknown save from w to x, the own one, and an unknown one from y to z. What the file held at w
// and z follows from the head and the saves since; what it held at x and y is known. So it is the
// same in the end, whoever enters first, and nothing is entered twice. An unknown save may have no
// changes: what one save in it has done, another may have taken back. It is kept for those saves,
// and no query finds it.
//
// What happens when a process dies:
// - before its save replaced the file: there is nothing to enter.
// - between the save and its entry: the next one who looks enters it as of an unknown program, and
//   it stays so.
// - within the transaction of an entry: SQLite takes the transaction back; as above.
// - after the transaction: nothing is missing.
//
// "Newer" goes by modification times, which differ for all versions. Where the clock was set back,
// a save that is the file's current version counts as newer, too. Other saves of such a moment may
// be entered by 6 and their values once more as unknown.
//
// The absence of a file has no identity. So an absence that a save has ended counts as one of just
// before it, and one that is found as one of then. Only these two are compared by the time at which
// the save gave the new file its name.
//
// A damaged file has no version here: nobody knows what it holds. A save that replaces it changes
// what differs from the head. When others have entered that as of an unknown program, it becomes
// the save's; when it is only a part of what they entered, it stays unknown.

#include "Entry.h"

#include <utility>
#include <vector>

#include "Platform/Files/Files.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"

namespace QRVHistoryInside {

namespace {

constexpr double nanosecondsPerSecond = 1e9;
/// Of the clock that gives files their change times, in nanoseconds.
constexpr std::int64_t largestGranularity = 10'000'000;

/// The settings file as it is now.
struct Reading {
    Version version;
    NSDictionary tree = nullptr;
    bool isWhole = false;
};

// Not coordinated: that would wait for writers, and what replaces the file is whole anyway. A file
// that is written in place is read at the next occasion.
Reading readFile(const std::string& path, std::int64_t timeNow) {
    constexpr int mostTries = 3;
    Reading reading;
    for (int tries = 0; tries < mostTries && !reading.isWhole; ++tries) {
        const auto contents =
            QRVPlatform::contentsOfFile(path, NSPropertyListSerialization::maximumSize);
        if (contents.error && !contents.isMissing()) return reading;
        const auto now = QRVPlatform::identityOfFileAtPath(path);
        reading.version = Version(now, timeNow);
        if (contents.isMissing()) {
            reading.isWhole = now.isMissing();
            continue;
        }
        if (now != contents.identity) continue;
        reading.tree =
            NSPropertyListSerialization::propertyListWithData(contents.bytes).value.dictionary();
        reading.isWhole = contents.bytes.empty() || !reading.tree.isNull();
        if (!reading.isWhole) return reading;  // Damaged.
    }
    return reading;
}

}  // namespace

Entry::Entry(Database& database, std::string settingsFile, double now)
    : database_(database),
      settingsFile_(std::move(settingsFile)),
      now_(now),
      head_(database.head(settingsFile_)) {}

bool Entry::isAtHead(const Version& version) const {
    return head_.version && *head_.version == version;
}

// An absence may have been found while the new file had its modification time and not yet its name.
bool Entry::isNewerThanHead(const Version& version, std::int64_t timeOfName) const {
    const std::int64_t time = head_.version->isAbsence() ? timeOfName : version.time;
    return time > head_.version->time ||
           Version(QRVPlatform::identityOfFileAtPath(settingsFile_), 0) == version;
}

double Entry::timeOf(const Version& version) const {
    const double time = static_cast<double>(version.time) / nanosecondsPerSecond;
    const bool isCredible = version.time > head_.version->time && time <= now_;
    return isCredible ? time : now_;
}

void Entry::begin(const Version& version, const NSDictionary& tree) {
    database_.setLeaves(head_, leavesOf(tree));
    database_.setHead(head_, version);
}

void Entry::append(const Part& part) {
    const bool isUnknown = part.writer.program.empty();
    if (!part.changes.empty() || (isUnknown && part.from != part.to)) {
        database_.insert(head_, {0, database_.nextPosition(head_), part.time, part.from, part.to},
                         part.writer, part.changes);
        database_.changeLeaves(head_, part.changes);
    }
    database_.setHead(head_, part.to);
}

void Entry::appendUnknown(const Version& to, const NSDictionary& tree) {
    append({*head_.version, to, {}, changesSince(database_.leaves(head_), tree), timeOf(to)});
}

void Entry::insertLate(const Part& own) {
    if (own.changes.empty()) return;
    database_.insert(head_,
                     {0, database_.positionAt(head_, own.to.time), own.time, own.from, own.to},
                     own.writer, own.changes);
}

void Entry::split(const SaveRow& unknown, const Part& own, const QRVFileChange& change) {
    Leaves leaves = database_.leavesAfter(head_, unknown.position);
    Part last{own.to, unknown.to, {}, {}, unknown.time};
    for (auto& [keyPath, back] : changesSince(leaves, change.after))
        last.changes.emplace(keyPath, Change{std::move(back.after), std::move(back.before)});
    takeBack(database_.changesOf(unknown.id), leaves);
    Part first{unknown.from, own.from, {}, changesSince(leaves, change.before), unknown.time};
    first.time = static_cast<double>(own.from.time) / nanosecondsPerSecond;

    std::vector<const Part*> parts;
    for (const Part* const part : {&std::as_const(first), &own, &std::as_const(last)})
        if (part->from != part->to) parts.push_back(part);
    const Gap gap = database_.gapBefore(head_, unknown.position);
    const double step = (gap.end - gap.begin) / static_cast<double>(parts.size());
    database_.remove(unknown.id);
    double position = gap.begin;
    for (const Part* part : parts) {
        position = part == parts.back() ? gap.end : position + step;
        // The number of the unknown save stays with the last part.
        const std::int64_t id = part == parts.back() ? unknown.id : 0;
        database_.insert(head_, {id, position, part->time, part->from, part->to}, part->writer,
                         part->changes);
    }
}

void Entry::enterAfterDamage(const OwnSave& save, const Version& to) {
    const QRVFileChange& change = save.change;
    if (!head_.version) return begin(to, change.after);
    if (const auto unknown = database_.unknownSaveAt(head_, to, to); unknown && unknown->to == to) {
        const Changes changes = database_.changesOf(unknown->id);
        database_.remove(unknown->id);
        return database_.insert(head_, *unknown, save.writer, changes);
    }
    if (isAtHead(to) || !isNewerThanHead(to, change.fileAfter.changeTime)) return;
    const Changes changes = changesSince(database_.leaves(head_), change.after);
    append({*head_.version, to, save.writer, changes, timeOf(to)});
}

void Entry::enter(const OwnSave& save) {
    const QRVFileChange& change = save.change;
    const Version to(change.fileAfter, 0);
    if (!change.isBeforeKnown) return enterAfterDamage(save, to);
    const Version from(change.fileBefore, to.time - 1);
    if (!head_.version) begin(from, change.before);
    // A transaction may have been committed although its end was reported as an error.
    if (database_.hasSave(head_, to, save.writer)) return;
    const Part own{from, to, save.writer, changesBetween(change.before, change.after),
                   static_cast<double>(to.time) / nanosecondsPerSecond};
    if (isAtHead(from)) return append(own);  // 1
    if (const auto unknown = database_.unknownSaveAt(head_, from, to))
        return split(*unknown, own, change);                 // 2
    if (isAtHead(to)) return insertLate(own);                // 3
    if (isNewerThanHead(to, change.fileAfter.changeTime)) {  // 4
        appendUnknown(from, change.before);
        return append(own);
    }
    if (const auto unknown = database_.unknownSaveAround(head_, to.time))
        return split(*unknown, own, change);  // 5
    insertLate(own);                          // 6
}

void Entry::enterOthers() {
    const auto timeNow =
        static_cast<std::int64_t>(now_ * nanosecondsPerSecond) - largestGranularity;
    const Version now(QRVPlatform::identityOfFileAtPath(settingsFile_), timeNow);
    const bool isStillAbsent = now.isAbsence() && head_.version && head_.version->isAbsence();
    if (isStillAbsent || isAtHead(now)) return;
    const Reading reading = readFile(settingsFile_, timeNow);
    if (!reading.isWhole || isAtHead(reading.version)) return;
    if (!head_.version) return begin(reading.version, reading.tree);
    appendUnknown(reading.version, reading.tree);
}

}  // namespace QRVHistoryInside
