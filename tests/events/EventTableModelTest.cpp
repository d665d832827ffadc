#include "events/EventTableModel.h"

#include <QAbstractItemModelTester>
#include <QTest>

namespace quorbel {

class EventTableModelTest : public QObject {
    Q_OBJECT

private:
    static EventFields fields(std::string_view message) {
        return {"1700000000", "Local7.Error", "10.0.0.5", message, {}};
    }
    static QString textAt(const EventTableModel &model, int row, int column) {
        return model.index(row, column).data().toString();
    }

private Q_SLOTS:
    void hasTheColumnsInOrder() {
        EventList list;
        const EventTableModel model(list);
        QStringList titles;
        for (int column = 0; column < model.columnCount(); ++column) {
            titles += model.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
        }
        QCOMPARE(titles, (QStringList{QStringLiteral("Rating"), QStringLiteral("Date"),
                                      QStringLiteral("Priority"), QStringLiteral("Host"),
                                      QStringLiteral("Message")}));
    }

    void showsTheFieldsAndTheImageWithItsName() {
        EventList list;
        const EventTableModel model(list);
        AppState state;
        state.iSeverityError = kSevere;
        list.insertShown(fields("disk full, retrying"), state);
        QCOMPARE(textAt(model, 0, EventTableModel::kRating), QStringLiteral("Severe"));
        QCOMPARE(textAt(model, 0, EventTableModel::kDate), QStringLiteral("2023-11-14 22:13:20"));
        QCOMPARE(textAt(model, 0, EventTableModel::kPriority), QStringLiteral("Local7.Error"));
        QCOMPARE(textAt(model, 0, EventTableModel::kHost), QStringLiteral("10.0.0.5"));
        QCOMPARE(textAt(model, 0, EventTableModel::kMessage),
                 QStringLiteral("disk full, retrying"));
        const auto icon =
            model.index(0, EventTableModel::kRating).data(Qt::DecorationRole).value<QIcon>();
        QVERIFY(!icon.isNull());
        list.insertRaw({});
        QCOMPARE(textAt(model, 0, EventTableModel::kRating), QString());
        QCOMPARE(textAt(model, 0, EventTableModel::kMessage), QString());
        QVERIFY(!model.index(0, EventTableModel::kRating).data(Qt::DecorationRole).isValid());
    }

    void announcesEveryKindOfChange() {
        EventList list;
        EventTableModel model(list);
        const QAbstractItemModelTester tester(
            &model, QAbstractItemModelTester::FailureReportingMode::Fatal);
        for (int i = 0; i < 200; ++i) {
            list.insertRaw(fields("m"));
        }
        list.show(AppState());
        model.refreshAll();
        list.insertShown(fields("n"), AppState());
        list.removeRows({{0, 3}, {100, 1}});
        std::vector<RowRange> scattered;
        for (std::size_t row = 0; row < list.size(); row += 3) {
            scattered.push_back({row, 1});
        }
        list.removeRows(scattered);
        list.beginBulkInsert();
        list.insertRaw(fields("o"));
        list.endBulkInsert();
        QCOMPARE(model.rowCount(), static_cast<int>(list.size()));
        list.removeRows({{0, list.size()}});
        QCOMPARE(model.rowCount(), 0);
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::EventTableModelTest)
#include "EventTableModelTest.moc"
