// SPDX-License-Identifier: MIT
#include <sqlite3.h>

#include <cerrno>
#include <climits>
#include <utility>

#include "SQLite.h"

namespace QRVHistoryInside {

namespace {

std::error_code codeOf(sqlite3* database, int primary) {
    switch (primary) {
        case SQLITE_FULL:
            return make_error_code(std::errc::no_space_on_device);
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return make_error_code(std::errc::timed_out);
        case SQLITE_READONLY:
            return make_error_code(std::errc::read_only_file_system);
        case SQLITE_NOMEM:
            return make_error_code(std::errc::not_enough_memory);
        case SQLITE_CORRUPT:
        case SQLITE_NOTADB:
            return make_error_code(std::errc::bad_message);
        default:
            break;
    }
    const int number = sqlite3_system_errno(database);
    if (number != 0) return {number, std::generic_category()};
    return make_error_code(std::errc::io_error);
}

SQLiteError::Kind kindOf(int primary) {
    if (primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB) return SQLiteError::Kind::Damaged;
    if (primary == SQLITE_BUSY || primary == SQLITE_LOCKED) return SQLiteError::Kind::Locked;
    return SQLiteError::Kind::Other;
}

void throwUnlessDone(sqlite3* database, int result) {
    constexpr int primaryBits = 0xFF;
    const int primary = result & primaryBits;
    if (primary == SQLITE_OK || primary == SQLITE_ROW || primary == SQLITE_DONE) return;
    throw SQLiteError(kindOf(primary), codeOf(database, primary), sqlite3_errmsg(database));
}

int sizeOf(std::string_view text) {
    if (text.size() > INT_MAX) throw std::length_error("a value is too large for the history");
    return static_cast<int>(text.size());
}

}  // namespace

Statement::Statement(sqlite3* database, std::string_view text)
    : database_(database), statement_(nullptr, sqlite3_finalize) {
    sqlite3_stmt* statement = nullptr;
    check(sqlite3_prepare_v2(database, text.data(), sizeOf(text), &statement, nullptr));
    statement_.reset(statement);
}

void Statement::check(int result) const {
    throwUnlessDone(database_, result);
}

Statement& Statement::bind(std::int64_t value) {
    check(sqlite3_bind_int64(statement_.get(), ++bound_, value));
    return *this;
}

Statement& Statement::bind(double value) {
    check(sqlite3_bind_double(statement_.get(), ++bound_, value));
    return *this;
}

Statement& Statement::bind(std::string_view value) {
    check(sqlite3_bind_text(statement_.get(), ++bound_, value.data(), sizeOf(value),
                            SQLITE_TRANSIENT));
    return *this;
}

Statement& Statement::bind(const Text& value) {
    return value ? bind(std::string_view(*value)) : bindNull();
}

Statement& Statement::bindNull() {
    check(sqlite3_bind_null(statement_.get(), ++bound_));
    return *this;
}

bool Statement::step() {
    const int result = sqlite3_step(statement_.get());
    check(result);
    return result == SQLITE_ROW;
}

void Statement::run() {
    while (step()) {
    }
    check(sqlite3_reset(statement_.get()));
    bound_ = 0;
}

std::int64_t Statement::integer(int column) const {
    return sqlite3_column_int64(statement_.get(), column);
}

double Statement::real(int column) const {
    return sqlite3_column_double(statement_.get(), column);
}

std::string Statement::string(int column) const {
    return text(column).value_or(std::string());
}

Text Statement::text(int column) const {
    const void* const bytes = sqlite3_column_blob(statement_.get(), column);
    if (sqlite3_column_type(statement_.get(), column) == SQLITE_NULL) return std::nullopt;
    const int size = sqlite3_column_bytes(statement_.get(), column);
    if (bytes == nullptr) return std::string();
    return std::string(static_cast<const char*>(bytes), static_cast<std::size_t>(size));
}

// A reader, too, may have to take back what a writer was at when it was killed. Where the file may
// not be written, it is opened to be read.
Connection::Connection(const std::string& path) : database_(nullptr, sqlite3_close_v2) {
    sqlite3* database = nullptr;
    const int result = sqlite3_open_v2(path.c_str(), &database,
                                       SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    database_.reset(database);
    if (database == nullptr) throw std::bad_alloc();
    throwUnlessDone(database, result);
}

Statement Connection::statement(std::string_view text) const {
    return {database_.get(), text};
}

void Connection::run(const char* statements) const {
    throwUnlessDone(database_.get(),
                    sqlite3_exec(database_.get(), statements, nullptr, nullptr, nullptr));
}

std::int64_t Connection::lastRow() const {
    return sqlite3_last_insert_rowid(database_.get());
}

void Connection::setTimeout(std::chrono::milliseconds timeout) const {
    const int milliseconds = static_cast<int>(timeout.count());
    throwUnlessDone(database_.get(), sqlite3_busy_timeout(database_.get(), milliseconds));
}

Transaction::Transaction(const Connection& connection) : connection_(connection) {
    connection_.run("BEGIN IMMEDIATE");
}

void Transaction::commit() {
    connection_.run("COMMIT");
    isOpen_ = false;
}

Transaction::~Transaction() {
    if (!isOpen_) return;
    try {
        connection_.run("ROLLBACK");
    } catch (const SQLiteError&) {  // SQLite has rolled it back itself.
    }
}

}  // namespace QRVHistoryInside
