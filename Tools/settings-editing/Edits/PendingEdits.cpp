// SPDX-License-Identifier: MIT
#include "Edits/PendingEdits.h"

#include <algorithm>
#include <set>
#include <utility>

#include "Text/Differences.h"
#include "Text/FileForm.h"
#include "Text/KeyPaths.h"

namespace Tool {
namespace {

std::size_t levelsOf(const std::string& keyPath) {
    return static_cast<std::size_t>(std::count(keyPath.begin(), keyPath.end(), '.'));
}

std::string pathOf(const PendingEdits::Request& request) {
    return request.place.storedKeyPath();
}

/// Removals first, and deep ones before those above; then values, levels before what is below them.
std::vector<PendingEdits::Request> inOrder(std::vector<PendingEdits::Request> requests) {
    std::stable_sort(requests.begin(), requests.end(), [](const auto& one, const auto& other) {
        if (one.value.isNull() != other.value.isNull()) return one.value.isNull();
        const std::size_t levels = levelsOf(pathOf(one));
        const std::size_t otherLevels = levelsOf(pathOf(other));
        return one.value.isNull() ? levels > otherLevels : levels < otherLevels;
    });
    return requests;
}

/// Each setting once, with its last request.
std::vector<PendingEdits::Request> lastOnes(const std::vector<PendingEdits::Request>& requests) {
    std::map<std::string, std::size_t> last;
    for (std::size_t index = 0; index < requests.size(); ++index)
        last[pathOf(requests[index])] = index;
    std::vector<PendingEdits::Request> once;
    once.reserve(last.size());
    for (const auto& [path, index] : last) once.push_back(requests[index]);
    return once;
}

std::vector<std::string> pathsOf(const std::vector<PendingEdits::Request>& requests) {
    std::vector<std::string> paths;
    paths.reserve(requests.size());
    for (const PendingEdits::Request& request : requests) paths.push_back(pathOf(request));
    return paths;
}

/// What of a key path is behind one above it.
std::string_view restOf(const std::string& path, const std::string& above) {
    return std::string_view(path).substr(above.size() + 1);
}

}  // namespace

/// Changes the table, and remembers how it was.
class PendingEdits::Recorder {
  public:
    explicit Recorder(EditTable& table) : table_(table) {}

    /// Makes an edit, or takes back the one that is there when it changes nothing.
    void put(PendingEdit edit) {
        const std::string path = edit.place.storedKeyPath();
        if (const PendingEdit* const above = table_.above(path))
            return putInto(*above, path, edit.value);
        for (const PendingEdit& below : table_.below(path)) {
            const std::string pathBelow = below.place.storedKeyPath();
            if (edit.base.isDictionary() || !below.base.isNull())
                edit.base = treeWithValue(edit.base, restOf(pathBelow, path), below.base);
            erase(pathBelow);
        }
        set(edit);
    }
    /// Takes back the edits at the key path and below it.
    void eraseWithBelow(const std::string& path) {
        for (const PendingEdit& below : table_.below(path)) erase(below.place.storedKeyPath());
        erase(path);
    }
    void erase(const std::string& path) {
        remember(path);
        table_.erase(path);
    }
    [[nodiscard]] const EditTable& table() const { return table_; }

    [[nodiscard]] std::vector<Move> moves() const {
        std::vector<Move> moves;
        for (const auto& [path, before] : before_) {
            const PendingEdit* const now = table_.at(path);
            const std::optional<PendingEdit> after = now ? std::optional(*now) : std::nullopt;
            if (const auto move = moveBetween(before, after)) moves.push_back(*move);
        }
        return moves;
    }

