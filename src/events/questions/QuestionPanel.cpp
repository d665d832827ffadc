#include "events/questions/QuestionPanel.h"

#include "events/find/EventSpan.h"
#include "events/questions/FilterLibrary.h"
#include "events/questions/QuestionDelegate.h"
#include "events/questions/QuestionFooter.h"
#include "events/questions/QuestionPrompt.h"
#include "platform/gui/FontSize.h"
#include "platform/gui/Icons.h"
#include "platform/gui/PaintedText.h"
#include "platform/gui/QtText.h"

#include <QElapsedTimer>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QScreen>
#include <QScrollBar>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace quorbel {

namespace {

constexpr QSize kSize(584, 572);
constexpr int kScreenMargin = 8;
constexpr int kSliceMilliseconds = 8;
constexpr int kLookMilliseconds = 500;      // for what has arrived
constexpr int kRecountMilliseconds = 2000;  // when events have left

QFrame *line(QWidget *parent) {
    auto *frame = new QFrame(parent);
    frame->setProperty("role", QStringLiteral("line"));
    return frame;
}

}  // namespace

QuestionPanel::QuestionPanel(EventList &events, FilterLibrary &library,
                             std::function<QDateTime()> clock, QWidget *parent)
    : FindPanel(parent),
      m_library(library),
      m_counter(events),
      m_search(new QLineEdit(this)),
      m_list(new QListView(this)),
      m_below(new QStackedWidget(this)),
      m_footer(new QuestionFooter(m_below)),
      m_prompt(new QuestionPrompt(m_below)),
      m_clock(std::move(clock)) {
    setObjectName(QStringLiteral("findSavedPanel"));
    setAccessibleName(tr("Kept filters and questions"));
    makeColumn();
    connectFooter();
    m_search->installEventFilter(this);
    m_list->installEventFilter(this);
    connect(m_search, &QLineEdit::textChanged, this, [this](const QString &words) {
        m_model.setSearch(words);
        select(m_model.choosable(0, 1));
    });
    connect(m_list->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &QuestionPanel::showSelected);
    connect(m_list, &QAbstractItemView::doubleClicked, this, &QuestionPanel::showOnly);
    connect(&m_slices, &QTimer::timeout, this, &QuestionPanel::count);
    connect(&m_library, &FilterLibrary::changed, this, [this] {
        if (isVisible()) {
            showFilters();
        }
    });
}

void QuestionPanel::makeColumn() {
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(1, 1, 1, 1);
    column->setSpacing(0);
    auto *top = new QHBoxLayout;
    top->setContentsMargins(14, 14, 14, 8);
    top->addWidget(m_search);
    column->addLayout(top);
    column->addWidget(line(this));
    column->addWidget(m_list, 1);
    column->addWidget(line(this));
    column->addWidget(m_below);
    m_below->addWidget(m_footer);
    m_below->addWidget(m_prompt);
    m_search->setObjectName(QStringLiteral("findSavedText"));
    m_search->setAccessibleName(tr("Find a kept filter or a question"));
    addSearchSign();
    m_list->setObjectName(QStringLiteral("findSavedList"));
    m_list->setAccessibleName(tr("Kept filters and questions"));
    m_list->setModel(&m_model);
    m_list->setItemDelegate(new QuestionDelegate(m_list));
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setStyleSheet(QStringLiteral("QListView { border: none; padding: 0 7px; }"));
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
}

/// A picture, not a button: what an action of the field would be.
void QuestionPanel::addSearchSign() {
    constexpr int kSign = 16;
    auto *sign = new QLabel(m_search);
    setLabelIcon(*sign, lineIcon(QStringLiteral("search")), sizedToFont(kSign));
    sign->setAttribute(Qt::WA_TransparentForMouseEvents);
    auto *row = new QHBoxLayout(m_search);
    row->setContentsMargins(8, 0, 0, 0);
    row->addWidget(sign);
    row->addStretch();
    m_search->setTextMargins(sizedToFont(kSign) + 8, 0, 0, 0);
}

void QuestionPanel::connectFooter() {
    connect(m_footer, &QuestionFooter::showOnlyAsked, this, &QuestionPanel::showOnly);
    connect(m_footer, &QuestionFooter::markAsked, this, &QuestionPanel::mark);
    connect(m_footer, &QuestionFooter::keepAsked, this, &QuestionPanel::askToKeep);
    connect(m_footer, &QuestionFooter::renameAsked, this, &QuestionPanel::askToRename);
    connect(m_footer, &QuestionFooter::deleteAsked, this, &QuestionPanel::askToDelete);
    connect(m_footer, &QuestionFooter::importAsked, this, [this] {
        hide();
        Q_EMIT importAsked();
    });
    connect(m_footer, &QuestionFooter::exportAsked, this, [this] {
        hide();
        Q_EMIT exportAsked();
    });
    connect(m_prompt, &QuestionPrompt::done, this, [this] {
        m_below->setCurrentWidget(m_footer);
        m_search->setFocus();
    });
}

