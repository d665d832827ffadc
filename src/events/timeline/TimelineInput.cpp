// What wheel, mouse and keys do to the timeline.

#include "events/timeline/Timeline.h"

#include <QApplication>
#include <QMouseEvent>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <utility>

namespace quorbel {

namespace {

constexpr double kZoomStep = 1.5;
constexpr int kWheelStep = 120;    // eighths of a degree
constexpr int kPixelsPerTurn = 3;  // eighths of a degree, too
constexpr int kEdge = 4;           // how near to an edge it is taken

}  // namespace

void Timeline::wheelEvent(QWheelEvent *event) {
    event->accept();
    if (!m_axis.hasRange()) {
        return;
    }
    if (const int sideways = event->angleDelta().x(); sideways != 0) {
        m_axis.pan(sideways / kPixelsPerTurn);
        viewChanged();
    }
    // Touch pads turn in parts of a step.
    m_wheel += event->angleDelta().y();
    for (; std::abs(m_wheel) >= kWheelStep; m_wheel -= m_wheel > 0 ? kWheelStep : -kWheelStep) {
        zoom(m_wheel > 0 ? 1 / kZoomStep : kZoomStep, static_cast<int>(event->position().x()));
    }
}

void Timeline::mousePressEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton || !m_axis.hasRange()) {
        QWidget::mousePressEvent(event);
        return;
    }
    startDrag(event->pos().x(), (event->modifiers() & Qt::ShiftModifier) != 0);
}

void Timeline::startDrag(int x, bool selects) {
    unselect();
    m_grip = 0;
    m_pressedAt = m_draggedTo = x;
    if (const auto edge = edgeAt(x)) {
        m_drag = Drag::kEdge;
        m_anchor = edge->otherEnd;
        m_cursor = m_axis.spanOf(edge->column).from;
        m_grip = edge->grip;
    } else if (selects) {
        m_drag = Drag::kSelect;
        m_anchor = m_cursor = m_axis.spanOf(columnNear(x)).from;
    } else {
        m_drag = Drag::kPress;
    }
    pointerChanged();
}

void Timeline::mouseMoveEvent(QMouseEvent *event) {
    const int x = event->pos().x();
    m_pointer = x;
    dragTo(x);
    const bool isAtEdge = m_axis.hasRange() && edgeAt(x).has_value();
    setCursor(m_drag == Drag::kPan                  ? Qt::ClosedHandCursor
              : m_drag == Drag::kSelect || isAtEdge ? Qt::SplitHCursor
                                                    : Qt::ArrowCursor);
    pointerChanged();
}

void Timeline::dragTo(int x) {
    if (!m_axis.hasRange()) {
        m_drag = Drag::kNone;
        return;
    }
    if (m_drag == Drag::kEdge && x != m_pressedAt) {
        m_drag = Drag::kSelect;
    }
    if (m_drag == Drag::kSelect) {
        m_cursor = m_axis.spanOf(columnNear(x - m_grip)).from;
    } else if (m_drag == Drag::kPress &&
               std::abs(x - m_pressedAt) >= QApplication::startDragDistance()) {
        m_drag = Drag::kPan;
    }
    if (m_drag == Drag::kPan) {
        m_axis.pan(x - std::exchange(m_draggedTo, x));
        viewChanged();
    }
}

void Timeline::mouseReleaseEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton) {
        return;
    }
    dragTo(event->pos().x());
    const Drag drag = std::exchange(m_drag, Drag::kNone);
    if (drag == Drag::kSelect) {
        narrow();
    } else if (drag == Drag::kEdge) {
        unselect();  // taken and let go where it was
    } else if (drag == Drag::kPress) {
        m_cursor = m_axis.spanOf(columnNear(event->pos().x())).from;
    }
    unsetCursor();
    pointerChanged();
}

void Timeline::leaveEvent(QEvent *event) {
    QWidget::leaveEvent(event);
    m_pointer.reset();
    pointerChanged();
}

void Timeline::focusInEvent(QFocusEvent *event) {
    QWidget::focusInEvent(event);
    pointerChanged();
}

