// SPDX-License-Identifier: MIT
// Programs that save, and enter it in any order: what is entered is what they did.

#include <deque>
#include <functional>
#include <map>
#include <random>

#include "Database.h"
#include "Entry.h"
#include "HistorySupport.h"
#include "Support/HostProcess.h"

using namespace HistorySupport;
using namespace QRVHistoryInside;

namespace {

/// A program that takes part, with the saves that it has not entered yet.
struct Program {
    Writer writer;
    std::deque<OwnSave> pending;
};

/// In one transaction, as a process does.
void enter(const std::function<void(QRVHistoryInside::Entry&)>& work) {
    Database database(QRVHistoryLocation(), Database::Access::ReadAndWrite);
    Transaction transaction(database.connection());
    QRVHistoryInside::Entry entry(database, QRVSettingsLocation(),
                                  NSDate::now().timeIntervalSince1970());
    work(entry);
    transaction.commit();
}

/// The settings file replaced by this tree, on top of another.
QRVFileChange savedChange(const NSDictionary& tree) {
    QRVFileChange change;
    change.isBeforeKnown = true;
    change.before = StoreSupport::fileTree();
    change.fileBefore = QRVPlatform::identityOfFileAtPath(QRVSettingsLocation());
    change.after = tree;
    otherReplaces(tree);
    change.fileAfter = QRVPlatform::identityOfFileAtPath(QRVSettingsLocation());
    return change;
}

class Model {
  public:
    explicit Model(unsigned seed) : random_(seed) {
        for (int number = 1; number <= 3; ++number)
            programs_.push_back({{"program" + std::to_string(number), number, "set"}, {}});
        std::filesystem::create_directories(
            std::filesystem::path(QRVSettingsLocation()).parent_path());
        if (below(2) == 0) replace(changedTree());
        std::filesystem::create_directories(
            std::filesystem::path(QRVHistoryLocation()).parent_path());
        StoreSupport::writeFile(QRVHistoryLocation(), "");
        first_ = HostProcess::settingsOf(StoreSupport::fileTree());
        enterOthers();
    }

    void step() {
        Program& program = programs_[below(programs_.size())];
        switch (below(9)) {
            case 0:
            case 1:
            case 2:
                return save(program, changedTree());
            case 3:
                return replace(changedTree());
            case 4:
                if (below(3) == 0) return removeFile();
                return replace(StoreSupport::fileTree());
            case 5:
                return enterOthers();
            case 6:
                if (below(4) == 0) program.pending.clear();  // It is killed.
                return;
            default:
                return enterOne(program);
        }
    }

    void finish() {
        for (bool isLeft = true; isLeft;) {
            enterOne(programs_[below(programs_.size())]);
            isLeft = false;
            for (const Program& program : programs_) isLeft = isLeft || !program.pending.empty();
        }
        enterOthers();
    }

    void check() {
        const auto all = saves();
        HostProcess::Settings settings = first_;
        for (auto save = all.rbegin(); save != all.rend(); ++save)
            for (const QRVHistoryChange& change : save->changes) {
                const auto known = settings.find(change.keyPath);
                EXPECT_EQ(change.before, known == settings.end() ? nullptr : known->second)
                    << lineOf(*save);
                if (change.after.isNull())
                    settings.erase(change.keyPath);
                else
                    settings[change.keyPath] = change.after;
            }
        EXPECT_EQ(settings, HostProcess::settingsOf(StoreSupport::fileTree()));
        std::multiset<std::string> own;
        for (const QRVHistorySave& save : all)
            if (!save.program.empty()) own.insert(lineOf(save));
        EXPECT_EQ(own, entered_);
    }

    void save(Program& program, const NSDictionary& tree) {
        program.pending.push_back({savedChange(tree), program.writer});
    }

    void enterOthers() {
        enter([](QRVHistoryInside::Entry& entry) { entry.enterOthers(); });
    }

    void enterOne(Program& program) {
        if (program.pending.empty()) return;
        const OwnSave save = program.pending.front();
        program.pending.pop_front();
        enter([&save](QRVHistoryInside::Entry& entry) { entry.enter(save); });
        QRVHistorySave line;
        line.program = program.writer.program;
        line.origin = program.writer.origin;
        for (const auto& [keyPath, change] : changesBetween(save.change.before, save.change.after))
            line.changes.push_back({keyPath, valueOf(change.before), valueOf(change.after)});
        if (!line.changes.empty()) entered_.insert(lineOf(line));
    }

  private:
    std::size_t below(std::size_t end) {
        return std::uniform_int_distribution<std::size_t>(0, end - 1)(random_);
    }

