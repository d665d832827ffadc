#include "events/ScanView.h"

#include "core/AppDelegate.h"
#include "core/LoadedEvents.h"
#include "events/DeletedEvents.h"
#include "events/EventCommands.h"
#include "events/EventFinder.h"
#include "events/EventSelection.h"
#include "events/EventTableModel.h"
#include "events/HeadLinks.h"
#include "events/NewestButton.h"
#include "events/ReadingPlace.h"
#include "events/TestMessage.h"
#include "events/timeline/Timeline.h"
#include "events/timeline/TimelineFold.h"
#include "platform/gui/AlertBox.h"
#include "platform/gui/ColumnMemory.h"
#include "platform/gui/Icons.h"
#include "platform/gui/QtText.h"
#include "platform/gui/RowCommands.h"
#include "platform/gui/Sheet.h"
#include "platform/gui/Storyboard.h"
#include "platform/gui/TableExport.h"
#include "ui_ScanView.h"

#include <algorithm>
#include <utility>

namespace quorbel {

namespace {

std::size_t countOf(const std::vector<RowRange> &rows) {
    std::size_t count = 0;
    for (const RowRange &range : rows) {
        count += range.count;
    }
    return count;
}

}  // namespace

ScanView::ScanView(AppDelegate &delegate, const Storyboard &storyboard, QWidget *parent)
    : Page(parent),
      m_delegate(delegate),
      m_storyboard(storyboard),
      arrController(delegate.events),
      m_events(arrController),
      m_model(std::make_unique<EventTableModel>(m_events)),
      ui(std::make_unique<Ui::ScanView>()) {
    ui->setupUi(this);
}

ScanView::~ScanView() = default;

void ScanView::viewDidLoad() {
    setWhiteBackground();
    ui->deleteEvents->setIcon(lineIcon(QStringLiteral("delete")));
    ui->exportEvents->setIcon(lineIcon(QStringLiteral("export")));
    ui->testSyslog->setIcon(lineIcon(QStringLiteral("message-test")));

    ui->tableView->setModel(m_model.get());
    m_place = std::make_unique<ReadingPlace>(*ui->tableView);
    new NewestButton(m_events, *ui->tableView);
    ui->holdEvents->attach(m_delegate.hold, *this);
    m_selection = std::make_unique<EventSelection>(m_events, *ui->tableView);
    connect(m_selection.get(), &EventSelection::openRequested, this, &ScanView::doubleClickTable);
    (new ColumnMemory(*ui->tableView))->recall(QStringLiteral("Events"));
    connect(ui->deleteEvents, &QAbstractButton::clicked, this, &ScanView::deleteEvents);
    connect(ui->exportEvents, &QAbstractButton::clicked, this, &ScanView::exportEvents);
    connect(ui->testSyslog, &QAbstractButton::clicked, this, &ScanView::testSyslog);
    connect(ui->scanActions, &QAbstractButton::clicked, this, &ScanView::syslogActions);
    connect(ui->scanOptions, &QAbstractButton::clicked, this, &ScanView::syslogOptions);
    ui->findOpen->setIcon(lineIcon(QStringLiteral("search")));
    new HeadLinks(*ui->headLayout,
                  {{ui->scanActions, QStringLiteral("actions")},
                   {ui->scanOptions, QStringLiteral("options")}},
                  *this);
    ui->findBar->attach(arrController, *ui->findOpen);
    m_finder =
        std::make_unique<EventFinder>(m_events, m_delegate.state, *ui->findBar, *ui->tableView);
    connect(m_finder.get(), &EventFinder::countChanged, this, &ScanView::showCount);
    m_deleted = std::make_unique<DeletedEvents>(m_delegate, *this);
    addEventCommands(*ui->tableView, *ui->findBar, *m_finder, m_delegate, [this] {
        deleteEvents();
    }).setPageCommand(m_deleted->undoAction());
    addListCommands(*this, *ui->findBar, *m_finder, *ui->holdEvents, *ui->timelineToggle,
                    *ui->tableView);
    m_timeline = std::make_unique<TimelineFold>(*ui->timeline, *ui->timelineToggle, m_events,
                                                m_delegate.hold);
    connect(ui->timeline, &Timeline::spanChosen, ui->findBar, &FindBar::setSpan);
    connect(ui->findBar, &FindBar::filterChanged, ui->timeline, [this] {
        const EventSpan::Moments span = ui->findBar->span();
        ui->timeline->setAsked(span.from, span.until);
    });
    showCount();
}

void ScanView::viewWillAppear() {
    removeAnnounced();
    arrController.show(m_delegate.state);
    m_model->refreshAll();
    m_finder->refresh();
    ui->tableView->scrollToTop();
    ui->tableView->selectionModel()->clear();
    m_selection->clear();
}

void ScanView::viewDidAppear() {
    ui->tableView->setFocus();
}

EventId ScanView::insertEvent(const EventFields &event) {
    const std::size_t rows = m_events.size();
    const EventId id = arrController.insertShown(event, m_delegate.state);
    noteArrivals(rows);
    return id;
}

bool ScanView::canInsertMany() const {
    // An expression may take as long for each as all others do for a thousand.
    return std::ranges::none_of(m_events.filterInForce().texts, [](const TextCondition &text) {
        return text.pattern.isExpression;
    });
}

void ScanView::insertEvents(LoadedEvents events) {
    const std::size_t rows = m_events.size();
    arrController.insertAllShown(std::move(events), m_delegate.state);
    noteArrivals(rows);
}

void ScanView::noteArrivals(std::size_t rowsBefore) {
    if (m_events.size() > rowsBefore) {
        m_place->noteArrivals(static_cast<int>(m_events.size() - rowsBefore));
        m_selection->clearForArrival();
    }
}

void ScanView::removeEvent(const EventFields &announced) {
    const auto row = arrController.find(announced, m_delegate.state.newDateFormat);
    if (!row) {
        return;
    }
    arrController.markForRemoval(*row);
    if (!std::exchange(m_removalIsDue, true)) {
        QMetaObject::invokeMethod(this, &ScanView::removeAnnounced, Qt::QueuedConnection);
    }
}

void ScanView::removeAnnounced() {
    m_removalIsDue = false;
    arrController.removeMarked();
}

void ScanView::setFilter(const EventQuery &query) {
    ui->findBar->setFilter(query);
}

const QAbstractItemModel &ScanView::rowModel() {
    return *m_model;
}

int ScanView::numberOfRows() {
    return m_model->rowCount();
}

int ScanView::selectedRow() {
    return m_selection->row();
}

int ScanView::rowOf(const Event &event) {
    const auto row = m_events.rowOf(event.id());
    return row ? static_cast<int>(*row) : -1;
}

int ScanView::placeOf(const Event &event) {
    return static_cast<int>(m_events.placeOf(event.id()));
}

Event ScanView::eventAt(int row) {
    return {arrController, m_events.idAt(static_cast<std::size_t>(row))};
}

Event ScanView::selectRow(int row) {
    m_selection->select(row);
    return eventAt(row);
}

std::vector<TextRange> ScanView::marksIn(const QString &text) {
    return m_finder->marks().in(text);
}

void ScanView::doubleClickTable() {
    removeAnnounced();
    const int row = selectedRow();
    if (row < 0) {
        return;
    }
    std::unique_ptr<QWidget> controller = m_storyboard.instantiate(QStringLiteral("eventView"));
    auto *sheet = dynamic_cast<Sheet *>(controller.get());
    auto *details = dynamic_cast<EventSheetLink *>(controller.get());
    if (sheet == nullptr || details == nullptr) {
        return;
    }
    details->setDict(eventAt(row));
    controller.release();  // NOLINT(bugprone-unused-return-value): it deletes itself
    sheet->presentOver(this);
}

ScanView::Rows ScanView::allRows() const {
    return m_events.size() == 0 ? Rows{} : Rows{{0, m_events.size()}};
}

void ScanView::deleteEvents() {
    removeAnnounced();
    const Rows selection = m_selection->rows();
    if (!selection.empty()) {
        confirmDeletion(tr("Are you sure you want to delete selected events?"),
                        tr("By clicking 'Yes' you will permanently delete selected events."),
                        countOf(selection), rowsLaterOf(selection));
        return;
    }
    offerAll(tr("Delete all events"), [this] { confirmDeletionOfAll(); });
}

void ScanView::confirmDeletionOfAll() {
    const Rows all = allRows();
    // Of a filter's result just those go that were counted in the question.
    const auto wholeList = [this] {
        return arrController.size() == 0 ? Rows{} : Rows{{0, arrController.size()}};
    };
    confirmDeletion(tr("Are you sure you want to delete all events?"),
                    tr("By clicking 'Yes' you will permanently delete all events."), countOf(all),
                    m_events.isFiltered() ? rowsLaterOf(all) : wholeList);
}

std::function<ScanView::Rows()> ScanView::rowsLaterOf(const Rows &rows) const {
    return [this, ids = m_selection->idsOf(rows)] {
        std::vector<std::size_t> inList;
        for (const EventId id : ids) {
            if (const auto row = arrController.rowOf(id)) {
                inList.push_back(*row);
            }
        }
        return joinRows(std::move(inList));
    };
}

void ScanView::offerAll(const QString &checkBox, std::function<void()> onTicked) {
    openAlert(this,
              {tr("No events selected"),
               tr("Please select specific events or check all events."),
               checkBox,
               {}},
              [ticked = std::move(onTicked)](const AlertAnswer &answer) {
                  if (answer.checked) {
                      ticked();
                  }
              });
}

void ScanView::confirmDeletion(const QString &question, const QString &consequence,
                               std::size_t count, std::function<Rows()> rows) {
    openAlert(this,
              {question, consequence + m_finder->deletionNote(count), {}, {tr("Yes"), tr("No")}},
              [this, rows = std::move(rows)](const AlertAnswer &answer) {
                  if (answer.button == 0) {
                      removeAnnounced();
                      deleteRows(rows());
                  }
              });
}

void ScanView::deleteRows(const Rows &rows) {
    updateEvents(m_deleted->take(rows));
    m_selection->clear();
}

void ScanView::updateEvents(LineCommand deleted) {
    m_delegate.setPipe(std::move(deleted));
}

void ScanView::exportEvents() {
    removeAnnounced();
    if (const Rows selection = m_selection->rows(); !selection.empty()) {
        openExportPanel(this, "events",
                        [this, chosen = m_selection->idsOf(selection)](const QString &path) {
                            writeEvents(path, chosen);
                        });
        return;
    }
    offerAll(tr("Export all events"), [this] {
        openExportPanel(this, "events", [this](const QString &path) {
            writeEvents(path, m_selection->idsOf(allRows()));
        });
    });
}

void ScanView::writeEvents(const QString &path, const std::vector<EventId> &ids) {
    // By event: new ones may come on top, and others go, while many are written; and the filter may
    // change, so the rows are those of all events.
    const EventTableModel all(arrController);
    const auto row = [this, &ids, &all](std::size_t number) {
        const auto found = arrController.rowOf(ids[number]);
        return found ? all.index(static_cast<int>(*found), 0) : QModelIndex();
    };
    // A file that cannot be written stays as it was; nobody is told.
    exportTable(path, all, {ids.size(), row}, this);
}

void ScanView::testSyslog() {
    sendTestMessage();
}

void ScanView::syslogActions() {
    if (MainWindowLink *window = m_delegate.mainWindow()) {
        window->openSettingsPage(Tab::kActions, Tab::kEvents);
    }
}

void ScanView::syslogOptions() {
    if (MainWindowLink *window = m_delegate.mainWindow()) {
        window->openSettingsPage(Tab::kOptions, Tab::kEvents);
    }
}

void ScanView::showCount() {
    ui->eventCount->setText(m_finder->countText());
}

}  // namespace quorbel
