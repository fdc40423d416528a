// SPDX-License-Identifier: MIT
// Random settings, filters and changes: tables and lists are what a slow and simple way makes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <set>

#include "Editing/RowsSupport.h"
#include "Rows/RowList.h"
#include "Text/JSON.h"
#include "Text/ValueText.h"

using namespace Tool;
using RowsSupport::keyPathsOf;
using RowsSupport::Random;
using RowsSupport::readAgain;
using RowsSupport::Settings;

namespace {

std::string textOf(const PropertyListValue& value) {
    return jsonText(orNullMarker(value));
}

std::string textOf(const SettingRow& row) {
    std::string text = textOf(row.effective) + " " + textOf(row.stored) + " " +
                       textOf(row.byDefault) + " " + layerWord(row.layer);
    for (const bool flag :
         {row.known != nullptr, row.isRecord, row.isLocked, row.isModified, row.isOfOtherKind})
        text += flag ? " yes" : " no";
    return text;
}

using Rows = std::map<std::string, std::string>;
Rows rowsOf(const SettingsTable& table) {
    Rows rows;
    for (const SettingRow& row : table.rows()) rows[row.keyPath] = textOf(row);
    return rows;
}

std::string textOf(const SettingsTable::Change& change) {
    std::string text;
    for (const auto* const keyPaths : {&change.changed, &change.added, &change.removed}) {
        for (const std::string& keyPath : *keyPaths) text += keyPath + " ";
        text += "\n";
    }
    return text;
}

SettingsTable::Change differenceBetween(const Rows& before, const Rows& after) {
    SettingsTable::Change change;
    for (const auto& [keyPath, text] : before) {
        const auto found = after.find(keyPath);
        if (found == after.end()) change.removed.push_back(keyPath);
        if (found != after.end() && found->second != text) change.changed.push_back(keyPath);
    }
    for (const auto& [keyPath, text] : after)
        if (!before.contains(keyPath)) change.added.push_back(keyPath);
    for (auto* const keyPaths : {&change.changed, &change.added, &change.removed})
        std::ranges::sort(*keyPaths, standsBefore);
    return change;
}

std::set<std::string> anyKeyPaths(Random& random) {
    std::set<std::string> keyPaths;
    for (std::size_t more = random.below(4); more > 0; --more)
        keyPaths.insert(random.plainKeyPath());
    return keyPaths;
}

std::string anyFilter(Random& random) {
    static const std::vector<std::string> words = {"",
                                                   "",
                                                   "a",
                                                   "b.",
                                                   "-a",
                                                   "cpu",
                                                   "1",
                                                   "is:modified",
                                                   "-is:modified",
                                                   "kind:array",
                                                   "layer:stored",
                                                   "layer:default",
                                                   "is:record",
                                                   "is:pending",
                                                   "scope:profile"};
    const std::string word = random.of(words);
    return word + " " + random.of(words);
}

/// A tree as people would draw it: levels by name, each with its rows.
struct Branch {
    std::map<std::string, std::string> rows;  // key paths by name
    std::map<std::string, Branch> levels;

    void add(const std::string& name, const std::string& keyPath) {
        const std::size_t end = name.find('.');
        if (end == name.npos)
            rows[name] = keyPath;
        else
            levels[name.substr(0, end)].add(name.substr(end + 1), keyPath);
    }
    [[nodiscard]] std::size_t count() const {
        std::size_t count = rows.size();
        for (const auto& [name, level] : levels) count += level.count();
        return count;
    }
};

class NaiveTree {
  public:
    NaiveTree(const std::vector<std::string>& keyPaths,
              std::function<bool(const std::string&)> isOpen)
        : isOpen_(std::move(isOpen)) {
        Branch root;
        for (const std::string& keyPath : keyPaths) root.add(keyPath, keyPath);
        show(root, "", 0);
    }
    std::vector<std::string> lines;

