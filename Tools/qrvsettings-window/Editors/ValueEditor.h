// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Values/PropertyListValue.h"
#include "Settings/KnownLists.h"

namespace QRVWindow {

/// What an editor is made for.
struct EditedSetting {
    const Tool::KnownSetting* known = nullptr;  ///< null when nothing is known of it
    std::string keyPath;                        ///< plain
    PropertyListValue value;                    ///< what it starts with; null: nothing yet
    PropertyListValue byDefault;                ///< null when there is none
};

/// The field, or the menu of choices, in which a person changes a value. It holds the value, never
/// what is displayed: as long as nothing is changed it gives exactly the value that it was made
/// for. Enter commits, Escape cancels; with a fault Enter says what is wrong and commits nothing.
class ValueEditor : public QWidget {
    Q_OBJECT

  public:
    using Kind = PropertyListValue::Kind;
    /// In a cell of a table, messages lie over what is below the editor, and it is as high as a
    /// line. In a form they have a line of their own, and long values several lines.
    enum class Place { Cell, Form };
    /// Why a value is probably not what somebody means; empty when it is fine.
    using Judge = std::function<QString(const PropertyListValue&)>;

    ValueEditor(const EditedSetting& setting, Place place, QWidget* parent);
    ~ValueEditor() override;

    /// Empty while what is typed is no value; see `fault`. Null as long as nothing is typed where
    /// the setting had no value.
    [[nodiscard]] std::optional<PropertyListValue> value() const;
    /// Why there is no value, for people; empty when there is one.
    [[nodiscard]] QString fault() const;
    /// Why the value is unusual: of another kind than the setting, none of its choices, out of its
    /// range. It can be stored all the same. Empty when nothing is changed.
    [[nodiscard]] QString objection() const;
    [[nodiscard]] bool isChanged() const;

    /// What is typed, for tests and copies.
    [[nodiscard]] QString text() const;
    /// The kind that is edited: that of the value, `Color` for the text of a colour. It stays
    /// unless a person changes it.
    [[nodiscard]] Kind kind() const;
    /// Keeps what is typed as far as it is a value of that kind.
    void setKind(Kind kind);
    /// Replaces what is typed, as if a person had.
    void setValue(const PropertyListValue& value);
    /// Instead of what is known about the setting.
    void setJudge(Judge judge);

    /// As Enter does: `committed`, or it says why not. An objection is said once; to commit the
    /// same value again stores it anyway. Returns whether it was committed.
    bool commit();

    bool eventFilter(QObject* watched, QEvent* event) override;

  Q_SIGNALS:
    void committed();
    void cancelled();
    void edited();

  private:
    class Inside;
    std::unique_ptr<Inside> inside_;
};

/// An editor for a cell of a table.
ValueEditor* makeValueEditor(const EditedSetting& setting, QWidget* parent);

/// Whether a cell is too small for the value: a container with entries, or text of several lines.
bool needsDialog(const EditedSetting& setting);

}  // namespace QRVWindow
