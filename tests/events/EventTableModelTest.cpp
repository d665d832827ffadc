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

    void assistiveToolsAreToldWhatIsPainted() {
        EventList list;
        const EventTableModel model(list);
        const std::string spoofed = "\uFEFFuser \u202Etoor\u202C";
        list.insertRaw(fields(spoofed));
        list.insertRaw(fields(std::string(1'000'000, 'x')));
        const auto accessible = [&model](int row) {
            return model.index(row, EventTableModel::kMessage)
                .data(Qt::AccessibleTextRole)
                .toString();
        };
        QCOMPARE(textAt(model, 1, EventTableModel::kMessage).toStdString(), spoofed);
        QCOMPARE(accessible(1), QStringLiteral("<U+FEFF>user <U+202E>toor<U+202C>"));
        QCOMPARE(textAt(model, 0, EventTableModel::kMessage).size(), 1'000'000);
        QVERIFY(accessible(0).startsWith(u'x') && accessible(0).size() < 1100);
        QCOMPARE(model.index(0, EventTableModel::kHost).data(Qt::AccessibleTextRole).toString(),
                 QStringLiteral("10.0.0.5"));
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
#include "core/AppState.h"
