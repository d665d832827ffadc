#include "soak/RobotHands.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QMessageBox>
#include <QPrintDialog>
#include <QPushButton>
#include <QTableView>
#include <QTest>

#include <utility>

namespace quorbel::soak {

using namespace std::chrono_literals;

RobotHands::RobotHands(testing::FrontEnd &frontEnd, StallWatch &watch, QString folder,
                       unsigned seed)
    : m_frontEnd(frontEnd), m_random(seed), m_watch(watch), m_folder(std::move(folder)) {}

bool RobotHands::waitUntil(const Condition &condition, std::chrono::milliseconds limit) {
    return testing::waitUntil(
        [&] {
            QApplication::processEvents();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            return condition();
        },
        limit);
}

void RobotHands::goOnFor(std::chrono::milliseconds time) {
    waitUntil([] { return false; }, time);
}

void RobotHands::think() {
    goOnFor(std::chrono::milliseconds(any(5, 150)));
}

int RobotHands::any(int first, int last) {
    return std::uniform_int_distribution(first, last)(m_random);
}

void RobotHands::begin(const QString &activity) {
    m_activity = activity;
    step(QStringLiteral("begins"));
}

void RobotHands::step(const QString &what) {
    m_watch.setDoing(m_activity + QStringLiteral(", ") + what);
}

QString RobotHands::fileInFolder(const QString &name) const {
    return m_folder + QLatin1Char('/') + name;
}

QDialog *RobotHands::dialog() const {
    return qobject_cast<QDialog *>(QApplication::activeModalWidget());
}

QWidget *RobotHands::top() const {
    QDialog *front = dialog();
    return front != nullptr ? static_cast<QWidget *>(front) : m_frontEnd.window.get();
}

bool RobotHands::press(QAbstractButton *button) {
    if (button == nullptr || !button->isVisible() || !button->isEnabled()) {
        return false;
    }
    step(QStringLiteral("presses ") + button->objectName() + QLatin1Char(' ') + button->text());
    // Where the tick of a check box is.
    const bool hasTick = qobject_cast<QCheckBox *>(button) != nullptr;
    QTest::mouseClick(button, Qt::LeftButton, {},
                      hasTick ? QPoint(8, button->height() / 2) : QPoint());
    think();
    return true;
}

bool RobotHands::click(const char *button) {
    return press(find<QAbstractButton>(button));
}

bool RobotHands::choose(const char *chooser, int item) {
    auto *box = find<QComboBox>(chooser);
    if (box == nullptr || item >= box->count()) {
        return false;
    }
    box->setFocus();
    key(box, Qt::Key_Home);
    for (int i = 0; i < item; ++i) {
        key(box, Qt::Key_Down);
    }
    return box->currentIndex() == item;
}

bool RobotHands::type(const char *field, const QString &text) {
    auto *line = find<QLineEdit>(field);
    if (line == nullptr) {
        return false;
    }
    QTest::mouseClick(line, Qt::LeftButton);
    key(line, Qt::Key_A, Qt::ControlModifier);
    key(line, Qt::Key_Delete);
    for (const QChar character : text) {
        step(QStringLiteral("types into ") + QLatin1String(field));
        QTest::sendKeyEvent(QTest::Click, line, Qt::Key_unknown, QString(character), {});
        goOnFor(std::chrono::milliseconds(any(0, 20)));
    }
    return true;
}

bool RobotHands::clickRow(QTableView *table, int row, Qt::KeyboardModifiers modifiers) {
    if (table == nullptr || row >= table->model()->rowCount()) {
        return false;
    }
    const QModelIndex cell = table->model()->index(row, table->model()->columnCount() - 1);
    step(QStringLiteral("clicks a row"));
    table->scrollTo(cell);
    const QPoint place = table->visualRect(cell).center();
    QTest::mouseClick(table->viewport(), Qt::LeftButton, modifiers, place);
    return true;
}

void RobotHands::key(QWidget *control, Qt::Key key, Qt::KeyboardModifiers modifiers) {
    step(QStringLiteral("key %1 in %2")
             .arg(static_cast<int>(key), 0, 16)
             .arg(control->objectName()));
    QTest::keyClick(control, key, modifiers);
    QApplication::processEvents();
}

bool RobotHands::answer(const QString &button, bool tick) {
    QMessageBox *box = nullptr;
    if (!waitUntil([&] { return (box = qobject_cast<QMessageBox *>(dialog())) != nullptr; }, 5s)) {
        return false;
    }
    if (tick && !press(box->checkBox())) {
        return false;
    }
    for (QAbstractButton *one : box->buttons()) {
        if (one->text().remove(QLatin1Char('&')) == button) {
            return press(one);
        }
    }
    return false;
}

bool RobotHands::saveInPanel(const QString &name) {
    QFileDialog *panel = nullptr;
    if (!waitUntil([&] { return (panel = qobject_cast<QFileDialog *>(dialog())) != nullptr; },
                   5s)) {
        return false;
    }
    auto *field = panel->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
    field->setText(fileInFolder(name));
    if (QFileInfo(field->text()).absolutePath() != m_folder || QFileInfo::exists(field->text())) {
        qFatal("The robot was about to write to %s", qPrintable(field->text()));
    }
    return press(panel->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Save));
}

bool RobotHands::printInDialog(const QString &name) {
    QPrintDialog *panel = nullptr;
    if (!waitUntil([&] { return (panel = qobject_cast<QPrintDialog *>(dialog())) != nullptr; },
                   5s)) {
        return false;
    }
    auto *printers = panel->findChild<QComboBox *>(QStringLiteral("printers"));
    const int toFile = printers->findText(QStringLiteral("Print to File (PDF)"));
    printers->setCurrentIndex(toFile);
    auto *field = panel->findChild<QLineEdit *>(QStringLiteral("filename"));
    field->setText(fileInFolder(name));
    if (toFile < 0 || QFileInfo(field->text()).absolutePath() != m_folder ||
        QFileInfo::exists(field->text())) {
        qFatal("The robot was about to print to %s", qPrintable(field->text()));
    }
    return press(panel->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok));
}

void RobotHands::closeDialogs() {
    for (int i = 0; i < 20 && dialog() != nullptr; ++i) {
        closeFront();
    }
}

void RobotHands::closeFront() {
    QDialog *front = dialog();
    if (const auto *box = qobject_cast<QMessageBox *>(front)) {
        ++m_alerts[(box->text() + u' ' + box->informativeText()).toStdString()];
    }
    if (auto *buttons = front->findChild<QDialogButtonBox *>();
        buttons != nullptr && buttons->button(QDialogButtonBox::Cancel) != nullptr) {
        press(buttons->button(QDialogButtonBox::Cancel));
    } else {
        key(front, Qt::Key_Escape);
    }
    think();
}

}  // namespace quorbel::soak
