// SPDX-License-Identifier: MIT
#include "Panes/SettingFacts.h"

#include <algorithm>

#include "Editors/Kinds.h"
#include "Look/Signs.h"
#include "Look/Text.h"
#include "QRVSettings/QRVSettings.h"
#include "Rows/SettingAnswer.h"
#include "Text/KeyPaths.h"
#include "Text/ValueText.h"

namespace QRVWindow {
namespace {

using About = SettingFact::About;
using Kind = PropertyListValue::Kind;

/// Longer ones make the pane slow and say little more.
constexpr qsizetype shownOfValue = 4000;

struct Details {
    Q_DECLARE_TR_FUNCTIONS(Details)
};

QString numberText(const PropertyListValue& number) {
    return leftToRight(fromText(Tool::bareText(number)));
}

QString rangeText(const Tool::KnownSetting& known) {
    const bool hasMinimum = !known.minimum.isNull();
    const bool hasMaximum = !known.maximum.isNull();
    if (hasMinimum && hasMaximum)
        return Details::tr("from %1 to %2")
            .arg(numberText(known.minimum), numberText(known.maximum));
    if (hasMinimum) return Details::tr("%1 or more").arg(numberText(known.minimum));
    return hasMaximum ? Details::tr("%1 or less").arg(numberText(known.maximum)) : QString();
}

QString choicesText(const Tool::KnownSetting& known) {
    QStringList lines;
    for (const Tool::KnownChoice& choice : known.choices) {
        const QString value = leftToRight(fromText(Tool::bareText(choice.value)));
        lines.append(choice.sentence.empty()
                         ? value
                         : Details::tr("%1: %2").arg(value, fromText(choice.sentence)));
    }
    return lines.join(QLatin1Char('\n'));
}

QString scopeText(const Session& session, QRVSettingScope scope) {
    switch (scope) {
        case QRVSettingScope::Application:
            return Details::tr("of the application");
        case QRVSettingScope::Profile:
            return Details::tr("of each profile: %1")
                .arg(session.profileNames().join(QStringLiteral(", ")));
        case QRVSettingScope::Record:
            break;
    }
    return Details::tr("a record of the store");
}

/// Gathers facts, and leaves out those without a text.
class Gatherer {
  public:
    void add(About about, const QString& name, const QString& text) {
        if (!text.isEmpty()) facts_.push_back({about, name, text});
    }
    void addCode(About about, const QString& name, const QString& text) {
        if (!text.isEmpty()) facts_.push_back({about, name, text, true});
    }
    /// A value that is not set is a fact too.
    void addValue(About about, const QString& name, const PropertyListValue& value, bool isColor) {
        if (value.isNull()) {
            add(about, name, Details::tr("not set"));
            return;
        }
        const PropertyListValue color = isColor ? QRVSettingsColorOfText(value) : nullptr;
        const Kind kind = color.isNull() ? value.kind() : Kind::Color;
        facts_.push_back({about, Details::tr("%1 (%2)").arg(name, nameOfKind(kind)),
                          valueAsText(value, shownOfValue), true, color});
    }
    SettingFacts take() { return std::move(facts_); }

