// The event list with one and two million events: loading, memory, showing, removing, deleting,
// exporting.

#include "Measure.h"
#include "SampleLog.h"
#include "common/LogReader.h"
#include "core/AppDelegate.h"
#include "core/EventIntake.h"
#include "events/ScanView.h"
#include "platform/Files.h"
#include "platform/gui/Storyboard.h"
#include "support/NoHomePage.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace quorbel::bench {
namespace {

/// Over how long a time a million events spread.
struct Spread {
    const char *name;
    double spacing;  ///< seconds between two events
};
constexpr Spread kMinute{"one minute", 0.00006};
constexpr Spread kDay{"one day", 0.08};
constexpr Spread kMonth{"one month", 2.6};
constexpr Spread kYear{"one year", 31.5};

/// The real page with the real intake over one folder of log files.
class Fixture {
public:
    Fixture()
        : page(delegate, storyboard),
          intake(delegate.state, delegate.events, delegate.hold, page, home) {
        page.viewDidLoad();
        page.resize(1200, 800);
    }
    double load() {
        const Stopwatch watch;
        intake.initializeLog();
        const double seconds = watch.seconds();
        delegate.state.newDateFormat = delegate.state.oldDateFormat = "yyyy-MM-dd HH:mm:ss";
        return seconds;
    }
    /// Takes a format as saving the options does.
    void save(const char *format) {
        delegate.state.oldDateFormat = std::exchange(delegate.state.newDateFormat, format);
    }
    double show() {
        page.hide();
        QApplication::processEvents();
        const Stopwatch watch;
        page.show();
        QApplication::processEvents();
        page.grab();
        return watch.seconds();
    }
    void press(const char *title, bool tick) {
        auto *box = page.findChild<QMessageBox *>(QStringLiteral("alertBox"));
        if (tick) {
            box->checkBox()->setChecked(true);
        }
        const auto buttons = box->buttons();
        const auto button =
            std::ranges::find(buttons, QLatin1String(title), &QAbstractButton::text);
        (*button)->click();
        box->setObjectName(QString());
    }

