#pragma once

#include "core/ArrangedEvents.h"
#include "core/PageLinks.h"
#include "events/SteppableList.h"
#include "platform/LineCommand.h"
#include "platform/gui/Page.h"

#include <functional>
#include <memory>
#include <vector>

namespace Ui {
class ScanView;
}

namespace quorbel {

class AppDelegate;
class DeletedEvents;
class EventFinder;
class EventSelection;
class EventTableModel;
class ReadingPlace;
class Storyboard;
class TimelineFold;

/// The event list page: all events, newest first, and what one does with them.
class ScanView : public Page, public EventListPageLink, public SteppableList {
    Q_OBJECT

public:
    /// Both outlive the page.
    ScanView(AppDelegate &delegate, const Storyboard &storyboard, QWidget *parent = nullptr);
    ~ScanView() override;

    void viewDidLoad() override;
    void viewWillAppear() override;
    void viewDidAppear() override;

    [[nodiscard]] bool isOnScreen() const override { return isPageOnScreen(); }
    EventId insertEvent(const EventFields &event) override;
    [[nodiscard]] bool canInsertMany() const override;
    void insertEvents(LoadedEvents events) override;
    void removeEvent(const EventFields &announced) override;
    void setFilter(const EventQuery &query) override;

    [[nodiscard]] const QAbstractItemModel &rowModel() override;
    [[nodiscard]] int numberOfRows() override;
    /// Of several selected rows the one that was selected last.
    [[nodiscard]] int selectedRow() override;
    [[nodiscard]] int rowOf(const Event &event) override;
    [[nodiscard]] int placeOf(const Event &event) override;
    Event selectRow(int row) override;
    [[nodiscard]] std::vector<TextRange> marksIn(const QString &text) override;

    void doubleClickTable();
    void deleteEvents();
    void exportEvents();
    void testSyslog();
    void syslogActions();
    void syslogOptions();

private:
    using Rows = std::vector<RowRange>;

    [[nodiscard]] Rows allRows() const;
    [[nodiscard]] Event eventAt(int row);
    void noteArrivals(std::size_t rowsBefore);
    void removeAnnounced();
    /// Says that no events are selected; `onTicked` runs when the check box was ticked.
    void offerAll(const QString &checkBox, std::function<void()> onTicked);
    /// Asks first. `rows` tells which events are meant once "Yes" was pressed: the list goes on
    /// changing while a question stands.
    void confirmDeletion(const QString &question, const QString &consequence, std::size_t count,
                         std::function<Rows()> rows);
    void confirmDeletionOfAll();
    [[nodiscard]] std::function<Rows()> rowsLaterOf(const Rows &rows) const;
    void deleteRows(const Rows &rows);
    void updateEvents(LineCommand deleted);
    void writeEvents(const QString &path, const std::vector<EventId> &ids);
    void showCount();

    AppDelegate &m_delegate;
    const Storyboard &m_storyboard;
    EventList &arrController;  ///< the delegate's
    ArrangedEvents m_events;   ///< what is displayed of it
    std::unique_ptr<EventTableModel> m_model;
    std::unique_ptr<Ui::ScanView> ui;
    std::unique_ptr<ReadingPlace> m_place;
    std::unique_ptr<EventSelection> m_selection;
    std::unique_ptr<EventFinder> m_finder;
    std::unique_ptr<DeletedEvents> m_deleted;
    std::unique_ptr<TimelineFold> m_timeline;
    bool m_removalIsDue = false;
};

}  // namespace quorbel
