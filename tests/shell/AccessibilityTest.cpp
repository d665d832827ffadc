#include "shell/MainStoryboard.h"
#include "shell/ShellFixture.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QAccessible>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QSet>
#include <QTest>

using namespace quorbel;
using namespace quorbel::testing;

/// What all pages and sheets must offer to those who see no window or have no mouse.
class AccessibilityTest : public QObject {
    Q_OBJECT

private:
    // The parts that controls are made of speak for themselves.
    static bool isPart(const QWidget &widget) {
        const QWidget *parent = widget.parentWidget();
        return qobject_cast<const QScrollBar *>(&widget) != nullptr ||
               widget.objectName().startsWith(QStringLiteral("qt_")) ||
               qobject_cast<const QComboBox *>(parent) != nullptr ||
               qobject_cast<const QAbstractItemView *>(parent) != nullptr;
    }
    static bool isControl(const QWidget &widget) {
        return widget.focusPolicy() != Qt::NoFocus ||
               qobject_cast<const QAbstractButton *>(&widget) != nullptr ||
               qobject_cast<const QLineEdit *>(&widget) != nullptr ||
               qobject_cast<const QPlainTextEdit *>(&widget) != nullptr ||
               qobject_cast<const QComboBox *>(&widget) != nullptr ||
               qobject_cast<const QAbstractSpinBox *>(&widget) != nullptr ||
               qobject_cast<const QAbstractSlider *>(&widget) != nullptr ||
               qobject_cast<const QAbstractItemView *>(&widget) != nullptr;
    }
    static QList<QWidget *> controlsOf(const QWidget &view) {
        QList<QWidget *> controls;
        for (QWidget *widget : view.findChildren<QWidget *>()) {
            if (isControl(*widget) && !isPart(*widget)) {
                controls.append(widget);
            }
        }
        return controls;
    }
    static void addViews() {
        QTest::addColumn<QString>("identifier");
        for (const char *view :
             {"HomeView", "ScanView", "ReportsView", "ToolsView", "ToolsViewOptions",
              "ToolsViewActions", "ToolsViewExport", "aboutView", "eventView", "filterView",
              "actionView", "commandRun", "commandEmail", "commandEvent", "emailServer",
              "emailFormat", "emailTest", "HostsView"}) {
            QTest::newRow(view) << QString::fromLatin1(view);
        }
    }
    // The view of the current row of data, shown.
    std::unique_ptr<QWidget> showView() {
        auto view = m_storyboard.instantiate(QString::fromLatin1(QTest::currentDataTag()));
        view->show();
        view->activateWindow();
        return QTest::qWaitForWindowActive(view.get()) ? std::move(view) : nullptr;
    }

    LibraryFolder m_library;
    AppDelegate m_delegate;
    Storyboard m_storyboard;

private Q_SLOTS:
    void initTestCase() { fillMainStoryboard(m_storyboard, m_delegate); }

    void everyControlHasANameAndIsCalledSomething_data() { addViews(); }
    void everyControlHasANameAndIsCalledSomething() {
        const auto view = showView();
        QVERIFY(view != nullptr);
        const QList<QWidget *> controls = controlsOf(*view);
        QVERIFY(!controls.isEmpty() || view->objectName() == QStringLiteral("HomeView"));
        QSet<QString> names;
        for (QWidget *control : controls) {
            const QByteArray name = control->objectName().toUtf8();
            QVERIFY2(!name.isEmpty(), control->metaObject()->className());
            QVERIFY2(!names.contains(control->objectName()), name.constData());
            names.insert(control->objectName());
            QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(control);
            QVERIFY2(interface != nullptr, name.constData());
            QVERIFY2(!interface->text(QAccessible::Name).trimmed().isEmpty(), name.constData());
        }
    }

    void tabReachesEveryControl_data() { addViews(); }
    void tabReachesEveryControl() {
        const auto view = showView();
        QVERIFY(view != nullptr);
        QStringList expected;
        for (const QWidget *control : controlsOf(*view)) {
            const bool takesTab = (control->focusPolicy() & Qt::TabFocus) != 0;
            if (takesTab && control->isEnabled() && control->isVisible()) {
                expected.append(control->objectName());
            }
        }
        QStringList reached;
        for (qsizetype i = 0; i < 2 * expected.size() + 2; ++i) {
            QWidget *focused = view->focusWidget();
            QTest::keyClick(focused != nullptr ? focused : view.get(), Qt::Key_Tab);
            if (view->focusWidget() != nullptr) {
                reached.append(view->focusWidget()->objectName());
            }
        }
        for (const QString &name : std::as_const(expected)) {
            QVERIFY2(reached.contains(name), qPrintable(name));
        }
    }
};

QTEST_MAIN(AccessibilityTest)
#include "AccessibilityTest.moc"
