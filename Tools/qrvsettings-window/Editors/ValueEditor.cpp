// SPDX-License-Identifier: MIT
#include "Editors/ValueEditor.h"

#include <QAccessible>
#include <QActionGroup>
#include <QBoxLayout>
#include <QKeyEvent>
#include <QMenu>
#include <QPointer>
#include <QToolButton>

#include "Editors/EditorMessage.h"
#include "Editors/FieldText.h"
#include "Editors/Kinds.h"
#include "Editors/ValueField.h"
#include "Look/Text.h"
#include "Reporting/Failure.h"
#include "Settings/SettingDescription.h"
#include "Settings/SettingObjections.h"

namespace QRVWindow {

using Kind = PropertyListValue::Kind;

class ValueEditor::Inside {
  public:
    Inside(ValueEditor& owner, const EditedSetting& setting, Place place);
    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;
    ~Inside() { delete message_; }

    void makeField(const FieldSubject& subject);
    void setKind(Kind kind, bool hasSeveralLines);
    void setValue(const PropertyListValue& value);
    /// Without choices.
    void typeOther();
    [[nodiscard]] std::optional<PropertyListValue> value(QString* fault) const;
    [[nodiscard]] QString objection() const;
    [[nodiscard]] bool isChanged() const { return !isOfSetting_ || !field->isAsGiven(); }
    void changed();
    bool commit();

    ValueEditor& owner;
    const EditedSetting setting;
    const Place place;
    Judge judge;
    ValueField* field = nullptr;

  private:
    [[nodiscard]] FieldSubject subject(Kind kind) const;
    /// For a value that is given to the field as it is.
    [[nodiscard]] FieldSubject subjectOf(const PropertyListValue& value) const;
    void makeKindButton();
    void fillMenu();
    void addKind(Kind kind, bool hasSeveralLines, const QString& text);
    void describe(const QString& problem);
    void tell(bool isAsked);

