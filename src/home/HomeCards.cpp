#include "home/HomeCards.h"

#include "core/AppDelegate.h"
#include "home/ChartLegend.h"
#include "home/SeverityCard.h"

#include <QWidget>

#include <chrono>
#include <ctime>

namespace quorbel {

namespace {

using namespace std::chrono_literals;

constexpr auto kSoon = 200ms;
/// How late the charts may move on when an hour has passed and nothing arrives.
constexpr auto kClockInterval = 1s;

}  // namespace

HomeCards::HomeCards(AppDelegate &delegate, const Cards &cards, ChartLegend &legend, QWidget &page)
    : m_delegate(delegate), m_cards(cards), m_legend(legend), m_page(page), m_clock([] {
          return std::time(nullptr);
      }) {
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        m_cards.at(i)->complete(i);
        connect(m_cards.at(i), &QAbstractButton::clicked, this, [this, i] { open(i); });
    }
    m_due.setSingleShot(true);
    m_due.setInterval(kSoon);
    connect(&m_due, &QTimer::timeout, this, &HomeCards::refreshDue);
    connect(&m_hours, &QTimer::timeout, this, &HomeCards::followClock);
    m_hours.start(kClockInterval);
}

void HomeCards::followClock() {
    if (m_page.isVisible() && HourlyArrivals::hourOf(m_clock()) != m_shownHour) {
        Q_EMIT refreshDue();
    }
}

void HomeCards::refresh(int severityStatus) {
    const AppState &state = m_delegate.state;
    m_shownHour = HourlyArrivals::hourOf(m_clock());
    bool isEmpty = true;
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        const HourCounts counts = hourCounts(state.arrivals, i, m_shownHour);
        const bool isListed = state.*kSeverityCounters.at(i) > 0;
        m_cards.at(i)->setHours(counts);
        m_cards.at(i)->setSevere(severityStatus == kSevere && isListed &&
                                 state.*kSeverityLevels.at(i) == kSevere);
        isEmpty = isEmpty && !isListed && counts.total() == 0;
    }
    m_legend.setEmpty(isEmpty);
}

void HomeCards::setCompact(bool isCompact) {
    if (m_isCompact == isCompact) {
        return;
    }
    m_isCompact = isCompact;
    for (SeverityCard *card : m_cards) {
        card->setCompact(isCompact);
    }
    m_legend.setCompact(isCompact);
}

void HomeCards::open(std::size_t severityClass) {
    if (MainWindowLink *window = m_delegate.mainWindow()) {
        EventQuery query;
        query.classes.set(severityClass);
        window->showEvents(query);
    }
}

}  // namespace quorbel