  private:
    void show(const Branch& branch, const std::string& start, std::size_t depth) {
        std::set<std::string> names;
        for (const auto& [name, row] : branch.rows) names.insert(name);
        for (const auto& [name, level] : branch.levels) names.insert(name);
        for (const std::string& name : names) {
            if (branch.rows.contains(name))
                lines.push_back(std::to_string(depth) + " row " + name + " " + start + name);
            if (branch.levels.contains(name))
                showLevel(branch.levels.at(name), name, start + name, depth);
        }
    }
    void showLevel(const Branch& level, const std::string& name, const std::string& keyPath,
                   std::size_t depth) {
        if (level.rows.empty() && level.levels.size() == 1) {
            const auto& [single, below] = *level.levels.begin();
            showLevel(below, name + "." + single, keyPath + "." + single, depth);
            return;
        }
        const bool isOpen = isOpen_(keyPath);
        lines.push_back(std::to_string(depth) + (isOpen ? " open " : " closed ") + name + " " +
                        keyPath + " " + std::to_string(level.count()));
        if (isOpen) show(level, keyPath + ".", depth + 1);
    }
    std::function<bool(const std::string&)> isOpen_;
};

std::vector<std::string> linesOf(const RowList& list) {
    std::vector<std::string> texts;
    for (const RowLine& line : list.lines()) {
        const std::string start = std::to_string(line.depth);
        texts.push_back(line.isLevel()
                            ? start + (line.isExpanded ? " open " : " closed ") + line.name + " " +
                                  line.keyPath + " " + std::to_string(line.count)
                            : start + " row " + line.name + " " + line.keyPath);
    }
    return texts;
}

std::vector<std::string> keyPathsLetThrough(const SettingsTable& table, const RowFilter& filter) {
    std::vector<std::string> keyPaths;
    for (const SettingRow& row : table.rows())
        if (filter.matches(row, searchableText(row), {})) keyPaths.push_back(row.keyPath);
    return keyPaths;
}

void expectRowsOfLines(const RowList& list, const SettingsTable& table) {
    for (const RowLine& line : list.lines()) {
        if (line.isLevel())
            EXPECT_EQ(
                list.keyPathsBelow(static_cast<std::size_t>(&line - list.lines().data())).size(),
                line.count);
        else
            EXPECT_EQ(table.rows()[line.row].keyPath, line.keyPath);
    }
}

/// A line, and the rows at and below it.
struct SeenLine {
    RowLine line;
    std::vector<std::string> keyPaths;
};

std::vector<SeenLine> seenLines(const RowList& list) {
    std::vector<SeenLine> seen;
    for (std::size_t line = 0; line < list.lines().size(); ++line)
        seen.push_back({list.lines()[line], list.keyPathsBelow(line)});
    return seen;
}

std::set<std::pair<std::string, bool>> linesAndWhetherLevels(const RowList& list) {
    std::set<std::pair<std::string, bool>> lines;
    for (const RowLine& line : list.lines()) lines.emplace(line.keyPath, line.isLevel());
    return lines;
}

void expectStillThere(const std::vector<SeenLine>& seen, const RowList& list,
                      const SettingsTable& table) {
    const auto after = linesAndWhetherLevels(list);
    for (const auto& [line, keyPaths] : seen) {
        const bool hasRows = std::ranges::any_of(
            keyPaths, [&table](const std::string& row) { return table.at(row) != nullptr; });
        EXPECT_TRUE(!hasRows || after.contains({line.keyPath, line.isLevel()})) << line.keyPath;
    }
}

}  // namespace

TEST(RowModel, AnUpdateGivesTheRowsOfAFreshTableAndTellsTheDifference) {
    for (unsigned seed = 1; seed <= 12; ++seed) {
        Random random(seed);
        const std::string profile = random.of<std::string>({"", "", "work", "a.b", "default"});
        NSMutableDictionary tree = random.tree();
        Settings settings(tree, profile);
        for (int step = 0; step < 25; ++step) {
            SCOPED_TRACE("seed " + std::to_string(seed) + ", step " + std::to_string(step));
            const Rows before = rowsOf(settings.table);
            for (std::size_t changes = random.below(4); changes > 0; --changes) random.change(tree);
            const NSDictionary stored = random.oneIn(2) ? readAgain(tree) : tree.copy();
            const auto change = settings.table.update(snapshotOfSettings(stored));
            const Settings fresh(stored, profile);
            ASSERT_EQ(rowsOf(settings.table), rowsOf(fresh.table));
            ASSERT_EQ(keyPathsOf(settings.table), keyPathsOf(fresh.table));
            ASSERT_EQ(settings.table.unreachedCount(), fresh.table.unreachedCount());
            ASSERT_EQ(textOf(change), textOf(differenceBetween(before, rowsOf(fresh.table))));
        }
    }
}

