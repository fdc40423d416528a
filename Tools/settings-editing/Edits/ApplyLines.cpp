// SPDX-License-Identifier: MIT
// What the window and the process that applies its edits say to each other. Values are as
// `jsonText` has them, which keeps their kinds; what is null is left out.

#include <initializer_list>
#include <string_view>
#include <utility>

#include "Edits/ApplyEdits.h"
#include "Reporting/Failure.h"
#include "Text/JSON.h"

namespace Tool {
namespace {

constexpr const char* waitsKey = "waitsFor";
constexpr const char* stateKey = "state";

struct StateWord {
    ApplyOutcome::State state;
    std::string_view word;
};
constexpr StateWord stateWords[] = {{ApplyOutcome::State::Applied, "applied"},
                                    {ApplyOutcome::State::Conflict, "conflict"},
                                    {ApplyOutcome::State::NotApplied, "not applied"}};

std::string wordOf(ApplyOutcome::State state) {
    for (const StateWord& one : stateWords)
        if (one.state == state) return std::string(one.word);
    return {};
}

/// Throws Failure (WrongValue).
ApplyOutcome::State stateOf(std::string_view word) {
    for (const StateWord& one : stateWords)
        if (one.word == word) return one.state;
    throw Failure(Fault::WrongValue, "no outcome of edits: " + shortened(word));
}

/// Throws Failure (WrongValue).
NSDictionary objectOf(std::string_view line) {
    const PropertyListValue value = valueFromJSON(line);
    if (!value.isDictionary())
        throw Failure(Fault::WrongValue, "no object of JSON: " + shortened(line));
    return value.dictionary();
}

NSMutableDictionary objectOf(const PendingEdit& edit) {
    NSMutableDictionary object;
    object.setObjectForKey(edit.place.keyPath, "keyPath");
    object.setObjectForKey(edit.place.profile, "profile");
    if (!edit.base.isNull()) object.setObjectForKey(edit.base, "base");
    if (!edit.value.isNull()) object.setObjectForKey(edit.value, "value");
    return object;
}

PendingEdit editOf(const NSDictionary& object) {
    PendingEdit edit{{object.objectForKey("keyPath").stringValue(),
                      object.objectForKey("profile").stringValue()},
                     object.objectForKey("base"),
                     object.objectForKey("value")};
    if (edit.place.keyPath.empty()) throw Failure(Fault::WrongValue, "an edit without a key path");
    return edit;
}

NSArray arrayOf(const std::vector<EditConflict>& conflicts) {
    NSMutableArray array;
    for (const EditConflict& conflict : conflicts) {
        const NSMutableDictionary object = objectOf(conflict.edit);
        if (!conflict.theirs.isNull()) object.setObjectForKey(conflict.theirs, "theirs");
        array.addObject(object);
    }
    return array;
}

std::vector<EditConflict> conflictsOf(const PropertyListValue& array) {
    std::vector<EditConflict> conflicts;
    for (const PropertyListValue& element : array.array()) {
        const NSDictionary object = element.dictionary();
        conflicts.push_back({editOf(object), object.objectForKey("theirs")});
    }
    return conflicts;
}

}  // namespace

std::string lineOf(const ApplyRequest& request) {
    const NSMutableArray edits;
    for (const PendingEdit& edit : request.edits) edits.addObject(objectOf(edit));
    return jsonText(NSDictionary{{"edits", edits},
                                 {"origin", request.origin},
                                 {"replacesDamagedFile", request.replacesDamagedFile},
                                 {"replacesReadOnlyFile", request.replacesReadOnlyFile}});
}

ApplyRequest requestFromLine(std::string_view line) {
    const NSDictionary object = objectOf(line);
    const PropertyListValue edits = object.objectForKey("edits");
    if (!edits.isArray()) throw Failure(Fault::WrongValue, "a request without edits");
    ApplyRequest request;
    for (const PropertyListValue& edit : edits.array())
        request.edits.push_back(editOf(edit.dictionary()));
    request.origin = object.objectForKey("origin").stringValue();
    request.replacesDamagedFile = object.objectForKey("replacesDamagedFile").boolValue();
    request.replacesReadOnlyFile = object.objectForKey("replacesReadOnlyFile").boolValue();
    return request;
}

std::string lineOf(const ApplyOutcome& outcome) {
    const NSMutableArray notices;
    for (const std::string& notice : outcome.notices) notices.addObject(notice);
    return jsonText(NSDictionary{{stateKey, wordOf(outcome.state)},
                                 {"reason", outcome.reason},
                                 {"conflicts", arrayOf(outcome.conflicts)},
                                 {"overwritten", arrayOf(outcome.overwritten)},
                                 {"notices", notices}});
}

ApplyOutcome outcomeFromLine(std::string_view line) {
    const NSDictionary object = objectOf(line);
    ApplyOutcome outcome;
    outcome.state = stateOf(object.objectForKey(stateKey).stringValue());
    outcome.reason = object.objectForKey("reason").stringValue();
    outcome.conflicts = conflictsOf(object.objectForKey("conflicts"));
    outcome.overwritten = conflictsOf(object.objectForKey("overwritten"));
    for (const PropertyListValue& notice : object.objectForKey("notices").array())
        outcome.notices.push_back(notice.stringValue());
    return outcome;
}

std::string lineOfWaiting(const std::string& description) {
    return jsonText(NSDictionary{{waitsKey, description}});
}

std::string waitingFromLine(std::string_view line) {
    try {
        return objectOf(line).objectForKey(waitsKey).stringValue();
    } catch (const Failure&) {
        return {};
    }
}

}  // namespace Tool
