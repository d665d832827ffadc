#pragma once

#include "core/EventCounter.h"
#include "events/find/FindPanel.h"
#include "events/questions/QuestionModel.h"

#include <QDateTime>
#include <QTimer>

#include <functional>

class QLineEdit;
class QListView;
class QStackedWidget;

namespace quorbel {

class FilterLibrary;
class QuestionFooter;
class QuestionPrompt;

/// Offers kept filters and questions, found by typing, each with how many events it means. They
/// are counted in slices while the panel is open.
class QuestionPanel : public FindPanel {
    Q_OBJECT

public:
    /// All outlive this. `clock` tells the time.
    QuestionPanel(EventList &events, FilterLibrary &library, std::function<QDateTime()> clock,
                  QWidget *parent);

    /// `current` is what the page is filtered by; `inForce` the filter that was chosen here last,
    /// null for none.
    void open(QWidget &anchor, const EventQuery &current, const SavedFilter *inForce);
    /// The filter that was chosen last has another name, or none, by now.
    void setInForce(const SavedFilter &filter);

Q_SIGNALS:
    /// Only what the filter means is to be shown.
    void chosen(const quorbel::SavedFilter &filter);
    /// All is to be shown again.
    void ended();
    void importAsked();
    void exportAsked();
    /// Something went wrong; the panel is closed.
    void failed(const QString &problem);

protected:
    void hideEvent(QHideEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void makeColumn();
    void addSearchSign();
    void connectFooter();
    [[nodiscard]] QSize wantedSize(const QWidget &anchor) const;
    void showFilters();
    [[nodiscard]] std::vector<EventQuery> queriesNow() const;
    void startCounting();
    void followClock();
    void count();
    void showCounts();
    void select(const QModelIndex &index);
    void showSelected();
    [[nodiscard]] bool takeKey(const QKeyEvent &event);
    void moveBy(int rows);
    void showOnly();
    void mark(std::optional<MarkColour> colour);
    void toggleMark();
    void askToKeep();
    void askToRename();
    void askToDelete();
    void run(const QString &problem);
    [[nodiscard]] const SavedFilter *selected() const;

    FilterLibrary &m_library;
    EventCounter m_counter;
    QuestionModel m_model;
    QTimer m_slices;
    QLineEdit *m_search;
    QListView *m_list;
    QStackedWidget *m_below;
    QuestionFooter *m_footer;
    QuestionPrompt *m_prompt;
    std::function<QDateTime()> m_clock;
    std::vector<EventQuery> m_counted;
    EventQuery m_current;
    QString m_whyNotKept;
    std::optional<SavedFilter> m_inForce;
};

}  // namespace quorbel
