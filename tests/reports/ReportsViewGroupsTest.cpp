#include "core/PageLinks.h"
#include "platform/gui/Appearance.h"
#include "platform/gui/Sheet.h"
#include "reports/ReportTableModel.h"
#include "reports/ReportsViewFixture.h"

#include <QAbstractItemModelTester>
#include <QCheckBox>
#include <QImage>
#include <QLabel>
#include <QPointer>
#include <QScrollBar>

#include <map>
#include <random>
#include <set>
#include <utility>
#include <vector>

namespace quorbel {

using namespace testing;

namespace {

/// Shows what the page told the details sheet.
class EventSheetStandIn : public Sheet, public EventSheetLink {
public:
    void setDict(const Event &event) override { dict = event; }
    void setHideButtons(bool hide) override { hideButtons = hide; }
    void setSteps(std::shared_ptr<EventSteps> theSteps) override { steps = std::move(theSteps); }
    [[nodiscard]] QString field(const char *key) const {
        return QString::fromStdString(dict->value(key).value_or("none"));
    }

    std::shared_ptr<EventSteps> steps;
    std::optional<Event> dict;
    bool hideButtons = false;
};

/// A report by hosts as a plain list of rows, and what hands do to it.
class PlainReport {
public:
    struct Group {
        QString host;
        QStringList details;
        bool isOpen = false;
    };
    /// A group's number and a detail's, -1 for the group's own row.
    using Place = std::pair<int, int>;

    void add(const QString &host, const QString &detail) {
        auto group = std::ranges::find(groups, host, &Group::host);
        if (group == groups.end()) {
            group = groups.insert(group, {host, {}, false});
        }
        group->details += detail;
    }
    std::vector<int> order(bool bySize) const {
        std::vector<int> result;
        for (int i = 0; i < static_cast<int>(groups.size()); ++i) {
            result.push_back(i);
        }
        if (bySize) {
            std::ranges::stable_sort(result, std::greater<>(),
                                     [this](int i) { return groups[i].details.size(); });
        }
        return result;
    }
    std::vector<Place> places(bool bySize) const {
        std::vector<Place> result;
        for (const int number : order(bySize)) {
            result.emplace_back(number, -1);
            const int details = static_cast<int>(groups[number].details.size());
            for (int i = 0; groups[number].isOpen && i < details; ++i) {
                result.emplace_back(number, i);
            }
        }
        return result;
    }
    QStringList rows(bool bySize) const {
        QStringList result;
        for (const auto &[group, detail] : places(bySize)) {
            result += detail < 0 ? groups[group].host + name("|||") : groups[group].details[detail];
        }
        return result;
    }
    void setAll(bool open) {
        for (Group &group : groups) {
            group.isOpen = open;
        }
    }

    QList<Group> groups;
};

}  // namespace

/// What there is beside the groups: their sizes, all of them at once, ways through them, details.
class ReportsViewGroupsTest : public QObject, private ReportsViewFixture {
    Q_OBJECT

private:
    static constexpr const char *kLog =
        "1700000000,Local7.Error,h1,one\r\n"
        "1700000001,Kern.Alert,h2,two\r\n"
        "broken\r\n"
        "1700000002,Local7.Error,h1,three\r\n";
    static constexpr QRgb kBarColour = 0xff76818f;