  private:
    void putInto(const PendingEdit& above, const std::string& path,
                 const PropertyListValue& value) {
        PendingEdit edit = above;
        if (value.isNull() && !edit.value.isDictionary()) return;
        edit.value = treeWithValue(edit.value, restOf(path, above.place.storedKeyPath()), value);
        set(edit);
    }
    void set(const PendingEdit& edit) {
        remember(edit.place.storedKeyPath());
        if (areSameInKind(edit.base, edit.value))
            table_.erase(edit.place.storedKeyPath());
        else
            table_.set(edit);
    }
    void remember(const std::string& path) {
        if (!remembered_.insert(path).second) return;
        const PendingEdit* const edit = table_.at(path);
        before_.emplace_back(path, edit ? std::optional(*edit) : std::nullopt);
    }
    static std::optional<Move> moveBetween(const std::optional<PendingEdit>& before,
                                           const std::optional<PendingEdit>& after) {
        if (!before && !after) return std::nullopt;
        Move move{after ? after->place : before->place, before ? before->value : after->base,
                  after ? after->value : before->base, std::nullopt};
        if (before && after && !areSameInKind(before->base, after->base))
            move.rebase = {before->base, after->base};
        if (!move.rebase && areSameInKind(move.from, move.to)) return std::nullopt;
        return move;
    }

    EditTable& table_;
    std::set<std::string> remembered_;
    // In the order of the changes, which undo reverses.
    std::vector<std::pair<std::string, std::optional<PendingEdit>>> before_;
};

/// Takes the moves that made applied edits out of the steps, from the last step to the first. A
/// move stays where a later one, of a setting above or below, builds on it.
class PendingEdits::Collapse {
  public:
    explicit Collapse(const std::vector<PendingEdit>& edits) {
        for (const PendingEdit& edit : edits) paths_.insert(edit.place.storedKeyPath());
    }

    void takeFrom(Step& step) {
        std::vector<Move> kept;
        for (auto move = step.moves.rbegin(); move != step.moves.rend(); ++move) {
            const std::string path = move->place.storedKeyPath();
            if (!step.isApplied && paths_.contains(path)) {
                if (chains_.empty()) lastName_ = step.name;
                lead(path, *move);
            } else {
                keepWhatIsAround(path);
                kept.push_back(std::move(*move));
            }
        }
        step.moves.assign(std::make_move_iterator(kept.rbegin()),
                          std::make_move_iterator(kept.rend()));
    }
    /// What was there before the moves; empty when there were none.
    [[nodiscard]] std::optional<PropertyListValue> valueBefore(const std::string& path) const {
        const auto chain = chains_.find(path);
        return chain == chains_.end() ? std::nullopt : std::optional(chain->second.from);
    }
    [[nodiscard]] const std::string& lastName() const { return lastName_; }

  private:
    struct Chain {
        PropertyListValue from;
        bool isComplete = false;
    };

    void lead(const std::string& path, const Move& move) {
        const auto [known, isNew] = chains_.try_emplace(path, Chain{move.from});
        Chain& chain = known->second;
        // Between two steps another process may have changed the setting.
        if (!isNew && !areSameInKind(chain.from, move.to)) chain.isComplete = true;
        if (chain.isComplete) return;
        chain.from = move.rebase ? move.rebase->after : move.from;
        chain.isComplete = move.rebase.has_value();
    }
    void keepWhatIsAround(const std::string& path) {
        for (std::size_t end = path.find('.'); end != path.npos; end = path.find('.', end + 1))
            paths_.erase(path.substr(0, end));
        const std::string start = path + ".";
        for (auto below = paths_.lower_bound(start);
             below != paths_.end() && below->starts_with(start);)
            below = paths_.erase(below);
    }

