#include "platform/gui/RowTableView.h"

#include "platform/gui/FontSize.h"
#include "platform/gui/PaintedText.h"

#include <QHeaderView>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QToolTip>

namespace quorbel {

namespace {

/// A longer text is cut in its tool tip; the details and an export show all of it.
constexpr qsizetype kLongestToolTip = 2000;

constexpr int kNarrowestColumn = 60;

bool isArrow(int key) {
    return key == Qt::Key_Up || key == Qt::Key_Down;
}

bool isMove(int key) {
    return isArrow(key) || key == Qt::Key_PageUp || key == Qt::Key_PageDown ||
           key == Qt::Key_Home || key == Qt::Key_End;
}

}  // namespace

bool RowDelegate::helpEvent(QHelpEvent *event, QAbstractItemView *view,
                            const QStyleOptionViewItem &option, const QModelIndex &index) {
    const QString text = index.data().toString();
    if (event->type() != QEvent::ToolTip ||
        sizeHint(option, index).width() <= option.rect.width()) {
        QToolTip::hideText();
        return false;
    }
    // As plain text: a message may look like markup.
    QToolTip::showText(event->globalPos(),
                       QStringLiteral("<p style='white-space:pre-wrap'>%1</p>")
                           .arg(PaintedText(text).paintLines(kLongestToolTip).toHtmlEscaped()),
                       view);
    return true;
}

QString RowDelegate::displayText(const QVariant &value, const QLocale &locale) const {
    return value.typeId() == QMetaType::QString ? paintedRow(value.toString())
                                                : QStyledItemDelegate::displayText(value, locale);
}

void RowDelegate::initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const {
    QStyledItemDelegate::initStyleOption(option, index);
    option->state.setFlag(QStyle::State_HasFocus, false);
    if (!option->icon.isNull()) {
        option->icon = drawn(*option);
    }
}

/// The icon as a picture that is drawn once; a style would tint it in selected rows.
QIcon RowDelegate::drawn(const QStyleOptionViewItem &option) const {
    const qreal ratio = option.widget == nullptr ? 1 : option.widget->devicePixelRatioF();
    const int size = option.decorationSize.height();
    QIcon &result = m_drawn[{option.icon.cacheKey(), size, ratio}];
    if (result.isNull()) {
        const QPixmap picture = option.icon.pixmap(option.decorationSize, ratio);
        result.addPixmap(picture, QIcon::Normal);
        result.addPixmap(picture, QIcon::Selected);
    }
    return result;
}

RowTableView::RowTableView(QWidget *parent) : QTableView(parent) {
    setItemDelegate(new RowDelegate(this));
    setSelectionBehavior(SelectRows);
    setEditTriggers(NoEditTriggers);
    setTabKeyNavigation(false);
    setHorizontalScrollMode(ScrollPerPixel);
    setWordWrap(false);
    setShowGrid(false);
    setCornerButtonEnabled(false);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setMinimumSectionSize(sizedToFont(kNarrowestColumn));
    verticalHeader()->hide();
    // One height for all, so that no row of a million has to be measured.
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(sizedToFont(kRowHeight));
}

void RowTableView::setHint(const QString &hint) {
    m_hint = hint;
    viewport()->update();
}

void RowTableView::keyboardSearch(const QString &search) {
    // The text of each row may have to be made first, and this happens between two key presses.
    if (model() != nullptr && model()->rowCount() <= kMostSearchedRows) {
        QTableView::keyboardSearch(search);
    }
}

void RowTableView::focusInEvent(QFocusEvent *event) {
    const bool hadCurrent = currentIndex().isValid();
    QTableView::focusInEvent(event);
    // The view makes the first row the current one. Nobody sees that, and the arrow keys would go
    // on from it.
    if (!hadCurrent && selectionModel() != nullptr) {
        selectionModel()->setCurrentIndex({}, QItemSelectionModel::NoUpdate);
    }
}

void RowTableView::setColumnWidths(std::span<const int> widths) {
    horizontalHeader()->ensurePolished();  // for the font of the style sheet
    for (int column = 0; const int width : widths) {
        setColumnWidth(column,
                       std::max(sizedToFont(width), horizontalHeader()->sectionSizeHint(column)));
        ++column;
    }
}

void RowTableView::setShownRows(int rows) {
    m_shownRows = rows;
    setSizePolicy(sizePolicy().horizontalPolicy(),
                  rows > 0 ? QSizePolicy::Fixed : QSizePolicy::Expanding);
    updateGeometry();
}

QSize RowTableView::sizeHint() const {
    return withShownRows(QTableView::sizeHint());
}

QSize RowTableView::minimumSizeHint() const {
    return withShownRows(QTableView::minimumSizeHint());
}

QSize RowTableView::withShownRows(QSize size) const {
    if (m_shownRows > 0) {
        size.setHeight(horizontalHeader()->sizeHint().height() +
                       m_shownRows * verticalHeader()->defaultSectionSize() + 2 * frameWidth());
    }
    return size;
}

void RowTableView::keyPressEvent(QKeyEvent *event) {
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    // A key held down would open and close what it opens over and over.
    if (enter && !event->isAutoRepeat()) {
        event->ignore();  // in a sheet, it also presses the default button
        Q_EMIT enterPressed();
    } else if (isMove(event->key()) && selectionModel() != nullptr) {
        moveBy(event);
    } else if (event->key() == Qt::Key_Space && selectionModel() != nullptr &&
               !currentIndex().isValid() && !selectionModel()->hasSelection()) {
        setCurrentIndex(moveCursor(MoveHome, Qt::NoModifier));
    } else {
        QTableView::keyPressEvent(event);
    }
}

void RowTableView::moveBy(QKeyEvent *event) {
    Qt::KeyboardModifiers modifiers = event->modifiers();
    if (event->key() == Qt::Key_Home || event->key() == Qt::Key_End) {
        modifiers.setFlag(Qt::ControlModifier, false);  // there is but one first row
    }
    if (!currentIndex().isValid() && selectionModel()->hasSelection()) {
        selectionModel()->setCurrentIndex(selectionModel()->selection().first().topLeft(),
                                          QItemSelectionModel::NoUpdate);
    }
    const bool selects = !modifiers.testFlag(Qt::ControlModifier);
    if (selects && currentIndex().isValid() && !selectionModel()->hasSelection()) {
        setCurrentIndex(currentIndex());
        if (isArrow(event->key()) && !modifiers.testFlag(Qt::ShiftModifier)) {
            return;
        }
    }
    QKeyEvent move(event->type(), event->key(), modifiers);
    QTableView::keyPressEvent(&move);
    event->setAccepted(move.isAccepted());
}

QModelIndex RowTableView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) {
    if ((action != MoveHome && action != MoveEnd) || model() == nullptr) {
        return QTableView::moveCursor(action, modifiers);
    }
    // In the same column, so that nothing moves sideways.
    const int column = currentIndex().isValid() ? currentIndex().column() : 0;
    return model()->index(action == MoveHome ? 0 : model()->rowCount() - 1, column);
}

QItemSelectionModel::SelectionFlags RowTableView::selectionCommand(const QModelIndex &index,
                                                                   const QEvent *event) const {
    // Without an event it is the program that selects. The view would look which keys the user
    // happens to hold down.
    return event != nullptr ? QTableView::selectionCommand(index, event)
                            : QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows;
}

void RowTableView::paintEvent(QPaintEvent *event) {
    QTableView::paintEvent(event);
    if (m_hint.isEmpty() || model() == nullptr || model()->rowCount() > 0) {
        return;
    }
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap, m_hint);
}

}  // namespace quorbel