TEST(RowModel, AdditionalKeyPathsAreTheRowsOfAFreshTableWithThem) {
    Random random(20);
    NSMutableDictionary tree = random.tree();
    Settings settings(tree);
    for (int step = 0; step < 100; ++step) {
        SCOPED_TRACE(step);
        const Rows before = rowsOf(settings.table);
        const std::set<std::string> additional = anyKeyPaths(random);
        const auto change = settings.table.setAdditionalKeyPaths(additional);
        Settings fresh(nullptr);
        fresh.table.setAdditionalKeyPaths(additional);
        fresh.table.update(snapshotOfSettings(tree));
        ASSERT_EQ(rowsOf(settings.table), rowsOf(fresh.table));
        ASSERT_EQ(textOf(change), textOf(differenceBetween(before, rowsOf(fresh.table))));
        random.change(tree);
        settings.table.update(snapshotOfSettings(readAgain(tree)));
    }
}

TEST(RowModel, TheLinesAreThoseOfATreeMadeOfNames) {
    for (unsigned seed = 1; seed <= 100; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        Settings settings(random.tree());
        settings.table.setAdditionalKeyPaths(anyKeyPaths(random));
        RowList list(settings.table);
        list.setShowsRecords(true);
        const RowFilter filter(anyFilter(random));
        list.setFilter(filter);
        std::set<std::string> exceptions;
        const bool isUsuallyOpen = !filter.isEmpty();
        const std::vector<std::string> keyPaths = keyPathsLetThrough(settings.table, filter);
        for (const std::string& keyPath : keyPaths) {
            const std::size_t end = keyPath.rfind('.');
            if (isUsuallyOpen && end != keyPath.npos && random.oneIn(4)) {
                list.setExpanded(keyPath.substr(0, end), false);
                exceptions.insert(keyPath.substr(0, end));
            } else if (!isUsuallyOpen && random.oneIn(4)) {
                list.reveal(keyPath);
                for (std::size_t dot = keyPath.find('.'); dot != keyPath.npos;
                     dot = keyPath.find('.', dot + 1))
                    exceptions.insert(keyPath.substr(0, dot));
            }
        }
        list.arrange();
        const NaiveTree naive(keyPaths, [&](const std::string& level) {
            return exceptions.contains(level) != isUsuallyOpen;
        });
        ASSERT_EQ(linesOf(list), naive.lines);
        ASSERT_EQ(list.matchCount(), keyPaths.size());
        expectRowsOfLines(list, settings.table);
    }
}

TEST(RowModel, FollowingChangesRemovesNoLineThatIsStillThere) {
    for (unsigned seed = 1; seed <= 30; ++seed) {
        Random random(seed);
        NSMutableDictionary tree = random.tree();
        Settings settings(tree);
        RowList list(settings.table);
        list.setForm(random.oneIn(4) ? RowList::Form::Flat : RowList::Form::Tree);
        list.setFilter(RowFilter(anyFilter(random)));
        list.setShowsRecords(random.oneIn(2));
        list.arrange();
        for (int step = 0; step < 20; ++step) {
            SCOPED_TRACE("seed " + std::to_string(seed) + ", step " + std::to_string(step));
            if (!list.lines().empty() && random.oneIn(2)) {
                const RowLine line = random.of(list.lines());
                if (line.isLevel()) list.setExpanded(line.keyPath, !line.isExpanded);
                list.arrange();
            }
            const std::vector<SeenLine> seen = seenLines(list);
            const auto before = linesAndWhetherLevels(list);
            for (std::size_t changes = random.below(5); changes > 0; --changes) random.change(tree);
            const bool hasChanged =
                list.follow(settings.table.update(snapshotOfSettings(readAgain(tree))));
            expectStillThere(seen, list, settings.table);
            ASSERT_EQ(hasChanged, linesAndWhetherLevels(list) != before);
            expectRowsOfLines(list, settings.table);
        }
    }
}
