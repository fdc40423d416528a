// SPDX-License-Identifier: MIT
#include "Panes/Troubles.h"

#include <QCoreApplication>
#include <QStringList>
#include <algorithm>

#include "Edits/EditTable.h"
#include "Look/Text.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/PrintableText.h"

namespace QRVWindow {
namespace {

using About = Tool::Finding::About;
using Level = Tool::Finding::Level;

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(Troubles)
};

class Gatherer {
  public:
    Gatherer(const Session& session, const Findings& findings)
        : session_(session), findings_(findings) {}

    std::vector<Trouble> take() {
        addState();
        addReadOnly();
        addPreparation();
        addFindings();
        std::stable_sort(troubles_.begin(), troubles_.end(),
                         [](const Trouble& one, const Trouble& other) {
                             return static_cast<int>(one.level) > static_cast<int>(other.level);
                         });
        return std::move(troubles_);
    }

  private:
    /// With the name of the file that the user has given.
    [[nodiscard]] QString printed(const std::string& text) const {
        const std::string& location = QRVSettings::sharedSettings().location();
        QString printed = fromText(Tool::printable(text));
        return location.empty() ? printed
                                : printed.replace(fromText(location), session_.fileState().path);
    }
    void addState();
    void addReadOnly();
    void addPreparation();
    void addFindings();
    /// With the advice of the findings that say the same.
    void add(Trouble trouble, About about);
    /// Whether the window sees for itself whether it is so.
    [[nodiscard]] bool isSaid(const Tool::Finding& finding) const;

    const Session& session_;
    const Findings& findings_;
    std::vector<Trouble> troubles_;
};

void Gatherer::add(Trouble trouble, About about) {
    QStringList advices;
    for (const Tool::Finding& finding : findings_.all()) {
        if (finding.about != about) continue;
        advices.append(printed(finding.advice));
        if (trouble.command.isEmpty())
            trouble.command = fromText(Tool::commandOfAdvice(finding.advice));
    }
    advices.removeDuplicates();
    trouble.advice = advices.join(QLatin1Char('\n'));
    troubles_.push_back(std::move(trouble));
}

void Gatherer::addState() {
    const FileState& state = session_.fileState();
    if (!state.waitsFor.isEmpty())
        troubles_.push_back({Trouble::Kind::Other, Level::Note,
                             Texts::tr("Reading the settings waits for %1.").arg(state.waitsFor)});
    switch (state.kind) {
        case FileState::Kind::NotRead:
        case FileState::Kind::Present:
            break;
        case FileState::Kind::Missing:
            troubles_.push_back(
                {Trouble::Kind::Other, Level::Note,
                 Texts::tr("There is no settings file yet: everything has its default. The first "
                           "change that is applied makes one.")});
            break;
        case FileState::Kind::Damaged:
            add({Trouble::Kind::Damaged, Level::Error,
                 Texts::tr("%1. The application reads defaults. Nothing can be changed here until "
                           "the file is repaired or replaced.")
                     .arg(state.fault)},
                About::Damaged);
            break;
        case FileState::Kind::Unreadable:
            add({Trouble::Kind::Unreadable, Level::Error,
                 Texts::tr("%1. Nothing can be changed here until it can be read.")
                     .arg(state.fault)},
                About::Unreadable);
            break;
        case FileState::Kind::NoPlace:
            troubles_.push_back(
                {Trouble::Kind::Other, Level::Error,
                 Texts::tr("There is no home folder, so there is no settings file. Defaults are "
                           "shown, and nothing can be changed here.")});
            break;
    }
}

void Gatherer::addReadOnly() {
    const FileState& state = session_.fileState();
    if (state.readOnly.isEmpty()) return;
    add({Trouble::Kind::ReadOnly, Level::Warning,
         Texts::tr("%1 Edits cannot be applied; they can be copied as commands.")
             .arg(state.readOnly)},
        About::NotSavable);
}

void Gatherer::addPreparation() {
    const Tool::SettingsSnapshot& snapshot = session_.snapshot();
    if (!snapshot.obstacle.empty())
        add({Trouble::Kind::Other, Level::Error, printed(snapshot.obstacle)}, About::Preparation);
    for (const std::string& note : snapshot.notes)
        troubles_.push_back({Trouble::Kind::Other, Level::Note, printed(note)});
}

bool Gatherer::isSaid(const Tool::Finding& finding) const {
    switch (finding.about) {
        case About::Other:
            return false;
        case About::NotSavable:
            return !session_.fileState().readOnly.isEmpty();
        case About::Missing:
        case About::Unreadable:
        case About::Damaged:
        case About::Preparation:
            break;
    }
    return true;
}

void Gatherer::addFindings() {
    for (const Tool::Finding& finding : findings_.all()) {
        if (finding.level == Level::Note || isSaid(finding)) continue;
        Trouble trouble{Trouble::Kind::Other, finding.level, printed(finding.message),
                        printed(finding.advice), fromText(Tool::commandOfAdvice(finding.advice))};
        if (!finding.keyPath.empty()) trouble.place = Tool::placeOfStored(finding.keyPath);
        troubles_.push_back(std::move(trouble));
    }
}

}  // namespace

std::vector<Trouble> troublesOf(const Session& session, const Findings& findings) {
    return Gatherer(session, findings).take();
}

QString levelText(Level level) {
    switch (level) {
        case Level::Note:
            return Texts::tr("Note");
        case Level::Warning:
            return Texts::tr("Warning");
        case Level::Error:
            break;
    }
    return Texts::tr("Error");
}

}  // namespace QRVWindow
