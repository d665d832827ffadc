#include "platform/gui/AlertBox.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QGridLayout>
#include <QIcon>
#include <QKeyEvent>
#include <QLabel>
#include <QList>
#include <QMessageBox>
#include <QPushButton>

#include <utility>

namespace quorbel {

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(quorbel::AlertBox)
};

constexpr int kImageSize = 48;
constexpr int kTextWidth = 340;
constexpr int kMargin = 20;

/// Can be dismissed whatever its buttons are: a QMessageBox alone ignores Escape and its close
/// button when it cannot tell which button they would stand for.
class AlertBox : public QMessageBox {
public:
    using QMessageBox::QMessageBox;

protected:
    void keyPressEvent(QKeyEvent *event) override {
        if (event->matches(QKeySequence::Cancel)) {
            reject();
        } else {
            QMessageBox::keyPressEvent(event);
        }
    }
    void closeEvent(QCloseEvent *event) override {
        QDialog::closeEvent(event);  // NOLINT(bugprone-parent-virtual-call): see above
    }
};

void setTexts(QMessageBox &box, const AlertRequest &request) {
    box.setWindowTitle(QStringLiteral("Quorbel"));
    box.setTextFormat(Qt::PlainText);
    box.setText(request.message);
    box.setInformativeText(request.informativeText);
    // It has a format of its own, which guesses.
    if (auto *text = box.findChild<QLabel *>(QStringLiteral("qt_msgbox_informativelabel"))) {
        text->setTextFormat(Qt::PlainText);
    }
    const QIcon icon = QApplication::windowIcon();
    if (icon.isNull()) {
        box.setIcon(QMessageBox::Information);
    } else {
        box.setIconPixmap(icon.pixmap(QSize(kImageSize, kImageSize), box.devicePixelRatioF()));
    }
}

/// A QMessageBox takes its width from its text alone, which makes narrow slips of short ones.
void setRoom(QMessageBox &box) {
    constexpr int kTextColumn = 2;
    if (auto *grid = qobject_cast<QGridLayout *>(box.layout())) {
        grid->setColumnMinimumWidth(kTextColumn, kTextWidth);
        grid->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    }
}

QList<QAbstractButton *> addButtons(QMessageBox &box, const QStringList &titles) {
    QList<QAbstractButton *> buttons;
    const QStringList shown = titles.isEmpty() ? QStringList{Texts::tr("OK")} : titles;
    for (const QString &title : shown) {
        const bool first = buttons.isEmpty();
        QPushButton *button =
            box.addButton(title, first ? QMessageBox::AcceptRole : QMessageBox::RejectRole);
        button->setObjectName(QStringLiteral("alertButton%1").arg(buttons.size()));
        button->setAccessibleName(title);
        if (first) {
            box.setDefaultButton(button);
        }
        buttons.append(button);
    }
    return buttons;
}

}  // namespace

void openAlert(QWidget *parent, const AlertRequest &request,
               std::function<void(const AlertAnswer &)> onAnswer) {
    auto *box = new AlertBox(parent);
    box->setObjectName(QStringLiteral("alertBox"));
    box->setAttribute(Qt::WA_DeleteOnClose);
    setTexts(*box, request);
    const QList<QAbstractButton *> buttons = addButtons(*box, request.buttons);
    if (!request.checkBox.isEmpty()) {
        auto *checkBox = new QCheckBox(request.checkBox);
        checkBox->setObjectName(QStringLiteral("alertCheckBox"));
        checkBox->setAccessibleName(request.checkBox);
        box->setCheckBox(checkBox);
    }
    QObject::connect(box, &QDialog::finished, box, [box, buttons, answer = std::move(onAnswer)] {
        if (answer) {
            answer({.button = static_cast<int>(buttons.indexOf(box->clickedButton())),
                    .checked = box->checkBox() != nullptr && box->checkBox()->isChecked()});
        }
    });
    setRoom(*box);
    box->open();
}

}  // namespace quorbel
