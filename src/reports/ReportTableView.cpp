#include "reports/ReportTableView.h"

#include "reports/ReportTableModel.h"

#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>

#include <map>

namespace quorbel {

namespace {

using Marker = ReportTableModel::Marker;

constexpr QColor kExpandedGroup(0xf1, 0xf5, 0xfa);

Marker markerOf(const QModelIndex &index) {
    return index.data(ReportTableModel::kMarkerRole).value<Marker>();
}

/// A group's value runs on over the empty cells behind it, however narrow its own column is.
class ReportDelegate : public RowDelegate {
public:
    using RowDelegate::RowDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override {
        if (markerOf(index) == Marker::kNone) {
            RowDelegate::paint(painter, option, index);
            return;
        }
        painter->save();
        painter->setClipRect(option.rect, Qt::IntersectClip);
        RowDelegate::paint(painter, overAllColumns(option, index), index.siblingAtColumn(0));
        painter->restore();
    }

    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override {
        if (markerOf(index) == Marker::kNone) {
            return RowDelegate::helpEvent(event, view, option, index);
        }
        return RowDelegate::helpEvent(event, view, overAllColumns(option, index),
                                      index.siblingAtColumn(0));
    }

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override {
        RowDelegate::initStyleOption(option, index);
        const Marker marker = markerOf(index);
        if (marker == Marker::kExpanded) {
            option->backgroundBrush = kExpandedGroup;
        }
        if (marker != Marker::kNone && index.column() == 0) {
            option->icon = drawn(option->icon, marker, *option);
        }
    }

private:
    static QStyleOptionViewItem overAllColumns(const QStyleOptionViewItem &option,
                                               const QModelIndex &index) {
        QStyleOptionViewItem all = option;
        if (const auto *table = qobject_cast<const QTableView *>(option.widget)) {
            const int last = index.model()->columnCount() - 1;
            all.rect.setLeft(table->columnViewportPosition(0));
            all.rect.setRight(table->columnViewportPosition(last) + table->columnWidth(last) - 1);
        }
        return all;
    }

    /// The marker as a picture that is drawn once, and alike in selected rows.
    QIcon drawn(const QIcon &icon, Marker marker, const QStyleOptionViewItem &option) const {
        const qreal ratio = option.widget == nullptr ? 1 : option.widget->devicePixelRatioF();
        QIcon &result = m_drawn[{marker, ratio}];
        if (result.isNull()) {
            const QPixmap picture = icon.pixmap(option.decorationSize, ratio);
            result.addPixmap(picture, QIcon::Normal);
            result.addPixmap(picture, QIcon::Selected);
        }
        return result;
    }

    mutable std::map<std::pair<Marker, qreal>, QIcon> m_drawn;
};

}  // namespace

ReportTableView::ReportTableView(QWidget *parent) : RowTableView(parent) {
    setItemDelegate(new ReportDelegate(this));
}

int ReportTableView::widthForColumns() const {
    return contentsRect().width() - verticalScrollBar()->sizeHint().width();
}

void ReportTableView::keyPressEvent(QKeyEvent *event) {
    // A key held down would expand and collapse a group over and over.
    const bool isRepeated = event->isAutoRepeat();
    switch (event->key()) {
        case Qt::Key_Space:
        case Qt::Key_Return:
        case Qt::Key_Enter:
            if (!isRepeated) {
                Q_EMIT togglePressed();
            }
            break;
        case Qt::Key_Right:
            Q_EMIT expandPressed();
            break;
        case Qt::Key_Left:
            Q_EMIT collapsePressed();
            break;
        default:
            RowTableView::keyPressEvent(event);
    }
}

}  // namespace quorbel
