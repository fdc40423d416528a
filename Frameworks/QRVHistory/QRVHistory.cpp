// SPDX-License-Identifier: MIT
// Taking part, and reading.

#include "QRVHistory/QRVHistory.h"

#include <algorithm>
#include <utility>

#include "Database.h"
#include "HistoryFile.h"
#include "QRVSettings/QRVSettings.h"
#include "Recorder.h"

using QRVHistoryInside::Database;
using QRVHistoryInside::Recorder;
using QRVHistoryInside::SQLiteError;
using QRVHistoryInside::Statement;

namespace {

/// Where a process that may not write to it, or cannot, can read.
Database openedToRead(const std::string& path) {
    return {path, Database::Access::Read};
}

std::string selectionOf(const QRVHistoryQuery& query) {
    std::string text =
        "SELECT saves.id, saves.time, program, process, origin, position FROM saves"
        " JOIN files ON files.id = saves.file WHERE files.path = ?";
    if (query.since) text += " AND saves.time >= ?";
    text += " AND EXISTS(SELECT 1 FROM changes WHERE save = saves.id";
    if (!query.prefix.empty()) text += " AND (key_path = ? OR substr(key_path, 1, length(?)) = ?)";
    text += ")";
    if (!query.ids.empty()) {
        text += " AND saves.id IN (?";
        for (std::size_t index = 1; index < query.ids.size(); ++index) text += ",?";
        text += ")";
    }
    text += " ORDER BY position DESC";
    if (query.limit != 0) text += " LIMIT ?";
    return text;
}

void bindSelection(Statement& saves, const QRVHistoryQuery& query) {
    saves.bind(std::string_view(QRVSettings::sharedSettings().location()));
    if (query.since) saves.bind(query.since->timeIntervalSince1970());
    if (!query.prefix.empty()) {
        const std::string below = query.prefix + ".";
        saves.bind(std::string_view(query.prefix)).bind(std::string_view(below));
        saves.bind(std::string_view(below));
    }
    for (const std::int64_t id : query.ids) saves.bind(id);
    if (query.limit != 0) saves.bind(static_cast<std::int64_t>(query.limit));
}

bool isAtOrBelow(const std::string& keyPath, const std::string& prefix) {
    return prefix.empty() || keyPath == prefix || keyPath.starts_with(prefix + ".");
}

void addChanges(Database& database, const QRVHistoryQuery& query, QRVHistorySave& save) {
    for (const auto& [keyPath, change] : database.changesOf(save.id))
        if (isAtOrBelow(keyPath, query.prefix))
            save.changes.push_back({keyPath, QRVHistoryInside::valueOf(change.before),
                                    QRVHistoryInside::valueOf(change.after)});
}

QRVHistoryAnswer answerOf(const std::string& path, const QRVHistoryQuery& query) {
    QRVHistoryAnswer answer;
    Database database = openedToRead(path);
    if (!database.hasTables()) return answer;
    Statement saves = database.connection().statement(selectionOf(query));
    bindSelection(saves, query);
    while (saves.step()) {
        QRVHistorySave save;
        save.id = saves.integer(0);
        save.time = NSDate::dateWithTimeIntervalSince1970(saves.real(1));
        save.program = saves.string(2);
        save.process = saves.integer(3);
        save.origin = saves.string(4);
        save.order = saves.real(5);
        addChanges(database, query, save);
        answer.saves.push_back(std::move(save));
    }
    return answer;
}

}  // namespace

bool QRVHistoryStart(std::string_view program) {
    if (QRVHistoryIsSwitchedOff() || QRVHistoryLocation().empty()) return false;
    if (Recorder::shared() != nullptr) return true;
    Recorder::start(program.empty() ? QRVHistoryInside::programName() : std::string(program));
    QRVSettings::sharedSettings().setFileChangeHandler([](const QRVFileChange& change) {
        if (change.by == QRVFileChange::By::ThisProcess)
            Recorder::shared()->add(change);
        else
            Recorder::shared()->addOthers();
    });
    Recorder::shared()->addOthers();
    return true;
}

bool QRVHistoryWait(std::chrono::milliseconds timeout) {
    constexpr std::chrono::hours longest(24 * 365);
    const auto deadline = std::chrono::steady_clock::now() +
                          std::clamp<std::chrono::milliseconds>(timeout, {}, longest);
    const bool areSaved = QRVSettingsWaitForSaves(timeout).state != QRVSaveStatus::State::Pending;
    Recorder* const recorder = Recorder::shared();
    return (recorder == nullptr || recorder->waitUntil(deadline)) && areSaved;
}

QRVHistoryAnswer QRVHistorySaves(const QRVHistoryQuery& query) {
    const std::string path = QRVHistoryLocation();
    QRVHistoryAnswer answer;
    if (path.empty() || QRVHistoryInside::inodeAt(path) == 0) return answer;
    try {
        answer = answerOf(path, query);
    } catch (const SQLiteError& error) {
        answer.saves.clear();
        answer.failure = error.what();
    }
    return answer;
}

QRVHistoryAnswer QRVHistoryLastChange(std::string_view keyPath) {
    return QRVHistorySaves({.prefix = std::string(keyPath), .limit = 1});
}

std::string QRVHistoryLocation() {
    return QRVHistoryInside::databasePath();
}

bool QRVHistoryIsSwitchedOff() {
    return QRVHistoryInside::isSwitchedOff();
}

std::string QRVHistoryClear() {
    const std::string path = QRVHistoryLocation();
    if (path.empty() || QRVHistoryInside::inodeAt(path) == 0) return {};
    const std::string settingsFile = QRVSettings::sharedSettings().location();
    std::string failure;
    Recorder::queue().sync([&] {
        try {
            Database database(path, Database::Access::ReadAndWrite);
            QRVHistoryInside::Transaction transaction(database.connection());
            database.removeAll(settingsFile);
            transaction.commit();
            database.connection().run("VACUUM");
        } catch (const SQLiteError& error) {
            failure = error.what();
        }
    });
    return failure;
}

const QRVHistoryTable* QRVHistoryFunctions() {
    static constexpr QRVHistoryTable functions = {
        .start = QRVHistoryStart,
        .wait = QRVHistoryWait,
        .saves = QRVHistorySaves,
        .lastChange = QRVHistoryLastChange,
        .location = QRVHistoryLocation,
        .isSwitchedOff = QRVHistoryIsSwitchedOff,
        .inverseOf = QRVHistoryInverseOf,
        .clear = QRVHistoryClear,
    };
    return &functions;
}
