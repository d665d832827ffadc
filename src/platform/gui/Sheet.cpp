#include "platform/gui/Sheet.h"

#include "platform/gui/Storyboard.h"

#include <QKeyEvent>

#include <memory>

namespace quorbel {

Sheet::Sheet(QWidget *parent) : QDialog(parent) {}

void Sheet::presentOver(QWidget *presenter) {
    m_presenter = presenter;
    setParent(presenter, windowFlags());
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowFlag(Qt::WindowStaysOnTopHint, presenter == nullptr);
    setWindowModality(presenter == nullptr ? Qt::ApplicationModal : Qt::WindowModal);
    ensurePolished();
    if (!testAttribute(Qt::WA_Resized)) {
        adjustSize();
    }
    // A larger font than the form was drawn with may need more room than it was given.
    setFixedSize(size().expandedTo(minimumSizeHint()));
    show();  // open() would make it window-modal in either case
}

void Sheet::keyPressEvent(QKeyEvent *event) {
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    // The key that opened the sheet, held down, must not press its default button.
    if (!enter || !event->isAutoRepeat()) {
        QDialog::keyPressEvent(event);
    }
}

void Sheet::showEvent(QShowEvent *event) {
    QDialog::showEvent(event);
    handleShow(this, *event);
}

void Sheet::hideEvent(QHideEvent *event) {
    handleHide(*event);
    QDialog::hideEvent(event);
}

void presentSheet(const Storyboard &storyboard, const QString &identifier, QWidget *presenter) {
    std::unique_ptr<QWidget> controller = storyboard.instantiate(identifier);
    if (auto *sheet = dynamic_cast<Sheet *>(controller.get())) {
        controller.release();  // NOLINT(bugprone-unused-return-value): it deletes itself
        sheet->presentOver(presenter);
    }
}

}  // namespace quorbel
