// SPDX-License-Identifier: MIT
// For builds without the history.
#include "History/ToolHistory.h"
#include "Reporting/Failure.h"

namespace Tool {

std::string whyNoHistory() {
    return "there is no history: this program was built without it";
}

void takePartInHistory() {}

void waitForHistory() {}

std::vector<QRVHistorySave> savesInHistory(const QRVHistoryQuery& /*query*/) {
    throw Failure(Fault::NotSet, whyNoHistory());
}

std::optional<QRVHistorySave> lastChangeInHistory(const std::string& /*keyPath*/) {
    return std::nullopt;
}

QRVHistoryInverse inverseOfSaves(const std::vector<QRVHistorySave>& /*saves*/,
                                 const NSDictionary& /*stored*/,
                                 QRVHistoryConflicts /*conflicts*/) {
    return {};
}

void clearHistory() {
    throw Failure(Fault::NotSet, whyNoHistory());
}

}  // namespace Tool
