#include "events/find/FindMenuChoice.h"

#include "common/Severity.h"
#include "platform/gui/KnownText.h"
#include "platform/gui/LetteredMenu.h"
#include "platform/gui/QtText.h"

#include <QAction>
#include <QActionGroup>
#include <QMenu>

namespace quorbel {

void FindMenuChoice::addAny(const QString &text) {
    m_menu = new LetteredMenu(this);
    m_menu->setObjectName(objectName() + QStringLiteral("Menu"));
    m_menu->setAccessibleName(title());
    m_group = new QActionGroup(this);
    m_any = add(text);
    m_any->setChecked(true);
    connect(m_any, &QAction::triggered, this, [this] { clear(); });
    m_menu->addSeparator();
}

QAction *FindMenuChoice::add(const QString &text) {
    QString shown = text;
    QAction *action = m_menu->addAction(shown.replace(u'&', QStringLiteral("&&")));
    action->setCheckable(true);
    m_group->addAction(action);
    return action;
}

QAction *FindMenuChoice::addValue(const QString &text, const QVariant &key) {
    QAction *action = add(text);
    connect(action, &QAction::triggered, this, [this, key, text] { take(key, text); });
    m_values.append(action);
    return action;
}

void FindMenuChoice::clearValues() {
    qDeleteAll(m_values);
    m_values.clear();
}

void FindMenuChoice::check(QAction *action) {
    action->setChecked(true);
}

void FindMenuChoice::openBelow(QWidget &anchor) {
    fill();
    m_menu->popup(anchor.mapToGlobal(QPoint(0, anchor.height() + 2)));
    m_menu->setActiveAction(m_group->checkedAction());
}

FindSeverity::FindSeverity(QWidget *parent)
    : FindMenuChoice("findSeverity", tr("Severity"),
                     tr("Show only events at least as severe as you choose, or of one severity"),
                     parent) {
    addAny(tr("Any severity"));
    for (std::uint8_t i = 0; i < kUnknownClass; ++i) {
        const QString label = knownName(kSeverityClasses[i].label);
        m_leastActions.at(i) =
            addValue(i == 0 ? label : tr("%1 and worse").arg(label), static_cast<int>(i));
    }
    menu().addSeparator();
    for (std::uint8_t i = 0; i < kSeverityClassCount; ++i) {
        m_onlyActions.at(i) = addValue(tr("Only %1").arg(knownName(kSeverityClasses[i].label)),
                                       static_cast<int>(kUnknownClass + i));
    }
}

void FindSeverity::addTo(EventQuery &query) const {
    query.leastSeverity = m_least;
    if (m_only) {
        query.classes.set(*m_only);
    }
}

void FindSeverity::removeFrom(EventQuery &query) const {
    query.leastSeverity.reset();
    query.classes.reset();
}

void FindSeverity::takeFrom(const EventQuery &query) {
    if (query.leastSeverity && *query.leastSeverity < kUnknownClass) {
        m_leastActions.at(*query.leastSeverity)->trigger();
        return;
    }
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        if (query.classes[i]) {
            m_onlyActions.at(i)->trigger();
            return;
        }
    }
}

void FindSeverity::clear() {
    m_least.reset();
    m_only.reset();
    checkAny();
    showValue({});
}

void FindSeverity::take(const QVariant &key, const QString &text) {
    const auto number = static_cast<std::uint8_t>(key.toUInt());
    m_least.reset();
    m_only.reset();
    if (number < kUnknownClass) {
        m_least = number;
    } else {
        m_only = number - kUnknownClass;
    }
    showValue(text);
}

}  // namespace quorbel