    QLabel *counts() { return control<QLabel>("reportCounts"); }
    QStringList plainOf(PlainReport &plain, unsigned seed) {
        std::mt19937 generator(seed);
        const auto random = [&generator] { return static_cast<unsigned>(generator()); };
        std::string lines;
        const unsigned hosts = 1 + random() % 40;
        for (unsigned i = 0; i < 250; ++i) {
            // The smaller a number, the more often it comes.
            const unsigned host = (random() % hosts) * (random() % hosts) / hosts;
            const std::string text = std::to_string(i);
            lines += "1,P,host" + std::to_string(host) + "," + text + "\n";
            plain.add(QStringLiteral("host%1").arg(host),
                      QStringLiteral("|1970-01-01 00:00:01|P|%1").arg(i));
        }
        log("x.log", lines);
        return plain.rows(false);
    }
    static QPointer<EventSheetStandIn> sheet() {
        for (QWidget *window : QApplication::topLevelWidgets()) {
            auto *found = dynamic_cast<EventSheetStandIn *>(window);
            if (found != nullptr && found->isVisible()) {
                return found;
            }
        }
        return nullptr;
    }
    QPoint placeOf(int row, int column = 3) {
        return table()->visualRect(table()->model()->index(row, column)).center();
    }
    bool isInSight(int row) {
        return table()->viewport()->rect().contains(
            table()->visualRect(table()->model()->index(row, 0)));
    }
    /// Where the bar of a row begins and how long it is, in pixels of the row.
    std::pair<int, int> barOf(int row) {
        QRect line = table()->visualRect(table()->model()->index(row, 0));
        line.setLeft(0);
        line.setWidth(table()->viewport()->width());
        const QImage image = table()->viewport()->grab(line).toImage();
        int begin = -1;
        int length = 0;
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixel(x, image.height() / 2) == kBarColour) {
                begin = begin < 0 ? x : begin;
                ++length;
            }
        }
        return {begin, length};
    }
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(table(), key, modifiers);
    }

