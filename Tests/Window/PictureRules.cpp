// SPDX-License-Identifier: MIT
#include "Window/PictureRules.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QRadioButton>
#include <QStyle>
#include <QStyleOptionHeader>
#include <QTabBar>
#include <QTextDocument>
#include <QToolButton>
#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <utility>
#include <vector>

namespace WindowSupport {
namespace {

double linear(double part) {
    constexpr double darkest = 0.03928;
    return part <= darkest ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
}

/// As the guidelines for readable pages define it.
double luminance(const QColor& color) {
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

struct Pair {
    QPalette::ColorRole text;
    QPalette::ColorRole ground;
    const char* name;
};
constexpr std::array pairs{
    Pair{QPalette::WindowText, QPalette::Window, "text on a window"},
    Pair{QPalette::Text, QPalette::Base, "text in a field"},
    Pair{QPalette::Text, QPalette::AlternateBase, "text in every second row"},
    Pair{QPalette::PlaceholderText, QPalette::Base, "a hint in a field"},
    Pair{QPalette::ButtonText, QPalette::Button, "text on a button"},
    Pair{QPalette::HighlightedText, QPalette::Highlight, "text of a selection"},
    Pair{QPalette::Link, QPalette::Base, "a link in a field"},
    Pair{QPalette::Link, QPalette::Window, "a link on a window"},
    Pair{QPalette::LinkVisited, QPalette::Base, "a visited link in a field"},
    Pair{QPalette::LinkVisited, QPalette::Window, "a visited link on a window"},
    Pair{QPalette::BrightText, QPalette::Window, "a warning on a window"},
    Pair{QPalette::ToolTipText, QPalette::ToolTipBase, "a tip"},
};
constexpr std::array groups{std::pair{QPalette::Active, "active"},
                            std::pair{QPalette::Inactive, "inactive"},
                            std::pair{QPalette::Disabled, "disabled"}};

QString described(const QWidget& widget, const QString& text, const QSize& has,
                  const QSize& needs) {
    return QStringLiteral("%1 \"%2\" has %3 x %4, needs %5 x %6")
        .arg(QString::fromLatin1(widget.metaObject()->className()), text)
        .arg(has.width())
        .arg(has.height())
        .arg(needs.width())
        .arg(needs.height());
}

bool fits(const QSize& has, const QSize& needs) {
    return has.width() >= needs.width() && has.height() >= needs.height();
}

/// A label that breaks its lines needs less width and more height.
QSize sizeNeeded(const QLabel& label) {
    if (!label.wordWrap()) return label.sizeHint();
    return {label.minimumSizeHint().width(), label.heightForWidth(label.width())};
}

void findInLabel(const QLabel& label, QStringList& found) {
    const bool isEmpty = label.text().isEmpty();
    if (!isEmpty && !fits(label.size(), sizeNeeded(label)))
        found << described(label, label.text(), label.size(), sizeNeeded(label));
}

void findInButton(const QAbstractButton& button, QStringList& found) {
    if (button.text().isEmpty() || fits(button.size(), button.minimumSizeHint())) return;
    if (fits(button.size(), button.sizeHint())) return;
    found << described(button, button.text(), button.size(), button.sizeHint());
}

void findInHeader(const QHeaderView& header, QStringList& found) {
    for (int section = 0; section < header.count(); ++section) {
        if (header.isSectionHidden(section)) continue;
        const QString text =
            header.model()->headerData(section, header.orientation(), Qt::DisplayRole).toString();
        const int needed = header.fontMetrics().horizontalAdvance(text);
        const QSize has(header.sectionSize(section), header.height());
        const QSize needs(needed, header.fontMetrics().height());
        if (!fits(has, needs)) found << described(header, text, has, needs);
    }
}

void findInTabs(const QTabBar& tabs, QStringList& found) {
    for (int tab = 0; tab < tabs.count(); ++tab) {
        const QSize needs(tabs.fontMetrics().horizontalAdvance(tabs.tabText(tab)),
                          tabs.fontMetrics().height());
        if (!fits(tabs.tabRect(tab).size(), needs))
            found << described(tabs, tabs.tabText(tab), tabs.tabRect(tab).size(), needs);
    }
}

void findInComboBox(const QComboBox& box, QStringList& found) {
    const QSize needs(box.fontMetrics().horizontalAdvance(box.currentText()),
                      box.fontMetrics().height());
    if (!box.isEditable() && !fits(box.size(), needs))
        found << described(box, box.currentText(), box.size(), needs);
}

}  // namespace

double contrast(const QColor& one, const QColor& other) {
    const double first = luminance(one);
    const double second = luminance(other);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

QStringList unreadableTexts(const QPalette& palette) {
    QStringList found;
    for (const auto& [group, groupName] : groups) {
        for (const Pair& pair : pairs) {
            const double has =
                contrast(palette.color(group, pair.text), palette.color(group, pair.ground));
            if (has < readableContrast)
                found << QStringLiteral("%1, %2: %3")
                             .arg(QString::fromLatin1(pair.name), QString::fromLatin1(groupName))
                             .arg(has);
        }
    }
    return found;
}

QStringList clippedTexts(QWidget& widget) {
    QStringList found;
    QList<QWidget*> widgets = widget.findChildren<QWidget*>();
    widgets.prepend(&widget);
    for (const QWidget* const child : std::as_const(widgets)) {
        if (!child->isVisibleTo(&widget)) continue;
        if (const auto* label = qobject_cast<const QLabel*>(child)) findInLabel(*label, found);
        if (const auto* button = qobject_cast<const QAbstractButton*>(child))
            findInButton(*button, found);
        if (const auto* header = qobject_cast<const QHeaderView*>(child))
            findInHeader(*header, found);
        if (const auto* tabs = qobject_cast<const QTabBar*>(child)) findInTabs(*tabs, found);
        if (const auto* box = qobject_cast<const QComboBox*>(child)) findInComboBox(*box, found);
    }
    return found;
}

double contrastIn(const QImage& picture, const QRect& part) {
    std::map<QRgb, int> counts;
    for (int y = part.top(); y <= part.bottom(); ++y)
        for (int x = part.left(); x <= part.right(); ++x) ++counts[picture.pixel(x, y)];
    const auto ground = std::max_element(counts.begin(), counts.end(), [](auto& one, auto& other) {
        return one.second < other.second;
    });
    double most = 1;
    for (const auto& [color, count] : counts)
        most = std::max(most, contrast(QColor::fromRgb(color), QColor::fromRgb(ground->first)));
    return most;
}

}  // namespace WindowSupport
