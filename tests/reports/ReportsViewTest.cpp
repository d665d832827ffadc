#include "platform/gui/Appearance.h"
#include "platform/gui/RowTableView.h"
#include "reports/ReportsViewFixture.h"

#include <QApplication>
#include <QScrollBar>

namespace quorbel {

using namespace testing;

class ReportsViewTest : public QObject, private ReportsViewFixture {
    Q_OBJECT

private:
    static constexpr const char *kLog =
        "1700000000,Local7.Error,h1,one\r\n"
        "1700000001,Kern.Alert,h2,two\r\n"
        "1700000002,Local7.Error,h1,two\r\n";

    QStringList filterItems() {
        QStringList items;
        for (int i = 0; i < reportFilter()->count(); ++i) {
            items += reportFilter()->itemText(i);
        }
        return items;
    }

private Q_SLOTS:
    void initTestCase() { applyAppearance(*qApp); }
    void init() { makePage(); }
    void cleanup() { dropPage(); }

    void appearsWithoutAReport() {
        log("2026-01-02.log", kLog);
        log("2026-01-01.log", kLog);
        show();
        QCOMPARE(reportName()->currentIndex(), -1);
        QCOMPARE(reportName()->count(), 4);
        QCOMPARE(filterItems(),
                 (QStringList{name("All Logs"), name("2026-01-01"), name("2026-01-02")}));
        QCOMPARE(reportFilter()->currentIndex(), 0);
        QVERIFY(!reportDisplay()->isEnabled());
        QCOMPARE(rowCount(), 0);
        for (int column = 0; column < 4; ++column) {
            QVERIFY(table()->isColumnHidden(column));
        }
        QCOMPARE(m_page->palette().color(QPalette::Window), QColor(Qt::white));
    }

    void listsTheLogFilesByNameOnly() {
        for (const char *file : {"x.log", "with space.log", "a.b.log", "Ä ö.log", ".log",
                                 "system.LOG", "old.log.1", "log", "Quorbel.ini", "All Logs.log"}) {
            log(file, kLog);
        }
        std::filesystem::create_directory(m_folder->path() / "folder.log");
        show();
        QCOMPARE(filterItems(),
                 (QStringList{name("All Logs"), name("All Logs"), name("a.b"), name("folder"),
                              name("with space"), name("x"), name("Ä ö")}));
    }

    void aMissingFolderHasNoLogs() {
        std::filesystem::remove_all(m_folder->path());
        show();
        QCOMPARE(filterItems(), QStringList{name("All Logs")});
        display(0);
        QCOMPARE(rowCount(), 0);
        QVERIFY(!table()->isColumnHidden(0));
    }

    void displayIsEnabledByAChoiceAndStaysSo() {
        log("x.log", kLog);
        show();
        // The file alone is not enough.
        pick(reportFilter(), 1);
        QVERIFY(!reportDisplay()->isEnabled());
        pick(reportName(), 2);
        QVERIFY(reportDisplay()->isEnabled());
        m_page->hide();
        show();
        QCOMPARE(reportName()->currentIndex(), -1);
        QVERIFY(reportDisplay()->isEnabled());
    }

    void aChoiceTakesTheFocusFromTheControls() {
        show();
        for (QComboBox *box : {reportName(), reportFilter()}) {
            box->setFocus();
            QVERIFY(box->hasFocus());
            pick(box, 0);
            QVERIFY(!box->hasFocus());
            QCOMPARE(QApplication::focusWidget(), m_page.get());
        }
        // By keyboard too; from there, Tab leads to the controls.
        reportName()->setFocus();
        QTest::keyClick(reportName(), Qt::Key_Down);
        QCOMPARE(reportName()->currentIndex(), 1);
        QCOMPARE(QApplication::focusWidget(), m_page.get());
        QTest::keyClick(m_page.get(), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), reportName());
    }

