#include "platform/gui/Sheet.h"

#include "platform/gui/ContentArea.h"
#include "platform/gui/FontSize.h"
#include "platform/gui/ScreenFit.h"
#include "platform/gui/Storyboard.h"

#include <QKeyEvent>
#include <QLayout>
#include <QMargins>
#include <QScreen>
#include <QScrollBar>

#include <algorithm>
#include <memory>

namespace quorbel {

// Without buttons that make it small or large: it has one size, and belongs to its window.
Sheet::Sheet(QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                          Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint) {}

void Sheet::presentOver(QWidget *presenter) {
    m_presenter = presenter;
    setParent(presenter, windowFlags());
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowFlag(Qt::WindowStaysOnTopHint, presenter == nullptr);
    setWindowModality(presenter == nullptr ? Qt::ApplicationModal : Qt::WindowModal);
    if (!testAttribute(Qt::WA_Resized)) {
        adjustSize();
    }
    m_designed = size();
    ensurePolished();
    fit();
    connect(screen(), &QScreen::availableGeometryChanged, this, [this] {
        fit();
        moveOntoScreen(*this);
    });
    show();  // open() would make it window-modal in either case
}

bool Sheet::event(QEvent *event) {
    if (event->type() == QEvent::Polish && layout() != nullptr) {
        m_content = &ContentArea::wrap(*this);
    }
    return QDialog::event(event);
}

QSize Sheet::wantedSize() const {
    const QSize designed(sizedToFont(m_designed.width()), sizedToFont(m_designed.height()));
    if (m_content == nullptr) {
        return designed;
    }
    const int buttons = minimumSizeHint().height() - m_content->minimumSizeHint().height();
    const int width =
        std::max({designed.width(), minimumSizeHint().width(), m_content->widthForAll()});
    return {width, std::max(designed.height(), m_content->heightForAll(width) + buttons)};
}

QSize Sheet::room() const {
    const QSize onScreen = roomOnScreen(*this);
    const QWidget *main = m_presenter;
    while (main != nullptr && main->window()->parentWidget() != nullptr) {
        main = main->window()->parentWidget();
    }
    if (main == nullptr) {
        return onScreen;
    }
    // Both have a frame, so that the sheet covers the main window's at most.
    return onScreen.boundedTo(main->window()->size());
}

void Sheet::fit() {
    QSize wanted = wantedSize();
    const QSize most = room();
    if (wanted.height() > most.height() && m_content != nullptr) {
        wanted.rwidth() += m_content->verticalScrollBar()->sizeHint().width();
    }
    setFixedSize(wanted.boundedTo(most));
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
