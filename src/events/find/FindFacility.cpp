#include "events/find/FindFacility.h"

#include "common/Facility.h"
#include "core/EventReader.h"
#include "platform/gui/QtText.h"

#include <QAction>

#include <algorithm>
#include <set>

namespace quorbel {

FindFacility::FindFacility(QWidget *parent)
    : FindMenuChoice("findFacility", tr("Facility"), tr("Show only events of one facility"),
                     parent) {
    addAny(tr("Any facility"));
}

void FindFacility::takeFrom(const EventQuery &query) {
    showValue(toQString(query.facility));
}

void FindFacility::clear() {
    checkAny();
    showValue({});
}

void FindFacility::take(const QVariant & /*key*/, const QString &text) {
    showValue(text);
}

/// In the order of their numbers, then those that have none.
QStringList FindFacility::facilities() const {
    std::set<std::string, std::less<>> there;
    if (m_events != nullptr) {
        EventReader(*m_events).visitPriorityTexts([&](std::string_view priority) {
            there.emplace(priority.substr(0, priority.find('.')));
        });
    }
    if (isInUse()) {
        there.insert(value().toStdString());
    }
    QStringList names;
    for (const std::string_view name : kFacilityNames) {
        if (const auto found = there.find(name); found != there.end()) {
            names.append(toQString(name));
            there.erase(found);
        }
    }
    for (const std::string &name : there) {
        if (!name.empty()) {
            names.append(toQString(name));
        }
    }
    return names;
}

void FindFacility::fill() {
    clearValues();
    for (const QString &name : facilities()) {
        QAction *action = addValue(name, {});
        if (name == value()) {
            check(action);
        }
    }
}

}  // namespace quorbel