QSize QuestionPanel::wantedSize(const QWidget &anchor) const {
    const QSize room =
        anchor.screen()->availableGeometry().size() - QSize(2 * kScreenMargin, 2 * kScreenMargin);
    const QSize needed = QSize(sizedToFont(kSize.width()), sizedToFont(kSize.height()))
                             .expandedTo(m_below->sizeHint());
    return needed.boundedTo(room);
}

void QuestionPanel::open(QWidget &anchor, const EventQuery &current, const SavedFilter *inForce) {
    m_current = current;
    m_whyNotKept = current.isInUse() ? FilterLibrary::whyNotKept(current) : QString();
    m_inForce = inForce == nullptr ? std::nullopt : std::optional(*inForce);
    m_below->setCurrentWidget(m_footer);
    m_search->clear();
    setFixedSize(wantedSize(anchor));
    showFilters();
    select(m_model.choosable(0, 1));
    if (m_inForce) {
        const QModelIndex index = m_model.find(m_inForce->name, m_library.isKept(*m_inForce));
        select(index.isValid() ? index : m_model.choosable(0, 1));
    }
    openBelow(anchor, Qt::AlignRight);
    m_search->setFocus();
}

void QuestionPanel::setInForce(const SavedFilter &filter) {
    m_inForce = filter;
    showSelected();
}

void QuestionPanel::showFilters() {
    const SavedFilter *before = selected();
    const std::string name = before == nullptr ? "" : before->name;
    const bool wasKept = m_list->currentIndex().data(QuestionModel::kIsKept).toBool();
    m_model.show(m_library);
    const auto kept = static_cast<qint64>(m_library.kept().size());
    const QString among = kept == 1 ? tr("Find among %1 kept filter and %2 questions")
                                    : tr("Find among %1 kept filters and %2 questions");
    m_search->setPlaceholderText(
        among.arg(countText(kept), countText(static_cast<qint64>(m_library.questions().size()))));
    const QModelIndex same = m_model.find(name, wasKept);
    select(same.isValid() ? same : m_model.choosable(0, 1));
    startCounting();
}

std::vector<EventQuery> QuestionPanel::queriesNow() const {
    std::vector<EventQuery> queries = m_model.queries();
    for (EventQuery &query : queries) {
        query = queryAt(query, m_clock());
    }
    return queries;
}

void QuestionPanel::startCounting() {
    m_counted = queriesNow();
    m_counter.start(m_counted);
    m_slices.start(0);
}

void QuestionPanel::followClock() {
    const std::vector<EventQuery> queries = queriesNow();
    for (std::size_t i = 0; i < queries.size(); ++i) {
        if (queries[i] != m_counted[i]) {
            m_counter.replace(i, queries[i]);
        }
    }
    m_counted = queries;
}

void QuestionPanel::count() {
    QElapsedTimer time;
    time.start();
    if (m_slices.interval() > 0) {
        followClock();
    }
    if (m_counter.isCounting()) {
        m_counter.run([&time] { return time.elapsed() >= kSliceMilliseconds; });
        showCounts();
        m_slices.start(m_counter.isCounting() ? 0 : kLookMilliseconds);
    } else if (m_counter.isStale() && m_slices.interval() < kRecountMilliseconds) {
        m_slices.start(kRecountMilliseconds);
    } else if (m_counter.isStale()) {
        m_counter.restart();
        m_slices.start(0);
    }
}

void QuestionPanel::showCounts() {
    std::vector<std::optional<std::size_t>> counts;
    for (std::size_t i = 0; i < m_counted.size(); ++i) {
        counts.push_back(m_counter.count(i));
    }
    m_model.setCounts(counts);
}

const SavedFilter *QuestionPanel::selected() const {
    return m_model.filterAt(m_list->currentIndex());
}

void QuestionPanel::select(const QModelIndex &index) {
    if (m_model.choosable(0, 1) == index) {
        m_list->scrollToTop();  // with its group's title
    }
    m_list->setCurrentIndex(index);
    showSelected();
}

