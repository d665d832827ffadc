#include "platform/gui/WrappedTexts.h"

#include <QCheckBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QLayout>
#include <QScrollArea>

#include <algorithm>

namespace quorbel {

namespace {

// Of the width. Short texts stand beside the controls that they name, and are the last to give way.
constexpr int kFirstShare = 3;
constexpr int kLastShare = 6;

/// Puts the text of a box, which a style does not wrap, on two lines.
void breakInTwo(QAbstractButton &box) {
    QString text = box.text();
    const qsizetype middle = text.indexOf(u' ', text.size() / 2);
    if (middle >= 0 && !text.contains(u'\n')) {
        box.setText(text.replace(middle, 1, u'\n'));
    }
}

void breakBoxes(const QWidget &form, int width) {
    for (QCheckBox *box : form.findChildren<QCheckBox *>()) {
        if (box->sizeHint().width() > width) {
            breakInTwo(*box);
        }
    }
}

/// Whereupon the layout asks again.
void wrapLabels(const QWidget &form, int width) {
    for (QLabel *label : form.findChildren<QLabel *>()) {
        if (!label->text().isEmpty() && label->sizeHint().width() > width) {
            label->setWordWrap(true);
        }
    }
}

/// Null when all are columns already.
QHBoxLayout *widestRow(const QWidget &form) {
    QHBoxLayout *widest = nullptr;
    for (auto *row : form.findChildren<QHBoxLayout *>()) {
        const bool isRow = row->direction() == QBoxLayout::LeftToRight && row->count() > 1;
        if (isRow &&
            (widest == nullptr || row->minimumSize().width() > widest->minimumSize().width())) {
            widest = row;
        }
    }
    return widest;
}

}  // namespace

WrappedTexts::WrappedTexts(QScrollArea &area) : QObject(&area), m_area(area) {
    area.viewport()->installEventFilter(this);
    area.widget()->installEventFilter(this);
}

bool WrappedTexts::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::Resize || event->type() == QEvent::LayoutRequest) {
        wrapIfTooWide();
    }
    return QObject::eventFilter(watched, event);
}

void WrappedTexts::wrapIfTooWide() {
    const int room = m_area.viewport()->width();
    const QLayout *rows = m_area.widget()->layout();
    if (rows == nullptr || !m_area.isVisible() || rows->totalMinimumSize().width() <= room) {
        return;
    }
    const QWidget &form = *m_area.widget();
    if (m_share < kLastShare) {
        m_share = std::max(m_share + 1, kFirstShare);
        wrapLabels(form, room / m_share);
    } else if (QHBoxLayout *row = widestRow(form)) {
        row->setDirection(QBoxLayout::TopToBottom);
    }
    if (m_share == kLastShare) {
        breakBoxes(form, room / 2);
    }
}

}  // namespace quorbel
