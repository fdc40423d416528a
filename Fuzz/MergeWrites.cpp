// SPDX-License-Identifier: MIT
// Several processes with unsaved writes and one file in memory: after each save the file holds the
// last saved write of each key path, and every tree is the file with the unsaved writes on top.

#include <array>
#include <string>
#include <vector>

#include "Fuzzing.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "QRVSettings/QRVSettings+Writes.h"
#include "Store/FlatSettings.h"

using Fuzzing::Input;
using Fuzzing::require;
using QRVInside::frozen;
using QRVInside::Writes;

namespace {

/// A tree, and what the model makes of it.
struct Tree {
    NSDictionary tree = nullptr;
    FlatSettings model;
};

struct ModelWrite {
    std::string keyPath;
    PropertyListValue value;
};

/// As one process has them: of `Writes`, and of the model in order.
struct Unsaved {
    Writes writes;
    std::vector<ModelWrite> list;
    bool isTreeReplaced = false;
    FlatSettings tree;

    void add(const std::string& keyPath, const PropertyListValue& value) {
        QRVInside::NewWrite write;
        write.record.keyPath = keyPath;
        write.value = frozen(value);
        writes.join(std::move(write));
        list.push_back({keyPath, frozen(value)});
    }
    void replaceTree(const NSDictionary& whole) {
        const NSDictionary immutable = frozen(whole).dictionary();
        *this = {};
        writes.replaceTree(immutable);
        isTreeReplaced = true;
        tree = leavesOf(immutable);
    }
    void append(const Unsaved& later) {
        writes.append(later.writes);
        if (later.isTreeReplaced) {
            isTreeReplaced = true;
            tree = later.tree;
            list.clear();
        }
        list.insert(list.end(), later.list.begin(), later.list.end());
    }
    [[nodiscard]] Tree onTopOf(const Tree& start) const {
        Tree result{writes.appliedTo(start.tree, Writes::Logging::Off),
                    isTreeReplaced ? tree : start.model};
        for (const ModelWrite& write : list) applyWrite(result.model, write.keyPath, write.value);
        return result;
    }
};

void requireSame(const Tree& tree, std::string_view what) {
    const FlatSettings actual = leavesOf(tree.tree);
    require(actual.size() == tree.model.size(), what, tree.tree);
    for (const auto& [keyPath, value] : tree.model) {
        const auto found = actual.find(keyPath);
        require(found != actual.end() && Fuzzing::isSameTree(found->second, value), what, keyPath,
                tree.tree, value);
    }
}

/// Takes trees and key paths without a "." inside a key from an input.
class Decoder {
  public:
    explicit Decoder(Input& input) : input_(input) {}

    std::string key() {
        constexpr std::array keys{"A", "B", "C", ""};
        return keys.at(input_.number(keys.size()));
    }
    std::string keyPath() {
        std::string text = key();
        for (std::size_t more = input_.number(4); more > 0; --more) text += "." + key();
        return text;
    }
    NSDictionary dictionary(int levels) {
        const NSMutableDictionary entries;
        const std::size_t head = input_.byte();
        for (std::size_t count = head / 2 % 4; count > 0; --count) {
            const std::string name = key();
            entries.setObjectForKey(value(levels - 1), name);
        }
        return head % 2 == 0 ? entries.copy() : NSDictionary(entries);
    }
    PropertyListValue value(int levels) {
        const std::size_t choice = input_.number(levels > 0 ? 8 : 4);
        if (choice < 4) return static_cast<int>(choice);
        if (choice == 4) return NSMutableArray{value(levels - 1), 1};
        return dictionary(levels);
    }

  private:
    Input& input_;
};

class Process {
  public:
    void write(Decoder& values, bool isRemoval) {
        const std::string keyPath = values.keyPath();
        const PropertyListValue value = isRemoval ? PropertyListValue() : values.value(3);
        if (leadsThroughALeaf(stored().model, keyPath)) return;  // refused by the store
        (isInBatch_ ? ofBatch_ : waiting_).add(keyPath, value);
    }
    void openBatch() { isInBatch_ = true; }
    void commit() {
        isInBatch_ = false;
        waiting_.append(std::exchange(ofBatch_, {}));
    }
    void replaceTree(const NSDictionary& tree) {
        isInBatch_ = false;
        ofBatch_ = {};
        waiting_.replaceTree(tree);
    }
    void beginSave() {
        if (!isSaving_) std::swap(beingSaved_, waiting_);
        isSaving_ = true;
    }
    void endSave(Tree& file, bool succeeds) {
        if (!std::exchange(isSaving_, false)) return;
        known_ = file;
        if (succeeds) {
            known_ = file = beingSaved_.onTopOf(file);
        } else {
            beingSaved_.append(waiting_);
            std::swap(beingSaved_, waiting_);
        }
        beingSaved_ = {};
    }
    void reload(const Tree& file) { known_ = file; }

    [[nodiscard]] Tree stored() const {
        return ofBatch_.onTopOf(waiting_.onTopOf(beingSaved_.onTopOf(known_)));
    }

  private:
    Tree known_;
    Unsaved beingSaved_;
    Unsaved waiting_;
    Unsaved ofBatch_;
    bool isSaving_ = false;
    bool isInBatch_ = false;
};

void run(Process& process, Tree& file, Input& input) {
    Decoder values(input);
    switch (input.number(16)) {
        case 0:
        case 1:
        case 2:
            return process.write(values, true);
        case 3:
            return process.openBatch();
        case 4:
            return process.commit();
        case 5:
            return process.replaceTree(values.dictionary(3));
        case 6:
        case 7:
            return process.beginSave();
        case 8:
        case 9:
            return process.endSave(file, true);
        case 10:
            return process.endSave(file, false);
        case 11:
            return process.reload(file);
        case 12:  // The file is deleted.
            file = {};
            return;
        default:
            return process.write(values, false);
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzzing::silenceLogs();
    Input input(Fuzzing::textOf(data, size));
    std::array<Process, 3> processes;
    Tree file;
    while (!input.isAtEnd()) {
        Process& process = processes.at(input.number(processes.size()));
        run(process, file, input);
        requireSame(file, "the file holds the last saved write of each key path");
        requireSame(process.stored(), "a stored tree is the file with what is unsaved on top");
    }
    for (Process& process : processes) {
        process.commit();
        process.endSave(file, true);
        process.beginSave();
        process.endSave(file, true);
    }
    requireSame(file, "the file holds the last saved write of each key path at the end");
    for (Process& process : processes) {
        process.reload(file);
        require(leavesOf(process.stored().tree) == leavesOf(file.tree),
                "all trees end as the file");
    }
    return 0;
}
