#pragma once

#include "common/Severity.h"
#include "core/HourlyArrivals.h"

#include <QObject>
#include <QTimer>

#include <array>
#include <cstdint>
#include <functional>

namespace quorbel {

class AppDelegate;
class ChartLegend;
class SeverityCard;

/// Keeps the severity cards of the home page current: their charts, and which of them make the
/// rating severe. A press on one opens its events.
class HomeCards : public QObject {
    Q_OBJECT

public:
    using Cards = std::array<SeverityCard *, kSeverityClassCount>;

    /// All outlive this. The cards stand in the order of the classes and are completed here.
    HomeCards(AppDelegate &delegate, const Cards &cards, ChartLegend &legend, QWidget &page);

    /// What time it is, in seconds since 1970; the system's where none is set.
    void setClock(std::function<std::int64_t()> clock) { m_clock = std::move(clock); }

    /// An event has come: they are refreshed soon.
    void noteArrival() {
        if (!m_due.isActive()) {
            m_due.start();
        }
    }
    /// `severityStatus` is the rating that the page shows.
    void refresh(int severityStatus);

    void setCompact(bool isCompact);

Q_SIGNALS:
    /// Time to call refresh().
    void refreshDue();

private:
    void open(std::size_t severityClass);
    void followClock();

    AppDelegate &m_delegate;
    Cards m_cards;
    ChartLegend &m_legend;
    QWidget &m_page;
    std::function<std::int64_t()> m_clock;
    HourlyArrivals::Hour m_shownHour = 0;
    bool m_isCompact = false;
    QTimer m_due;
    QTimer m_hours;
};

}  // namespace quorbel
