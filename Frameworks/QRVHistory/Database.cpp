// SPDX-License-Identifier: MIT
// Why a rollback journal, and not a write-ahead log: that needs memory shared by all processes,
// which network file systems do not have, and homes may be on one. Locks of fcntl, which is all
// that a rollback journal needs, work there. Writers wait for each other either way, and readers
// are rare. The journal is cut to no bytes and not removed, which spares changes of the folder.
//
// NORMAL syncs before and after each transaction, but leaves out one sync that only a loss of power
// at a bad moment on an old file system would need; then the database is renamed as damaged.

#include "Database.h"

#include <algorithm>
#include <chrono>
#include <vector>

#include "QRVHistory/QRVHistory.h"

namespace QRVHistoryInside {

namespace {

constexpr std::int64_t layoutVersion = 1;
constexpr const char* absence = "none:";

constexpr const char* tables = R"(
CREATE TABLE IF NOT EXISTS files(
    id INTEGER PRIMARY KEY, path TEXT UNIQUE NOT NULL, version TEXT, time INTEGER);
CREATE TABLE IF NOT EXISTS leaves(
    file INTEGER NOT NULL, key_path TEXT NOT NULL, value TEXT NOT NULL,
    PRIMARY KEY(file, key_path)) WITHOUT ROWID;
CREATE TABLE IF NOT EXISTS saves(
    id INTEGER PRIMARY KEY AUTOINCREMENT, file INTEGER NOT NULL, position REAL NOT NULL,
    time REAL NOT NULL, program TEXT, process INTEGER, origin TEXT,
    from_version TEXT NOT NULL, from_time INTEGER NOT NULL,
    to_version TEXT NOT NULL, to_time INTEGER NOT NULL,
    changes INTEGER NOT NULL, bytes INTEGER NOT NULL);
CREATE INDEX IF NOT EXISTS saves_by_position ON saves(file, position);
CREATE INDEX IF NOT EXISTS saves_by_start ON saves(file, from_version);
CREATE INDEX IF NOT EXISTS saves_by_end ON saves(file, to_version);
CREATE INDEX IF NOT EXISTS saves_by_time ON saves(time);
CREATE TABLE IF NOT EXISTS changes(
    save INTEGER NOT NULL, key_path TEXT NOT NULL, before TEXT, after TEXT,
    PRIMARY KEY(save, key_path)) WITHOUT ROWID;
CREATE INDEX IF NOT EXISTS changes_by_key_path ON changes(key_path, save);
PRAGMA user_version = 1;
)";

constexpr const char* rowColumns =
    "SELECT id, position, time, from_version, from_time, to_version, to_time FROM saves ";

SaveRow rowOf(const Statement& found) {
    return {found.integer(0), found.real(1), found.real(2),
            Version(found.string(3), found.integer(4)), Version(found.string(5), found.integer(6))};
}

std::optional<SaveRow> firstRow(Statement& statement) {
    if (!statement.step()) return std::nullopt;
    return rowOf(statement);
}

std::int64_t bytesOf(const Changes& changes) {
    std::size_t bytes = 0;
    for (const auto& [keyPath, change] : changes) {
        bytes += keyPath.size();
        if (change.before) bytes += change.before->size();
        if (change.after) bytes += change.after->size();
    }
    return static_cast<std::int64_t>(bytes);
}

}  // namespace

Version::Version(const QRVPlatform::FileIdentity& identity, std::int64_t timeOfAbsence)
    : name(absence), time(timeOfAbsence) {
    if (identity.isMissing()) {
        name += std::to_string(time);
        return;
    }
    time = identity.modificationTime;
    name = std::to_string(identity.inode) + ":" + std::to_string(identity.size) + ":" +
           std::to_string(time);
}

bool Version::isAbsence() const {
    return name.starts_with(absence);
}

Database::Database(const std::string& path, Access access, std::chrono::milliseconds busy)
    : connection_(path) {
    connection_.setTimeout(busy);
    Statement layout = connection_.statement("PRAGMA user_version");
    layout.step();
    const std::int64_t version = layout.integer(0);
    layout.run();
    if (version != 0 && version != layoutVersion)
        throw SQLiteError(SQLiteError::Kind::Other, make_error_code(std::errc::not_supported),
                          "the history was written by a later version");
    if (access == Access::Read) return;
    connection_.run(
        "PRAGMA journal_mode = TRUNCATE; PRAGMA synchronous = NORMAL;"
        "PRAGMA secure_delete = ON; PRAGMA trusted_schema = OFF");
    if (version == layoutVersion) return;
    Transaction transaction(connection_);
    connection_.run(tables);
    transaction.commit();
}

