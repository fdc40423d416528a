// SPDX-License-Identifier: MIT
#pragma once

// How saves become entries; Entry.cpp has the rules.

#include <optional>
#include <string>

#include "Database.h"
#include "QRVSettings/FileChange.h"

namespace QRVHistoryInside {

/// A save of this process.
struct OwnSave {
    QRVFileChange change;
    Writer writer;
};

/// Within one transaction.
class Entry {
  public:
    Entry(Database& database, std::string settingsFile, double now);

    /// Enters a save of this process, and what unknown programs did before it.
    void enter(const OwnSave& save);
    /// Enters what unknown programs have made of the file since the last entry.
    void enterOthers();

  private:
    /// A save on its way into the tables.
    struct Part {
        Version from;
        Version to;
        Writer writer;
        Changes changes;
        double time = 0;
    };

    void enterAfterDamage(const OwnSave& save, const Version& to);
    void begin(const Version& version, const NSDictionary& tree);
    void append(const Part& part);
    void appendUnknown(const Version& to, const NSDictionary& tree);
    void insertLate(const Part& own);
    void split(const SaveRow& unknown, const Part& own, const QRVFileChange& change);
    [[nodiscard]] double timeOf(const Version& version) const;
    [[nodiscard]] bool isAtHead(const Version& version) const;
    [[nodiscard]] bool isNewerThanHead(const Version& version, std::int64_t timeOfName) const;

    Database& database_;
    std::string settingsFile_;
    double now_;
    Head head_;
};

}  // namespace QRVHistoryInside
