#pragma once

#include "core/EventQuery.h"
#include "events/find/EventSpan.h"

#include <QDateTime>
#include <QList>
#include <QWidget>

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

class QAbstractButton;
class QLabel;
class QPushButton;

namespace quorbel {

class EventList;
class FindChoice;
class FindFacility;
class FindField;
class FindHost;
class FindMore;
class FindRatings;
class FindSaved;
class FindSpan;

/// One row of controls in which the user says which events are wanted. What has no room in it
/// shortens or goes into a menu. In a narrow page at rest, one button stands for all of it.
class FindBar : public QWidget {
    Q_OBJECT

public:
    explicit FindBar(QWidget *parent = nullptr);

    /// Once: whose hosts and facilities are offered, and the button that unfolds the bar. Both
    /// outlive it.
    void attach(EventList &events, QAbstractButton &unfold);

    /// As it is to be looked for now.
    [[nodiscard]] EventQuery filter() const;
    /// As it is to be kept: spans that go on with the time are left as that.
    [[nodiscard]] EventQuery lastingFilter() const;
    [[nodiscard]] QDateTime now() const;
    /// One of the conditions that are in use, and what would be asked for without it.
    struct Condition {
        QString name;
        EventQuery others;
        std::function<void()> remove;
    };
    [[nodiscard]] std::vector<Condition> conditions() const;

    /// Unfolds the bar and puts the cursor into its field, all of whose text is selected.
    void open();
    void clear();
    /// Asks for just that, each part with the control that it belongs to. What they have no way to
    /// say stands as a kept filter without a name.
    void setFilter(const EventQuery &query);
    /// Opens the kept filters and questions.
    void openSaved();
    [[nodiscard]] FindSaved &saved() { return *m_saved; }
    void addText(const TextCondition &condition);
    void onlyHost(const QString &host);
    void excludeHost(const QString &host);
    /// From a moment up to, but not at, another one, in seconds since 1970; none for any time.
    void setSpan(std::optional<std::int64_t> from, std::optional<std::int64_t> until);
    /// The one that is chosen now. A kept filter that was chosen may have one of its own.
    [[nodiscard]] EventSpan::Moments span() const;

    /// Says at the field what is wrong with the expression; an empty text for nothing.
    void showError(const QString &error);
    /// Of events by rating, as EventRating counts them.
    void showCounts(const std::array<std::size_t, kRatingCount> &counts);

Q_SIGNALS:
    void filterChanged();
    /// Now and then: what depends on the time may mean other events.
    void timePassed();
    /// The user is done with the bar and goes to the table.
    void left();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    /// What all but the kept filter or question asks for.
    [[nodiscard]] EventQuery ownFilter() const;
    void makeRow();
    void clearControls();
    void change();
    void follow();
    void leave();
    [[nodiscard]] bool isNarrow() const;
    void fold();
    void fit();
    void fitWide();
    [[nodiscard]] bool fits() const;

    QWidget *m_row;
    FindField *m_field;
    FindRatings *m_ratings;
    FindFacility *m_facility;
    FindHost *m_host;
    FindSpan *m_span;
    QList<FindChoice *> m_choices;  // as they stand in the row
    FindMore *m_more;
    QPushButton *m_clear;
    FindSaved *m_saved;
    EventQuery m_told;  // filter() at the last change
    QLabel *m_error;
    QAbstractButton *m_unfold = nullptr;
    bool m_isUnfolded = false;
    bool m_isClearing = false;
};

}  // namespace quorbel