    AppDelegate delegate;
    Storyboard storyboard;
    ScanView page;
    testing::NoHomePage home;
    EventIntake intake;
};

bool benchLoading(const std::filesystem::path &folder) {
    const auto file = folder / "sample.log";
    const std::size_t bytes = writeSampleLog(file, 2'000'000, 0.04);
    std::printf("2,000,000 lines, %.1f bytes each\n", static_cast<double>(bytes) / 2e6);
    const std::string awk = "awk -F, '{c[$3]++}' '" + file.string() + "'";
    double awkBest = 1e9;
    double loadBest = 1e9;
    double memory = 0;
    secondsOf(awk);
    for (int i = 0; i < 3; ++i) {
        awkBest = std::min(awkBest, secondsOf(awk));
        const std::size_t before = residentBytes();
        Fixture fixture;
        loadBest = std::min(loadBest, fixture.load());
        if (i == 0) {
            memory = static_cast<double>(residentBytes() - before) / static_cast<double>(bytes);
        }
    }
    std::printf("awk over the same file %.3f s, start-up load %.3f s\n", awkBest, loadBest);
    bool reached = report("start-up load of 2 million lines, times awk", loadBest / awkBest,
                          "of awk", true, 0.4);
    reached &= report("resident memory of that list, times the files", memory, "of bytes", true, 1);
    std::filesystem::remove(file);
    return reached;
}

bool benchShowing(const std::filesystem::path &folder, const Spread &spread) {
    writeSampleLog(folder / "sample.log", 1'000'000, spread.spacing);
    Fixture fixture;
    fixture.load();
    // Once without rows, so that fonts and styles are there.
    {
        Fixture warmUp;
        warmUp.show();
    }
    const auto one = [&](const char *what) {
        return report(std::string(what) + ", " + spread.name, fixture.show(), "s", true, 0.1);
    };
    bool reached = one("first showing of 1 million raw rows");
    fixture.save("dd.MM.yyyy hh:mm:ss AM/PM");
    reached &= one("showing them in a new date format");
    reached &= one("showing them once more");
    return reached;
}

struct Removal {
    double seconds = 0;
    double longestStall = 0;
};

/// Calls `handle(number)` for each of the numbers, in slices as long as the program's, between
/// which the window's events are handled. The longest turn.
template <typename Handle>
double inSlices(std::uint64_t first, std::uint64_t end, const Handle &handle) {
    constexpr double kSlice = 0.008;
    double longest = 0;
    for (std::uint64_t number = first; number < end;) {
        const Stopwatch turn;
        for (; number < end && turn.seconds() < kSlice; ++number) {
            handle(number);
        }
        QApplication::processEvents();
        longest = std::max(longest, turn.seconds());
    }
    return longest;
}

/// Announces events as removed, the oldest ones as the service's retention does.
Removal removeOldest(Fixture &fixture, std::uint64_t first, std::uint64_t end, double spacing) {
    std::vector<std::string> lines;
    for (std::uint64_t number = first; number < end; ++number) {
        lines.push_back(sampleLine(number, spacing));
    }
    Removal removal;
    const Stopwatch watch;
    removal.longestStall = inSlices(0, lines.size(), [&](std::uint64_t number) {
        const auto fields = splitLogLine(lines[number]);
        fixture.intake.removeNotification(
            {fields->date, fields->priority, fields->host, fields->message, {}});
    });
    removal.seconds = watch.seconds();
    return removal;
}

/// Removes 10,000 rows after each of several showings, before and after changes of the format.
bool benchRemoving(const std::filesystem::path &folder, const Spread &spread) {
    constexpr std::uint64_t kNotices = 10'000;
    writeSampleLog(folder / "sample.log", 1'000'000, spread.spacing);
    Fixture fixture;
    fixture.load();
    std::uint64_t removed = 0;
    double longestStall = 0;
    bool reached = true;
    const auto remove = [&](const char *when) {
        fixture.show();
        const Removal removal = removeOldest(fixture, removed, removed + kNotices, spread.spacing);
        removed += kNotices;
        longestStall = std::max(longestStall, removal.longestStall);
        const bool allFound = fixture.delegate.events.size() == 1'000'000 - removed;
        reached &= allFound;
        reached &= report("10,000 removal notices, " + std::string(spread.name) +
                              (allFound ? ", " : ", NOT ALL FOUND, ") + when,
                          removal.seconds, "s", true, 1);
    };
    remove("first showing");
    remove("shown again");
    fixture.save("dd/MM/yyyy HH:mm:ss");
    remove("format changed");
    remove("shown again");
    fixture.save("MM/dd/yyyy hh:mm:ss AM/PM");
    fixture.save("MM/dd/yyyy hh:mm:ss AM/PM");
    remove("changed, saved twice");
    fixture.save("d/M/yy HH:mm");
    remove("no seconds");
    remove("shown again");
    reached &= report("longest stall meanwhile, " + std::string(spread.name), longestStall, "s",
                      true, 0.1);
    return reached;
}

/// Undoes the deletion of all rows; the command for the service is put together in slices.
bool benchUndoing(Fixture &fixture, const std::string &name) {
    constexpr double kLonger = 5;  // than that takes
    const Stopwatch watch;
    fixture.page.findChild<QAction *>(QStringLiteral("undoDelete"))->trigger();
    double longest = watch.seconds();
    while (watch.seconds() < kLonger) {
        const Stopwatch slice;
        QApplication::processEvents();
        longest = std::max(longest, slice.seconds());
    }
    return fixture.delegate.events.size() == 1'000'000 &&
           report("longest stall of undoing that, " + name, longest, "s", true, 0.1);
}

/// Deletes all rows, with or without changes of the format that no row was looked at in.
bool benchDeleting(const std::filesystem::path &folder, const Spread &spread, bool changeFormat) {
    writeSampleLog(folder / "sample.log", 1'000'000, spread.spacing);
    Fixture fixture;
    fixture.load();
    fixture.show();
    if (changeFormat) {
        fixture.save("dd/MM/yyyy HH:mm:ss");
        fixture.show();
        fixture.save("MM/dd/yyyy hh:mm AM/PM");
        fixture.show();
    }
    fixture.page.deleteEvents();
    fixture.press("OK", true);
    const Stopwatch watch;
    fixture.press("Yes", false);
    const double seconds = watch.seconds();
    if (fixture.delegate.events.size() != 0) {
        return false;
    }
    const std::string name = std::string(spread.name) + (changeFormat ? ", changed twice" : "");
    return report("deleting all of 1 million rows, " + name, seconds, "s", true, 2) &
           benchUndoing(fixture, name);
}

/// Exports every row through the page's own panel, and watches how often the windows are painted.
bool benchExporting(const std::filesystem::path &folder) {
    const std::size_t bytes = writeSampleLog(folder / "sample.log", 1'000'000, 0.08);
    Fixture fixture;
    fixture.load();
    fixture.show();
    fixture.page.exportEvents();
    fixture.press("OK", true);
    QApplication::processEvents();
    auto *panel = fixture.page.findChild<QFileDialog *>(QStringLiteral("filePanel"));
    const auto file = folder / "export.txt";
    panel->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))
        ->setText(QString::fromStdString(file.string()));
    double longest = 0;
    Stopwatch sinceLast;
    QTimer tick;
    QObject::connect(&tick, &QTimer::timeout, [&] {
        longest = std::max(longest, sinceLast.seconds());
        sinceLast = {};
    });
    const std::size_t before = residentBytes();
    panel->findChild<QDialogButtonBox *>(QStringLiteral("buttonBox"))
        ->button(QDialogButtonBox::Save)
        ->click();
    // From the first painting on: until the progress shows itself, half a second may pass.
    QTimer::singleShot(0, [&] {
        sinceLast = {};
        tick.start(0);
    });
    const Stopwatch watch;
    while (!std::filesystem::exists(file)) {
        QApplication::processEvents();
    }
    const double seconds = watch.seconds();
    const auto grown = static_cast<double>(residentBytes()) - static_cast<double>(before);
    std::filesystem::remove(file);
    bool reached = report("exporting 1 million rows", seconds, "s", true, 5);
    reached &= report("memory that takes, times the file", grown / static_cast<double>(bytes),
                      "of bytes", true, 0.2);
    reached &= report("longest time without painting meanwhile", longest, "s", true, 0.1);
    return reached;
}

