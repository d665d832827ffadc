// Reports over two million lines: each grouping, how the cost grows, a large group expanded, and a
// long report printed.

#include "Measure.h"
#include "SampleLog.h"
#include "core/AppDelegate.h"
#include "platform/gui/Storyboard.h"
#include "reports/ReportEngine.h"
#include "reports/ReportPrinter.h"
#include "reports/ReportTableModel.h"
#include "reports/ReportsView.h"

#include <QApplication>
#include <QComboBox>
#include <QPdfWriter>
#include <QPushButton>
#include <QTableView>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

namespace quorbel::bench {
namespace {

constexpr const char *kFormat = "yyyy-MM-dd HH:mm:ss";
constexpr const char *kDayFirst = "dd.MM.yyyy HH:mm:ss";  // texts that do not sort as time goes by
constexpr std::array kKinds = {"host", "message", "priority", "date"};

double readingSeconds(const std::filesystem::path &file, std::size_t kind,
                      const char *format = kFormat) {
    const Stopwatch watch;
    ReportEngine report(static_cast<ReportKind>(kind), format);
    report.read({file});
    return watch.seconds();
}

double readingMemory(const std::filesystem::path &file, std::size_t kind) {
    const auto before = static_cast<double>(residentBytes());
    ReportEngine report(static_cast<ReportKind>(kind), kFormat);
    report.read({file});
    return (static_cast<double>(residentBytes()) - before) /
           static_cast<double>(std::filesystem::file_size(file));
}

struct Times {
    double report = 1e9;
    double tenth = 1e9;  // over a tenth of the lines
    double awk = 1e9;
};

/// The best of a few rounds, in which all take turns.
Times timesOf(const std::filesystem::path &file, const std::filesystem::path &tenth,
              std::size_t kind, const char *format = kFormat) {
    const std::string awk = "awk -F, '{c[$3]++}' '" + file.string() + "'";
    Times best;
    for (int i = 0; i < 5; ++i) {
        best.awk = std::min(best.awk, secondsOf(awk));
        best.report = std::min(best.report, readingSeconds(file, kind, format));
        best.tenth = std::min(best.tenth, readingSeconds(tenth, kind, format));
    }
    return best;
}

bool benchReading(const std::filesystem::path &folder) {
    constexpr std::uint64_t kLines = 2'000'000;
    constexpr double kOneDay = 0.04;
    constexpr double kOneYear = 15.7;  // every line has a date of its own
    const auto file = folder / "sample.log";
    const auto tenth = folder / "tenth.log";
    writeSampleLog(file, kLines, kOneDay);
    writeSampleLog(tenth, kLines / 10, kOneDay);
    bool reached = true;
    for (std::size_t kind = 0; kind < kKinds.size(); ++kind) {
        const std::string what = std::string("2 million lines by ") + kKinds[kind];
        const double memory = readingMemory(file, kind);
        const Times times = timesOf(file, tenth, kind);
        std::printf("awk %.3f s, report %.3f s, %.2f bytes in memory for each of the file\n",
                    times.awk, times.report, memory);
        reached &= report(what + ", times awk", times.report / times.awk, "of awk", true, 1.5);
        reached &= report(what + ", a line's cost beside a tenth of them",
                          times.report / 10 / times.tenth, "of that", true, 2);
    }
    writeSampleLog(file, kLines, kOneYear);
    constexpr auto kDate = static_cast<std::size_t>(ReportKind::kDate);
    for (const char *format : {kFormat, kDayFirst}) {
        const Times times = timesOf(file, tenth, kDate, format);
        reached &= report(std::string("2 million different dates, ") + format + ", times awk",
                          times.report / times.awk, "of awk", true, 1.5);
    }
    std::filesystem::remove(file);
    std::filesystem::remove(tenth);
    return reached;
}

/// A million lines: 900,000 messages, and one in the middle of them that came 100,000 times.
void writeUnevenLog(const std::filesystem::path &file) {
    std::ofstream out(file, std::ios::binary);
    for (int i = 0; i < 900'000; ++i) {
        out << 1767225600 + i << ",Local7.Error,10.0.0.5,message number " << i << "\r\n";
        if (i == 450'000) {
            for (int again = 0; again < 100'000; ++again) {
                out << 1767225600 + i << ",Local7.Error,10.0.0.5,the same again and again\r\n";
            }
        }
    }
}

bool benchExpanding(const std::filesystem::path &folder) {
    writeUnevenLog(folder / "uneven.log");
    AppDelegate delegate;
    const Storyboard storyboard;
    ReportsView page(delegate, storyboard);
    page.viewDidLoad();
    page.resize(1200, 800);
    page.show();
    QApplication::processEvents();
    page.findChild<QComboBox *>(QStringLiteral("reportName"))
        ->setCurrentIndex(static_cast<int>(ReportKind::kMessage));
    page.displayReport();
    auto *table = page.findChild<QTableView *>(QStringLiteral("tableView"));
    constexpr int kLarge = 450'001;
    table->scrollTo(table->model()->index(kLarge, 0));
    table->selectRow(kLarge);
    page.grab();
    bool reached = true;
    for (const int rows : {1'000'001, 900'001}) {
        const Stopwatch watch;
        page.tableClicked();
        QApplication::processEvents();
        page.grab();
        const double seconds = watch.seconds();
        if (table->model()->rowCount() != rows) {
            std::printf("%d rows\n", table->model()->rowCount());
            return false;
        }
        reached &= report(
            rows > 900'001 ? "expanding a group of 100,000 in a million rows" : "collapsing it",
            seconds, "s", true, 0.1);
    }
    std::filesystem::remove(folder / "uneven.log");
    return reached;
}

/// 2 million events as one report, all of it opened, ordered and closed through the page's
/// controls.
bool benchAllGroups(const std::filesystem::path &folder, ReportKind kind, const char *what) {
    constexpr double kOneYear = 15.7;  // every line has a date of its own
    writeSampleLog(folder / "sample.log", 2'000'000, kOneYear);
    AppDelegate delegate;
    const Storyboard storyboard;
    ReportsView page(delegate, storyboard);
    page.viewDidLoad();
    page.resize(1200, 800);
    page.show();
    QApplication::processEvents();
    page.findChild<QComboBox *>(QStringLiteral("reportName"))
        ->setCurrentIndex(static_cast<int>(kind));
    const Stopwatch all;
    page.displayReport();
    const double reading = all.seconds();
    const Stopwatch first;
    page.grab();
    std::printf("%s: read in %.3f s, first painted in %.3f s\n", what, reading, first.seconds());
    bool reached = true;
    for (const char *control : {"expandAll", "largestFirst", "collapseAll", "largestFirst"}) {
        const Stopwatch watch;
        page.findChild<QAbstractButton *>(QLatin1String(control))->click();
        QApplication::processEvents();
        page.grab();
        reached &= report(std::string(what) + ", " + control, watch.seconds() / reading,
                          "of displaying it", true, 0.25);
    }
    std::filesystem::remove(folder / "sample.log");
    return reached;
}

bool benchPrinting(const std::filesystem::path &folder) {
    writeSampleLog(folder / "sample.log", 50'000, 1);
    auto data = std::make_unique<ReportEngine>(ReportKind::kHost, kFormat);
    data->read({folder / "sample.log"});
    ReportTableModel model;
    model.setReport(std::move(data));
    for (int row = model.rowCount() - 1; row >= 0; --row) {
        model.toggle(row);
    }
    QPdfWriter writer(QString::fromStdString((folder / "report.pdf").string()));
    const auto before = static_cast<double>(residentBytes());
    const Stopwatch watch;
    ReportPrinter(model, {0, 1, 2, 3}).print(writer);
    const double seconds = watch.seconds();
    bool reached = report("printing 53,000 rows to PDF", seconds, "s", true, 20);
    reached &=
        report("memory that took", (static_cast<double>(residentBytes()) - before) / (1 << 20),
               "MiB", true, 200);
    return reached;
}

int run(const std::filesystem::path &folder) {
    setenv("QUORBEL_LIBRARY", folder.c_str(), 1);                    // NOLINT
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent", 1);  // NOLINT
    bool reached = benchReading(folder);
    reached &= benchExpanding(folder);
    reached &= benchAllGroups(folder, ReportKind::kHost, "2 million events by host");
    reached &= benchAllGroups(folder, ReportKind::kDate, "2 million dates");
    reached &= benchPrinting(folder);
    return reached ? 0 : 1;
}

}  // namespace
}  // namespace quorbel::bench

int main(int argc, char **argv) {
    const QApplication application(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s EMPTY-FOLDER\n", argv[0]);
        return 2;
    }
    return quorbel::bench::run(argv[1]);
}
