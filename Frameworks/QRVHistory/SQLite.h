// SPDX-License-Identifier: MIT
#pragma once

// A connection to an SQLite database, as much of it as the history uses.

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace QRVHistoryInside {

class SQLiteError : public std::runtime_error {
  public:
    enum class Kind { Damaged, Locked, Other };
    SQLiteError(Kind kind, std::error_code code, const std::string& text)
        : std::runtime_error(text), kind_(kind), code_(code) {}
    [[nodiscard]] Kind kind() const { return kind_; }
    [[nodiscard]] std::error_code code() const { return code_; }

  private:
    Kind kind_;
    std::error_code code_;
};

/// A value that is bound to a statement, or a column of its result; empty is NULL.
using Text = std::optional<std::string>;

/// Throws SQLiteError in every function. Used on one thread.
class Statement {
  public:
    Statement(sqlite3* database, std::string_view text);

    Statement& bind(std::int64_t value);
    Statement& bind(double value);
    Statement& bind(std::string_view value);
    Statement& bind(const Text& value);
    Statement& bindNull();

    /// Goes to the next row; false when there is none.
    bool step();
    /// Runs to the end, and may then be bound again.
    void run();

    /// Of the current row, counted from 0.
    [[nodiscard]] std::int64_t integer(int column) const;
    [[nodiscard]] double real(int column) const;
    [[nodiscard]] std::string string(int column) const;
    [[nodiscard]] Text text(int column) const;

  private:
    void check(int result) const;

    sqlite3* database_;
    std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement_;
    int bound_ = 0;
};

class Connection {
  public:
    /// Opens a file that is there.
    explicit Connection(const std::string& path);

    [[nodiscard]] Statement statement(std::string_view text) const;
    void run(const char* statements) const;
    [[nodiscard]] std::int64_t lastRow() const;
    /// How long a statement waits for another process.
    void setTimeout(std::chrono::milliseconds timeout) const;

  private:
    std::unique_ptr<sqlite3, int (*)(sqlite3*)> database_;
};

/// Keeps other writers out until its end, which takes back what was not committed.
class Transaction {
  public:
    explicit Transaction(const Connection& connection);
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction();
    void commit();

  private:
    const Connection& connection_;
    bool isOpen_ = true;
};

}  // namespace QRVHistoryInside
