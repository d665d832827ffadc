#pragma once

#include <QIcon>
#include <QString>
#include <QStyledItemDelegate>
#include <QTableView>

#include <map>
#include <span>
#include <tuple>

namespace quorbel {

/// Paints the cells of a table whose rows are selected as a whole: no single cell is framed, images
/// keep their colours in selected rows, a text that does not fit its cell shows as a tool tip, and
/// all texts are shown as paintedRow() says.
class RowDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override;
    [[nodiscard]] QString displayText(const QVariant &value, const QLocale &locale) const override;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;

private:
    using Picture = std::tuple<qint64, int, qreal>;  // which icon, how large, for which screen

    [[nodiscard]] QIcon drawn(const QStyleOptionViewItem &option) const;

    mutable std::map<Picture, QIcon> m_drawn;
};

/// A table as all pages have it: whole rows of one height, nothing to be edited in it, and the Tab
/// key leads on from it. While it is empty, a hint can stand in its middle.
///
/// Home and End go to the first and the last row. While no row is selected, the arrow keys begin at
/// the row that was the last to be selected, or else at the first. Typing looks for a row that
/// begins so, unless there are too many rows to look at.
class RowTableView : public QTableView {
    Q_OBJECT
    Q_PROPERTY(int shownRows READ shownRows WRITE setShownRows)

public:
    static constexpr int kMostSearchedRows = 2000;
    static constexpr int kRowHeight = 28;  ///< at the standard font

    explicit RowTableView(QWidget *parent = nullptr);

    void setHint(const QString &hint);
    [[nodiscard]] QString hint() const { return m_hint; }
    void keyboardSearch(const QString &search) override;

    /// Of the first columns, in pixels at the standard font.
    void setColumnWidths(std::span<const int> widths);
    /// Makes the table just as high as its header and that many rows; 0 for as high as may be.
    void setShownRows(int rows);
    [[nodiscard]] int shownRows() const { return m_shownRows; }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// Return or Enter. Unlike activated(), never for a click, whatever the desktop's style.
    void enterPressed();

protected:
    void focusInEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    [[nodiscard]] QItemSelectionModel::SelectionFlags selectionCommand(
        const QModelIndex &index, const QEvent *event) const override;
    void paintEvent(QPaintEvent *event) override;

private:
    void moveBy(QKeyEvent *event);
    [[nodiscard]] QSize withShownRows(QSize size) const;

    QString m_hint;
    int m_shownRows = 0;
};

}  // namespace quorbel
