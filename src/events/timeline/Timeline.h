#pragma once

#include "core/EventHold.h"
#include "events/timeline/TimeAxis.h"
#include "events/timeline/TimelineCounts.h"
#include "events/timeline/TimelinePicture.h"

#include <QStringList>
#include <QWidget>

#include <memory>
#include <optional>
#include <vector>

namespace quorbel {

/// When the events happened, as columns over time. One looks closer or further around with wheel,
/// mouse and keys, and chooses a span for the table to be narrowed to. While it is hidden, it costs
/// nothing.
class Timeline : public QWidget, private EventHoldObserver {
    Q_OBJECT

public:
    explicit Timeline(QWidget *parent = nullptr);
    ~Timeline() override;

    /// Whose times are shown, and where events may wait. Both last until it is detached or ends.
    void attach(ArrangedEvents &events, EventHold &hold);

    /// Forgets them.
    void detach();

    /// The span to which the table is narrowed by what is chosen, beside this or elsewhere: the one
    /// that spanChosen() takes the place of.
    void setAsked(std::optional<std::int64_t> from, std::optional<std::int64_t> until);

    /// What the columns are stacked by; the rating at first.
    void setGrouping(EventGrouping grouping);

    [[nodiscard]] const TimeAxis &axis() const { return m_axis; }
    /// What is said of the column, or the columns, that pointer or keyboard are at.
    [[nodiscard]] QString readOut() const;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

Q_SIGNALS:
    /// The table is to be narrowed to the events from a moment up to, but not at, another one, each
    /// in seconds since 1970; or no longer, for none.
    void spanChosen(std::optional<std::int64_t> from, std::optional<std::int64_t> until);

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    enum class Drag { kNone, kPress, kPan, kEdge, kSelect };
    struct AskedSpan {
        std::optional<std::int64_t> from;
        std::optional<std::int64_t> until;
        bool operator==(const AskedSpan &) const = default;
    };
    /// One narrowing of the table, and what was before it.
    struct Step {
        AskedSpan chosen;
        AskedSpan before;
        TimeAxis::View view;
    };

    void holdChanged() override;
    void startCounting();
    void countsChanged();
    void layOut();
    void viewChanged();
    void pointerChanged();
    void fillColumns();
    void fillLegend();
    void fillBands();

    [[nodiscard]] bool isAtWaiting() const;
    [[nodiscard]] std::int64_t cursorColumn() const;
    [[nodiscard]] std::int64_t columnNear(int x) const;
    [[nodiscard]] std::optional<std::int64_t> columnOfInterest() const;
    [[nodiscard]] std::optional<TimeSpan> selection() const;
    [[nodiscard]] std::optional<TimeSpan> spanOfInterest() const;
    [[nodiscard]] std::optional<TimelinePicture::Band> askedBand() const;
    [[nodiscard]] QString countText(const TimeSpan &span) const;
    [[nodiscard]] QStringList groupTexts() const;

    void zoom(double factor, int x);
    void zoomAtCursor(double factor);
    void moveCursor(std::int64_t column, bool selects);
    /// A place where the edge of the span that the table is narrowed to can be taken.
    struct Edge {
        std::int64_t column;    // inside, beside the edge
        std::int64_t otherEnd;  // the moment where the span ends
        int grip;               // from the column to the pointer
    };
    [[nodiscard]] std::optional<Edge> edgeAt(int x) const;
    void startDrag(int x, bool selects);
    void dragTo(int x);
    void unselect();
    void narrow();
    void goBack();
    [[nodiscard]] bool pressKey(int key, bool isShift);

    ArrangedEvents *m_events = nullptr;
    EventHold *m_hold = nullptr;
    AskedSpan m_asked;
    EventGrouping m_grouping = EventGrouping::kRating;
    std::unique_ptr<TimelineCounts> m_counts;  // while visible
    TimeAxis m_axis;
    TimelinePicture m_picture;
    bool m_isCounted = false;         // since it was shown
    bool m_isPictureCurrent = false;  // but for what is hovered and chosen
    int m_waitingWidth = 0;
    int m_wheel = 0;  // not yet enough for a step

    std::optional<int> m_pointer;  // x, while it is above
    Drag m_drag = Drag::kNone;
    int m_pressedAt = 0;
    int m_draggedTo = 0;
    int m_grip = 0;
    std::optional<std::int64_t> m_cursor;  // the keyboard's moment
    std::optional<std::int64_t> m_anchor;  // where the selection began, which ends at the cursor
    std::vector<Step> m_steps;
};

}  // namespace quorbel