void Timeline::focusOutEvent(QFocusEvent *event) {
    QWidget::focusOutEvent(event);
    pointerChanged();
}

void Timeline::keyPressEvent(QKeyEvent *event) {
    constexpr auto kOthers = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    const bool isPlain = (event->modifiers() & kOthers) == 0;
    if (!isPlain || !m_axis.hasRange() ||
        !pressKey(event->key(), (event->modifiers() & Qt::ShiftModifier) != 0)) {
        QWidget::keyPressEvent(event);
    }
}

bool Timeline::pressKey(int key, bool isShift) {
    const std::int64_t page = m_axis.endColumn() - m_axis.firstColumn();
    switch (key) {
        case Qt::Key_Left:
        case Qt::Key_Right:
            moveCursor(key == Qt::Key_Left ? -1 : 1, isShift);
            return true;
        case Qt::Key_PageUp:
        case Qt::Key_PageDown:
            moveCursor(key == Qt::Key_PageUp ? -page : page, isShift);
            return true;
        case Qt::Key_Plus:
        case Qt::Key_Equal:
            zoomAtCursor(1 / kZoomStep);
            return true;
        case Qt::Key_Minus:
            zoomAtCursor(kZoomStep);
            return true;
        case Qt::Key_Home:
            m_axis.showAll();
            viewChanged();
            return true;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            narrow();
            return true;
        case Qt::Key_Backspace:
            goBack();
            return true;
        case Qt::Key_Escape: {
            const bool isSelecting = m_anchor.has_value();
            unselect();
            return isSelecting;
        }
        default:
            return false;
    }
}

void Timeline::zoom(double factor, int x) {
    m_axis.zoom(factor, x);
    viewChanged();
}

void Timeline::zoomAtCursor(double factor) {
    const std::int64_t column = cursorColumn();
    m_cursor = m_axis.spanOf(column).from;
    m_axis.bringIntoSight(column);
    zoom(factor, m_axis.leftOf(column) + m_axis.columnWidth() / 2);
}

void Timeline::moveCursor(std::int64_t columns, bool selects) {
    m_pointer.reset();  // until the mouse is moved again
    const std::int64_t column = cursorColumn();
    if (!selects) {
        m_anchor.reset();
    } else if (!m_anchor) {
        m_anchor = m_axis.spanOf(column).from;
    }
    const std::int64_t there =
        std::clamp(column + columns, m_axis.oldestColumn(), m_axis.newestColumn());
    m_cursor = m_axis.spanOf(there).from;
    m_axis.bringIntoSight(there);
    viewChanged();
}

std::optional<Timeline::Edge> Timeline::edgeAt(int x) const {
    const auto band = askedBand();
    const AskedSpan &span = m_asked;
    const TimeSpan range = m_axis.range();
    if (band && span.from && std::abs(x - band->left) <= kEdge) {
        return Edge{m_axis.columnOf(*span.from),
                    std::min(span.until.value_or(range.until), range.until) - 1, x - band->left};
    }
    if (band && span.until && std::abs(x - band->right) <= kEdge) {
        return Edge{m_axis.columnOf(*span.until - 1),
                    std::max(span.from.value_or(range.from), range.from), x - band->right + 1};
    }
    return std::nullopt;
}

void Timeline::unselect() {
    m_anchor.reset();
    m_drag = Drag::kNone;
    pointerChanged();
}

void Timeline::narrow() {
    const std::int64_t column = columnOfInterest().value_or(cursorColumn());
    const TimeSpan span = selection().value_or(m_axis.spanOf(column));
    m_steps.push_back({{span.from, span.until}, m_asked, m_axis.view()});
    unselect();
    Q_EMIT spanChosen(span.from, span.until);
}

void Timeline::goBack() {
    // What was chosen elsewhere meanwhile is not this one's to take back.
    if (m_steps.empty() || m_steps.back().chosen != m_asked) {
        m_steps.clear();
        return;
    }
    const Step step = m_steps.back();
    m_steps.pop_back();
    m_axis.setView(step.view);
    viewChanged();
    Q_EMIT spanChosen(step.before.from, step.before.until);
}

}  // namespace quorbel
