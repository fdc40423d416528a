// SPDX-License-Identifier: MIT
// Values in editors: what is given stays as it is, and what is typed becomes a value of the same
// kind with every digit.

#include <gtest/gtest.h>

#include <QComboBox>
#include <QSignalSpy>
#include <QToolButton>
#include <cstdint>
#include <limits>

#include "Window/EditorSupport.h"

using namespace EditorSupport;

namespace {

std::vector<PropertyListValue> nastyValues() {
    using Integers = std::numeric_limits<std::int64_t>;
    const NSDate fraction(631152000.123456);
    return {true,
            false,
            0,
            7,
            1234567,
            std::int64_t{9007199254740993},
            std::uint64_t{18446744073709551615U},
            Integers::max(),
            Integers::min(),
            0.1,
            1e300,
            1.0,
            -0.0,
            std::nan(""),
            std::numeric_limits<double>::infinity(),
            5e-324,
            fraction,
            NSDate(-1e15),
            "",
            "true",
            "007",
            "12",
            " blanks ",
            "line\nand\ttab",
            "\r\n carriage",
            "a\xe2\x80\xa9"
            "b\xc2\xa0"
            "c\xe2\x80\xa8"
            "d",
            std::string("nul\0inside", 10),
            std::string(40'000, 'x'),
            "\xd7\xa9\xd7\x9c\xd7\x95\xd7\x9d",
            "1 0.321 0.341 1",
            "0.2 0.4 2 1",
            NSData(std::string("\x01\x02\xff\0", 4)),
            NSData(""),
            NSArray(),
            NSDictionary(),
            NSArray{1, 1.0, "1", true, fraction, NSData("ab")},
            NSDictionary{{"a.b", NSArray{NSDictionary{{"$date", "no"}}, fraction}},
                         {"data", NSData("x")},
                         {"", std::uint64_t{18446744073709551615U}}}};
}

std::string nameOf(Place place) {
    return place == Place::Cell ? "Cell" : "Form";
}

class EditorsOfEachPlace : public testing::TestWithParam<Place> {};

}  // namespace

TEST_P(EditorsOfEachPlace, OpenedAndClosedGiveTheValueItself) {
    for (const PropertyListValue& value : nastyValues())
        for (const char* const keyPath : {"A.B", "A.Color"}) {
            const Desk desk(settingOf(value, keyPath), GetParam());
            EXPECT_FALSE(desk.editor->isChanged()) << value;
            const QSignalSpy edited(desk.editor, &ValueEditor::edited);
            const QSignalSpy committed(desk.editor, &ValueEditor::committed);
            ASSERT_TRUE(desk.editor->value()) << value;
            EXPECT_TRUE(isSame(*desk.editor->value(), value)) << value;
            desk.press(Qt::Key_Return, Qt::ControlModifier);
            EXPECT_EQ(committed.count(), 1) << value;
            EXPECT_TRUE(isSame(*desk.editor->value(), value)) << value;
            EXPECT_EQ(edited.count(), 0) << value;
            EXPECT_EQ(desk.message(), "") << value;
        }
}

TEST_P(EditorsOfEachPlace, GiveTheValueItselfAgainWhenWhatIsTypedIsTakenBack) {
    for (const PropertyListValue& value : nastyValues()) {
        const Desk desk(settingOf(value), GetParam());
        if (qobject_cast<QComboBox*>(desk.input()) != nullptr) continue;
        QTest::keyClicks(desk.input(), QStringLiteral("1"));
        desk.press(Qt::Key_Backspace);
        ASSERT_TRUE(desk.editor->value()) << value;
        EXPECT_TRUE(isSame(*desk.editor->value(), value)) << value;
        EXPECT_FALSE(desk.editor->isChanged()) << value;
    }
}

TEST_P(EditorsOfEachPlace, HaveANameForScreenReadersAndCloseOnEscape) {
    for (const PropertyListValue& value : nastyValues()) {
        const Desk desk(settingOf(value), GetParam());
        EXPECT_EQ(desk.input()->accessibleName(), QStringLiteral("Value of A.B"));
        EXPECT_FALSE(desk.part<QToolButton>()->accessibleName().isEmpty());
        const QSignalSpy cancelled(desk.editor, &ValueEditor::cancelled);
        desk.press(Qt::Key_Escape);
        EXPECT_EQ(cancelled.count(), 1);
    }
}

INSTANTIATE_TEST_SUITE_P(Places, EditorsOfEachPlace, testing::Values(Place::Cell, Place::Form),
                         [](const auto& place) { return nameOf(place.param); });

struct Typed {
    PropertyListValue before;
    const char* typed;
    std::string json;  ///< of the value; "none" when there is a fault
};

void PrintTo(const Typed& typed, std::ostream* stream) {
    *stream << typed.typed << " in place of " << typed.before;
}

class TypedValues : public testing::TestWithParam<Typed> {};

TEST_P(TypedValues, KeepTheirKindAndEveryDigit) {
    const Desk desk(settingOf(
        GetParam().before, GetParam().before == PropertyListValue("1 1 1 1") ? "A.Color" : "A.B"));
    desk.type(GetParam().typed);
    EXPECT_EQ(jsonOf(*desk.editor), GetParam().json);
    EXPECT_EQ(desk.editor->fault().isEmpty(), GetParam().json != "none");
    EXPECT_EQ(desk.message().empty(), GetParam().json != "none");
}

INSTANTIATE_TEST_SUITE_P(
    All, TypedValues,
    testing::Values(
        Typed{1, "9007199254740993", "9007199254740993"},
        Typed{1, "18446744073709551615", "18446744073709551615"},
        Typed{1, "18446744073709551616", "none"}, Typed{1, " 12 ", "12"}, Typed{1, "0.5", "none"},
        Typed{1, "", "1"}, Typed{1, "twelve", "none"}, Typed{0.5, "2", "2.0"},
        Typed{0.5, "1e300", "1e+300"}, Typed{0.5, "nan", R"({"$real":"nan"})"},
        Typed{0.5, "half", "none"}, Typed{"a", "true", "\"true\""}, Typed{"a", " 007", "\" 007\""},
        Typed{NSDate(0), "2026-11-22T09:30:05.25Z", R"({"$date":"2026-11-22T09:30:05.25Z"})"},
        Typed{NSDate(0), "2026-02-30T09:30:05Z", "none"},
        Typed{NSData("a"), "AQI=", R"({"$data":"AQI="})"}, Typed{NSData("a"), "AQI", "none"},
        Typed{"1 1 1 1", "0.2 0.40 2", "\"0.2 0.40 2 1\""},
        Typed{"1 1 1 1", "#ff8000", "\"1 0.5019608 0 1\""}, Typed{"1 1 1 1", "red", "none"},
        Typed{NSArray(), "[1, 2.0]", "[1,2.0]"}, Typed{NSArray(), "{}", "none"},
        Typed{NSArray(), "[1,", "none"},
        Typed{NSDictionary(), R"({"a": [true]})", R"({"a":[true]})"}));
