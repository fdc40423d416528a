// SPDX-License-Identifier: MIT
#include "History/ToolHistory.h"

#include <atomic>
#include <chrono>

#include "History/HistoryLibrary.h"
#include "Reporting/Failure.h"
#include "Reporting/Notices.h"

namespace Tool {
namespace {

/// For the entry of a save, while other processes are writing theirs.
constexpr std::chrono::seconds longestWait{5};

void requireHistory() {
    const std::string why = whyNoHistory();
    if (!why.empty()) throw Failure(Fault::NotSet, why);
}

std::vector<QRVHistorySave> savesOf(QRVHistoryAnswer answer) {
    if (!answer.failure.empty())
        throw Failure(Fault::UnreadableFile, "the history cannot be read: " + answer.failure +
                                                 ", " + history().location());
    return std::move(answer.saves);
}

}  // namespace

std::string whyNoHistory() {
    if (history().isSwitchedOff())
        return "there is no history: QRVSETTINGS_HISTORY=0 switches it off";
    return history().location().empty() ? "there is no history: there is no home folder" : "";
}

void takePartInHistory() {
    history().start({});
}

void waitForHistory() {
    static bool isWritable = true;
    if (!isWritable || !isHistoryLoaded()) return;
    waitFor([] { return "the history of the settings"; },
            [] { isWritable = history().wait(longestWait); });
}

std::vector<QRVHistorySave> savesInHistory(const QRVHistoryQuery& query) {
    requireHistory();
    return savesOf(history().saves(query));
}

std::optional<QRVHistorySave> lastChangeInHistory(const std::string& keyPath) {
    // To wait for a locked one once is enough.
    static std::atomic<bool> isReadable = whyNoHistory().empty();
    if (!isReadable) return std::nullopt;
    const QRVHistoryAnswer answer = history().lastChange(keyPath);
    isReadable = answer.failure.empty();
    if (answer.saves.empty()) return std::nullopt;
    return answer.saves.front();
}

QRVHistoryInverse inverseOfSaves(const std::vector<QRVHistorySave>& saves,
                                 const NSDictionary& stored, QRVHistoryConflicts conflicts) {
    return history().inverseOf(saves, stored, conflicts);
}

void clearHistory() {
    requireHistory();
    const std::string failure = history().clear();
    if (!failure.empty())
        throw Failure(Fault::NotWritten,
                      "the history cannot be cleared: " + failure + ", " + history().location());
}

}  // namespace Tool
