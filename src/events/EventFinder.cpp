#include "events/EventFinder.h"

#include "core/EventReader.h"
#include "events/EventTableModel.h"
#include "events/EventTableView.h"
#include "events/FindBar.h"
#include "events/NothingFound.h"
#include "events/find/ScrollMarks.h"
#include "events/questions/FilterLibrary.h"
#include "events/questions/FindSaved.h"
#include "events/questions/RowMarkDelegate.h"
#include "platform/gui/EventsText.h"
#include "platform/gui/QtText.h"

#include <QItemSelectionModel>
#include <QScopedValueRollback>
#include <QScrollBar>

#include <algorithm>
#include <utility>

namespace quorbel {

namespace {

qint64 number(std::size_t count) {
    return static_cast<qint64>(count);
}

}  // namespace

EventFinder::EventFinder(ArrangedEvents &events, const AppState &state, FindBar &bar,
                         EventTableView &table)
    : m_events(events),
      m_state(state),
      m_bar(bar),
      m_table(table),
      m_nothingFound(new NothingFound(events.list(), bar, table)),
      m_hint(table.hint()) {
    auto *library = new FilterLibrary(this);
    const auto clock = [this] { return m_bar.now(); };
    auto *rowMarks = new RowMarks(m_events, *library, clock, this);
    m_table.setItemDelegate(new RowMarkDelegate(m_marks, *rowMarks, this));
    if (auto *rows = qobject_cast<EventTableModel *>(m_table.model())) {
        rows->setDescription([rowMarks](int row) { return rowMarks->descriptionOf(row); });
    }
    connect(rowMarks, &RowMarks::changed, m_table.viewport(), qOverload<>(&QWidget::update));
    connect(&m_bar, &FindBar::timePassed, rowMarks, &RowMarks::follow);
    m_bar.saved().attach(
        m_events.list(), *library, [this] { return m_bar.lastingFilter(); }, clock);
    new ScrollMarks(m_events, m_table);
    connect(&m_slices, &QTimer::timeout, this, &EventFinder::search);
    connect(&m_bar, &FindBar::filterChanged, this, &EventFinder::applyFilter);
    connect(&m_bar, &FindBar::left, &m_table, qOverload<>(&QWidget::setFocus));
    const QAbstractItemModel *model = m_table.model();
    connect(model, &QAbstractItemModel::modelAboutToBeReset, this, &EventFinder::rememberSelected);
    connect(model, &QAbstractItemModel::modelReset, this, &EventFinder::restoreSelected);
    m_events.list().addObserver(*this);
    showCounts();
}

EventFinder::~EventFinder() {
    m_events.list().removeObserver(*this);
}

QString EventFinder::countText() const {
    const std::size_t all = m_events.list().size();
    if (m_events.isSearching() && m_sinceProgress.isValid()) {
        return eventsText(quorbel::countText(number(m_events.foundSoFar())) + u'…', all);
    }
    return m_events.isFiltered() ? eventsText(quorbel::countText(number(m_events.size())), all)
                                 : eventsText(all);
}

QString EventFinder::deletionNote(std::size_t count) const {
    if (!m_events.isFiltered()) {
        return {};
    }
    const QString note = count == 1 ? tr("Only the 1 event that matches is deleted.")
                                    : tr("Only the %1 events that match are deleted.", nullptr,
                                         pluralNumber(number(count)))
                                          .arg(quorbel::countText(number(count)));
    return QStringLiteral("\n\n") + note;
}

void EventFinder::refresh() {
    m_events.refresh();
    applyFilter();
}

void EventFinder::applyFilter() {
    const QScopedValueRollback mine(m_isMine, true);
    m_bar.showError(toQString(m_events.setFilter(m_bar.filter())));
    if (m_events.isSearching()) {
        startSearching();
    } else {
        m_slices.stop();
    }
    showResult();
}

void EventFinder::startSearching() {
    m_slices.start(0);
    m_sinceStart.start();
    m_sinceProgress.invalidate();
}

void EventFinder::search() {
    const QScopedValueRollback mine(m_isMine, true);
    QElapsedTimer time;
    time.start();
    m_events.search([&] { return time.elapsed() >= m_pace.slice.count(); });
    if (!m_events.isSearching()) {
        m_slices.stop();
        showResult();
    } else if (m_sinceStart.elapsed() >= m_pace.patience.count()) {
        noteProgress();
    }
}

void EventFinder::noteProgress() {
    const qint64 often = m_pace.patience.count() / 2;
    if (!m_sinceProgress.isValid() || m_sinceProgress.elapsed() >= often) {
        m_sinceProgress.start();
        Q_EMIT countChanged();
    }
}

void EventFinder::showResult() {
    m_marks.use(m_events.filterInForce());
    m_table.setHint(m_events.isFiltered() && m_events.list().size() > 0 ? tr("No events match.")
                                                                        : m_hint);
    showWhetherFound();
    m_table.viewport()->update();
    noteChange();
}

void EventFinder::showWhetherFound() {
    const bool isNothing =
        m_events.isFiltered() && m_events.size() == 0 && m_events.list().size() > 0;
    if (!isNothing) {
        m_nothingFound->disappear();
    } else if (!m_events.isSearching()) {
        m_nothingFound->appear();
    }
}

void EventFinder::showSurroundings() {
    if (m_events.isFiltered()) {
        m_bar.clear();
    } else if (const QModelIndex index = m_table.currentIndex(); index.isValid()) {
        m_table.scrollTo(index, QAbstractItemView::PositionAtCenter);
    }
    m_table.setFocus();
}

void EventFinder::noteChange() {
    // Thousands of events may arrive between two looks at the counts.
    if (!std::exchange(m_isChangeNoted, true)) {
        QMetaObject::invokeMethod(this, &EventFinder::showCounts, Qt::QueuedConnection);
    }
}

void EventFinder::showCounts() {
    m_isChangeNoted = false;
    if (m_events.isSearching() && !m_slices.isActive()) {
        startSearching();  // many events came at once
    }
    if (m_events.size() > 0 || m_nothingFound->isHidden()) {
        showWhetherFound();
    }
    m_bar.showCounts(m_events.isFiltered() ? m_events.ratingCounts() : countsOfAll());
    Q_EMIT countChanged();
}

std::array<std::size_t, kRatingCount> EventFinder::countsOfAll() const {
    const EventReader reader(m_events.list());
    std::array<std::size_t, kRatingCount> counts{};
    reader.visitPriorities([&](const PriorityClasses &classes, std::size_t uses) {
        const std::int64_t level = m_state.*kSeverityLevels[classes.shown];
        counts[severityLevelName(level).empty() ? 0 : static_cast<std::size_t>(level) + 1] += uses;
    });
    return counts;
}

void EventFinder::rememberSelected() {
    m_selected.reset();
    const QModelIndex current = m_table.currentIndex();
    if (m_isMine && m_table.selectionModel()->isSelected(current)) {
        const int pageRows = std::max(m_table.verticalScrollBar()->pageStep(), 1);
        m_selected = m_events.idAt(static_cast<std::size_t>(current.row()));
        m_selectedPlace =
            std::clamp(current.row() - m_table.verticalScrollBar()->value(), 0, pageRows - 1);
    }
}

void EventFinder::restoreSelected() {
    const auto row = m_selected ? m_events.rowOf(*m_selected) : std::nullopt;
    if (!row) {
        return;
    }
    const QModelIndex index = m_table.model()->index(static_cast<int>(*row), 0);
    m_table.selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
    m_table.scrollTo(index, QAbstractItemView::PositionAtTop);
    QScrollBar *bar = m_table.verticalScrollBar();
    bar->setValue(index.row() - m_selectedPlace);
}

}  // namespace quorbel
