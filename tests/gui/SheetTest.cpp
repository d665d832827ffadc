#include "gui/LifeCycleProbe.h"
#include "platform/gui/Sheet.h"

#include <QApplication>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <QVBoxLayout>

namespace quorbel {

using namespace Qt::StringLiterals;
using ProbeSheet = testing::LifeCycleProbe<Sheet>;

class SheetTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_steps.clear();
        m_window.show();
    }

    void opensAtOnceOverItsPresentersWindow() {
        auto *page = new QWidget(&m_window);
        const QPointer<ProbeSheet> sheet = makeSheet();
        sheet->presentOver(page);
        QVERIFY(sheet->isVisible());
        QVERIFY(sheet->isWindow());
        QCOMPARE(sheet->presenter(), page);
        QCOMPARE(sheet->parentWidget(), page);
        QCOMPARE(sheet->windowModality(), Qt::WindowModal);
        QVERIFY(!sheet->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
        delete page;
        QVERIFY(sheet.isNull());
    }

    void withoutAPresenterItIsModalToAllWindowsAndAboveThem() {
        const QPointer<ProbeSheet> sheet = makeSheet();
        sheet->presentOver(nullptr);
        QVERIFY(sheet->isVisible());
        QCOMPARE(sheet->presenter(), nullptr);
        QCOMPARE(sheet->windowModality(), Qt::ApplicationModal);
        QVERIFY(sheet->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
        QCOMPARE(QApplication::activeModalWidget(), sheet.data());
        sheet->close();
        QTRY_VERIFY(sheet.isNull());
        QCOMPARE(QApplication::activeModalWidget(), nullptr);
        QCOMPARE(m_steps.count("sheet.leave"_L1), 1);
    }

    void followsTheLifeCycleAndDeletesItself() {
        const QPointer<ProbeSheet> sheet = makeSheet();
        sheet->presentOver(&m_window);
        QCOMPARE(m_steps, QStringList{"sheet.will"_L1});
        QTRY_COMPARE(m_steps, (QStringList{"sheet.will"_L1, "sheet.did"_L1}));
        sheet->close();
        QCOMPARE(m_steps, (QStringList{"sheet.will"_L1, "sheet.did"_L1, "sheet.leave"_L1}));
        QTRY_VERIFY(sheet.isNull());
        QCOMPARE(m_steps.size(), 3);
    }

    void acceptingRejectingAndEscapeDeleteItToo() {
        const QPointer<ProbeSheet> accepted = makeSheet();
        accepted->presentOver(&m_window);
        accepted->accept();
        QTRY_VERIFY(accepted.isNull());

        const QPointer<ProbeSheet> escaped = makeSheet();
        escaped->presentOver(&m_window);
        QTest::keyClick(escaped, Qt::Key_Escape);
        QTRY_VERIFY(escaped.isNull());
        QCOMPARE(m_steps.count("sheet.leave"_L1), 2);
    }

    void keepsItsDesignedSize() {
        const QPointer<ProbeSheet> sheet = makeSheet();
        sheet->resize(420, 260);
        sheet->presentOver(&m_window);
        QCOMPARE(sheet->size(), QSize(420, 260));
        sheet->resize(800, 600);
        QCOMPARE(sheet->size(), QSize(420, 260));
        sheet->close();
    }

    void growsToWhatItsContentNeeds() {
        const QPointer<ProbeSheet> sheet = makeSheet();
        auto *layout = new QVBoxLayout(sheet);
        auto *content = new QWidget;
        content->setMinimumSize(500, 40);
        layout->addWidget(content);
        sheet->resize(420, 260);
        sheet->presentOver(&m_window);
        QVERIFY(sheet->width() >= 500);
        QCOMPARE(sheet->height(), 260);
        sheet->close();
    }

    void scrollsItsContentAboveItsButtonsInASmallWindow() {
        QWidget window;
        window.resize(300, 200);
        window.show();
        const QPointer<ProbeSheet> sheet = makeSheet();
        auto *layout = new QVBoxLayout(sheet);
        auto *content = new QWidget;
        content->setMinimumSize(250, 500);
        layout->addWidget(content);
        auto *buttons = new QHBoxLayout;
        auto *save = new QPushButton("Save"_L1);
        buttons->addWidget(save);
        layout->addLayout(buttons);
        sheet->presentOver(&window);
        QVERIFY(QTest::qWaitForWindowExposed(sheet));
        QVERIFY(sheet->height() <= 200);
        QVERIFY(sheet->rect().contains(save->geometry()));
        auto *area = sheet->findChild<QScrollArea *>();
        QVERIFY(area != nullptr && area->isAncestorOf(content));
        QTRY_VERIFY(area->verticalScrollBar()->maximum() > 0);
        QCOMPARE(area->horizontalScrollBar()->maximum(), 0);
        sheet->close();
    }

    void cannotBeMadeSmallOrLarge() {
        const QPointer<ProbeSheet> sheet = makeSheet();
        sheet->presentOver(&m_window);
        // Else window managers show buttons for both.
        QVERIFY(sheet->windowFlags().testFlag(Qt::CustomizeWindowHint));
        QVERIFY(sheet->windowFlags().testFlag(Qt::WindowCloseButtonHint));
        QVERIFY((sheet->windowFlags() & Qt::WindowMinMaxButtonsHint) == 0);
        QVERIFY((sheet->windowFlags() & Qt::WindowType_Mask) == Qt::Dialog);
        sheet->close();
    }

    void opensOverAnotherSheet() {
        const QPointer<ProbeSheet> lower = makeSheet();
        lower->presentOver(&m_window);
        const QPointer<ProbeSheet> upper = makeSheet();
        upper->presentOver(lower);
        QVERIFY(lower->isVisible());
        QVERIFY(upper->isVisible());
        upper->close();
        QTRY_VERIFY(upper.isNull());
        QVERIFY(lower->isVisible());
        lower->close();
        QTRY_VERIFY(lower.isNull());
    }

private:
    ProbeSheet *makeSheet() { return new ProbeSheet(QStringLiteral("sheet"), m_steps); }

    QStringList m_steps;
    QWidget m_window;
};

}  // namespace quorbel

QTEST_MAIN(quorbel::SheetTest)
#include "SheetTest.moc"
