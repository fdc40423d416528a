// SPDX-License-Identifier: MIT
// Every combination of the table by which a change is news or not, against the same table written
// in another way.

#include "Platform/Presenters/ChangeEvidence.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

using namespace QRVPlatform;

namespace {

using Kind = FolderWatch::Kind;

constexpr FileIdentity someFile{
    .device = 1, .inode = 2, .size = 3, .modificationTime = 4, .changeTime = 5};

FileIdentity withChangeTime(std::int64_t time) {
    FileIdentity file = someFile;
    file.changeTime = time;
    return file;
}

FileIdentity withSize(std::uint64_t size) {
    FileIdentity file = someFile;
    file.size = size;
    return file;
}

/// One combination, as text: for each yes or no `y` or `n`, in the order of the names below, then
/// the file, a letter of `files`.
struct Combination {
    ChangeEvidence evidence;
    FoundFile file;
    std::string text;
};

/// No file now and last time, the same one, another change time, another size, gone, come.
constexpr std::string_view files = "-=~#<>";

void setFile(FoundFile& file, char letter) {
    file.lastTime = letter == '-' || letter == '>' ? FileIdentity{} : someFile;
    if (letter == '=' || letter == '>') file.now = someFile;
    if (letter == '~') file.now = withChangeTime(6);
    if (letter == '#') file.now = withSize(6);
}

std::vector<Combination> allCombinations() {
    std::vector<Combination> all;
    for (unsigned bits = 0; bits < 256; ++bits)
        for (const char letter : files) {
            Combination one;
            const std::vector<bool*> answers = {&one.evidence.mustNotify,
                                                &one.file.isOwn,
                                                &one.evidence.isReplacedOrClosed,
                                                &one.file.isRouteNew,
                                                &one.file.isWriting,
                                                &one.file.isPolled,
                                                &one.evidence.isRouteDoubtful,
                                                &one.evidence.isNeighbourTouched};
            for (std::size_t index = 0; index < answers.size(); ++index) {
                *answers[index] = (bits >> index & 1U) != 0;
                one.text += *answers[index] ? 'y' : 'n';
            }
            setFile(one.file, letter);
            one.text += letter;
            all.push_back(one);
        }
    return all;
}

/// Each combination is of one row. `*` is any answer; what follows the answers are the files. The
/// last two answers only cause the decision.
struct Row {
    std::string_view answers;
    std::string_view files;
    bool isNews;

    [[nodiscard]] bool holds(const Combination& combination) const {
        for (std::size_t index = 0; index < answers.size(); ++index)
            if (answers[index] != '*' && answers[index] != combination.text[index]) return false;
        return files.find(combination.text.back()) != std::string_view::npos;
    }
};

// must notify, own, replaced or closed, new route, writing, polled, doubtful route, neighbour
const std::vector<Row> table = {
    {"y*******", "-=~#<>", true},   //
    {"ny******", "-=~#<>", false},  //
    {"nny*****", "-=~#<>", true},   //
    {"nnn*****", "-", false},       //
    {"nnny****", "=~#<>", true},    //
    {"nnnny***", "=~#<>", false},   //
    {"nnnnn***", "#<>", true},      //
    {"nnnnny**", "~", true},        //
    {"nnnnnn**", "~", false},       //
    {"nnnnn***", "=", false},
};

struct Note {
    Kind kind;
    bool wasWriting;
    bool mustNotify;
    bool isReplacedOrClosed;
    bool hasNewEntry;
    bool isWriting;
};

const std::vector<Note> notes = {
    {Kind::Created, false, false, false, true, true},
    {Kind::Created, true, false, false, true, true},
    {Kind::Written, false, false, false, false, true},
    {Kind::Written, true, false, false, false, true},
    {Kind::WritingEnded, false, false, true, false, false},
    {Kind::WritingEnded, true, true, true, false, false},
    {Kind::Attributes, false, true, false, false, false},
    {Kind::Attributes, true, false, false, false, true},
    {Kind::MovedIn, false, false, true, true, false},
    {Kind::MovedIn, true, true, true, true, false},
    {Kind::Gone, false, true, false, false, false},
    {Kind::Gone, true, true, false, false, false},
    {Kind::FolderLost, false, false, false, false, false},
    {Kind::FolderLost, true, false, false, false, true},
    {Kind::EventsLost, false, false, false, false, false},
    {Kind::EventsLost, true, false, false, false, true},
};

}  // namespace

TEST(ChangeEvidence, EveryCombinationIsNewsOrNotAsTheTableSays) {
    const std::vector<Combination> all = allCombinations();
    EXPECT_EQ(all.size(), 256U * 6U);
    for (const Combination& combination : all) {
        int rows = 0;
        for (const Row& row : table)
            if (row.holds(combination)) {
                ++rows;
                EXPECT_EQ(isNews(combination.evidence, combination.file), row.isNews)
                    << combination.text;
            }
        EXPECT_EQ(rows, 1) << combination.text;
    }
}

TEST(ChangeEvidence, EveryEventIsNotedAsTheTableSays) {
    for (const Note& note : notes)
        for (const bool wasSet : {false, true}) {
            ChangeEvidence evidence{.mustNotify = wasSet,
                                    .isReplacedOrClosed = wasSet,
                                    .hasNewEntry = wasSet,
                                    .isRouteDoubtful = wasSet,
                                    .isNeighbourTouched = wasSet};
            const std::string what = "event " + std::to_string(static_cast<int>(note.kind)) +
                                     (note.wasWriting ? " while writing" : "");
            EXPECT_EQ(evidence.note(note.kind, note.wasWriting), note.isWriting) << what;
            EXPECT_EQ(evidence.mustNotify, note.mustNotify || wasSet) << what;
            EXPECT_EQ(evidence.isReplacedOrClosed, note.isReplacedOrClosed || wasSet) << what;
            EXPECT_EQ(evidence.hasNewEntry, note.hasNewEntry || wasSet) << what;
            EXPECT_EQ(evidence.isRouteDoubtful, wasSet) << what;
            EXPECT_EQ(evidence.isNeighbourTouched, wasSet) << what;
        }
}

TEST(ChangeEvidence, ANewEntryAloneWantsNoDecision) {
    EXPECT_FALSE(ChangeEvidence{}.wantsDecision());
    EXPECT_FALSE(ChangeEvidence{.hasNewEntry = true}.wantsDecision());
    EXPECT_TRUE(ChangeEvidence{.mustNotify = true}.wantsDecision());
    EXPECT_TRUE(ChangeEvidence{.isReplacedOrClosed = true}.wantsDecision());
    EXPECT_TRUE(ChangeEvidence{.isRouteDoubtful = true}.wantsDecision());
    EXPECT_TRUE(ChangeEvidence{.isNeighbourTouched = true}.wantsDecision());
}
