#pragma once

#include "events/find/FindMenuChoice.h"

namespace quorbel {

class EventList;

/// Events of a facility. Those of the listed events are offered.
class FindFacility : public FindMenuChoice {
    Q_OBJECT

public:
    explicit FindFacility(QWidget *parent);

    /// Once; the list outlives this.
    void attach(EventList &events) { m_events = &events; }

    void addTo(EventQuery &query) const override { query.facility = value().toStdString(); }
    void removeFrom(EventQuery &query) const override { query.facility.clear(); }
    void takeFrom(const EventQuery &query) override;
    void clear() override;

protected:
    void fill() override;
    void take(const QVariant &key, const QString &text) override;

private:
    [[nodiscard]] QStringList facilities() const;

    EventList *m_events = nullptr;
};

}  // namespace quorbel