    std::set<std::string> paths_;
    std::map<std::string, Chain> chains_;
    std::string lastName_;
};

void PendingEdits::request(const Request& request, const NSDictionary& stored,
                           Recorder& recorder) const {
    PendingEdit edit{request.place, nullptr, nullptr};
    if (!areSameInKind(request.value, request.byDefault)) edit.value = asInFile(request.value);
    std::string path = pathOf(request);
    std::optional<PropertyListValue> seen = request.seen;
    if (const PendingEdit* const above = table_.above(path)) {
        if (edit.value.isNull() && !above->value.isDictionary()) return;
        const std::string pathAbove = above->place.storedKeyPath();
        edit.value = treeWithValue(above->value, restOf(path, pathAbove), edit.value);
        edit.place = above->place;
        path = pathAbove;
        seen.reset();
    } else if (leafAbove(stored, path)) {
        return;
    }
    const PropertyListValue now = valueAt(stored, path);
    if (areSameInKind(edit.value, now)) return recorder.eraseWithBelow(path);
    const PendingEdit* const present = table_.at(path);
    // A wish for the value of before, which another process has replaced, stands on what is there.
    const bool hasBase = present != nullptr && !areSameInKind(edit.value, present->base);
    edit.base = hasBase ? present->base : now;
    if (present == nullptr && seen && !areSameInKind(edit.value, *seen)) edit.base = *seen;
    recorder.put(edit);
}

bool PendingEdits::edit(const std::vector<Request>& requests, const NSDictionary& stored,
                        const std::string& name, bool isContinued) {
    const std::vector<Request> once = lastOnes(requests);
    Recorder recorder(table_);
    for (const Request& one : inOrder(once)) request(one, stored, recorder);
    Step step{name, recorder.moves()};
    const bool isChange = !step.moves.empty();
    std::vector<std::string> paths = pathsOf(once);
    if (isContinued && isLastContinuable_ && paths == continuable_)
        return isChange && continueLast(std::move(step));
    take(std::move(step));
    isLastContinuable_ = isChange;
    continuable_ = std::move(paths);
    return isChange;
}

bool PendingEdits::discard(const std::vector<SettingPlace>& places, const std::string& name) {
    Recorder recorder(table_);
    std::vector<std::string> paths;
    paths.reserve(places.empty() ? edits().size() : places.size());
    for (const SettingPlace& place : places) paths.push_back(place.storedKeyPath());
    if (places.empty())
        for (const auto& [place, edit] : edits()) paths.push_back(place.storedKeyPath());
    for (const std::string& path : paths) recorder.erase(path);
    return take({name, recorder.moves()});
}

void PendingEdits::applied(const std::vector<PendingEdit>& edits, const std::string& name) {
    Collapse collapse(edits);
    for (std::size_t index = position_; index > 0; --index) collapse.takeFrom(steps_[index - 1]);
    Step step{name, {}, true};
    Step editedAgain{collapse.lastName(), {}};
    for (const PendingEdit& edit : edits) {
        const std::string path = edit.place.storedKeyPath();
        const PendingEdit* const present = table_.at(path);
        auto before = collapse.valueBefore(path);
        // It was undone on its way to the file.
        if (!before && present == nullptr) before = edit.base;
        if (before && !areSameInKind(*before, edit.value))
            step.moves.push_back({edit.place, *before, edit.value, std::nullopt});
        if (present == nullptr || areSameInKind(present->value, edit.value)) {
            table_.erase(path);
            continue;
        }
        editedAgain.moves.push_back({edit.place, edit.value, present->value, std::nullopt});
        table_.set({edit.place, edit.value, present->value});
    }
    const auto end = steps_.begin() + static_cast<std::ptrdiff_t>(position_);
    std::vector<Step> kept;
    const auto keep = [&kept](Step& one) {
        if (!one.moves.empty()) kept.push_back(std::move(one));
    };
    std::for_each(steps_.begin(), end, keep);
    keep(step);
    keep(editedAgain);
    position_ = kept.size();
    std::move(end, steps_.end(), std::back_inserter(kept));
    steps_ = std::move(kept);
    isLastContinuable_ = false;
}

void PendingEdits::keepMine(const SettingPlace& place, const NSDictionary& stored,
                            const std::string& name) {
    const PendingEdit* const present = at(place);
    if (present == nullptr) return;
    Recorder recorder(table_);
    recorder.put({present->place, valueAt(stored, place.storedKeyPath()), present->value});
    take({name, recorder.moves()});
}

void PendingEdits::takeTheirs(const SettingPlace& place, const std::string& name) {
    discard({place}, name);
}

bool PendingEdits::take(Step step) {
    isLastContinuable_ = false;
    if (step.moves.empty()) return false;
    steps_.resize(position_);
    steps_.push_back(std::move(step));
    position_ = steps_.size();
    forgetOldest();
    return true;
}

bool PendingEdits::continueLast(Step step) {
    Step& last = steps_.back();
    for (Move& move : step.moves) {
        const auto same = [&move](const Move& one) { return one.place == move.place; };
        const auto known = std::find_if(last.moves.begin(), last.moves.end(), same);
        if (known == last.moves.end()) {
            last.moves.push_back(std::move(move));
            continue;
        }
        known->to = move.to;
        if (move.rebase)
            known->rebase = {known->rebase ? known->rebase->before : move.rebase->before,
                             move.rebase->after};
    }
    std::erase_if(last.moves, [](const Move& move) {
        return !move.rebase && areSameInKind(move.from, move.to);
    });
    last.name = step.name;
    if (last.moves.empty()) {
        steps_.pop_back();
        position_ = steps_.size();
        isLastContinuable_ = false;
    }
    return true;
}

void PendingEdits::forgetOldest() {
    std::size_t settings = 0;
    std::size_t kept = 0;
    for (auto step = steps_.rbegin(); step != steps_.rend(); ++step) {
        settings += step->moves.size();
        if (kept > 0 && settings > maximumUndoneSettings) break;
        ++kept;
    }
    steps_.erase(steps_.begin(), steps_.end() - static_cast<std::ptrdiff_t>(kept));
    position_ = steps_.size();
}

std::string PendingEdits::undoName() const {
    return canUndo() ? steps_[position_ - 1].name : "";
}

std::string PendingEdits::redoName() const {
    return canRedo() ? steps_[position_].name : "";
}

namespace {

template <typename Moves>
std::vector<SettingPlace> placesOf(const Moves& moves) {
    std::vector<SettingPlace> places;
    places.reserve(moves.size());
    for (const auto& move : moves) places.push_back(move.place);
    return places;
}

}  // namespace

std::vector<SettingPlace> PendingEdits::undo() {
    isLastContinuable_ = false;
    if (!canUndo()) return {};
    const Step& step = steps_[--position_];
    Recorder recorder(table_);
    for (auto move = step.moves.rbegin(); move != step.moves.rend(); ++move) {
        const PendingEdit* const present = at(move->place);
        recorder.put({move->place,
                      move->rebase ? move->rebase->before
                      : present    ? present->base
                                   : move->to,
                      move->from});
    }
    return placesOf(recorder.moves());
}

std::vector<SettingPlace> PendingEdits::redo() {
    isLastContinuable_ = false;
    if (!canRedo()) return {};
    const Step& step = steps_[position_++];
    Recorder recorder(table_);
    for (const Move& move : step.moves) {
        const PendingEdit* const present = at(move.place);
        recorder.put({move.place,
                      move.rebase ? move.rebase->after
                      : present   ? present->base
                                  : move.from,
                      move.to});
    }
    return placesOf(recorder.moves());
}

const PendingEdit* PendingEdits::at(const SettingPlace& place) const {
    return table_.at(place.storedKeyPath());
}

std::vector<EditConflict> PendingEdits::conflicts(const NSDictionary& stored) const {
    std::vector<EditConflict> found;
    for (const auto& [place, edit] : edits()) {
        const PropertyListValue now = valueAt(stored, place.storedKeyPath());
        if (!areSameInKind(now, edit.base) && !areSameInKind(now, edit.value))
            found.push_back({edit, now});
    }
    return found;
}

NSDictionary PendingEdits::appliedTo(const NSDictionary& stored) const {
    return table_.appliedTo(stored);
}

}  // namespace Tool
