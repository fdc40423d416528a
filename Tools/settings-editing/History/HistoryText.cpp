// SPDX-License-Identifier: MIT
#include "History/HistoryText.h"

#include "Reporting/Failure.h"
#include "Text/JSON.h"
#include "Text/KeyPaths.h"
#include "Text/PastTime.h"
#include "Text/ScalarText.h"
#include "Text/ValueText.h"

namespace Tool {
namespace {

std::string valueText(const PropertyListValue& value) {
    return value.isNull() ? "not set" : shortened(jsonText(value));
}

std::string changeText(const QRVHistoryChange& change) {
    return valueText(change.before) + " -> " + valueText(change.after);
}

}  // namespace

std::string programText(const QRVHistorySave& save) {
    if (save.program.empty()) return "another program";
    return save.process == 0 ? save.program
                             : save.program + "[" + std::to_string(save.process) + "]";
}

std::string timeAndProgramText(const QRVHistorySave& save) {
    return localTimeText(save.time) + " by " + programText(save);
}

std::string lastChangeText(const QRVHistorySave& save) {
    const std::string what = save.changes.size() == 1
                                 ? changeText(save.changes.front())
                                 : std::to_string(save.changes.size()) + " settings";
    return timeAndProgramText(save) + ", " + what + " (save " + std::to_string(save.id) + ")";
}

std::string historyLines(const QRVHistorySave& save) {
    std::string text = std::to_string(save.id) + "  " + localTimeText(save.time) + "  " +
                       programText(save) + (save.origin.empty() ? "" : "  " + save.origin) + "\n";
    for (const QRVHistoryChange& change : save.changes)
        text += "    " + keyPathText(change.keyPath) + "  " + changeText(change) + "\n";
    return text;
}

NSDictionary historyObject(const QRVHistorySave& save) {
    NSMutableArray changes;
    for (const QRVHistoryChange& change : save.changes)
        changes.addObject(NSDictionary{{"keyPath", change.keyPath},
                                       {"before", orNullMarker(change.before)},
                                       {"after", orNullMarker(change.after)}});
    return {{"id", save.id},
            {"time", dateText(save.time)},
            {"program", orNullMarker(save.program)},
            {"process", save.process == 0 ? PropertyListValue(NSNull()) : save.process},
            {"origin", orNullMarker(save.origin)},
            {"changes", changes}};
}

}  // namespace Tool