/// Hands events to the intake; the longest turn.
double arrive(Fixture &fixture, std::uint64_t count, double spacing) {
    return inSlices(0, count, [&](std::uint64_t number) {
        const std::string line = sampleLine(number, spacing);
        const auto fields = splitLogLine(line);
        fixture.intake.setNotification(
            {fields->date, fields->priority, fields->host, fields->message, {}});
    });
}

/// A million events that arrive while the list is held, and their way into it afterwards.
bool benchHolding(const std::filesystem::path &folder, const Spread &spread) {
    constexpr std::uint64_t kEvents = 1'000'000;
    writeSampleLog(folder / "sample.log", 1'000'000, spread.spacing);
    Fixture direct;
    direct.load();
    direct.show();
    const Stopwatch arriving;
    arrive(direct, kEvents, spread.spacing);
    const double arrival = arriving.seconds();

    Fixture fixture;
    fixture.load();
    fixture.show();
    auto *button = fixture.page.findChild<QPushButton *>(QStringLiteral("holdEvents"));
    button->click();
    double longest = arrive(fixture, kEvents, spread.spacing);
    const Stopwatch releasing;
    button->click();
    while (fixture.delegate.hold.delays()) {
        const Stopwatch turn;
        QApplication::processEvents();
        longest = std::max(longest, turn.seconds());
    }
    const double release = releasing.seconds();
    const std::string over = ", " + std::string(spread.name);
    bool reached = fixture.delegate.events.size() == direct.delegate.events.size();
    reached &= report("releasing 1 million held events, times their arrival" + over,
                      release / arrival, "of the time", true, 1);
    reached &= report("longest turn while held and released" + over, longest, "s", true, 0.1);
    return reached;
}

int run(const std::filesystem::path &folder, const std::string &part) {
    setenv("QUORBEL_LIBRARY", folder.c_str(), 1);                    // NOLINT
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent", 1);  // NOLINT
    bool reached = true;
    if (part.empty() || part == "load") {
        reached &= benchLoading(folder);
    }
    if (part.empty() || part == "show") {
        reached &= benchShowing(folder, kDay);
        reached &= benchShowing(folder, kYear);
    }
    for (const Spread &spread : {kMinute, kDay, kMonth, kYear}) {
        if (part.empty() || part == "remove") {
            reached &= benchRemoving(folder, spread);
        }
        if (part.empty() || part == "delete") {
            reached &= benchDeleting(folder, spread, false);
            reached &= benchDeleting(folder, spread, true);
        }
    }
    if (part.empty() || part == "hold") {
        reached &= benchHolding(folder, kDay);
    }
    if (part.empty() || part == "export") {
        reached &= benchExporting(folder);
    }
    return reached ? 0 : 1;
}

}  // namespace
}  // namespace quorbel::bench

int main(int argc, char **argv) {
    const QApplication application(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s EMPTY-FOLDER [load|show|remove|delete|hold|export]\n",
                     argv[0]);
        return 2;
    }
    return quorbel::bench::run(argv[1], argc > 2 ? argv[2] : "");
}
