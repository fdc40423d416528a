// SPDX-License-Identifier: MIT
#pragma once

// What tests of editors share.

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTest>
#include <QVBoxLayout>
#include <cmath>
#include <string>

#include "Editors/EditorMessage.h"
#include "Editors/ValueEditor.h"
#include "Text/JSON.h"
#include "Window/WindowSupport.h"

namespace EditorSupport {

using QRVWindow::EditedSetting;
using QRVWindow::EditorMessage;
using QRVWindow::ValueEditor;
using Place = ValueEditor::Place;

/// A window with an editor, as wide as a column of a table or as a dialog.
class Desk {
  public:
    explicit Desk(const EditedSetting& setting, Place place = Place::Cell)
        : editor(new ValueEditor(setting, place, &window)) {
        constexpr int width = 420;
        constexpr int height = 220;
        window.resize(width, height);
        auto* const column = new QVBoxLayout(&window);
        column->addWidget(editor);
        column->addStretch(1);
        WindowSupport::show(window);
        input()->setFocus();
    }

    [[nodiscard]] QWidget* input() const { return editor->focusProxy(); }
    template <typename Widget>
    [[nodiscard]] Widget* part() const {
        return editor->findChild<Widget*>();
    }
    void type(const char* text) const {
        if (auto* const line = qobject_cast<QLineEdit*>(input())) line->selectAll();
        if (auto* const lines = qobject_cast<QPlainTextEdit*>(input())) lines->selectAll();
        for (const char character : std::string(text))
            if (character == '\n')
                QTest::keyClick(input(), Qt::Key_Return);
            else
                QTest::keyClick(input(), character);
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const {
        QTest::keyClick(editor->focusProxy(), key, modifiers);
    }
    [[nodiscard]] std::string message() const {
        const auto* const message = window.findChild<EditorMessage*>();
        return message->isVisible() ? message->text().toStdString() : "";
    }
    [[nodiscard]] std::string description() const {
        return input()->accessibleDescription().toStdString();
    }

    QWidget window;
    ValueEditor* editor;
};

inline EditedSetting settingOf(const PropertyListValue& value, const std::string& keyPath = "A.B") {
    return {.known = nullptr, .keyPath = keyPath, .value = value, .byDefault = nullptr};
}

inline std::string jsonOf(const ValueEditor& editor) {
    const auto value = editor.value();
    if (!value) return "none";
    return value->isNull() ? "null" : Tool::jsonText(*value);
}

/// The same to the bit, kind and all.
inline bool isSame(const PropertyListValue& one, const PropertyListValue& other) {
    if (one.isReal() && other.isReal())
        return std::signbit(one.doubleValue()) == std::signbit(other.doubleValue()) && one == other;
    return one.kind() == other.kind() && one == other;
}

}  // namespace EditorSupport