bool Database::hasTables() const {
    Statement found =
        connection_.statement("SELECT count(*) FROM sqlite_master WHERE name = 'saves'");
    found.step();
    return found.integer(0) != 0;
}

Head Database::head(const std::string& settingsFile) {
    Statement found = connection_.statement("SELECT id, version, time FROM files WHERE path = ?");
    found.bind(std::string_view(settingsFile));
    if (!found.step()) {
        connection_.statement("INSERT INTO files(path) VALUES(?)")
            .bind(std::string_view(settingsFile))
            .run();
        return {connection_.lastRow(), std::nullopt};
    }
    Head head{found.integer(0), std::nullopt};
    if (const Text version = found.text(1)) head.version = Version(*version, found.integer(2));
    return head;
}

void Database::setHead(Head& head, const Version& version) {
    connection_.statement("UPDATE files SET version = ?, time = ? WHERE id = ?")
        .bind(std::string_view(version.name))
        .bind(version.time)
        .bind(head.file)
        .run();
    head.version = version;
}

Leaves Database::leaves(const Head& head) {
    Leaves leaves;
    Statement found = connection_.statement("SELECT key_path, value FROM leaves WHERE file = ?");
    found.bind(head.file);
    while (found.step()) leaves.emplace(found.string(0), found.string(1));
    return leaves;
}

void Database::changeLeaves(const Head& head, const Changes& changes) {
    Statement remove = connection_.statement("DELETE FROM leaves WHERE file = ? AND key_path = ?");
    Statement store = connection_.statement(
        "INSERT OR REPLACE INTO leaves(file, key_path, value) VALUES(?, ?, ?)");
    for (const auto& [keyPath, change] : changes) {
        Statement& statement = change.after ? store : remove;
        statement.bind(head.file).bind(std::string_view(keyPath));
        if (change.after) statement.bind(change.after);
        statement.run();
    }
}

void Database::setLeaves(const Head& head, const Leaves& leaves) {
    connection_.statement("DELETE FROM leaves WHERE file = ?").bind(head.file).run();
    Statement store =
        connection_.statement("INSERT INTO leaves(file, key_path, value) VALUES(?, ?, ?)");
    for (const auto& [keyPath, value] : leaves)
        store.bind(head.file).bind(std::string_view(keyPath)).bind(std::string_view(value)).run();
}

std::optional<SaveRow> Database::unknownSaveAt(const Head& head, const Version& from,
                                               const Version& to) {
    Statement found = connection_.statement(std::string(rowColumns) +
                                            "WHERE file = ? AND program IS NULL"
                                            " AND (to_version = ? OR from_version = ?)"
                                            " ORDER BY position DESC LIMIT 1");
    found.bind(head.file).bind(std::string_view(to.name)).bind(std::string_view(from.name));
    return firstRow(found);
}

std::optional<SaveRow> Database::unknownSaveAround(const Head& head, std::int64_t time) {
    Statement found =
        connection_.statement(std::string(rowColumns) +
                              "WHERE file = ? AND program IS NULL AND from_time < ? AND to_time > ?"
                              " ORDER BY position DESC LIMIT 1");
    found.bind(head.file).bind(time).bind(time);
    return firstRow(found);
}

bool Database::hasSave(const Head& head, const Version& to, const Writer& writer) {
    Statement found = connection_.statement(
        "SELECT 1 FROM saves WHERE file = ? AND to_version = ? AND program = ? AND process = ?");
    found.bind(head.file)
        .bind(std::string_view(to.name))
        .bind(std::string_view(writer.program))
        .bind(writer.process);
    return found.step();
}

Changes Database::changesOf(std::int64_t save) {
    Changes changes;
    Statement found =
        connection_.statement("SELECT key_path, before, after FROM changes WHERE save = ?");
    found.bind(save);
    while (found.step()) changes.emplace(found.string(0), Change{found.text(1), found.text(2)});
    return changes;
}

Leaves Database::leavesAfter(const Head& head, double position) {
    Leaves result = leaves(head);
    Statement later = connection_.statement(
        "SELECT key_path, before, after FROM changes JOIN saves ON saves.id = changes.save"
        " WHERE file = ? AND position > ? ORDER BY position DESC");
    later.bind(head.file).bind(position);
    while (later.step()) takeBack({{later.string(0), {later.text(1), later.text(2)}}}, result);
    return result;
}

