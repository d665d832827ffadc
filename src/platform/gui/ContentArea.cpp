#include "platform/gui/ContentArea.h"

#include "platform/gui/FontSize.h"
#include "platform/gui/ScrolledControls.h"
#include "platform/gui/WrappedTexts.h"

#include <QLayout>
#include <QVBoxLayout>

#include <memory>

namespace quorbel {

namespace {

constexpr QSize kSmallest(160, 60);

/// Moves the first row of one column to the end of another.
void moveRow(QVBoxLayout &from, QVBoxLayout &to) {
    const int stretch = from.stretch(0);
    std::unique_ptr<QLayoutItem> row(from.takeAt(0));
    if (QWidget *widget = row->widget()) {
        const Qt::Alignment alignment = row->alignment();
        // Before there is another one: only the first that a widget has hears that it needs other
        // room, and a second one would remember for ever how high it is at a width.
        row.reset();
        to.addWidget(widget, stretch, alignment);
    } else if (row->layout() != nullptr) {
        to.addLayout(static_cast<QLayout *>(row.release()), stretch);
    } else {
        to.addItem(row.release());
        to.setStretch(to.count() - 1, stretch);
    }
}

/// The form's margins and gap, around the content and the row of buttons instead of around both.
void shareMargins(QVBoxLayout &form, QVBoxLayout &rows, QLayout *buttons) {
    QMargins inner = form.contentsMargins();
    QMargins outer = inner;
    if (buttons != nullptr) {
        inner.setBottom(form.spacing() / 2);
        outer.setTop(form.spacing() - inner.bottom());
        buttons->setContentsMargins(outer);
    }
    rows.setContentsMargins(inner);
    rows.setSpacing(form.spacing());
    form.setContentsMargins(0, 0, 0, 0);
    form.setSpacing(0);
}

}  // namespace

ContentArea::ContentArea(QWidget &view) : QScrollArea(&view) {
    setObjectName(QStringLiteral("contentArea"));
    setAccessibleName(tr("Content"));
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    auto *content = new QWidget(this);
    setWidget(content);
    content->setAutoFillBackground(false);  // the view's own shows
}

ContentArea &ContentArea::wrap(QWidget &view) {
    auto &form = static_cast<QVBoxLayout &>(*view.layout());
    auto *area = new ContentArea(view);
    // The rows go straight to their new place, which keeps the order of the Tab key.
    auto *rows = new QVBoxLayout(area->widget());
    QLayoutItem *last = form.itemAt(form.count() - 1);
    QLayout *buttons = last->layout();
    shareMargins(form, *rows, buttons);
    while (form.count() > (buttons == nullptr ? 0 : 1)) {
        moveRow(form, *rows);
    }
    form.insertWidget(0, area, 1);
    new ScrolledControls(*area);
    new WrappedTexts(*area);
    return *area;
}

int ContentArea::heightForAll(int width) const {
    const QLayout &rows = *widget()->layout();
    const int least = rows.totalMinimumSize().height();
    return rows.hasHeightForWidth() ? std::max(least, rows.totalHeightForWidth(width)) : least;
}

int ContentArea::widthForAll() const {
    return widget()->layout()->totalMinimumSize().width();
}

QSize ContentArea::sizeHint() const {
    return widget()->sizeHint();
}

QSize ContentArea::minimumSizeHint() const {
    return {sizedToFont(kSmallest.width()), sizedToFont(kSmallest.height())};
}

}  // namespace quorbel
