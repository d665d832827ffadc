#include "platform/gui/TableExport.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <QFile>
#include <QStandardItemModel>
#include <QTest>
#include <QTimer>

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <memory>

namespace {

/// The disk takes its time until this is true.
std::atomic<bool> isDiskReady = true;
std::atomic<bool> wasDiskTooSlow = false;

}  // namespace

/// In place of the C library's.
extern "C" int fdatasync(int descriptor) {
    if (!quorbel::testing::waitUntil([] { return isDiskReady.load(); }, std::chrono::seconds(5))) {
        wasDiskTooSlow = true;
    }
    return static_cast<int>(syscall(SYS_fdatasync, descriptor));
}

namespace quorbel {

class TableExportTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_folder = std::make_unique<testing::TemporaryFolder>();
        m_model = std::make_unique<QStandardItemModel>();
        m_model->setHorizontalHeaderLabels({QStringLiteral("A"), QStringLiteral("B")});
    }

    void theExtensionChoosesTheSeparator_data() {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QByteArray>("written");
        QTest::newRow("txt") << "a.txt" << QByteArray("A\tB\n1\t2\n");
        QTest::newRow("csv") << "a.csv" << QByteArray("A,B\n1,2\n");
        QTest::newRow("the last one") << "a.csv.txt" << QByteArray("A\tB\n1\t2\n");
        QTest::newRow("capitals are not the same") << "a.CSV" << QByteArray("A\tB\n1\t2\n");
    }
    void theExtensionChoosesTheSeparator() {
        QFETCH(QString, file);
        QFETCH(QByteArray, written);
        addRow("1", "2");
        QVERIFY(exportTable(path(file), *m_model, allRows(), nullptr));
        QCOMPARE(bytesOf(path(file)), written);
    }

    void rowsThatAreGoneAreLeftOut() {
        addRow("1", "2");
        const ExportRows rows{3, [this](std::size_t number) {
                                  return number == 1 ? m_model->index(0, 0) : QModelIndex();
                              }};
        QVERIFY(exportTable(path(QStringLiteral("a.txt")), *m_model, rows, nullptr));
        QCOMPARE(bytesOf(path(QStringLiteral("a.txt"))), QByteArray("A\tB\n1\t2\n"));
    }

    void rowsThatAreAllGoneLeaveTheOlderFileAlone() {
        m_folder->write("a.txt", "kept");
        addRow("1", "2");
        addRow("3", "4");
        ExportRows rows = allRows();
        int asked = 0;
        rows.areStillThere = [&asked] { return ++asked < 2; };
        QVERIFY(!exportTable(path(QStringLiteral("a.txt")), *m_model, rows, nullptr));
        QCOMPARE(asked, 2);
        QCOMPARE(bytesOf(path(QStringLiteral("a.txt"))), QByteArray("kept"));
        const std::filesystem::directory_iterator files(m_folder->path());
        QCOMPARE(std::distance(begin(files), end(files)), 1);
        rows.areStillThere = [] { return true; };
        QVERIFY(exportTable(path(QStringLiteral("a.txt")), *m_model, rows, nullptr));
        QCOMPARE(bytesOf(path(QStringLiteral("a.txt"))), QByteArray("A\tB\n1\t2\n3\t4\n"));
    }

    void othersGoOnWhileTheDiskIsSlow() {
        addRow("1", "2");
        isDiskReady = false;
        QTimer::singleShot(0, this, [] { isDiskReady = true; });
        QVERIFY(exportTable(path(QStringLiteral("a.txt")), *m_model, allRows(), nullptr));
        QVERIFY(isDiskReady);
        QVERIFY(!wasDiskTooSlow);
        QCOMPARE(bytesOf(path(QStringLiteral("a.txt"))), QByteArray("A\tB\n1\t2\n"));
    }

    void replacesAnOlderFile() {
        m_folder->write("a.txt", "much longer than what comes");
        QVERIFY(exportTable(path(QStringLiteral("a.txt")), *m_model, {}, nullptr));
        QCOMPARE(bytesOf(path(QStringLiteral("a.txt"))), QByteArray("A\tB\n"));
    }

    void aWriteThatFailsLeavesTheOlderFileAlone() {
        m_folder->write("a.txt", "kept");
        for (int i = 0; i < 100; ++i) {
            addRow("1", QByteArray(1000, 'x'));
        }
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit before{};
        QCOMPARE(::getrlimit(RLIMIT_FSIZE, &before), 0);
        const rlimit small{4096, before.rlim_max};
        QCOMPARE(::setrlimit(RLIMIT_FSIZE, &small), 0);
        const bool written =
            exportTable(path(QStringLiteral("a.txt")), *m_model, allRows(), nullptr);
        QCOMPARE(::setrlimit(RLIMIT_FSIZE, &before), 0);
        QVERIFY(!written);
        QCOMPARE(bytesOf(path(QStringLiteral("a.txt"))), QByteArray("kept"));
        const std::filesystem::directory_iterator files(m_folder->path());
        QCOMPARE(std::distance(begin(files), end(files)), 1);
    }

private:
    QString path(const QString &file) {
        return QString::fromStdString(m_folder->path().string()) + u'/' + file;
    }
    static QByteArray bytesOf(const QString &path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no such file");
    }
    void addRow(const QByteArray &first, const QByteArray &second) {
        m_model->appendRow({new QStandardItem(QString::fromUtf8(first)),
                            new QStandardItem(QString::fromUtf8(second))});
    }
    ExportRows allRows() {
        return {static_cast<std::size_t>(m_model->rowCount()),
                [this](std::size_t number) { return m_model->index(static_cast<int>(number), 0); }};
    }

    std::unique_ptr<testing::TemporaryFolder> m_folder;
    std::unique_ptr<QStandardItemModel> m_model;
};

}  // namespace quorbel

QTEST_MAIN(quorbel::TableExportTest)
#include "TableExportTest.moc"