    void theTabKeyGoesThroughThePageFromLeftToRight() {
        log("x.log", kLog);
        display(0);
        reportName()->setFocus();
        QStringList order;
        for (int i = 0; i < 9; ++i) {
            order += QApplication::focusWidget()->objectName();
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        QCOMPARE(order.join(QLatin1Char(' ')),
                 name("reportName reportFilter reportDisplay tableView largestFirst expandAll "
                      "collapseAll exportResults printResults"));
    }

    void showsEachKind_data() {
        QTest::addColumn<QStringList>("titles");
        QTest::addColumn<QList<int>>("widths");  // 0: whatever is left
        QTest::addColumn<QStringList>("groups");
        QTest::addColumn<QStringList>("details");
        const QString first = name("2023-11-14 22:13:20");
        const QString third = name("2023-11-14 22:13:22");
        const QString priority = name("Local7.Error");
        QTest::newRow("host") << QStringList{name("Host"), name("Date"), name("Priority"),
                                             name("Message")}
                              << QList<int>{120, 140, 120, 0}
                              << QStringList{name("h1|||"), name("h2|||")}
                              << QStringList{name("|") + first + name("|Local7.Error|one"),
                                             name("|") + third + name("|Local7.Error|two")};
        QTest::newRow("message") << QStringList{name("Message"), name("Date"), name("Priority"),
                                                name("Host")}
                                 << QList<int>{0, 140, 120, 120}
                                 << QStringList{name("one|||"), name("two|||")}
                                 << QStringList{name("|") + first + name("|Local7.Error|h1")};
        QTest::newRow("priority") << QStringList{name("Priority"), name("Date"), name("Host"),
                                                 name("Message")}
                                  << QList<int>{120, 140, 120, 0}
                                  << QStringList{name("Local7.Error|||"), name("Kern.Alert|||")}
                                  << QStringList{name("|") + first + name("|h1|one"),
                                                 name("|") + third + name("|h1|two")};
        QTest::newRow("date") << QStringList{name("Date"), name("Priority"), name("Host"),
                                             name("Message")}
                              << QList<int>{165, 120, 120, 0}
                              << QStringList{first + name("|||"), name("2023-11-14 22:13:21|||"),
                                             third + name("|||")}
                              << QStringList{name("|Local7.Error|h1|one")};
    }
    void showsEachKind() {
        QFETCH(QStringList, titles);
        QFETCH(QList<int>, widths);
        QFETCH(QStringList, groups);
        QFETCH(QStringList, details);
        log("x.log", kLog);
        // The kinds are in the order of the rows above.
        const QStringList kinds{name("host"), name("message"), name("priority"), name("date")};
        const int kind = static_cast<int>(kinds.indexOf(name(QTest::currentDataTag())));
        display(kind);
        QCOMPARE(reportName()->currentText(), name("Events by ") + kinds[kind]);
        QCOMPARE(this->titles(), titles);
        QCOMPARE(rows(), groups);
        int others = 0;
        for (int column = 0; column < 4; ++column) {
            QVERIFY(!table()->isColumnHidden(column));
            if (widths[column] > 0) {
                QCOMPARE(table()->columnWidth(column), widths[column]);
                others += widths[column];
            }
        }
        const bool stretches = widths[3] == 0;
        QCOMPARE(table()->horizontalHeader()->stretchLastSection(), stretches);
        if (stretches) {
            QCOMPARE(table()->columnWidth(3), table()->viewport()->width() - others);
        } else {
            QCOMPARE(others, 380);
            const int room =
                table()->viewport()->width() - table()->verticalScrollBar()->sizeHint().width();
            QCOMPARE(table()->columnWidth(0), room - others);
        }
        QVERIFY(!table()->horizontalScrollBar()->isVisible());

        clickRow(0);
        QCOMPARE(rows().mid(1, details.size()), details);
        QCOMPARE(rowCount(), groups.size() + details.size());
        QCOMPARE(selected(), QList<int>{0});
    }

    void widthsAreThoseOfTheKindEachTime() {
        log("x.log", kLog);
        display(3);
        table()->setColumnWidth(1, 300);
        display(0);
        QCOMPARE(table()->columnWidth(0), 120);
        QCOMPARE(table()->columnWidth(1), 140);
    }

    void readsTheChosenFileOnly() {
        log("a.log", "1,P,a,m\n");
        log("a.b.log", "1,P,ab,m\n");
        log("Ä ö.log", "1,P,umlaut,m\n");
        log("\xff.log", "1,P,byte,m\n");
        log("\xfe.log", "1,P,other byte,m\n");
        show();
        const QStringList hosts{name("ab"), name("a"), name("umlaut"), name("other byte"),
                                name("byte")};
        QCOMPARE(reportFilter()->count(), 6);
        pick(reportName(), 0);
        for (int file = 0; file < 5; ++file) {
            pick(reportFilter(), file + 1);
            click("reportDisplay");
            QCOMPARE(rows(), QStringList{hosts[file] + name("|||")});
        }
        pick(reportFilter(), 0);
        click("reportDisplay");
        QCOMPARE(rows().size(), 5);
    }

    void aFileNamedAllLogsReadsAllFiles() {
        log("All Logs.log", "1,P,a,m\n");
        log("x.log", "1,P,x,m\n");
        show();
        QCOMPARE(filterItems(), (QStringList{name("All Logs"), name("All Logs"), name("x")}));
        pick(reportName(), 0);
        for (const int item : {0, 1}) {
            pick(reportFilter(), item);
            click("reportDisplay");
            QCOMPARE(rows(), (QStringList{name("a|||"), name("x|||")}));
        }
    }

    void groupsAreListedAsTheyFirstAppearInTheListing() {
        log("2.log", "1,P,second,m\n1,P,first,n\n");
        log("1.log", "1,P,first,k\n");
        display(0);
        QCOMPARE(rows(), (QStringList{name("first|||"), name("second|||")}));
        clickRow(0);
        QCOMPARE(cell(1, 3), name("k"));
        QCOMPARE(cell(2, 3), name("n"));
    }

    void noFileChosenGivesAnEmptyReport() {
        log("x.log", kLog);
        show();
        pick(reportName(), 0);
        reportFilter()->setCurrentIndex(-1);
        click("reportDisplay");
        QCOMPARE(rowCount(), 0);
        QVERIFY(!table()->isColumnHidden(3));
    }

    void noKindChosenGivesAnEmptyReportUnderTheOldTitles() {
        log("x.log", kLog);
        display(3);
        const QStringList before = titles();
        m_page->hide();
        show();
        QCOMPARE(reportName()->currentIndex(), -1);
        click("reportDisplay");
        QCOMPARE(rowCount(), 0);
        QCOMPARE(titles(), before);
        for (int column = 0; column < 4; ++column) {
            QVERIFY(!table()->isColumnHidden(column));
            QCOMPARE(table()->columnWidth(column), 120);
        }
    }

    void appearingAgainEmptiesThePage() {
        log("x.log", kLog);
        display(0);
        QCOMPARE(rowCount(), 2);
        log("y.log", kLog);
        m_page->hide();
        show();
        QCOMPARE(rowCount(), 0);
        QVERIFY(table()->isColumnHidden(0));
        QCOMPARE(filterItems(), (QStringList{name("All Logs"), name("x"), name("y")}));
    }

    void filesAreReadWhenDisplayIsPressed() {
        log("x.log", "1,P,before,m\n");
        display(0);
        log("x.log", "1,P,after,m\n");
        QCOMPARE(rows(), QStringList{name("before|||")});
        click("reportDisplay");
        QCOMPARE(rows(), QStringList{name("after|||")});
        std::filesystem::remove(m_folder->path() / "x.log");
        click("reportDisplay");
        QCOMPARE(rowCount(), 0);
    }

    void aReportThatIsReadEndsWithTheProgram() {
        log("x.log", kLog);
        log("y.log", kLog);
        display(0);
        QVERIFY(duringWork([](QWidget *) { endProgram(); }, [this] { click("reportDisplay"); }));
        QVERIFY(progressWindow() == nullptr);
        QCOMPARE(rowCount(), 0);
        letProgramEnd();
        click("reportDisplay");
        QCOMPARE(rowCount(), 2);
    }

    void displayClosesGroupsAndClearsTheSelection() {
        log("x.log", kLog);
        display(0);
        clickRow(1);
        QCOMPARE(rowCount(), 3);
        click("reportDisplay");
        QCOMPARE(rowCount(), 2);
        QVERIFY(selected().isEmpty());
    }

    void datesFollowTheFormatInForce() {
        log("x.log", "1700000000,P,h,a\n1700003600,P,h,b\nnever,P,h,c\n");
        m_delegate->state.newDateFormat = "dd.MM.yyyy hh:mm AM/PM";
        display(0);
        clickRow(0);
        QCOMPARE(cell(1, 1), name("14.11.2023 10:13 PM"));
        QCOMPARE(cell(3, 1), name("01.01.1970 12:00 AM"));
        m_delegate->state.newDateFormat = "";
        QCOMPARE(cell(1, 1), name("14.11.2023 10:13 PM"));
        click("reportDisplay");
        clickRow(0);
        QCOMPARE(cell(1, 1), name("2023-11-14 22:13:20"));
        m_delegate->state.newDateFormat = "yyyy-MM-dd";
        pick(reportName(), 3);
        click("reportDisplay");
        QCOMPARE(rows(), (QStringList{name("2023-11-14|||"), name("1970-01-01|||")}));
    }

    void itsTextsAreAsLargeAsThoseOfAllTables() {
        RowTableView other;
        other.ensurePolished();
        show();
        QCOMPARE(table()->font().pointSizeF(), other.font().pointSizeF());
        QVERIFY(table()->font().pointSizeF() < QApplication::font().pointSizeF());
    }

    void everyControlHasANameForAssistiveTools() {
        for (const char *control : {"reportName", "reportFilter", "reportDisplay", "tableView",
                                    "exportResults", "printResults"}) {
            const auto *widget = m_page->findChild<QWidget *>(name(control));
            QVERIFY2(widget != nullptr && !widget->accessibleName().isEmpty(), control);
        }
        QCOMPARE(m_page->objectName(), name("ReportsView"));
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::ReportsViewTest)
#include "ReportsViewTest.moc"
