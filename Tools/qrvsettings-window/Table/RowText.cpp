// SPDX-License-Identifier: MIT
#include "Table/RowText.h"

#include <QLocale>
#include <QStringList>

#include "Editors/Kinds.h"
#include "Look/Text.h"
#include "Reporting/PrintableText.h"
#include "Text/ValueText.h"

namespace QRVWindow {
namespace {

/// More than any column shows.
constexpr qsizetype cellLength = 200;
constexpr QChar ellipsis(0x2026);

QString shortened(const QString& text, qsizetype maximum) {
    return text.size() > maximum ? text.left(maximum - 1) + ellipsis : text;
}

QString valueText(const PropertyListValue& value, qsizetype maximum) {
    if (value.isNull()) return {};
    const std::string text = Tool::bareText(value);
    if (text.empty()) return QStringLiteral("\"\"");
    return shortened(fromText(Tool::printable(text)), maximum);
}

}  // namespace

RowText::RowText(const Session& session) : session_(session) {}

void RowText::update() {
    conflicts_.clear();
    if (session_.pending().edits().empty()) return;
    const std::string profile = toText(session_.profile());
    for (const Tool::EditConflict& conflict : session_.conflicts())
        if (conflict.edit.place.profile == profile) conflicts_.insert(conflict.edit.place.keyPath);
}

void RowText::setFindings(std::map<std::string, QString> findings) {
    findings_ = std::move(findings);
}

std::vector<RowState> RowText::states(const Tool::SettingRow& row) const {
    std::vector<RowState> states;
    if (conflicts_.contains(row.keyPath)) states.push_back(RowState::Conflict);
    if (row.isOfOtherKind || findings_.contains(row.keyPath)) states.push_back(RowState::Warning);
    if (const Tool::PendingEdit* edit = session_.pendingAt(row.keyPath))
        states.push_back(edit->value.isNull() ? RowState::BackToDefault : RowState::Pending);
    if (session_.liveChangeOf(row.keyPath) != nullptr) states.push_back(RowState::Live);
    if (row.isModified) states.push_back(RowState::Differs);
    if (row.isLocked) states.push_back(RowState::Locked);
    if (row.isRecord) states.push_back(RowState::Record);
    return states;
}

QString RowText::signs(const Tool::SettingRow& row) const {
    QString text;
    for (const RowState state : states(row))
        if (const QString sign = signOf(state); !text.contains(sign)) text += sign;
    return text;
}

QString RowText::valueUpTo(const Tool::SettingRow& row, qsizetype maximum) const {
    const Tool::PendingEdit* edit = session_.pendingAt(row.keyPath);
    QString now = valueText(row.effective, maximum);
    if (row.isOfOtherKind) now = tr("%1 (%2)").arg(now, kindText(row.effective.kind()));
    if (edit == nullptr) return now;
    if (now.isEmpty()) now = tr("not set");
    const QString later = edit->value.isNull() ? tr("not stored") : valueText(edit->value, maximum);
    return QStringLiteral("%1 \u2192 %2").arg(now, later);
}

QString RowText::value(const Tool::SettingRow& row) const {
    return valueUpTo(row, cellLength);
}

QString RowText::valueInFull(const Tool::SettingRow& row) const {
    return valueUpTo(row, maximumLength);
}

QString RowText::layer(const Tool::SettingRow& row) const {
    if (session_.pendingAt(row.keyPath) != nullptr) return tr("pending");
    if (session_.fileState().isDamaged()) return tr("file damaged");
    switch (row.layer) {
        case Tool::AnsweringLayer::None:
            return tr("none");
        case Tool::AnsweringLayer::Default:
            return tr("default");
        case Tool::AnsweringLayer::Site:
            return tr("site");
        case Tool::AnsweringLayer::Stored:
            return tr("stored");
        case Tool::AnsweringLayer::Profile:
            break;
    }
    return tr("profile");
}

QString RowText::byDefault(const Tool::SettingRow& row) const {
    return valueText(row.byDefault, cellLength);
}

QString RowText::defaultInFull(const Tool::SettingRow& row) const {
    return valueText(row.byDefault, maximumLength);
}

QString RowText::changedBy(const LiveChange& change) const {
    if (change.by == LiveChange::By::ThisWindow) return tr("this window");
    return change.program.isEmpty() ? tr("another process") : change.program;
}

QString RowText::seen(const Tool::SettingRow& row) const {
    if (conflicts_.contains(row.keyPath)) return tr("changed since you edited it");
    if (const Tool::PendingEdit* edit = session_.pendingAt(row.keyPath))
        return edit->value.isNull() ? tr("back to default") : tr("will store");
    if (const LiveChange* change = session_.liveChangeOf(row.keyPath))
        return tr("%1 by %2")
            .arg(change->time.toString(QStringLiteral("HH:mm:ss")), changedBy(*change));
    return {};
}

PropertyListValue RowText::valueInOther(const Tool::SettingRow& row) const {
    const Tool::SettingsTable* table = session_.otherTable();
    const Tool::SettingRow* other = table != nullptr ? table->at(row.keyPath) : nullptr;
    return other != nullptr ? other->effective : PropertyListValue();
}

QString RowText::other(const Tool::SettingRow& row) const {
    return valueText(valueInOther(row), cellLength);
}

QString RowText::otherInFull(const Tool::SettingRow& row) const {
    return valueText(valueInOther(row), maximumLength);
}

bool RowText::differsInOther(const Tool::SettingRow& row) const {
    const PropertyListValue other = valueInOther(row);
    return session_.otherTable() != nullptr &&
           (other.kind() != row.effective.kind() || !(other == row.effective));
}

QString RowText::spoken(const Tool::SettingRow& row) const {
    const QString now = value(row);
    QStringList parts{fromText(Tool::printable(row.keyPath)), now.isEmpty() ? tr("not set") : now};
    // That an edit is pending is said by its state.
    if (session_.pendingAt(row.keyPath) == nullptr) parts.append(layer(row));
    if (row.isModified) parts.append(tr("modified"));
    for (const RowState state : states(row))
        if (state != RowState::Differs && state != RowState::Live) parts.append(wordOf(state));
    if (const LiveChange* change = session_.liveChangeOf(row.keyPath))
        parts.append(tr("changed a moment ago by %1").arg(changedBy(*change)));
    if (session_.otherTable() != nullptr)
        parts.append(tr("in profile %1: %2").arg(session_.otherProfile(), other(row)));
    return parts.join(QStringLiteral(", "));
}

QString RowText::description(const Tool::SettingRow& row) const {
    QStringList lines;
    if (row.known != nullptr && !row.known->sentence.empty())
        lines.append(fromText(row.known->sentence));
    if (const auto finding = findings_.find(row.keyPath); finding != findings_.end())
        lines.append(finding->second);
    return lines.join(QLatin1Char('\n'));
}

}  // namespace QRVWindow