  private:
    SettingFacts facts_;
};

void addKnown(Gatherer& facts, const Session& session, const Tool::SettingRow* row,
              const std::string& keyPath) {
    const Tool::KnownSetting* const known =
        row == nullptr ? session.lists().at(keyPath) : row->known;
    if (known == nullptr) {
        facts.add(About::Sentence, Details::tr("Meaning"),
                  Details::tr("Nothing is known of this setting."));
        facts.add(About::Scope, Details::tr("Scope"),
                  scopeText(session, QRVScopeOfKeyPath(keyPath)));
        return;
    }
    facts.add(About::Sentence, Details::tr("Meaning"), fromText(known->sentence));
    facts.add(About::Kind, Details::tr("Kind"),
              known->kind == Kind::Null ? Details::tr("any") : nameOfKind(known->kind));
    facts.add(About::Range, Details::tr("Range"), rangeText(*known));
    facts.add(About::Unit, Details::tr("Unit"), fromText(known->unit));
    facts.add(About::Choices, Details::tr("Choices"), choicesText(*known));
    facts.add(About::Scope, Details::tr("Scope"), scopeText(session, known->scope));
}

QString marksText(const Session& session, const Tool::SettingRow* row, const std::string& keyPath) {
    QStringList words;
    const auto add = [&words](RowState state) {
        words.append(Details::tr("%1 %2").arg(leftToRight(signOf(state)), wordOf(state)));
    };
    if (row != nullptr && row->isModified) add(RowState::Differs);
    if (const Tool::PendingEdit* const edit = session.pendingAt(keyPath))
        add(edit->value.isNull() ? RowState::BackToDefault : RowState::Pending);
    if (session.liveChangeOf(keyPath) != nullptr) add(RowState::Live);
    if (row != nullptr && row->isLocked) add(RowState::Locked);
    if (row != nullptr && row->isRecord) add(RowState::Record);
    return words.join(QLatin1Char('\n'));
}

void addPending(Gatherer& facts, const Session& session, const std::string& keyPath, bool isColor) {
    const Tool::PendingEdit* const edit = session.pendingAt(keyPath);
    if (edit == nullptr) return;
    const QString name = Details::tr("Pending in this window");
    if (edit->value.isNull())
        facts.add(About::Pending, name, Details::tr("will not be stored: the default answers"));
    else
        facts.addValue(About::Pending, name, edit->value, isColor);
}

/// A setting of the application has no value in a profile, but for one that somebody has put there.
bool concernsProfiles(const Session& session, const Tool::SettingAnswer& answer,
                      const std::string& keyPath) {
    if (!session.profile().isEmpty() || !answer.inProfile.isNull()) return true;
    const Tool::KnownSetting* const known = session.lists().at(keyPath);
    return (known == nullptr ? QRVScopeOfKeyPath(keyPath) : known->scope) ==
           QRVSettingScope::Profile;
}

void addLayers(Gatherer& facts, const Session& session, const std::string& keyPath, bool isColor) {
    const std::string profile = toText(session.profile());
    const Tool::SettingAnswer answer = Tool::answerAt(session.snapshot(), keyPath, profile);
    facts.addValue(About::Effective, Details::tr("Effective"), answer.effective, isColor);
    facts.add(About::Layer, Details::tr("Answered by"), layerText(answer, profile));
    facts.addCode(About::LockedBy, Details::tr("Locked by"), fromText(answer.lockFile));
    facts.addValue(About::Stored, Details::tr("Stored"), answer.stored, isColor);
    if (concernsProfiles(session, answer, keyPath))
        facts.addValue(About::InProfile,
                       Details::tr("In profile %1")
                           .arg(leftToRight(fromText(profile.empty() ? "default" : profile))),
                       answer.inProfile, isColor);
    if (!answer.site.isNull())
        facts.addValue(About::Site, Details::tr("Default of the site"), answer.site, isColor);
    facts.addCode(About::SiteFile, Details::tr("File of the site"), fromText(answer.siteFile));
    facts.addValue(About::Default, Details::tr("Built-in default"), answer.builtIn, isColor);
    if (!answer.stored.isNull() && !answer.builtIn.isNull() &&
        !answer.stored.isSameKindAs(answer.builtIn))
        facts.add(About::KindsDiffer, Details::tr("Kinds differ"),
                  Details::tr("What is stored is of kind %1, and the default of kind %2.")
                      .arg(nameOfKind(answer.stored.kind()), nameOfKind(answer.builtIn.kind())));
}

QString commonValueText(const Session& session, const std::vector<std::string>& keyPaths) {
    const PropertyListValue first = session.valueWithEdits(keyPaths.front());
    const bool isCommon = std::all_of(
        keyPaths.begin(), keyPaths.end(), [&session, &first](const std::string& keyPath) {
            const PropertyListValue value = session.valueWithEdits(keyPath);
            return value == first && value.isSameKindAs(first);
        });
    if (!isCommon) return Details::tr("various");
    return first.isNull() ? Details::tr("not set") : valueAsText(first, shownOfValue);
}

}  // namespace

QString layerText(const Tool::SettingAnswer& answer, const std::string& profile) {
    switch (answer.layer) {
        case Tool::AnsweringLayer::None:
            return Details::tr("nothing: no layer has a value");
        case Tool::AnsweringLayer::Default:
            return Details::tr("the built-in default");
        case Tool::AnsweringLayer::Site:
            return answer.lockFile.empty() ? Details::tr("the default of the site")
                                           : Details::tr("the site, which has locked it");
        case Tool::AnsweringLayer::Stored:
            return Details::tr("the settings file");
        case Tool::AnsweringLayer::Profile:
            break;
    }
    return Details::tr("the profile %1").arg(leftToRight(fromText(profile)));
}

SettingFacts factsOfSetting(const Session& session, const std::string& keyPath) {
    const Tool::SettingRow* const row = session.table().at(keyPath);
    const bool isColor = row != nullptr && row->isColor();
    Gatherer facts;
    addKnown(facts, session, row, keyPath);
    facts.add(About::Marks, Details::tr("Marks"), marksText(session, row, keyPath));
    addPending(facts, session, keyPath, isColor);
    addLayers(facts, session, keyPath, isColor);
    return facts.take();
}

SettingFacts factsOfRows(const Session& session, const std::vector<std::string>& keyPaths) {
    Gatherer facts;
    const auto count = static_cast<int>(keyPaths.size());
    facts.add(About::Count, Details::tr("Settings"), QString::number(count));
    const auto modified =
        std::count_if(keyPaths.begin(), keyPaths.end(), [&session](const std::string& keyPath) {
            const Tool::SettingRow* const row = session.table().at(keyPath);
            return row != nullptr && row->isModified;
        });
    facts.add(About::Modified, Details::tr("Differ from the default"), QString::number(modified));
    const auto pending = std::count_if(
        keyPaths.begin(), keyPaths.end(),
        [&session](const std::string& keyPath) { return session.pendingAt(keyPath) != nullptr; });
    if (pending > 0)
        facts.add(About::Pending, Details::tr("Pending in this window"), QString::number(pending));
    if (!keyPaths.empty())
        facts.add(About::CommonValue, Details::tr("Value"), commonValueText(session, keyPaths));
    return facts.take();
}

std::vector<std::string> keyPathsBelow(const Session& session, const std::string& level) {
    std::vector<std::string> keyPaths;
    for (const Tool::SettingRow& row : session.table().rows())
        if (row.keyPath != level && Tool::isAtOrBelow(row.keyPath, level))
            keyPaths.push_back(row.keyPath);
    return keyPaths;
}

}  // namespace QRVWindow
