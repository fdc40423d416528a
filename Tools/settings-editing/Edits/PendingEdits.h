// SPDX-License-Identifier: MIT
#pragma once

// Edits that a person has made and not applied: they change nothing but what this object says, and
// can be undone.

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Edits/EditTable.h"
#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// A setting that another process has changed since it was edited.
struct EditConflict {
    PendingEdit edit;
    PropertyListValue theirs;  ///< what the file holds now; null when nothing
};

/// Edits are those of leaves and of whole dictionaries. No two lead through each other: a later
/// edit above others replaces them, and a later edit below another one becomes a part of that one's
/// value. Two ways to name one stored key path are one setting.
///
/// Undo follows the values of settings and not the file. When edits have reached the file, undo
/// makes edits that lead back, and redo makes the edits again; both are conflicts where another
/// process has changed the setting since. All values are kept as a file keeps them, without
/// fractions of seconds, and must not change later. Not for several threads at once.
class PendingEdits {
  public:
    /// The oldest steps are forgotten so that all steps together change at most so many settings;
    /// the last step always stays. That is about 40 MB besides the values, which the steps share
    /// with the trees that they come from.
    static constexpr std::size_t maximumUndoneSettings = 200'000;

    /// One edit that is to be made.
    struct Request {
        SettingPlace place;
        PropertyListValue value;      ///< null to store nothing
        PropertyListValue byDefault;  ///< a value that equals it, kind and all, is not stored
        /// What the file held when the person began to type, which the first edit of a setting is
        /// based on; empty where that is what it holds now.
        std::optional<PropertyListValue> seen{};
    };

    /// Edits settings as one step of undo; `stored` is what the file holds now. A request for what
    /// the file holds anyway takes back the edit of that setting. One that leads through a stored
    /// value, which is no dictionary, is left out. What changes nothing is no step. Of requests for
    /// one setting the last one counts, and removals are made before values. `isContinued` makes it
    /// one step with the last edit, as the moves of a drag are, when both edit the same settings; a
    /// drag that ends where it began leaves no step. Returns whether anything changed.
    bool edit(const std::vector<Request>& requests, const NSDictionary& stored,
              const std::string& name, bool isContinued = false);
    /// Takes back the edits of these settings; of all without any. One step.
    bool discard(const std::vector<SettingPlace>& places, const std::string& name);

    /// After edits have reached the file: they are pending no more, and what was edited again
    /// meanwhile stands on what the file holds now. The steps that made them become one, which
    /// leads back to what the file held before. Edits that undo or redo has made are such steps
    /// already: applying them adds none.
    void applied(const std::vector<PendingEdit>& edits, const std::string& name);

    /// Settles a conflict: the edit stands on what the file holds now. One step: to undo it brings
    /// the conflict back, so that no earlier step overwrites the other process's value unasked.
    void keepMine(const SettingPlace& place, const NSDictionary& stored, const std::string& name);
    /// Settles it the other way: the edit is discarded. One step.
    void takeTheirs(const SettingPlace& place, const std::string& name);

    [[nodiscard]] bool canUndo() const { return position_ > 0; }
    [[nodiscard]] bool canRedo() const { return position_ < steps_.size(); }
    /// What the next step back, or forward, is called; empty when there is none.
    [[nodiscard]] std::string undoName() const;
    [[nodiscard]] std::string redoName() const;
    [[nodiscard]] std::size_t undoCount() const { return position_; }
    /// Return the settings whose edits have changed.
    std::vector<SettingPlace> undo();
    std::vector<SettingPlace> redo();

    [[nodiscard]] const std::map<SettingPlace, PendingEdit>& edits() const {
        return table_.edits();
    }
    [[nodiscard]] const PendingEdit* at(const SettingPlace& place) const;
    /// What another process has changed to something else than the edit wants.
    [[nodiscard]] std::vector<EditConflict> conflicts(const NSDictionary& stored) const;
    /// `stored` with the edits made, an immutable tree. As in the store, empty levels above a
    /// removed value go. An edit is left out where another process has put a value in its way.
    [[nodiscard]] NSDictionary appliedTo(const NSDictionary& stored) const;

  private:
    /// How a step changes what one setting is to be. A rebase changes what its edit stands on.
    struct Rebase {
        PropertyListValue before;
        PropertyListValue after;
    };
    struct Move {
        SettingPlace place;
        PropertyListValue from;
        PropertyListValue to;
        std::optional<Rebase> rebase;
    };
    struct Step {
        std::string name;
        std::vector<Move> moves;
        bool isApplied = false;
    };
    class Recorder;
    class Collapse;

    void request(const Request& request, const NSDictionary& stored, Recorder& recorder) const;
    bool take(Step step);
    bool continueLast(Step step);
    void forgetOldest();

    EditTable table_;
    std::vector<Step> steps_;
    std::size_t position_ = 0;
    std::vector<std::string> continuable_;  // stored key paths of the last edit
    bool isLastContinuable_ = false;        // the last step is of that edit
};

}  // namespace Tool