void QuestionPanel::showSelected() {
    const QModelIndex index = m_list->currentIndex();
    const SavedFilter *filter = m_model.filterAt(index);
    QuestionFooter::State state;
    state.isKept = index.data(QuestionModel::kIsKept).toBool();
    state.isInForce = filter != nullptr && m_inForce && m_inForce->name == filter->name &&
                      m_inForce->query == filter->query;
    state.hasFilter = m_current.isInUse();
    state.whyNotKept = m_whyNotKept;
    state.mark = filter != nullptr ? m_library.markOf(*filter) : std::nullopt;
    state.hasKept = !m_library.kept().empty();
    m_footer->show(filter, state);
    m_search->setAccessibleDescription(index.data(Qt::AccessibleTextRole).toString());
}

bool QuestionPanel::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::KeyPress && takeKey(*static_cast<QKeyEvent *>(event))) {
        return true;
    }
    return FindPanel::eventFilter(watched, event);
}

bool QuestionPanel::takeKey(const QKeyEvent &event) {
    const int page = std::max(m_list->viewport()->height() / sizedToFont(28) - 1, 1);
    switch (event.key()) {
        case Qt::Key_Up:
            moveBy(-1);
            return true;
        case Qt::Key_Down:
            moveBy(1);
            return true;
        case Qt::Key_PageUp:
            moveBy(-page);
            return true;
        case Qt::Key_PageDown:
            moveBy(page);
            return true;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            if (event.modifiers().testFlag(Qt::ControlModifier)) {
                toggleMark();
            } else {
                showOnly();
            }
            return true;
        default:
            return false;
    }
}

void QuestionPanel::moveBy(int rows) {
    const int step = rows < 0 ? -1 : 1;
    const int wanted = std::clamp(m_list->currentIndex().row() + rows, 0, m_model.rowCount() - 1);
    const QModelIndex index = m_model.choosable(wanted, step);
    if (index.isValid()) {
        select(index);
    } else if (std::abs(rows) > 1) {
        select(m_model.choosable(wanted, -step));
    }
}

void QuestionPanel::showOnly() {
    const SavedFilter *filter = selected();
    if (filter == nullptr) {
        return;
    }
    const bool isInForce =
        m_inForce && m_inForce->name == filter->name && m_inForce->query == filter->query;
    const SavedFilter wanted = *filter;
    hide();
    if (isInForce) {
        Q_EMIT ended();
    } else {
        Q_EMIT chosen(wanted);
    }
}

void QuestionPanel::mark(std::optional<MarkColour> colour) {
    if (const SavedFilter *filter = selected()) {
        run(m_library.mark(SavedFilter(*filter), colour));
    }
}

void QuestionPanel::toggleMark() {
    if (const SavedFilter *filter = selected()) {
        mark(m_library.markOf(*filter) ? std::nullopt : std::optional(m_library.freeColour()));
    }
}

void QuestionPanel::askToKeep() {
    m_below->setCurrentWidget(m_prompt);
    const auto note = [this](const QString &name) {
        const bool isTaken = std::ranges::find(m_library.kept(), name.toStdString(),
                                               &SavedFilter::name) != m_library.kept().end();
        return isTaken ? tr("Takes the place of the one of this name") : QString();
    };
    m_prompt->askName(tr("Keep the filter in use under a name"), {}, tr("Keep"), note,
                      [this](const QString &name) {
                          SavedFilter filter;
                          filter.name = name.toStdString();
                          filter.query = m_current;
                          run(m_library.keep(filter));
                          select(m_model.find(filter.name, true));
                      });
}

void QuestionPanel::askToRename() {
    const SavedFilter *filter = selected();
    if (filter == nullptr) {
        return;
    }
    m_below->setCurrentWidget(m_prompt);
    m_prompt->askName(tr("Another name for the filter"), toQString(filter->name), tr("Rename"), {},
                      [this, from = filter->name](const QString &name) {
                          run(m_library.rename(from, name.toStdString()));
                          select(m_model.find(name.toStdString(), true));
                      });
}

void QuestionPanel::askToDelete() {
    const SavedFilter *filter = selected();
    if (filter == nullptr) {
        return;
    }
    m_below->setCurrentWidget(m_prompt);
    m_prompt->askWhether(
        tr("Delete the kept filter “%1”?").arg(paintedRow(FilterLibrary::nameOf(*filter))),
        tr("Delete"), [this, name = filter->name] { run(m_library.remove(name)); });
}

void QuestionPanel::run(const QString &problem) {
    if (!problem.isEmpty()) {
        hide();
        Q_EMIT failed(problem);
    }
}

void QuestionPanel::hideEvent(QHideEvent *event) {
    FindPanel::hideEvent(event);
    m_slices.stop();
    m_counter.start({});
    m_counted.clear();
}

}  // namespace quorbel