    NSDictionary changedTree() {
        const NSDictionary stored = StoreSupport::fileTree();
        NSMutableDictionary tree = stored.isNull() ? NSMutableDictionary() : stored.mutableCopy();
        for (std::size_t count = below(3); count > 0; --count) {
            const std::size_t value = below(3);
            tree.setObjectForKey(value == 0 ? PropertyListValue() : PropertyListValue(value),
                                 "Key" + std::to_string(below(4)));
        }
        return tree.copy();
    }

    static void replace(const NSDictionary& tree) {
        otherReplaces(tree.isNull() ? NSDictionary() : tree);
    }

    static void removeFile() { std::filesystem::remove(QRVSettingsLocation()); }

    std::mt19937 random_;
    std::vector<Program> programs_;
    HostProcess::Settings first_;
    std::multiset<std::string> entered_;
};

}  // namespace

TEST(EntryModel, WhateverTheOrderOfEntriesEachSaveIsEnteredOnceAndTheRestIsUnknown) {
    const int rounds = HostProcess::sizeFromEnvironment("QRV_HISTORY_ROUNDS", 12);
    for (int round = 1; round <= rounds && !HasFailure(); ++round) {
        SCOPED_TRACE("seed " + std::to_string(round));
        std::filesystem::remove_all(getenv("XDG_STATE_HOME"));
        std::filesystem::remove(QRVSettingsLocation());
        Model model(static_cast<unsigned>(round));
        for (int step = 0; step < 40; ++step) model.step();
        model.finish();
        model.check();
    }
}

TEST(EntryModel, ManySavesThatAreEnteredLateKeepTheirOrder) {
    Program program{{"test", 1, "set"}, {}};
    Model model(0);
    constexpr int count = 120;
    for (int value = 1; value <= count; ++value) model.save(program, NSDictionary{{"A", value}});
    model.enterOthers();
    while (!program.pending.empty()) model.enterOne(program);
    const auto all = saves();
    ASSERT_GE(all.size(), static_cast<std::size_t>(count));
    for (int value = 1; value <= count; ++value)
        EXPECT_EQ(all[static_cast<std::size_t>(count - value)].changes.back().after, value);
}

TEST(EntryModel, AnAbsenceThatIsFoundDuringASaveIsBeforeIt) {
    const std::string path = QRVSettingsLocation();
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    StoreSupport::writeFile(QRVHistoryLocation(), "");
    const auto written = [](const NSDictionary& tree) {
        return NSPropertyListSerialization::dataWithPropertyList(tree).bytes;
    };
    QRVFileChange first;
    first.isBeforeKnown = true;
    first.after = NSDictionary{{"A", 1}};
    ASSERT_FALSE(QRVPlatform::replaceFile(path + ".new", written(first.after)));
    enter([](QRVHistoryInside::Entry& entry) { entry.enterOthers(); });
    std::filesystem::rename(path + ".new", path);
    first.fileAfter = QRVPlatform::identityOfFileAtPath(path);

    QRVFileChange second;
    second.isBeforeKnown = true;
    second.before = first.after;
    second.fileBefore = first.fileAfter;
    second.after = NSDictionary{{"A", 2}};
    otherReplaces(second.after);
    second.fileAfter = QRVPlatform::identityOfFileAtPath(path);
    const Writer writer{"test", 1, "set"};
    enter([&](QRVHistoryInside::Entry& entry) { entry.enter({first, writer}); });
    enter([&](QRVHistoryInside::Entry& entry) { entry.enter({second, writer}); });
    EXPECT_EQ(lines(), (Lines{"test/set: A none > 1", "test/set: A 1 > 2"}));
}

TEST(EntryModel, ASaveOverADamagedFileIsEnteredOnceWhoeverIsFirst) {
    for (const bool isLate : {false, true}) {
        SCOPED_TRACE(isLate);
        std::filesystem::remove_all(getenv("XDG_STATE_HOME"));
        StoreSupport::writeSettings(NSDictionary{{"A", 1}});
        StoreSupport::writeFile(QRVHistoryLocation(), "");
        enter([](QRVHistoryInside::Entry& entry) { entry.enterOthers(); });

        QRVFileChange first = savedChange(NSDictionary{{"A", 2}});
        first.isBeforeKnown = false;
        first.before = nullptr;
        const QRVFileChange second = savedChange(NSDictionary{{"A", 2}, {"B", 3}});
        const OwnSave saves[] = {{first, {"first", 1, "set"}}, {second, {"second", 2, "set"}}};
        enter([&](QRVHistoryInside::Entry& entry) { entry.enter(saves[isLate ? 1 : 0]); });
        enter([&](QRVHistoryInside::Entry& entry) { entry.enter(saves[isLate ? 0 : 1]); });
        enter([&](QRVHistoryInside::Entry& entry) { entry.enter(saves[0]); });
        enter([](QRVHistoryInside::Entry& entry) { entry.enterOthers(); });
        EXPECT_EQ(lines(), (Lines{"first/set: A 1 > 2", "second/set: B none > 3"}));
    }
}
