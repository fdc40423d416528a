// SPDX-License-Identifier: MIT
// Random sequences of edits, beside a model that keeps the whole tree of every step.
#include <gtest/gtest.h>

#include <random>

#include "Edits/PendingEdits.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "Text/JSON.h"
#include "Text/KeyPaths.h"

using Tool::jsonText;
using Tool::PendingEdit;
using Tool::PendingEdits;
using Tool::SettingPlace;

namespace {

using Request = PendingEdits::Request;

class Sequence {
  public:
    Sequence(unsigned seed, bool applies) : random_(seed), applies_(applies) {
        NSMutableDictionary tree;
        for (int index = 0; index < 6; ++index) {
            const SettingPlace place = anyPlace();
            const std::string path = place.storedKeyPath();
            const bool isFree = !Tool::leafAbove(tree, path) &&
                                NSDictionaryQRV::objectAtKeyPath(tree, path).isNull();
            if (isFree) NSDictionaryQRV::setObjectAtKeyPath(tree, anyLeaf(), path);
        }
        stored_ = Tool::snapshotOf(tree);
        trees_.push_back(shown());
    }

    void run() {
        const int count = below(30);
        for (int index = 0; index < count && !testing::Test::HasFailure(); ++index) {
            act(below(applies_ ? 12 : 10));
            expectGood();
        }
        const std::string first = trees_.front();
        const std::string last = trees_.back();
        while (edits_.canUndo()) undo();
        EXPECT_EQ(shown(), first) << log_;
        while (edits_.canRedo()) redo();
        EXPECT_EQ(shown(), last) << log_;
        while (edits_.canUndo()) undo();
        EXPECT_EQ(shown(), first) << log_;
        if (applies_) return;
        EXPECT_TRUE(edits_.edits().empty()) << log_;
    }

  private:
    int below(int bound) { return static_cast<int>(random_() % static_cast<unsigned>(bound)); }

    SettingPlace anyPlace() {
        static const std::vector<std::string> keyPaths = {"A",   "A.B", "A.B.C", "A.B.D", "A-B",
                                                          "A.E", "F",   "F.G",   "H"};
        return {keyPaths[static_cast<std::size_t>(below(static_cast<int>(keyPaths.size())))],
                below(4) == 0 ? "p" : ""};
    }
    PropertyListValue anyLeaf() {
        const std::vector<PropertyListValue> leaves{1, 2, 1.0, -0.0, 0.0, "1", true, NSArray{1}};
        return leaves[static_cast<std::size_t>(below(static_cast<int>(leaves.size())))];
    }
    PropertyListValue anyValue() {
        switch (below(6)) {
            case 0:
            case 1:
                return nullptr;
            case 2:
                return NSDictionary{{"B", anyLeaf()}};
            case 3:
                // A file loses an empty dictionary with the last value that was put there.
                return below(3) == 0 && !applies_
                           ? NSDictionary{}
                           : NSDictionary{{"B", NSDictionary{{"C", anyLeaf()}}}};
            default:
                return anyLeaf();
        }
    }
    Request anyRequest() {
        const SettingPlace place = anyPlace();
        const PropertyListValue value = anyValue();
        log_ += " " + place.storedKeyPath() + "=" + jsonText(value);
        return {place, value, below(5) == 0 ? anyLeaf() : nullptr};
    }
    std::vector<Request> anyRequests(int most) {
        std::vector<Request> requests;
        const int count = 1 + below(most);
        for (int index = 0; index < count; ++index) requests.push_back(anyRequest());
        return requests;
    }

    [[nodiscard]] std::string shown() const { return jsonText(edits_.appliedTo(stored_)); }

