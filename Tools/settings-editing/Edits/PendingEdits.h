// SPDX-License-Identifier: MIT
#pragma once

// Edits that a person has made and not applied: they change nothing but what this object says, and
// can be undone.

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Values/PropertyListValue.h"
#include "Text/Differences.h"

namespace Tool {

/// Where the file keeps a setting, and how people name it.
struct SettingPlace {
    std::string keyPath;  ///< plain
    std::string profile;  ///< empty for the application's

    [[nodiscard]] std::string storedKeyPath() const;
    auto operator<=>(const SettingPlace&) const = default;
};

struct PendingEdit {
    SettingPlace place;
    /// What the file held when the setting was first edited; null when nothing.
    PropertyListValue base;
    /// What the file is to hold; null for nothing, so that the default answers.
    PropertyListValue value;
};

/// A setting that another process has changed since it was edited.
struct EditConflict {
    PendingEdit edit;
    PropertyListValue theirs;  ///< what the file holds now; null when nothing
};

class PendingEdits {
  public:
    /// One edit that is to be made.
    struct Request {
        SettingPlace place;
        PropertyListValue value;      ///< null to store nothing
        PropertyListValue byDefault;  ///< a value that equals it, kind and all, is not stored
    };

    /// Edits settings as one step of undo; `stored` is what the file holds now. A request for what
    /// the file holds anyway takes back the edit of that setting. What changes nothing is no step.
    /// `isContinued` makes it one step with the last one, as the moves of a drag are, when both
    /// edit the same settings. Returns whether anything changed.
    bool edit(const std::vector<Request>& requests, const NSDictionary& stored,
              const std::string& name, bool isContinued = false);
    /// Takes back the edits of these settings; of all without any. One step.
    bool discard(const std::vector<SettingPlace>& places, const std::string& name);

    /// After edits have reached the file: they are pending no more. One step; to undo it makes the
    /// edits that lead back to what the file held before, against what it held after.
    void applied(const std::vector<PendingEdit>& edits, const std::string& name);

    /// Settles a conflict: the edit stands on what the file holds now.
    void keepMine(const SettingPlace& place, const NSDictionary& stored);
    /// Settles it the other way: the edit is discarded. One step.
    void takeTheirs(const SettingPlace& place);

    [[nodiscard]] bool canUndo() const { return position_ > 0; }
    [[nodiscard]] bool canRedo() const { return position_ < steps_.size(); }
    /// What the next step back, or forward, is called; empty when there is none.
    [[nodiscard]] std::string undoName() const;
    [[nodiscard]] std::string redoName() const;
    [[nodiscard]] std::size_t undoCount() const { return position_; }
    /// Return the settings whose edits have changed.
    std::vector<SettingPlace> undo();
    std::vector<SettingPlace> redo();

    [[nodiscard]] const std::map<SettingPlace, PendingEdit>& edits() const { return edits_; }
    [[nodiscard]] const PendingEdit* at(const SettingPlace& place) const;
    [[nodiscard]] std::vector<EditConflict> conflicts(const NSDictionary& stored) const;
    /// `stored` with the edits made. What cannot be written, because a value is in its way, is left
    /// out.
    [[nodiscard]] NSDictionary appliedTo(const NSDictionary& stored) const;

  private:
    /// What a step does to one setting's edit; empty for no edit.
    struct Move {
        SettingPlace place;
        std::optional<PendingEdit> before;
        std::optional<PendingEdit> after;
    };
    struct Step {
        std::string name;
        std::vector<Move> moves;
    };
    void take(Step step, bool isContinued);

    std::map<SettingPlace, PendingEdit> edits_;
    std::vector<Step> steps_;
    std::size_t position_ = 0;
};

}  // namespace Tool
