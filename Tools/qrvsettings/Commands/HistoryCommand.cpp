// SPDX-License-Identifier: MIT
// Prints or clears the history of the settings.

#include <algorithm>
#include <optional>

#include "Commands/CommandTable.h"
#include "History/HistoryText.h"
#include "History/ToolHistory.h"
#include "Options/CommonOptions.h"
#include "Process/ExitCode.h"
#include "Process/StandardOutput.h"
#include "Reporting/Failure.h"
#include "Settings/Records.h"
#include "Text/FileForm.h"
#include "Text/JSON.h"
#include "Text/PastTime.h"

namespace Tool {
namespace {

struct Options {
    std::optional<std::string> prefix;
    std::optional<std::string> since;
    std::optional<std::size_t> limit;
    bool records = false;
    bool json = false;
};

QRVHistoryQuery queryOf(const Options& options) {
    QRVHistoryQuery query;
    query.prefix = options.prefix.value_or("");
    if (options.since) query.since = pastTimeFromText(*options.since, NSDate::now());
    return query;
}

void removeRecordsFrom(std::vector<QRVHistorySave>& saves) {
    for (QRVHistorySave& save : saves)
        std::erase_if(save.changes, [](const QRVHistoryChange& change) {
            return isOfStoreAlone(change.keyPath, change.before, change.after);
        });
    std::erase_if(saves, [](const QRVHistorySave& save) { return save.changes.empty(); });
}

bool areRecordsWanted(const Options& options) {
    return options.records || (options.prefix && isRecord(*options.prefix));
}

ExitCode history(const Options& options) {
    if (options.prefix) requireUTF8(*options.prefix);
    std::vector<QRVHistorySave> saves = savesInHistory(queryOf(options));
    const bool isEmpty = saves.empty();
    if (!areRecordsWanted(options)) removeRecordsFrom(saves);
    if (saves.empty())
        throw Failure(Fault::NotSet,
                      std::string("nothing is in the history") +
                          (isEmpty ? "" : " but changes of records of the store (--records)") +
                          (options.prefix ? ", " + *options.prefix : "") +
                          (options.since ? ", since " + *options.since : ""));
    if (options.limit && saves.size() > *options.limit)
        saves.erase(saves.begin() + static_cast<std::ptrdiff_t>(*options.limit), saves.end());
    std::reverse(saves.begin(), saves.end());
    std::string text;
    for (const QRVHistorySave& save : saves)
        text += options.json ? jsonText(historyObject(save)) + "\n" : historyLines(save);
    print(text);
    return ExitCode::Done;
}

OptionList declare(Options& options) {
    return {prefixArgument(options.prefix),
            sinceOption(options.since, "Only what was saved at this time or later"),
            countOption("--limit", options.limit, "Print only the latest N saves"),
            recordsFlag(options.records),
            jsonFlag(options.json,
                     "Print JSON objects of id, time (UTC), program, process, origin and changes, "
                     "one a line")};
}

struct NoOptions {};

ExitCode clear(const NoOptions& /*options*/) {
    clearHistory();
    return ExitCode::Done;
}

OptionList declareNone(NoOptions& /*options*/) {
    return {};
}

}  // namespace

Configuration configureHistory() {
    return configured(declare, history);
}

Configuration configureHistoryClear() {
    return configured(declareNone, clear);
}

}  // namespace Tool