    void act(int kind) {
        switch (kind) {
            case 6:
            case 7:
                if (edits_.canUndo()) undo();
                return;
            case 8:
                if (edits_.canRedo()) redo();
                return;
            case 9:
                return discard();
            case 10:
            case 11:
                return apply();
            default:
                return edit(kind);
        }
    }
    void edit(int kind) {
        log_ += "\nedit";
        // A bulk change or an import is many requests at once.
        const std::vector<Request> requests = anyRequests(kind == 0 ? 8 : 1);
        if (edits_.edit(requests, stored_, "Edit")) note();
        if (kind != 1) return;
        log_ += "\ncontinued";
        for (int move = 0; move < 3; ++move) {
            std::vector<Request> moved = requests;
            moved.front().value = anyLeaf();
            log_ += " " + jsonText(moved.front().value);
            if (edits_.edit(moved, stored_, "Edit", true)) noteDrag();
        }
    }
    void discard() {
        log_ += "\ndiscard";
        std::vector<SettingPlace> places;
        for (const auto& [place, edit] : edits_.edits())
            if (below(2) == 0) places.push_back(place);
        if (edits_.discard(places, "Discard")) note();
    }
    /// Some of the edits, or all.
    void apply() {
        log_ += "\napply";
        const bool appliesAll = below(2) == 0;
        std::vector<PendingEdit> applied;
        PendingEdits others;
        for (const auto& [place, edit] : edits_.edits())
            if (appliesAll || below(2) == 0) {
                applied.push_back(edit);
                others.edit({{place, edit.value, nullptr}}, stored_, "");
                log_ += " " + place.storedKeyPath();
            }
        const std::string before = shown();
        stored_ = others.appliedTo(stored_);
        edits_.applied(applied, "Apply");
        hasApplied_ = true;
        EXPECT_EQ(shown(), before) << log_;
    }
    void undo() {
        log_ += "\nundo";
        edits_.undo();
        if (hasApplied_) return;
        EXPECT_EQ(shown(), trees_[--position_]) << log_;
    }
    void redo() {
        log_ += "\nredo";
        edits_.redo();
        if (hasApplied_) return;
        EXPECT_EQ(shown(), trees_[++position_]) << log_;
    }
    /// A new step: what was undone can no longer be redone. Once edits were applied, several steps
    /// are one, so that only the first and the last tree are known.
    void note() {
        if (!hasApplied_) trees_.resize(++position_);
        trees_.push_back(shown());
    }
    /// The last step was changed, or has vanished, or there is a new one.
    void noteDrag() {
        if (hasApplied_) return note();
        const std::size_t count = edits_.undoCount();
        EXPECT_LE(std::max(count, position_) - std::min(count, position_), 1U) << log_;
        const bool hasVanished = count < position_;
        position_ = count;
        trees_.resize(position_ + 1);
        if (hasVanished)
            EXPECT_EQ(shown(), trees_.back()) << log_;
        else
            trees_.back() = shown();
    }

    void expectGood() {
        for (const Tool::EditConflict& one : edits_.conflicts(stored_))
            ADD_FAILURE() << "conflict, " << one.edit.place.storedKeyPath() << " "
                          << jsonText(one.edit.base) << log_;
        for (const auto& [place, edit] : edits_.edits())
            for (const auto& [other, otherEdit] : edits_.edits())
                EXPECT_TRUE(place == other ||
                            !Tool::isAtOrBelow(other.storedKeyPath(), place.storedKeyPath()))
                    << log_;
        EXPECT_EQ(edits_.edits().empty(), shown() == jsonText(stored_)) << log_;
    }

    std::mt19937 random_;
    bool applies_;
    NSDictionary stored_ = nullptr;
    PendingEdits edits_;
    std::vector<std::string> trees_;
    std::size_t position_ = 0;
    bool hasApplied_ = false;
    std::string log_;
};

constexpr unsigned sequences = 1'000;

}  // namespace

TEST(PendingEditsModel, UndoAndRedoGiveTheTreeOfEachStep) {
    for (unsigned seed = 0; seed < sequences && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Sequence(seed, false).run();
    }
}

TEST(PendingEditsModel, UndoToTheBeginningAndRedoToTheEndPassOverWhatWasApplied) {
    for (unsigned seed = 0; seed < sequences && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Sequence(seed, true).run();
    }
}
