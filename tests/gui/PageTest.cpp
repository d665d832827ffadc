#include "gui/LifeCycleProbe.h"
#include "platform/gui/Page.h"
#include "platform/gui/Storyboard.h"

#include <QStackedWidget>
#include <QTest>

#include <memory>

namespace quorbel {

using namespace Qt::StringLiterals;

using ProbePage = testing::LifeCycleProbe<Page>;

class PageTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_steps.clear();
        m_tabs = std::make_unique<QStackedWidget>();
        for (const auto &name : {QStringLiteral("home"), QStringLiteral("events")}) {
            m_tabs->addWidget(new ProbePage(name, m_steps));
        }
    }

    void cleanup() { m_tabs.reset(); }

    void showingTheWindowShowsTheSelectedPage() {
        m_tabs->show();
        QCOMPARE(m_steps, QStringList{"home.will"_L1});
        QTRY_COMPARE(m_steps, (QStringList{"home.will"_L1, "home.did"_L1}));
    }

    void aPageKnowsWhetherItIsOnScreen() {
        QVERIFY(!page(0).isPageOnScreen());
        m_tabs->show();
        QVERIFY(page(0).isPageOnScreen());
        QVERIFY(!page(1).isPageOnScreen());
        m_tabs->setCurrentIndex(1);
        QVERIFY(!page(0).isPageOnScreen());
        QVERIFY(page(1).isPageOnScreen());
        m_tabs->hide();
        QVERIFY(!page(1).isPageOnScreen());
    }

    void selectingATabHidesOnePageThenShowsTheOther() {
        showAndForget();
        m_tabs->setCurrentIndex(1);
        QTRY_COMPARE(m_steps, (QStringList{"home.leave"_L1, "events.will"_L1, "events.did"_L1}));
        QTest::qWait(0);
        QCOMPARE(m_steps.size(), 3);
    }

    void selectingTheSelectedTabChangesNothing() {
        showAndForget();
        m_tabs->setCurrentIndex(0);
        QTest::qWait(0);
        QCOMPARE(m_steps, QStringList{});
    }

    void hidingAndShowingTheWindowIsAnAppearanceToo() {
        showAndForget();
        m_tabs->hide();
        QCOMPARE(m_steps, QStringList{"home.leave"_L1});
        m_tabs->show();
        QTRY_COMPARE(m_steps, (QStringList{"home.leave"_L1, "home.will"_L1, "home.did"_L1}));
    }

    void closingAndShowingTheWindowIsAnAppearanceToo() {
        showAndForget();
        m_tabs->close();
        m_tabs->show();
        QTRY_COMPARE(m_steps, (QStringList{"home.leave"_L1, "home.will"_L1, "home.did"_L1}));
    }

    void selectingATabOfAHiddenWindowShowsNothing() {
        m_tabs->setCurrentIndex(1);
        QTest::qWait(0);
        QCOMPARE(m_steps, QStringList{});
        m_tabs->show();
        QTRY_COMPARE(m_steps, (QStringList{"events.will"_L1, "events.did"_L1}));
    }

    void aPageThatIsGoneAgainHasNotAppeared() {
        m_tabs->show();
        m_tabs->hide();
        QTest::qWait(0);
        QCOMPARE(m_steps, (QStringList{"home.will"_L1, "home.leave"_L1}));
    }

    void eachAppearanceIsToldOnce() {
        m_tabs->show();
        m_tabs->hide();
        m_tabs->show();
        QTRY_VERIFY(m_steps.contains("home.did"_L1));
        QTest::qWait(0);
        QCOMPARE(m_steps.count("home.will"_L1), 2);
        QCOMPARE(m_steps.count("home.did"_L1), 1);
    }

    void aMinimisedWindowsPageStays() {
        showAndForget();
        sendSpontaneous<QHideEvent>();
        sendSpontaneous<QShowEvent>();
        QTest::qWait(0);
        QCOMPARE(m_steps, QStringList{});
    }

    void aPageCanGoBeforeItHasAppeared() {
        m_tabs->show();
        m_tabs.reset();
        QTest::qWait(0);
        QVERIFY(!m_steps.contains("home.did"_L1));
    }

    void theStoryboardMakesAndLoadsControllers() {
        Storyboard storyboard;
        storyboard.add(QStringLiteral("page"), [this] {
            return std::make_unique<ProbePage>(QStringLiteral("made"), m_steps);
        });
        storyboard.add(QStringLiteral("plain"), [] { return std::make_unique<QWidget>(); });

        const auto first = storyboard.instantiate(QStringLiteral("page"));
        const auto second = storyboard.instantiate(QStringLiteral("page"));
        QVERIFY(first != nullptr);
        QVERIFY(second != nullptr);
        QVERIFY(first != second);
        QCOMPARE(m_steps, (QStringList{"made.load"_L1, "made.load"_L1}));
        QVERIFY(storyboard.instantiate(QStringLiteral("plain")) != nullptr);
        QVERIFY(storyboard.instantiate(QStringLiteral("Page")) == nullptr);
    }

private:
    ProbePage &page(int index) { return dynamic_cast<ProbePage &>(*m_tabs->widget(index)); }

    void showAndForget() {
        m_tabs->show();
        QTRY_VERIFY(m_steps.contains("home.did"_L1));
        m_steps.clear();
    }

    template <class Event>
    void sendSpontaneous() {
        Event event;
        QSpontaneKeyEvent::setSpontaneous(&event);
        qApp->notify(m_tabs->widget(0), &event);
    }

    QStringList m_steps;
    std::unique_ptr<QStackedWidget> m_tabs;
};

}  // namespace quorbel

QTEST_MAIN(quorbel::PageTest)
#include "PageTest.moc"
