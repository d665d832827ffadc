#include "platform/gui/Appearance.h"
#include "platform/gui/RowTableView.h"

#include <QHeaderView>
#include <QHelpEvent>
#include <QImage>
#include <QScrollBar>
#include <QStandardItemModel>
#include <QStyleOptionViewItem>
#include <QTest>
#include <QToolTip>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <memory>

namespace quorbel {

class RowTableViewTest : public QObject {
    Q_OBJECT

private:
    /// Lets the state of the cell's style option be seen.
    class SeenDelegate : public RowDelegate {
    public:
        using RowDelegate::initStyleOption;
        using RowDelegate::RowDelegate;
    };

    void addRow(const QString &first, const QString &second) {
        m_model->appendRow({new QStandardItem(first), new QStandardItem(second)});
    }
    void show() {
        m_view->show();
        m_view->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_view.get()));
    }
    QRect cell(int row, int column) { return m_view->visualRect(m_model->index(row, column)); }
    // The tool tip after the pointer rested on a cell.
    QString toolTipAt(int row, int column) {
        const QPoint point = cell(row, column).center();
        QHelpEvent event(QEvent::ToolTip, point, m_view->viewport()->mapToGlobal(point));
        QApplication::sendEvent(m_view->viewport(), &event);
        return QToolTip::isVisible() ? QToolTip::text() : QString();
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(m_view.get(), key, modifiers);
    }
    void addRows(int count) {
        for (int row = 0; row < count; ++row) {
            addRow(QStringLiteral("row %1").arg(row), QStringLiteral("text"));
        }
    }
    QList<int> selected() {
        QList<int> rows;
        for (const QModelIndex &index : m_view->selectionModel()->selectedRows()) {
            rows += index.row();
        }
        std::ranges::sort(rows);
        return rows;
    }
    bool isInSight(int row) { return m_view->viewport()->rect().contains(cell(row, 0).center()); }
    // As the guidelines for accessible contents define it, 0 for black to 1 for white.
    static double luminance(const QColor &colour) {
        const auto part = [](double value) {
            return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * part(colour.redF()) + 0.7152 * part(colour.greenF()) +
               0.0722 * part(colour.blueF());
    }
    QImage picture() { return m_view->viewport()->grab().toImage(); }

private Q_SLOTS:
    void init() {
        m_model = std::make_unique<QStandardItemModel>(0, 2);
        m_view = std::make_unique<RowTableView>();
        m_view->setModel(m_model.get());
        m_view->resize(500, 300);
        m_view->setColumnWidth(0, 150);
        m_view->setColumnWidth(1, 150);
    }
    void cleanup() {
        QToolTip::hideText();
        m_view.reset();
        m_model.reset();
    }

    void onlyACutTextHasAToolTip() {
        const QString longText = QStringLiteral("a text far too long for so narrow a column");
        addRow(QStringLiteral("short"), longText);
        addRow(QString(), QStringLiteral("short"));
        show();
        QCOMPARE(toolTipAt(0, 0), QString());
        QVERIFY(toolTipAt(0, 1).contains(longText));
        // The one that stood there goes at a cell that shows all of its text.
        toolTipAt(1, 1);
        QTRY_VERIFY(!QToolTip::isVisible());
        QCOMPARE(toolTipAt(1, 0), QString());
        // Now that it fits, it needs none.
        m_view->setColumnWidth(1, 490);
        QCOMPARE(toolTipAt(0, 1), QString());
    }

    void aToolTipShowsMarkupAsItStands() {
        addRow(
            QStringLiteral("<b>a</b> &amp; <img src='file:///etc/passwd'>  two blanks, and more"),
            QString());
        show();
        const QString tip = toolTipAt(0, 0);
        QVERIFY2(tip.contains(QStringLiteral("&lt;b&gt;a&lt;/b&gt; &amp;amp; &lt;img")),
                 qPrintable(tip));
        QVERIFY(!tip.contains(QStringLiteral("<b>")) && !tip.contains(QStringLiteral("<img")));
        QVERIFY(tip.contains(QStringLiteral("pre-wrap")));
    }

    void aToolTipHasALimit() {
        addRow(QString(100'000, u'x'), QString());
        show();
        QCOMPARE(toolTipAt(0, 0).count(u'x'), 2000);
    }

    void aTextIsPaintedInOneRowOfLimitedLength() {
        const QString spoofed = QString::fromUtf8("user \u202Etoor\u202C\u2028\nlogged in");
        addRow(spoofed, QString(1'000'000, u'x'));
        QStyleOptionViewItem option;
        SeenDelegate().initStyleOption(&option, m_model->index(0, 0));
        QCOMPARE(option.text, QStringLiteral("user <U+202E>toor<U+202C><U+2028><U+000A>logged in"));
        SeenDelegate().initStyleOption(&option, m_model->index(0, 1));
        QVERIFY(option.text.size() < 1100);
        // In a tool tip, lines stay lines.
        m_view->setColumnWidth(0, 60);
        show();
        QVERIFY(toolTipAt(0, 0).contains(
            QStringLiteral("user &lt;U+202E&gt;toor&lt;U+202C&gt;&lt;U+2028&gt;\nlogged in")));
        QCOMPARE(m_model->index(0, 0).data().toString(), spoofed);
    }

    void noSingleCellIsFramed() {
        addRow(QStringLiteral("one"), QStringLiteral("two"));
        QStyleOptionViewItem option;
        option.state = QStyle::State_HasFocus | QStyle::State_Selected;
        SeenDelegate().initStyleOption(&option, m_model->index(0, 0));
        QVERIFY(!option.state.testFlag(QStyle::State_HasFocus));
        QVERIFY(option.state.testFlag(QStyle::State_Selected));

        // On the screen, the current cell of a selected row looks the same as when it is not.
        show();
        m_view->setFocus();
        QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, cell(0, 0).center());
        QVERIFY(m_view->selectionModel()->isRowSelected(0));
        const QImage first = picture();
        m_view->selectionModel()->setCurrentIndex(m_model->index(0, 1),
                                                  QItemSelectionModel::NoUpdate);
        QCOMPARE(picture(), first);
    }

    void imagesKeepTheirColoursInSelectedRows() {
        QPixmap red(16, 16);
        red.fill(Qt::red);
        addRow(QString(), QString());
        m_model->item(0, 0)->setIcon(QIcon(red));
        show();
        const auto redPixels = [this] {
            const QImage image = picture();
            int count = 0;
            for (int y = 0; y < RowTableView::kRowHeight; ++y) {
                for (int x = 0; x < 150; ++x) {
                    count += image.pixelColor(x, y) == QColor(Qt::red) ? 1 : 0;
                }
            }
            return count;
        };
        const int before = redPixels();
        QVERIFY(before >= 16 * 16);
        m_view->selectRow(0);
        QCOMPARE(redPixels(), before);
    }

    void theArrowKeysBeginAtTheFirstRow() {
        addRows(3);
        show();
        m_view->setFocus(Qt::TabFocusReason);
        QVERIFY(selected().isEmpty());
        // More may come on top meanwhile.
        m_model->insertRow(0, {new QStandardItem(QStringLiteral("new")), new QStandardItem()});
        press(Qt::Key_Down);
        QCOMPARE(selected(), QList<int>{0});
        press(Qt::Key_Down);
        QCOMPARE(selected(), QList<int>{1});
        press(Qt::Key_Up);
        QCOMPARE(selected(), QList<int>{0});
        m_view->selectionModel()->clear();
        press(Qt::Key_Space);
        QCOMPARE(selected(), QList<int>{0});
    }

    void theOnlyRowIsReachedByEveryKeyThatMoves() {
        addRows(1);
        show();
        m_view->setFocus(Qt::TabFocusReason);
        for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Up, Qt::Key_Home, Qt::Key_End,
                                  Qt::Key_PageDown, Qt::Key_PageUp}) {
            press(key);
            QCOMPARE(selected(), QList<int>{0});
            m_view->clearSelection();
            press(key);
            QCOMPARE(selected(), QList<int>{0});
            m_view->selectionModel()->clear();
        }
    }

    void theArrowKeysGoOnWhereTheSelectionWas() {
        addRows(10);
        show();
        m_view->setFocus();
        for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Up}) {
            QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, cell(5, 0).center());
            m_view->clearSelection();
            press(key);
            QCOMPARE(selected(), QList<int>{5});
        }
        m_view->selectionModel()->setCurrentIndex({}, QItemSelectionModel::NoUpdate);
        press(Qt::Key_Down);
        QCOMPARE(selected(), QList<int>{6});
        m_view->selectRow(5);
        m_view->clearSelection();
        press(Qt::Key_Down, Qt::ShiftModifier);
        QCOMPARE(selected(), (QList<int>{5, 6}));
        press(Qt::Key_Down, Qt::ShiftModifier);
        QCOMPARE(selected(), (QList<int>{5, 6, 7}));
    }

    void homeAndEndGoToTheFirstAndTheLastRow_data() {
        QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
        QTest::newRow("alone") << Qt::KeyboardModifiers(Qt::NoModifier);
        QTest::newRow("with Ctrl") << Qt::KeyboardModifiers(Qt::ControlModifier);
    }
    void homeAndEndGoToTheFirstAndTheLastRow() {
        QFETCH(const Qt::KeyboardModifiers, modifiers);
        addRows(100);
        m_view->setColumnWidth(0, 800);
        show();
        m_view->setFocus();
        press(Qt::Key_End, modifiers);
        QCOMPARE(selected(), QList<int>{99});
        QVERIFY(isInSight(99));
        press(Qt::Key_Home, modifiers);
        QCOMPARE(selected(), QList<int>{0});
        QVERIFY(isInSight(0));
        // Nothing moves sideways.
        QCOMPARE(m_view->horizontalScrollBar()->value(), 0);
        press(Qt::Key_End, modifiers);
        QCOMPARE(m_view->horizontalScrollBar()->value(), 0);
        // Shift takes what lies in between along.
        QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, cell(95, 0).center());
        press(Qt::Key_End, modifiers | Qt::ShiftModifier);
        QCOMPARE(selected(), (QList<int>{95, 96, 97, 98, 99}));
        press(Qt::Key_Home, modifiers | Qt::ShiftModifier);
        QCOMPARE(selected().size(), 96);
        QCOMPARE(selected().first(), 0);
    }

    void homeAndEndDoNothingInAnEmptyTable() {
        show();
        m_view->setFocus();
        press(Qt::Key_End);
        press(Qt::Key_Home);
        QVERIFY(selected().isEmpty());
        QVERIFY(!m_view->currentIndex().isValid());
    }

    void typingFindsARowUnlessThereAreTooMany() {
        addRows(RowTableView::kMostSearchedRows + 1);
        show();
        m_view->setFocus();
        m_view->selectRow(0);
        QTest::keyClicks(m_view.get(), QStringLiteral("row 19"));
        QCOMPARE(selected(), QList<int>{0});
        m_model->removeRow(RowTableView::kMostSearchedRows);
        QTest::keyClicks(m_view.get(), QStringLiteral("row 19"));
        QCOMPARE(selected(), QList<int>{19});
    }

    void keysHeldDownDoNotChangeWhatTheProgramSelects() {
        addRows(5);
        show();
        m_view->selectRow(1);
        QTest::keyPress(m_view->windowHandle(), Qt::Key_Shift, Qt::ShiftModifier);
        m_view->selectRow(3);
        QTest::keyRelease(m_view->windowHandle(), Qt::Key_Shift);
        QCOMPARE(selected(), QList<int>{3});
    }

    void theHintShowsOnlyWhileTheTableIsEmpty() {
        show();
        const QImage blank = picture();
        m_view->setHint(QStringLiteral("Nothing here"));
        QCOMPARE(m_view->hint(), QStringLiteral("Nothing here"));
        QVERIFY(picture() != blank);
        addRow(QStringLiteral("one"), QStringLiteral("two"));
        const QImage withHint = picture();
        m_view->setHint({});
        QCOMPARE(picture(), withHint);
        m_model->removeRows(0, 1);
        QCOMPARE(picture(), blank);
        m_view->setHint(QStringLiteral("Nothing here"));
        QVERIFY(picture() != blank);
        // Without a model it is only a frame.
        m_view->setModel(nullptr);
        m_view->grab();
    }

    void theHintCanBeReadEasily() {
        applyAppearance(*qApp);
        m_view = std::make_unique<RowTableView>();
        m_view->setModel(m_model.get());
        m_view->resize(500, 300);
        show();
        m_view->setHint(QStringLiteral("\u2588\u2588\u2588\u2588"));  // solid blocks of the colour
        const QImage image = picture();
        double darkest = 1;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                darkest = std::min(darkest, luminance(image.pixelColor(x, y)));
            }
        }
        const double contrast = (luminance(image.pixelColor(0, 0)) + 0.05) / (darkest + 0.05);
        QVERIFY2(contrast >= 4.5, QByteArray::number(contrast).constData());
    }

    void isAsHighAsTheRowsItIsToShow() {
        m_view->setShownRows(4);
        QWidget window;
        auto *layout = new QVBoxLayout(&window);
        layout->addWidget(m_view.get());
        layout->addStretch(1);
        window.resize(500, 600);
        window.show();
        QCOMPARE(m_view->viewport()->height(), 4 * m_view->verticalHeader()->defaultSectionSize());
        window.resize(500, 60);
        QCoreApplication::processEvents();
        QCOMPARE(m_view->viewport()->height(), 4 * m_view->verticalHeader()->defaultSectionSize());
        m_view->setParent(nullptr);
    }

    void rowsAreSelectedAsAWholeAndNothingIsEdited() {
        addRow(QStringLiteral("one"), QStringLiteral("two"));
        show();
        QCOMPARE(m_view->rowHeight(0), RowTableView::kRowHeight);
        QVERIFY(m_view->verticalHeader()->isHidden());
        QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, cell(0, 1).center());
        QCOMPARE(m_view->selectionModel()->selectedRows().size(), 1);
        QTest::mouseDClick(m_view->viewport(), Qt::LeftButton, {}, cell(0, 1).center());
        QTest::keyClick(m_view.get(), Qt::Key_F2);
        QTest::keyClick(m_view.get(), Qt::Key_X);
        QVERIFY(!m_view->isPersistentEditorOpen(m_model->index(0, 1)));
        QVERIFY(m_view->viewport()->findChildren<QWidget *>().isEmpty());
        QCOMPARE(m_model->index(0, 1).data().toString(), QStringLiteral("two"));
    }

private:
    std::unique_ptr<QStandardItemModel> m_model;
    std::unique_ptr<RowTableView> m_view;
};

}  // namespace quorbel

QTEST_MAIN(quorbel::RowTableViewTest)
#include "RowTableViewTest.moc"
