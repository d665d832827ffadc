#include "reports/ReportDelegate.h"

#include <QFontMetrics>
#include <QHeaderView>
#include <QPainter>

#include <algorithm>
#include <array>

namespace quorbel {

namespace {

using Marker = ReportTableModel::Marker;

constexpr QColor kExpandedGroup(0xf1, 0xf5, 0xfa);

Marker markerOf(const QModelIndex &index) {
    return index.data(ReportTableModel::kMarkerRole).value<Marker>();
}

QStyleOptionViewItem overAllColumns(const QStyleOptionViewItem &option) {
    QStyleOptionViewItem all = option;
    if (const auto *table = qobject_cast<const QTableView *>(option.widget)) {
        const QHeaderView &header = *table->horizontalHeader();
        const bool isMirrored = table->isRightToLeft();
        const int begin = isMirrored
                              ? table->viewport()->width() + header.offset() - header.length()
                              : -header.offset();
        all.rect.setLeft(begin);
        all.rect.setWidth(header.length());
    }
    return all;
}

/// Where one need not scroll to.
int widthInSight(const QStyleOptionViewItem &option) {
    const auto *table = qobject_cast<const QTableView *>(option.widget);
    return table == nullptr ? option.rect.width()
                            : std::min(option.rect.width(), table->viewport()->width());
}

/// About how wide a text is, from the widths of single letters: for telling which of many is the
/// widest, as laying out all of them takes too long.
class RoughWidth {
public:
    explicit RoughWidth(const QFontMetrics &metrics) {
        for (std::size_t code = 0; code < m_widths.size(); ++code) {
            m_widths[code] = metrics.horizontalAdvance(QChar(static_cast<char16_t>(code)));
        }
        m_other = 2 * m_widths['n'];
    }

    int operator()(std::string_view text) const {
        int width = 0;
        for (const char byte : text) {
            const auto code = static_cast<unsigned char>(byte);
            constexpr unsigned kTop = 0xC0;
            constexpr unsigned kContinuation = 0x80;
            if (code < m_widths.size()) {
                width += m_widths[code];
            } else if ((code & kTop) != kContinuation) {
                width += m_other;
            }
        }
        return width;
    }

private:
    std::array<int, 128> m_widths{};
    int m_other = 0;
};

}  // namespace

void ReportDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                           const QModelIndex &index) const {
    if (markerOf(index) == Marker::kNone) {
        RowDelegate::paint(painter, option, index);
        return;
    }
    painter->save();
    painter->setClipRect(option.rect, Qt::IntersectClip);
    paintGroup(*painter, overAllColumns(option), index.siblingAtColumn(0));
    painter->restore();
}

void ReportDelegate::paintGroup(QPainter &painter, const QStyleOptionViewItem &option,
                                const QModelIndex &index) const {
    const ReportTally tally = this->tally(option, index);
    QStyleOptionViewItem whole = option;
    initStyleOption(&whole, index);
    const QStyle *style = whole.widget->style();
    style->drawPrimitive(QStyle::PE_PanelItemViewItem, &whole, &painter, whole.widget);
    QStyleOptionViewItem name = option;
    name.rect = QStyle::visualRect(
        option.direction, option.rect,
        QRect(option.rect.topLeft(), QSize(tally.nameWidth(), option.rect.height())));
    RowDelegate::paint(&painter, name, index);
    tally.paint(painter, whole, index.data(ReportTableModel::kShareRole).value<GroupShare>());
}

bool ReportDelegate::helpEvent(QHelpEvent *event, QAbstractItemView *view,
                               const QStyleOptionViewItem &option, const QModelIndex &index) {
    if (markerOf(index) == Marker::kNone) {
        return RowDelegate::helpEvent(event, view, option, index);
    }
    QStyleOptionViewItem name = overAllColumns(option);
    name.rect.setWidth(tally(name, index).nameWidth());
    return RowDelegate::helpEvent(event, view, name, index.siblingAtColumn(0));
}

void ReportDelegate::initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const {
    RowDelegate::initStyleOption(option, index);
    if (markerOf(index) == Marker::kExpanded) {
        option->backgroundBrush = kExpandedGroup;
    }
}

ReportTally ReportDelegate::tally(const QStyleOptionViewItem &option,
                                  const QModelIndex &index) const {
    const auto *model = qobject_cast<const ReportTableModel *>(index.model());
    const auto share = index.data(ReportTableModel::kShareRole).value<GroupShare>();
    const int names = model == nullptr ? 0 : widestName(option, *model);
    return {QFontMetrics(option.font), widthInSight(option), names, share};
}

int ReportDelegate::widestName(const QStyleOptionViewItem &option,
                               const ReportTableModel &model) const {
    if (!m_names || m_names->report != model.reportNumber() || m_names->font != option.font) {
        int widest = 0;
        for (const std::size_t group : model.longestGroups(RoughWidth(option.fontMetrics))) {
            const QModelIndex cell = model.index(model.rowOf({group, std::nullopt}), 0);
            widest = std::max(widest, sizeHint(option, cell).width());
        }
        m_names = {model.reportNumber(), option.font, widest};
    }
    return m_names->width;
}

}  // namespace quorbel
