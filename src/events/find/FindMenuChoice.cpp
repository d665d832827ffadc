#include "events/find/FindMenuChoice.h"

#include "common/Severity.h"
#include "platform/gui/KnownText.h"
#include "platform/gui/QtText.h"

#include <QAction>
#include <QActionGroup>
#include <QMenu>

namespace quorbel {

void FindMenuChoice::addAny(const QString &text) {
    m_menu = new QMenu(this);
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
                     tr("Show only events at least as severe as you choose"), parent) {
    addAny(tr("Any severity"));
    for (std::uint8_t i = 0; i < kUnknownClass; ++i) {
        const QString label = knownName(kSeverityClasses[i].label);
        addValue(i == 0 ? label : tr("%1 and worse").arg(label), QVariant::fromValue<uint>(i));
    }
}

void FindSeverity::clear() {
    m_least.reset();
    checkAny();
    showValue({});
}

void FindSeverity::take(const QVariant &key, const QString &text) {
    m_least = static_cast<std::uint8_t>(key.toUInt());
    showValue(text);
}

}  // namespace quorbel
