#pragma once

#include <QStyledItemDelegate>

namespace quorbel {

/// Paints the rows of a QuestionModel: titles, and names with their numbers.
class QuestionDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem &option,
                                 const QModelIndex &index) const override;

private:
    static void paintTitle(QPainter &painter, const QStyleOptionViewItem &option,
                           const QModelIndex &index);
    static void paintName(QPainter &painter, const QStyleOptionViewItem &option,
                          const QModelIndex &index);
    /// What stands before a kept filter's name.
    static void paintSign(QPainter &painter, const QStyleOptionViewItem &option,
                          const QModelIndex &index);
    static void paintPill(QPainter &painter, const QStyleOptionViewItem &option, int left,
                          int colour);
};

}  // namespace quorbel
