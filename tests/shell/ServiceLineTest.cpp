// The line about the service in the navigation, and the sheet behind it.

#include "core/AppDelegate.h"
#include "platform/gui/Appearance.h"
#include "platform/gui/RowTableView.h"
#include "shell/ServiceDetails.h"
#include "shell/ServiceLine.h"
#include "shell/ServiceRows.h"
#include "shell/ServiceTexts.h"
#include "support/TemporaryFolder.h"

#include <QApplication>
#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <ctime>
#include <memory>

namespace quorbel {

using namespace Qt::StringLiterals;

class ServiceLineTest : public QObject {
    Q_OBJECT

private:
    testing::TemporaryFolder m_folder;
    std::unique_ptr<AppDelegate> m_delegate;
    std::unique_ptr<QWidget> m_window;
    ServiceLine *m_line = nullptr;

    static Dictionary properties(const Dictionary &counters = {}) {
        return {
            {"Version", "1.1"},
            {"Since", 1'795'219'200},
            {"Counters", counters},
            {"Listeners", Array{Array{"udp", 514}, Array{"tls", 6514}}},
            {"Refusals", Array{Array{"10.0.0.7", "filtered", "\"printers\"", 1'795'219'201, 1234},
                               Array{"10.0.0.7", "filtered", "", 1'795'219'202, 2},
                               Array{"10.0.0.8", "connection closed", "", 1'795'219'203, 1}}}};
    }
    void answer(const Dictionary &told) { m_delegate->service.take({StatusOutcome::kTold, told}); }
    void answer(StatusOutcome outcome) { m_delegate->service.take({outcome, {}}); }
    /// The lines that are seen, "! " in front of those with a sign.
    QStringList lines() {
        QStringList shown;
        for (int i = 0; m_line->findChild<QLabel *>(name(i)) != nullptr; ++i) {
            const auto *text = m_line->findChild<QLabel *>(name(i));
            if (text->isVisible()) {
                const auto labels = text->parentWidget()->findChildren<QLabel *>();
                const bool isProblem = std::ranges::any_of(labels, [text](const QLabel *label) {
                    return label != text && label->isVisible();
                });
                shown += (isProblem ? "! "_L1 : ""_L1) + text->text();
            }
        }
        return shown;
    }
    static QString name(int number) { return QStringLiteral("serviceText%1").arg(number); }
    QString contact() { return m_line->findChild<QLabel *>("serviceContact"_L1)->text(); }

    void makeLine() {
        m_window = std::make_unique<QWidget>();
        m_window->resize(168, 500);
        m_line = new ServiceLine(*m_delegate, m_window.get());
        m_line->resize(168, 300);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    }

private Q_SLOTS:
    void initTestCase() {
        qputenv("TZ", "UTC");
        applyAppearance(*qApp);
    }
    void init() {
        qputenv("QUORBEL_LIBRARY", QByteArray::fromStdString(m_folder.path().string()));
        m_folder.write("Quorbel.ini", "");
        m_delegate = std::make_unique<AppDelegate>();
        makeLine();
    }
    void cleanup() {
        m_window.reset();
        m_delegate.reset();
    }

    void tellsContactAndLastEventAlways() {
        QCOMPARE(contact(), "Asking the service"_L1);
        QCOMPARE(lines(), QStringList("No event yet"_L1));
        answer(properties());
        QCOMPARE(contact(), "Connected"_L1);
        QCOMPARE(lines(), QStringList("No event yet"_L1));
        m_delegate->state.arrivals.add({}, std::time(nullptr) - 3 * 60, std::time(nullptr));
        answer(properties());
        QCOMPARE(lines(), QStringList("Last event 3 min ago"_L1));
        answer(StatusOutcome::kNotRunning);
        QCOMPARE(contact(), "Not connected"_L1);
        QCOMPARE(lines().size(), 3);
        QVERIFY(lines().at(0).startsWith("Since "_L1));
        QCOMPARE(lines().mid(1),
                 QStringList({"Last event 3 min ago"_L1, "! The service does not run"_L1}));
    }
    void goesOnWithTheClock() {
        m_delegate->state.arrivals.add({}, std::time(nullptr), std::time(nullptr));
        // A busy machine may pass over any of the seconds.
        static const QRegularExpression form(QStringLiteral("^Last event (\\d+) s ago$"));
        const auto seconds = [this] { return form.match(lines().value(0)).captured(1).toInt(); };
        QTRY_VERIFY(seconds() > 0);
        const int before = seconds();
        QTRY_VERIFY(seconds() > before);
    }
    void tellsOtherThingsAboveZeroOnly() {
        answer(properties({{"filtered", 0}, {"dropped", 0}, {"received", 7}}));
        QCOMPARE(lines(), QStringList("No event yet"_L1));
        answer(properties({{"filtered", 212},
                           {"dropped", 1904},
                           {"notifications dropped", 37},
                           {"not stored", 1}}));
        QCOMPARE(lines(), QStringList({"No event yet"_L1, "212 filtered"_L1, "! 1 not stored"_L1,
                                       "! 1,904 dropped"_L1, "! 37 not told"_L1}));
    }
    void countersMayBeHuge() {
        answer(properties({{"dropped", Value(std::uint64_t{18'446'744'073'709'551'615U})}}));
        QCOMPARE(lines().last(), "! 18,446,744,073,709,551,615 dropped"_L1);
        QCOMPARE(counterRows(m_delegate->service.report()).first().at(1),
                 "18,446,744,073,709,551,615"_L1);
    }
    void tellsThatTheLastSaveWasNotTaken() {
        m_delegate->lastSave.end(m_delegate->lastSave.begin(), "The disk is full");
        answer(properties());
        QCOMPARE(lines(), QStringList({"No event yet"_L1, "! The last save was not taken"_L1}));
        m_delegate->lastSave.end(m_delegate->lastSave.begin(), "OK");
        answer(properties());
        QCOMPARE(lines(), QStringList("No event yet"_L1));
    }
    void tellsThatNothingIsEverRemoved() {
        std::filesystem::remove(m_folder.path() / "Quorbel.ini");
        answer(properties());
        QCOMPARE(lines(), QStringList({"No event yet"_L1,
                                       "! No settings saved yet: nothing is ever removed"_L1}));
        m_folder.write("Quorbel.ini", "");
        answer(properties());
        QCOMPARE(lines(), QStringList("No event yet"_L1));
    }
    void saysWhatCannotBeTold() {
        answer(StatusOutcome::kTooOld);
        QCOMPARE(contact(), "Connected"_L1);
        QCOMPARE(lines(), QStringList({"No event yet"_L1, "The rest cannot be told"_L1}));
        answer(StatusOutcome::kNotAllowed);
        QCOMPARE(contact(), "Not connected"_L1);
        QCOMPARE(lines().last(), "! No access: join the group quorbel"_L1);
        answer(StatusOutcome::kNoAnswer);
        QCOMPARE(lines().last(), "! The service does not answer"_L1);
        answer(StatusOutcome::kNoBus);
        QCOMPARE(lines().last(), "! There is no system bus"_L1);
    }
    void standsAsFarFromTheEdgeThatIsReadFirst() {
        answer(properties({{"dropped", 4}}));
        const auto inset = [this](const QWidget *part, bool isMirrored) {
            QCoreApplication::processEvents();
            const int left = part->mapTo(m_line, QPoint()).x();
            return isMirrored ? m_line->width() - left - part->width() : left;
        };
        const auto *image =
            m_line->findChild<QLabel *>("serviceContact"_L1)->parentWidget()->findChild<QLabel *>();
        const auto *details = m_line->findChild<QPushButton *>("serviceDetails"_L1);
        const QList<int> usual{inset(image, false), inset(details, false)};
        QVERIFY(usual.at(0) > 10);
        m_window->setLayoutDirection(Qt::RightToLeft);
        m_line->layout()->activate();
        QCOMPARE((QList<int>{inset(image, true), inset(details, true)}), usual);
    }
    void isAskedForWhileItIsSeenAlone() {
        QVERIFY(m_delegate->service.isWatched());
        m_window->hide();
        QVERIFY(!m_delegate->service.isWatched());
        m_window->show();
        QVERIFY(m_delegate->service.isWatched());
    }
    void aNarrowOneIsAnImageWithATip() {
        answer(properties({{"dropped", 4}}));
        m_line->setNarrow(true);
        QCOMPARE(lines(), QStringList());
        auto *button = m_line->findChild<QPushButton *>("serviceButton"_L1);
        QVERIFY(button->isVisible());
        QVERIFY(!m_line->findChild<QPushButton *>("serviceDetails"_L1)->isVisible());
        QCOMPARE(button->accessibleName(), "Service: Connected, No event yet, 4 dropped"_L1);
        QCOMPARE(button->toolTip(), "Connected\nNo event yet\n4 dropped"_L1);
        const QSignalSpy asked(m_line, &ServiceLine::detailsAsked);
        QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(asked.count(), 1);
    }
    void whoeverReceivesTestMessagesIsNamed() {
        ServiceFacts facts;
        facts.outcome = StatusOutcome::kTold;
        facts.report.listeners = {{"udp", 5514}, {"tcp", 5514}};
        facts.testPort = TestPort::kNobody;
        QCOMPARE(serviceTexts(facts).notes, QStringList({"No event yet"_L1, "Port 5514"_L1}));
        QCOMPARE(serviceTexts(facts).problems, QStringList("Nobody listens on port 514"_L1));
        facts.testPort = TestPort::kOther;
        QCOMPARE(serviceTexts(facts).problems,
                 QStringList("Another program listens on port 514"_L1));
    }
    void aClosedFolderIsNoAccess() {
        ServiceFacts facts;
        facts.outcome = StatusOutcome::kTold;
        facts.access = LibraryAccess::kClosed;
        facts.hasSettings = false;
        QCOMPARE(serviceTexts(facts).problems, QStringList("No access: join the group quorbel"_L1));
    }
    void agesAreShort() {
        QCOMPARE(ageText(-5), "0 s"_L1);
        QCOMPARE(ageText(59), "59 s"_L1);
        QCOMPARE(ageText(60), "1 min"_L1);
        QCOMPARE(ageText(3599), "59 min"_L1);
        QCOMPARE(ageText(3600), "1 h"_L1);
        QCOMPARE(ageText(86399), "23 h"_L1);
        QCOMPARE(ageText(86400), "1 d"_L1);
    }

    void theSheetTellsWhyNothingArrivesFromASender() {
        auto *sheet = new ServiceDetails(m_delegate->service);
        sheet->presentOver(m_window.get());
        answer(properties({{"received", 12}, {"filtered", 1234}, {"of tomorrow", 5}}));
        const auto cells = [sheet](const char *table, int row) {
            const auto *model =
                sheet->findChild<RowTableView *>(QString::fromLatin1(table))->model();
            QStringList texts;
            for (int column = 0; column < model->columnCount(); ++column) {
                texts += model->index(row, column).data().toString();
            }
            return texts.join(u'|');
        };
        QCOMPARE(sheet->findChild<QLabel *>("serviceHead"_L1)->text(),
                 "QuorbelSrv 1.1, running since 2026-11-21 00:00:00, listens on UDP 514, TLS "
                 "6514."_L1);
        const auto *model = sheet->findChild<RowTableView *>("serviceRefusals"_L1)->model();
        for (int column = 0; column < model->columnCount(); ++column) {
            QCOMPARE(model->headerData(column, Qt::Horizontal, Qt::TextAlignmentRole),
                     model->index(0, column).data(Qt::TextAlignmentRole));
        }
        QCOMPARE(cells("serviceRefusals", 0),
                 "10.0.0.7|Kept out by the filter \"printers\"|1,234|2026-11-21 00:00:01"_L1);
        QCOMPARE(cells("serviceRefusals", 1),
                 "10.0.0.7|No include filter matches|2|2026-11-21 00:00:02"_L1);
        QCOMPARE(cells("serviceRefusals", 2),
                 "10.0.0.8|Connection closed to make room|1|2026-11-21 00:00:03"_L1);
        QCOMPARE(cells("serviceCounters", 1), "Filtered|1,234|Messages that filters left out"_L1);
        QCOMPARE(cells("serviceCounters", 2), "of tomorrow|5|"_L1);
        answer(StatusOutcome::kTooOld);
        QCOMPARE(sheet->findChild<QLabel *>("serviceHead"_L1)->text(),
                 "Cannot be told: the service that runs is an older one."_L1);
        QTest::mouseClick(sheet->findChild<QPushButton *>("serviceClose"_L1), Qt::LeftButton);
        QTRY_VERIFY(m_window->findChild<ServiceDetails *>() == nullptr);
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::ServiceLineTest)
#include "ServiceLineTest.moc"