void Database::insert(const Head& head, const SaveRow& row, const Writer& writer,
                      const Changes& changes) {
    Statement save = connection_.statement(
        "INSERT INTO saves(id, file, position, time, program, process, origin, from_version,"
        " from_time, to_version, to_time, changes, bytes) VALUES(?,?,?,?,?,?,?,?,?,?,?,?,?)");
    row.id == 0 ? save.bindNull() : save.bind(row.id);
    save.bind(head.file).bind(row.position).bind(row.time);
    if (writer.program.empty())
        save.bindNull().bindNull().bindNull();
    else
        save.bind(std::string_view(writer.program))
            .bind(writer.process)
            .bind(std::string_view(writer.origin));
    save.bind(std::string_view(row.from.name)).bind(row.from.time);
    save.bind(std::string_view(row.to.name)).bind(row.to.time);
    save.bind(std::max<std::int64_t>(1, static_cast<std::int64_t>(changes.size())))
        .bind(bytesOf(changes))
        .run();
    const std::int64_t id = connection_.lastRow();
    Statement store = connection_.statement(
        "INSERT INTO changes(save, key_path, before, after) VALUES(?, ?, ?, ?)");
    for (const auto& [keyPath, change] : changes)
        store.bind(id).bind(std::string_view(keyPath)).bind(change.before).bind(change.after).run();
}

void Database::remove(std::int64_t save) {
    connection_.statement("DELETE FROM changes WHERE save = ?").bind(save).run();
    connection_.statement("DELETE FROM saves WHERE id = ?").bind(save).run();
}

double Database::nextPosition(const Head& head) {
    Statement found = connection_.statement("SELECT max(position) FROM saves WHERE file = ?");
    found.bind(head.file).step();
    return found.real(0) + 1;
}

// A gap that is halved again and again would end with equal positions.
Gap Database::gapBefore(const Head& head, double position) {
    constexpr double smallestGap = 1e-4;
    constexpr double room = 1'000;
    Statement found =
        connection_.statement("SELECT max(position) FROM saves WHERE file = ? AND position < ?");
    found.bind(head.file).bind(position).step();
    const double begin = found.text(0) ? found.real(0) : position - 1;
    if (position - begin >= smallestGap) return {begin, position};
    connection_
        .statement("UPDATE saves SET position = position + ? WHERE file = ? AND position >= ?")
        .bind(room)
        .bind(head.file)
        .bind(position)
        .run();
    return {begin, position + room};
}

double Database::positionAt(const Head& head, std::int64_t time) {
    Statement found =
        connection_.statement("SELECT min(position) FROM saves WHERE file = ? AND to_time > ?");
    found.bind(head.file).bind(time).step();
    if (!found.text(0)) return nextPosition(head);
    const Gap gap = gapBefore(head, found.real(0));
    return (gap.begin + gap.end) / 2;
}

void Database::prune(double now) {
    const double oldest =
        now - std::chrono::duration<double>(std::chrono::seconds(QRVHistoryMaximumAge)).count();
    Statement old = connection_.statement(
        "SELECT id FROM saves WHERE time < ? AND id <> (SELECT max(id) FROM saves)");
    old.bind(oldest);
    std::vector<std::int64_t> excess;
    while (old.step()) excess.push_back(old.integer(0));
    for (const std::int64_t save : excess) remove(save);

    Statement sums = connection_.statement("SELECT sum(changes), sum(bytes) FROM saves");
    sums.step();
    std::int64_t changes = sums.integer(0);
    std::int64_t bytes = sums.integer(1);
    const auto isTooMuch = [&] {
        return changes > static_cast<std::int64_t>(QRVHistoryMaximumChanges) ||
               bytes > QRVHistoryMaximumBytes;
    };
    if (!isTooMuch()) return;
    Statement saves = connection_.statement(
        "SELECT id, changes, bytes FROM saves WHERE id <> (SELECT max(id) FROM saves)"
        " ORDER BY time, id");
    excess.clear();
    while (isTooMuch() && saves.step()) {
        excess.push_back(saves.integer(0));
        changes -= saves.integer(1);
        bytes -= saves.integer(2);
    }
    for (const std::int64_t save : excess) remove(save);
}

void Database::removeAll(const std::string& settingsFile) {
    const Head file = head(settingsFile);
    for (const char* const text :
         {"DELETE FROM changes WHERE save IN (SELECT id FROM saves WHERE file = ?)",
          "DELETE FROM saves WHERE file = ?", "DELETE FROM leaves WHERE file = ?",
          "DELETE FROM files WHERE id = ?"})
        connection_.statement(text).bind(file.file).run();
}

}  // namespace QRVHistoryInside
