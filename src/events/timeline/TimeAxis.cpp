#include "events/timeline/TimeAxis.h"

#include <algorithm>
#include <climits>
#include <cmath>

namespace quorbel {

void TimeAxis::setWidth(int width) {
    const int change = std::max(width, 1) - m_width;
    m_width += change;
    if (m_hasRange) {
        look(m_view.left - change, m_view.left - change);  // the right edge stays
    }
}

void TimeAxis::setClockOffset(std::int64_t seconds) {
    if (m_offset != seconds) {
        m_offset = seconds;
        m_columns.clear();  // the clock's zone may be another one, too
    }
}

void TimeAxis::setRange(std::int64_t first, std::int64_t last) {
    const bool isNew = !m_hasRange;
    m_hasRange = true;
    m_first = first;
    m_last = last;
    if (m_view.showsAll || isNew) {
        showAll();
    } else {
        look(m_view.follows ? rightmost() : m_view.left, m_view.left);
    }
}

std::int64_t TimeAxis::rightmost() const {
    return (newestColumn() + 1) * m_view.columnWidth - m_width;
}

void TimeAxis::look(std::int64_t left, std::int64_t leftmost) {
    m_pivot.reset();
    if (m_view.showsAll) {
        fitAll();
        return;
    }
    const std::int64_t least = std::min(oldestColumn() * m_view.columnWidth, leftmost);
    m_view.left = std::clamp(left, std::min(least, rightmost()), rightmost());
    m_view.follows = m_view.left > rightmost() - m_view.columnWidth;
}

void TimeAxis::showAll() {
    m_pivot.reset();
    m_view.showsAll = true;
    fitAll();
}

void TimeAxis::fitAll() {
    for (const std::int64_t step : TimeColumns::lengths()) {
        m_view.step = step;
        const std::int64_t columns = newestColumn() - oldestColumn() + 1;
        m_view.columnWidth = static_cast<int>(std::min<std::int64_t>(m_width / columns, kWidest));
        if (m_view.columnWidth >= kNarrowest) {
            break;
        }
    }
    m_view.columnWidth = std::max(m_view.columnWidth, kNarrowest);
    m_view.left = rightmost();
    m_view.follows = true;
}

void TimeAxis::setView(const View &view) {
    m_view = view;
    look(view.follows ? rightmost() : view.left, view.left);
}

const TimeColumns &TimeAxis::columns() const {
    return m_columns.try_emplace(m_view.step, m_view.step, m_offset).first->second;
}

std::int64_t TimeAxis::columnOf(std::int64_t moment) const {
    return columns().columnOf(moment);
}

std::int64_t TimeAxis::columnAt(int x) const {
    return floorDivide(m_view.left + x, m_view.columnWidth);
}

std::int64_t TimeAxis::firstColumn() const {
    return std::max(columnAt(0), oldestColumn());
}

std::int64_t TimeAxis::endColumn() const {
    return std::min(columnAt(m_width - 1), newestColumn()) + 1;
}

TimeSpan TimeAxis::spanOf(std::int64_t column) const {
    return {columns().startOf(column), columns().startOf(column + 1)};
}

int TimeAxis::leftOf(std::int64_t column) const {
    return static_cast<int>(
        std::clamp<std::int64_t>(column * m_view.columnWidth - m_view.left, INT_MIN, INT_MAX));
}

std::int64_t TimeAxis::pixelOf(std::int64_t moment) const {
    const std::int64_t column = columnOf(moment);
    const TimeSpan span = spanOf(column);
    return column * m_view.columnWidth +
           (moment - span.from) * m_view.columnWidth / (span.until - span.from);
}

int TimeAxis::xOf(std::int64_t moment) const {
    constexpr std::int64_t kFar = 1'000'000'000'000;
    const std::int64_t x = pixelOf(std::clamp(moment, -kFar, kFar)) - m_view.left;
    return static_cast<int>(std::clamp<std::int64_t>(x, INT_MIN, INT_MAX));
}

double TimeAxis::exactMomentAt(int x) const {
    const std::int64_t column = columnAt(x);
    const TimeSpan span = spanOf(column);
    const std::int64_t pixels = m_view.left + x - column * m_view.columnWidth;
    return static_cast<double>(span.from) +
           static_cast<double>(pixels * (span.until - span.from)) / m_view.columnWidth;
}

std::int64_t TimeAxis::momentAt(int x) const {
    return static_cast<std::int64_t>(std::floor(exactMomentAt(x)));
}

void TimeAxis::zoom(double factor, int x) {
    const View before = m_view;
    const Pivot pivot = pivotAt(x);
    fitAll();
    const View all = m_view;
    m_view = before;
    const double perPixel = static_cast<double>(before.step) / before.columnWidth * factor;
    if (factor > 1 && perPixel * all.columnWidth >= static_cast<double>(all.step)) {
        showAll();
        return;
    }
    magnify(perPixel);
    if (m_view.step == before.step && m_view.columnWidth == before.columnWidth) {
        return;
    }
    m_view.showsAll = false;
    const std::int64_t pixel = pixelOf(static_cast<std::int64_t>(std::floor(pivot.moment)));
    look(pixel - x, pixel - x);
    m_pivot = pivot;
}

TimeAxis::Pivot TimeAxis::pivotAt(int x) const {
    return m_pivot && m_pivot->x == x ? *m_pivot : Pivot{x, exactMomentAt(x)};
}

void TimeAxis::magnify(double secondsPerPixel) {
    const auto steps = TimeColumns::lengths();
    const auto step =
        std::ranges::lower_bound(steps, secondsPerPixel * kNarrowest, {},
                                 [](std::int64_t s) { return static_cast<double>(s); });
    m_view.step = step == steps.end() ? steps.back() : *step;
    m_view.columnWidth = static_cast<int>(std::clamp<std::int64_t>(
        std::llround(static_cast<double>(m_view.step) / secondsPerPixel), kNarrowest, kWidest));
}

void TimeAxis::pan(int pixels) {
    if (!m_view.showsAll) {
        look(m_view.left - pixels, m_view.left);
    }
}

void TimeAxis::bringIntoSight(std::int64_t column) {
    if (leftOf(column) < 0) {
        pan(-leftOf(column));
    } else if (leftOf(column + 1) > m_width) {
        pan(m_width - leftOf(column + 1));
    }
}

}  // namespace quorbel