    QBoxLayout* row_;
    QToolButton* kinds_;
    QMenu* menu_;
    QPointer<EditorMessage> message_;
    mutable std::unique_ptr<Tool::SettingObjections> objections_;
    bool isOfSetting_ = true;  // what the field is given is the setting's own value
    QString saidObjection_;    // Enter stores the value anyway
};

ValueEditor::Inside::Inside(ValueEditor& theOwner, const EditedSetting& theSetting, Place thePlace)
    : owner(theOwner),
      setting(theSetting),
      place(thePlace),
      row_(new QHBoxLayout),
      kinds_(new QToolButton(&owner)),
      menu_(new QMenu(&owner)) {
    auto* const column = new QVBoxLayout(&owner);
    column->setContentsMargins(0, 0, 0, 0);
    column->addLayout(row_);
    row_->addWidget(kinds_, 0, Qt::AlignTop);
    makeKindButton();
    if (place == Place::Form) {
        message_ = new EditorMessage(&owner);
        column->addWidget(message_);
    } else {
        row_->setSpacing(2);
        owner.setAutoFillBackground(true);
        message_ = new EditorMessage(owner.window());
        message_->standBeside(&owner);
    }
    QObject::connect(message_, &EditorMessage::storeAnyway, &owner, [this] {
        saidObjection_ = objection();
        commit();
    });
    makeField(subjectOf(setting.value));
}

FieldSubject ValueEditor::Inside::subject(Kind kind) const {
    FieldSubject subject{.kind = kind, .given = nullptr, .startText = {}};
    subject.known = setting.known;
    subject.place = place;
    return subject;
}

FieldSubject ValueEditor::Inside::subjectOf(const PropertyListValue& value) const {
    EditedSetting edited = setting;
    edited.value = value;
    FieldSubject subject = this->subject(kindOfEditor(edited));
    subject.given = value;
    subject.hasSeveralLines =
        value.isString() && value.stringView().find('\n') != std::string_view::npos;
    return subject;
}

void ValueEditor::Inside::makeKindButton() {
    kinds_->setFocusPolicy(Qt::TabFocus);
    if (place == Place::Form) {
        kinds_->setPopupMode(QToolButton::InstantPopup);
        kinds_->setToolButtonStyle(Qt::ToolButtonTextOnly);
        kinds_->setMenu(menu_);
    } else {
        // With a menu of its own the button would have a second arrow.
        kinds_->setAutoRaise(true);
        kinds_->setArrowType(Qt::DownArrow);
        QObject::connect(kinds_, &QToolButton::clicked, &owner, [this] {
            menu_->popup(kinds_->mapToGlobal(QPoint(0, kinds_->height())));
        });
    }
    QObject::connect(menu_, &QMenu::aboutToShow, &owner, [this] { fillMenu(); });
}

void ValueEditor::Inside::fillMenu() {
    menu_->clear();
    if (kindOfEditor(setting) == Kind::Null) addKind(Kind::Null, false, kindText(Kind::Null));
    for (const Kind kind : editedKinds()) {
        addKind(kind, false, kindText(kind));
        if (kind == Kind::String && place == Place::Form)
            addKind(kind, true, ValueEditor::tr("string of several lines"));
    }
}

void ValueEditor::Inside::addKind(Kind kind, bool hasSeveralLines, const QString& text) {
    QAction* const action = menu_->addAction(text);
    const FieldSubject& now = field->subject();
    action->setCheckable(true);
    action->setChecked(kind == now.kind && hasSeveralLines == now.hasSeveralLines);
    QObject::connect(action, &QAction::triggered, &owner,
                     [this, kind, hasSeveralLines] { setKind(kind, hasSeveralLines); });
}

void ValueEditor::Inside::makeField(const FieldSubject& subject) {
    const bool hadFocus = field != nullptr && field->input()->hasFocus();
    // It may be the sender of the signal that leads here.
    if (field != nullptr) {
        field->hide();
        field->disconnect(&owner);
        field->deleteLater();
    }
    field = QRVWindow::makeField(subject, &owner);
    row_->insertWidget(0, field, 1);
    owner.setFocusProxy(field->input());
    field->input()->installEventFilter(&owner);
    QObject::connect(field, &ValueField::edited, &owner, [this] { changed(); });
    QObject::connect(
        field, &ValueField::otherWanted, &owner, [this] { typeOther(); }, Qt::QueuedConnection);
    const QString kind = kindText(subject.kind);
    kinds_->setText(place == Place::Form ? kind : QString());
    kinds_->setToolTip(ValueEditor::tr("Kind: %1").arg(kind));
    kinds_->setAccessibleName(ValueEditor::tr("Kind: %1").arg(kind));
    field->input()->setAccessibleName(
        ValueEditor::tr("Value of %1").arg(fromText(setting.keyPath)));
    describe({});
    field->show();
    QWidget::setTabOrder(field->input(), kinds_);
    if (hadFocus) field->input()->setFocus();
}

void ValueEditor::Inside::setKind(Kind kind, bool hasSeveralLines) {
    const FieldSubject& now = field->subject();
    if (kind == now.kind && hasSeveralLines == now.hasSeveralLines) return;
    const auto typed = value(nullptr);
    const QString text =
        typed && !typed->isNull() ? fieldText(*typed, FieldLines::Several) : field->text();
    FieldSubject next = subjectOf(setting.value);
    isOfSetting_ = kind == next.kind && text == fieldText(setting.value, FieldLines::Several);
    if (!isOfSetting_) {
        next = subject(kind);
        next.startText = textInKind(text, now.kind, kind);
    }
    next.hasSeveralLines = hasSeveralLines;
    makeField(next);
    changed();
}

void ValueEditor::Inside::setValue(const PropertyListValue& value) {
    isOfSetting_ = value.kind() == setting.value.kind() &&
                   (value.isIdenticalTo(setting.value) ||
                    (value == setting.value && fieldText(value, FieldLines::One) ==
                                                   fieldText(setting.value, FieldLines::One)));
    makeField(subjectOf(isOfSetting_ ? setting.value : value));
    changed();
}

void ValueEditor::Inside::typeOther() {
    FieldSubject next = subjectOf(setting.value);
    next.offersChoices = false;
    isOfSetting_ = true;
    makeField(next);
    field->input()->setFocus();
    field->selectAll();
    changed();
}

std::optional<PropertyListValue> ValueEditor::Inside::value(QString* fault) const {
    const PropertyListValue& given = field->subject().given;
    if (!isChanged()) return setting.value;
    if (!given.isNull() && field->isAsGiven()) return given;
    try {
        return field->typedValue();
    } catch (const Tool::Failure& failure) {
        if (fault != nullptr) *fault = fromText(failure.what());
        return std::nullopt;
    }
}

QString ValueEditor::Inside::objection() const {
    const auto typed = value(nullptr);
    if (!typed || typed->isNull() || !isChanged()) return {};
    if (judge) return judge(*typed);
    if (!objections_) objections_ = std::make_unique<Tool::SettingObjections>();
    return fromText(objections_->toValue(setting.keyPath, *typed));
}

/// For a screen reader, what a look at the field tells.
void ValueEditor::Inside::describe(const QString& problem) {
    QWidget* const input = field->input();
    const QString range =
        setting.known == nullptr ? QString() : fromText(Tool::rangeInWords(*setting.known));
    const QString description = problem.isEmpty() ? range : problem;
    if (input->accessibleDescription() == description) return;
    input->setAccessibleDescription(description);
    QAccessibleEvent event(input, QAccessible::DescriptionChanged);
    QAccessible::updateAccessibility(&event);
}

void ValueEditor::Inside::tell(bool isAsked) {
    QString fault;
    static_cast<void>(value(&fault));
    const QString why = objection();
    QString text;
    if (!fault.isEmpty()) text = ValueEditor::tr("! Not a value: %1").arg(fault);
    if (!why.isEmpty())
        text = isAsked ? ValueEditor::tr("! %1. Press Enter again to store it anyway.").arg(why)
                       : ValueEditor::tr("! %1.").arg(why);
    describe(text);
    message_->show(text, !why.isEmpty());
}

void ValueEditor::Inside::changed() {
    saidObjection_.clear();
    tell(false);
    Q_EMIT owner.edited();
}

bool ValueEditor::Inside::commit() {
    QString fault;
    static_cast<void>(value(&fault));
    const QString why = fault.isEmpty() ? objection() : fault;
    if (!why.isEmpty() && (!fault.isEmpty() || why != saidObjection_)) {
        saidObjection_ = why;
        tell(true);
        return false;
    }
    Q_EMIT owner.committed();
    return true;
}

ValueEditor::ValueEditor(const EditedSetting& setting, Place place, QWidget* parent)
    : QWidget(parent), inside_(std::make_unique<Inside>(*this, setting, place)) {}

ValueEditor::~ValueEditor() = default;

std::optional<PropertyListValue> ValueEditor::value() const {
    return inside_->value(nullptr);
}

QString ValueEditor::fault() const {
    QString fault;
    static_cast<void>(inside_->value(&fault));
    return fault;
}

QString ValueEditor::objection() const {
    return inside_->objection();
}

bool ValueEditor::isChanged() const {
    return inside_->isChanged();
}

QString ValueEditor::text() const {
    return inside_->field->text();
}

Kind ValueEditor::kind() const {
    return inside_->field->subject().kind;
}

void ValueEditor::setKind(Kind kind) {
    inside_->setKind(kind, false);
}

void ValueEditor::setValue(const PropertyListValue& value) {
    inside_->setValue(value);
}

void ValueEditor::setJudge(Judge judge) {
    inside_->judge = std::move(judge);
}

bool ValueEditor::commit() {
    return inside_->commit();
}

bool ValueEditor::eventFilter(QObject* watched, QEvent* event) {
    const bool isKey =
        event->type() == QEvent::KeyPress || event->type() == QEvent::ShortcutOverride;
    if (!isKey) return QWidget::eventFilter(watched, event);
    auto* const key = static_cast<QKeyEvent*>(event);
    const bool isEnter = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
    const bool commits =
        isEnter && (!inside_->field->keepsEnter() || key->modifiers() == Qt::ControlModifier);
    if (!commits && key->key() != Qt::Key_Escape) return QWidget::eventFilter(watched, event);
    // No shortcut of the window takes these keys from the editor.
    key->accept();
    if (event->type() == QEvent::ShortcutOverride) return true;
    if (commits)
        commit();
    else
        Q_EMIT cancelled();
    return true;
}

ValueEditor* makeValueEditor(const EditedSetting& setting, QWidget* parent) {
    return new ValueEditor(setting, ValueEditor::Place::Cell, parent);
}

bool needsDialog(const EditedSetting& setting) {
    const PropertyListValue& value = setting.value;
    if (value.isArray()) return value.array().count() > 0;
    if (value.isDictionary()) return value.dictionary().count() > 0;
    constexpr std::size_t longest = 200;
    if (value.isString())
        return value.stringView().find('\n') != std::string_view::npos ||
               value.stringView().size() > longest;
    const NSData data = value.data();
    return data.view().size() > longest;
}

}  // namespace QRVWindow