private Q_SLOTS:
    void initTestCase() {
        applyAppearance(*qApp);
        m_storyboard.add(name("eventView"), [] { return std::make_unique<EventSheetStandIn>(); });
    }
    void init() { makePage(); }
    void cleanup() {
        dropPage();
        QVERIFY(sheet().isNull());
    }

    void anyHandsGiveTheRowsOfAPlainList_data() {
        QTest::addColumn<unsigned>("seed");
        for (unsigned seed = 1; seed <= 6; ++seed) {
            QTest::addRow("%u", seed) << seed;
        }
    }
    void anyHandsGiveTheRowsOfAPlainList() {
        QFETCH(const unsigned, seed);
        PlainReport plain;
        QStringList rowsAtFirst = plainOf(plain, seed);
        display(0);
        QCOMPARE(rows(), rowsAtFirst);
        const QAbstractItemModelTester tester(
            table()->model(), QAbstractItemModelTester::FailureReportingMode::Fatal);
        std::mt19937 random(seed);
        bool bySize = false;
        bool hasMoved = false;  // the selection must be in sight
        PlainReport::Place selected{-1, -1};
        const auto rowOf = [&](const PlainReport::Place &place) {
            const auto places = plain.places(bySize);
            return static_cast<int>(std::ranges::find(places, place) - places.begin());
        };
        const auto stepBySize = [&](int distance) {
            const std::vector<int> order = plain.order(true);
            const auto last = static_cast<int>(order.size()) - 1;
            int place = distance > 0 ? -1 : last + 1;
            if (selected.first >= 0) {
                place = static_cast<int>(std::ranges::find(order, selected.first) - order.begin());
            }
            hasMoved = place + distance >= 0 && place + distance <= last;
            if (hasMoved) {
                selected = {order[static_cast<std::size_t>(place + distance)], -1};
            }
        };
        for (int step = 0; step < 150; ++step) {
            hasMoved = true;
            switch (random() % 9) {
                case 0:
                    random() % 2 == 0 ? key(Qt::Key_Asterisk) : click("expandAll");
                    plain.setAll(true);
                    break;
                case 1:
                    random() % 2 == 0 ? key(Qt::Key_Slash) : click("collapseAll");
                    plain.setAll(false);
                    selected.second = -1;
                    break;
                case 2:
                    QTest::mouseClick(control<QCheckBox>("largestFirst"), Qt::LeftButton, {},
                                      QPoint(8, control<QCheckBox>("largestFirst")->height() / 2));
                    bySize = !bySize;
                    hasMoved = false;
                    break;
                case 3:
                    key(Qt::Key_Down, Qt::ControlModifier);
                    stepBySize(1);
                    break;
                case 4:
                    key(Qt::Key_Up, Qt::ControlModifier);
                    stepBySize(-1);
                    break;
                case 5:
                    key(Qt::Key_Left);
                    hasMoved = selected.second >= 0;
                    if (selected.second >= 0) {
                        selected.second = -1;
                    } else if (selected.first >= 0) {
                        plain.groups[selected.first].isOpen = false;
                    }
                    break;
                default: {
                    const auto places = plain.places(bySize);
                    const std::size_t row = random() % places.size();
                    clickRow(static_cast<int>(row));
                    selected = places[row];
                    if (selected.second < 0) {
                        PlainReport::Group &group = plain.groups[selected.first];
                        group.isOpen = !group.isOpen;
                    }
                }
            }
            QCOMPARE(rows(), plain.rows(bySize));
            QCOMPARE(this->selected(),
                     selected.first < 0 ? QList<int>() : QList<int>{rowOf(selected)});
            QVERIFY(selected.first < 0 || !hasMoved || isInSight(rowOf(selected)));
        }
    }

    void saysBelowTheTableWhatWasRead() {
        show();
        QCOMPARE(counts()->text(), QString());
        display(0);
        QCOMPARE(counts()->text(), name("0 events · 0 hosts · 0 lines read · 0 skipped"));
        log("x.log", kLog);
        log("y.log", "\r\n1,P,h2," + std::string(1500, 'x') + "\r\n");
        const char *const groups[] = {"2 hosts", "4 messages", "2 priorities", "3 dates"};
        for (int kind = 0; kind < 4; ++kind) {
            if (kind == 2) {
                m_folder->write("y.log", "\r\n1,Kern.Alert,h2," + std::string(1500, 'x') + "\r\n");
            } else if (kind == 3) {
                m_folder->write("y.log", "\r\n1700000001,P,h," + std::string(1500, 'x') + "\r\n");
            }
            display(kind);
            // An empty line is skipped, and so is the rest of one that is too long.
            QCOMPARE(counts()->text(),
                     name("4 events · %1 · 7 lines read · 3 skipped").arg(name(groups[kind])));
        }
        std::filesystem::remove(m_folder->path() / "y.log");
        log("x.log", "1,P,h,m\n");
        const char *const one[] = {"1 host", "1 message", "1 priority", "1 date"};
        for (int kind = 0; kind < 4; ++kind) {
            display(kind);
            QCOMPARE(counts()->text(),
                     name("1 event · %1 · 1 line read · 0 skipped").arg(name(one[kind])));
        }
        m_page->viewWillAppear();
        QCOMPARE(counts()->text(), QString());
    }

    void commandsOnAllGroupsNeedGroups() {
        auto *expand = control<QAbstractButton>("expandAll");
        auto *collapse = control<QAbstractButton>("collapseAll");
        show();
        QVERIFY(!expand->isEnabled() && !collapse->isEnabled());
        QVERIFY(!control<QCheckBox>("largestFirst")->isChecked());
        table()->setFocus();
        key(Qt::Key_Asterisk);
        key(Qt::Key_Slash);
        key(Qt::Key_Down, Qt::ControlModifier);
        key(Qt::Key_Up, Qt::ControlModifier);
        QCOMPARE(rowCount(), 0);
        log("x.log", kLog);
        display(0);
        QVERIFY(expand->isEnabled() && collapse->isEnabled());
        m_page->viewWillAppear();
        QVERIFY(!expand->isEnabled() && !collapse->isEnabled());
    }

    void largestFirstStaysForTheNextReport() {
        log("x.log", "1,P,small,m\n1,P,large,m\n1,P,large,n\n");
        show();
        control<QCheckBox>("largestFirst")->click();
        display(0);
        QCOMPARE(rows(), (QStringList{name("large|||"), name("small|||")}));
        click("reportDisplay");
        QCOMPARE(rows(), (QStringList{name("large|||"), name("small|||")}));
        control<QCheckBox>("largestFirst")->click();
        QCOMPARE(rows(), (QStringList{name("small|||"), name("large|||")}));
    }

    void barsAreAsLongAsTheGroupsAreLarge() {
        std::string lines;
        const int sizes[] = {100, 400, 1, 200};
        for (int group = 0; group < 4; ++group) {
            for (int i = 0; i < sizes[group]; ++i) {
                lines +=
                    "1,P,host" + std::string(static_cast<std::size_t>(group) * 8, 'x') + ",m\n";
            }
        }
        log("x.log", lines);
        display(0);
        const auto [begin, longest] = barOf(1);
        QVERIFY2(longest >= 100, qPrintable(QString::number(longest)));
        for (int group = 0; group < 4; ++group) {
            const auto bar = barOf(group);
            QCOMPARE(bar.first, begin);
            QCOMPARE(bar.second, std::max(longest * sizes[group] / 400, 1));
        }
        // A selected row and an expanded one show it as well, an event does not.
        clickRow(3);
        QCOMPARE(barOf(3), (std::pair{begin, longest / 2}));
        QCOMPARE(barOf(4).second, 0);
        // Nothing of it is in a cell.
        QCOMPARE(rows()[3].count(QLatin1Char('|')), 3);
        QVERIFY(rows()[3].endsWith(name("|||")));
    }

    void longValuesLeaveRoomForTheirSizes_data() {
        QTest::addColumn<int>("width");
        QTest::newRow("wide") << 1000;
        QTest::newRow("narrow") << 560;
    }
    void longValuesLeaveRoomForTheirSizes() {
        QFETCH(const int, width);
        std::string lines;
        for (int i = 0; i < 50; ++i) {
            lines += "1,P,h,a message that is much longer than any table is wide";
            lines += std::string(200, 'x') + std::to_string(i % 2) + "\n";
        }
        log("x.log", lines);
        m_page->resize(width, 600);
        display(1);
        const auto [begin, length] = barOf(0);
        const int all = table()->viewport()->width();
        QVERIFY2(begin > all * 60 / 100 && begin < all * 70 / 100,
                 qPrintable(QStringLiteral("%1 of %2").arg(begin).arg(all)));
        QVERIFY(length > 20 && begin + length < all);
    }

    void aMirroredTableHasNamesAtItsRightAndBarsBeginThere() {
        log("x.log", kLog);
        m_page->setLayoutDirection(Qt::RightToLeft);
        display(0);
        const auto large = barOf(0);
        const auto small = barOf(1);
        QCOMPARE(small.second, large.second / 2);
        QCOMPARE(small.first + small.second, large.first + large.second);
        QVERIFY(large.first > table()->viewport()->width() / 3);
        // The value, with its marker, is behind it, also where the columns are wider than the
        // table.
        for (const int width : {200, 1500}) {
            table()->setColumnWidth(1, width);
            table()->scrollTo(table()->model()->index(0, 0));
            const QRect line = table()->visualRect(table()->model()->index(0, 0));
            QVERIFY(table()->viewport()->rect().contains(line));
            const QImage image = table()->viewport()->grab(line).toImage();
            int dark = 0;
            for (int x = image.width() - 60; x < image.width(); ++x) {
                for (int y = 0; y < image.height(); ++y) {
                    dark += qGray(image.pixel(x, y)) < 120 ? 1 : 0;
                }
            }
            QVERIFY2(dark > 20, qPrintable(QString::number(dark)));
        }
    }

    void aGroupIsReadAloudWithItsSizeAndShare() {
        std::string lines = "1,P,small,m\n1,P,%2 %3,m\n1,P,%2 %3,m\n";
        for (int i = 0; i < 1997; ++i) {
            lines += "1,P,large,m\n";
        }
        log("x.log", lines);
        display(0);
        const auto spoken = [this](int row) {
            return table()->model()->index(row, 0).data(Qt::AccessibleTextRole).toString();
        };
        QCOMPARE(spoken(0), name("small, collapsed, 1 event, < 1 %"));
        QCOMPARE(spoken(1), name("%2 %3, collapsed, 2 events, < 1 %"));
        QCOMPARE(spoken(2), name("large, collapsed, 1,997 events, > 99 %"));
        clickRow(0);
        QCOMPARE(spoken(0), name("small, expanded, 1 event, < 1 %"));
        QCOMPARE(spoken(1), name(""));
    }

    void aDoubleClickOrReturnOpensAnEvent() {
        log("x.log", kLog);
        display(0);
        clickRow(0);
        clickRow(2, Qt::NoModifier, 3);
        QVERIFY(sheet().isNull());
        QTest::mouseDClick(table()->viewport(), Qt::LeftButton, {}, placeOf(2));
        QPointer<EventSheetStandIn> opened = sheet();
        QVERIFY(!opened.isNull());
        QVERIFY(!opened->hideButtons);
        QCOMPARE(opened->field("Date"), name("2023-11-14 22:13:22"));
        QCOMPARE(opened->field("Priority"), name("Local7.Error"));
        QCOMPARE(opened->field("Host"), name("h1"));
        QCOMPARE(opened->field("Message"), name("three"));
        QCOMPARE(rowCount(), 4);
        QCOMPARE(selected(), QList<int>{2});
        opened->close();
        QTRY_VERIFY(opened.isNull());

        key(Qt::Key_Up);
        key(Qt::Key_Space);
        QVERIFY(sheet().isNull());
        key(Qt::Key_Return);
        opened = sheet();
        QVERIFY(!opened.isNull());
        QCOMPARE(opened->field("Message"), name("one"));
        // It may be open when the report goes, and the page after it.
        m_page->viewWillAppear();
        QCOMPARE(opened->field("Host"), name("h1"));
    }

    void theDetailsStepThroughTheEventsThatAreShown() {
        log("x.log", std::string(kLog) + "1700000009,Kern.Alert,h3,last\n");
        display(0);
        clickRow(2);
        clickRow(0);  // h1 with two events, h2 closed, h3 with one
        clickRow(2, Qt::NoModifier, 3);
        key(Qt::Key_Return);
        const QPointer<EventSheetStandIn> opened = sheet();
        QVERIFY(!opened.isNull());
        QCOMPARE(opened->field("Message"), name("three"));
        const std::shared_ptr<EventSteps> steps = opened->steps;
        QVERIFY(steps->canStep(-1) && steps->canStep(1));
        opened->dict = steps->step(1);
        QCOMPARE(opened->field("Message"), name("last"));
        QCOMPARE(selected(), QList<int>{5});
        QVERIFY(!steps->canStep(1));
        opened->dict = steps->step(-1);
        QCOMPARE(opened->field("Message"), name("three"));
        opened->dict = steps->step(-1);
        QCOMPARE(opened->field("Message"), name("one"));
        QCOMPARE(selected(), QList<int>{1});
        QVERIFY(!steps->canStep(-1));
        QVERIFY(steps->canStep(1));
        // There is nowhere to go once the report is another one, or gone.
        m_page->viewWillAppear();
        QVERIFY(!steps->canStep(1));
        opened->close();
        QTRY_VERIFY(opened.isNull());
        display(0);
        clickRow(0);
        clickRow(1, Qt::NoModifier, 3);
        QVERIFY(!steps->canStep(1));
        m_page.reset();
        QVERIFY(!steps->canStep(1));
    }

    void steppingScrollsToTheEvent() {
        std::string lines;
        for (int i = 0; i < 100 * 3; ++i) {
            lines += "1,P,host" + std::to_string(i % 100) + "," + std::to_string(i) + "\n";
        }
        log("x.log", lines);
        display(0);
        click("expandAll");
        clickRow(3, Qt::NoModifier, 3);
        key(Qt::Key_Return);
        const QPointer<EventSheetStandIn> opened = sheet();
        QVERIFY(!opened.isNull());
        for (int i = 0; i < 40; ++i) {
            opened->dict = opened->steps->step(1);
            QVERIFY(isInSight(selected().first()));
        }
        QCOMPARE(opened->field("Host"), name("host14"));
    }

    void quickClicksOnAGroupOpenNoEvent() {
        std::string lines;
        for (int i = 0; i < 50 * 20; ++i) {
            lines += "1,P,host" + std::to_string(i % 50) + "," + std::to_string(i) + "\n";
        }
        log("x.log", lines);
        display(0);
        int last = 0;
        while (isInSight(last + 1)) {
            ++last;
        }
        // The first click scrolls, and there is an event where the group was.
        const QPoint place = placeOf(last);
        QTest::mouseClick(table()->viewport(), Qt::LeftButton, {}, place);
        QCOMPARE(rowCount(), 70);
        QVERIFY(table()->indexAt(place).row() > last);
        QTest::mouseDClick(table()->viewport(), Qt::LeftButton, {}, placeOf(last));
        QVERIFY(sheet().isNull());
        QMouseEvent press(QEvent::MouseButtonPress, placeOf(last),
                          table()->viewport()->mapToGlobal(placeOf(last)), Qt::LeftButton,
                          Qt::LeftButton, {});
        QApplication::sendEvent(table()->viewport(), &press);
        const QPoint detail = placeOf(last + 1);
        QMouseEvent twice(QEvent::MouseButtonDblClick, detail,
                          table()->viewport()->mapToGlobal(detail), Qt::LeftButton, Qt::LeftButton,
                          {});
        QApplication::sendEvent(table()->viewport(), &twice);
        QVERIFY(sheet().isNull());
    }

    void aGroupOpenedOutOfSightComesIntoSight() {
        std::string lines;
        for (int i = 0; i < 100 * 3; ++i) {
            lines += "1,P,host" + std::to_string(i % 100) + "," + std::to_string(i) + "\n";
        }
        log("x.log", lines);
        display(0);
        for (const auto &[row, scrolled] : {std::pair{1, 60}, std::pair{90, 0}}) {
            table()->selectRow(row);
            table()->verticalScrollBar()->setValue(scrolled);
            QVERIFY(!isInSight(row));
            key(Qt::Key_Space);
            QVERIFY(isInSight(row) && isInSight(row + 1));
            table()->verticalScrollBar()->setValue(scrolled);
            key(Qt::Key_Space);
            QVERIFY(isInSight(row));
            QCOMPARE(rowCount(), 100);
        }
    }

    void whatIsSelectedStaysWhereItWas() {
        std::string lines;
        for (int i = 0; i < 100 * 3; ++i) {
            lines += "1,P,host" + std::to_string(i % 100) + "," + std::to_string(i) + "\n";
        }
        log("x.log", lines);
        display(0);
        clickRow(50);
        clickRow(52);  // an event of it
        const QPoint before = placeOf(52);
        click("expandAll");
        QCOMPARE(selected(), QList<int>{202});
        QCOMPARE(placeOf(202), before);
        click("collapseAll");
        QCOMPARE(selected(), QList<int>{50});
        QCOMPARE(placeOf(50), before);
        // Without a selection it is the row at the top.
        table()->clearSelection();
        table()->verticalScrollBar()->setValue(30);
        click("expandAll");
        QCOMPARE(table()->verticalScrollBar()->value(), 120);
        QVERIFY(selected().isEmpty());
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::ReportsViewGroupsTest)
#include "ReportsViewGroupsTest.moc"
