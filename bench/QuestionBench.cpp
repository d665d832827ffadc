// What kept filters and questions cost the window: reading them, counting the events that each of
// them means, and marking rows.

#include "Measure.h"
#include "SampleList.h"
#include "SampleLog.h"
#include "common/LogReader.h"
#include "core/AppDelegate.h"
#include "core/EventCounter.h"
#include "core/EventIntake.h"
#include "core/SavedFilterStore.h"
#include "events/EventTableView.h"
#include "events/ScanView.h"
#include "events/questions/FilterLibrary.h"
#include "events/questions/QuestionPanel.h"
#include "platform/gui/Storyboard.h"

#include <QApplication>
#include <QListView>
#include <QPushButton>
#include <QScrollBar>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

namespace quorbel::bench {
namespace {

constexpr std::array<std::uint64_t, 2> kLines = {1'000'000, 2'000'000};
constexpr double kSpacing = 0.04;
constexpr double kLongestTurn = 0.1;
constexpr int kRounds = 3;
constexpr int kScrolls = 200;
constexpr int kArrivals = 50'000;
constexpr std::size_t kMarkers = 6;

class NoHomePage : public HomePageLink {
public:
    [[nodiscard]] bool isOnScreen() const override { return false; }
    void setEventsStatus() override {}
    [[nodiscard]] int severityStatus() const override { return 0; }
};

/// The processor time of turns of the main thread.
struct Turns {
    double longest = 0;
    double all = 0;

    void run(const std::function<void()> &turn) {
        const ProcessorWatch watch;
        turn();
        longest = std::max(longest, watch.seconds());
        all += watch.seconds();
    }
    void runWhile(const std::function<bool()> &isBusy) {
        while (isBusy()) {
            run([] { QApplication::processEvents(); });
        }
    }
};

/// The page of events on screen, with a list of so many.
class Page {
public:
    Page(const std::filesystem::path &log, std::uint64_t lines) {
        load(log, lines);
        m_page.viewDidLoad();
        m_page.resize(1200, 800);
        m_delegate.state.newDateFormat = m_delegate.state.oldDateFormat = "yyyy-MM-dd HH:mm:ss";
        m_page.show();
        QApplication::processEvents();
    }

    /// From the press of the key until every number shows.
    Turns openQuestions() {
        Turns turns;
        auto *panel = m_page.findChild<QuestionPanel *>(QStringLiteral("findSavedPanel"));
        turns.run([this] {
            QMetaObject::invokeMethod(m_page.findChild<QPushButton *>(QStringLiteral("findSaved")),
                                      "click");
        });
        const QAbstractItemModel &model =
            *m_page.findChild<QListView *>(QStringLiteral("findSavedList"))->model();
        turns.runWhile([&] {
            for (int row = model.rowCount() - 1; row >= 0; --row) {
                if (model.index(row, 0).data(QuestionModel::kCount).toString() ==
                    QStringLiteral("…")) {
                    return true;
                }
            }
            return false;
        });
        turns.run([&] { panel->hide(); });
        return turns;
    }
    Turns scroll() {
        Turns turns;
        auto *table = m_page.findChild<EventTableView *>();
        for (int i = 0; i < kScrolls; ++i) {
            turns.run([&] {
                table->verticalScrollBar()->setValue(i * 5003);
                table->viewport()->repaint();
            });
        }
        return turns;
    }
    Turns arrive() {
        Turns turns;
        std::vector<std::string> lines;
        for (std::uint64_t number = 0; number < kArrivals; ++number) {
            lines.push_back(sampleLine(number, kSpacing));
        }
        m_page.findChild<EventTableView *>()->scrollToTop();
        constexpr std::ptrdiff_t kAtOnce = 50;
        for (auto line = lines.begin(); line != lines.end(); line += kAtOnce) {
            turns.run([&] {
                for (auto next = line; next != line + kAtOnce; ++next) {
                    const auto fields = splitLogLine(*next);
                    m_intake.setNotification(
                        {fields->date, fields->priority, fields->host, fields->message, {}});
                }
                QApplication::processEvents();
            });
        }
        return turns;
    }

private:
    void load(const std::filesystem::path &log, std::uint64_t lines) {
        m_intake.initializeLog();
        addSamples(m_delegate.events, log, lines);
    }

    AppDelegate m_delegate;
    Storyboard m_storyboard;
    ScanView m_page{m_delegate, m_storyboard};
    NoHomePage m_home;
    EventIntake m_intake{m_delegate.state, m_delegate.events, m_delegate.hold, m_page, m_home};
};

std::filesystem::path keptFile(const std::filesystem::path &folder) {
    return folder / "QuorbelFilters.txt";
}

/// As many questions as there are colours mark their rows from now on.
void keepMarkers(const std::filesystem::path &folder) {
    SavedFilterStore store(keptFile(folder));
    const FilterLibrary library;
    for (std::size_t i = 0; i < kMarkers; ++i) {
        SavedFilter filter = library.questions()[i * 10];
        filter.mark = static_cast<MarkColour>(i);
        store.keep(filter);
    }
    SavedFilter links;
    links.name = "Interfaces";
    links.mark = MarkColour::kGrey;
    links.query.texts.push_back({{"link is up|Line protocol", false, true}, false});
    store.keep(links);
}

bool reading() {
    double best = 1e9;
    for (int round = 0; round < kRounds; ++round) {
        const ProcessorWatch watch;
        const FilterLibrary library;
        best = std::min(best, watch.seconds());
    }
    return report("reading the questions at the start", best, "s", true, kLongestTurn);
}

/// The largest file of filters that is taken.
bool opensLargest(const std::filesystem::path &folder, Page &page) {
    std::string text = "Quorbel filters 1\n";
    for (std::size_t i = 0; i < SavedFilterLimits::kFilters; ++i) {
        const std::string number = std::to_string(i);
        text += "filter F" + number + "\nmatches fan.*" + number + "\nor psu[0-9]+ " + number +
                "\nor link (is )?" + number + "\nor x" + number + "y{1,3}\n";
    }
    std::ofstream(keptFile(folder)) << text;
    const Turns turns = page.openQuestions();
    std::printf("500 filters of four expressions each: counted in %.1f s\n", turns.all);
    std::filesystem::remove(keptFile(folder));
    return report("longest turn while 500 kept filters are opened and counted", turns.longest, "s",
                  true, 0.1);
}

bool counting(const std::filesystem::path &log, std::uint64_t lines, Page &page) {
    const std::string head = "head -n " + std::to_string(lines) + " '" + log.string() + "' | ";
    double ripgrep = 1e9;
    for (int round = 0; round < kRounds; ++round) {
        const std::string file = log.string() + ".part";
        secondsOf(head + "cat > '" + file + "'");
        ripgrep = std::min(ripgrep, processorSecondsOf("rg -c -i 'link is (up|down)|interface .*"
                                                       "(up|down)' '" +
                                                       file + "' > /dev/null"));
        std::filesystem::remove(file);
    }
    const Turns turns = page.openQuestions();
    std::printf("%llu events: all questions counted in %.2f s, one expression by ripgrep %.3f s\n",
                static_cast<unsigned long long>(lines), turns.all, ripgrep);
    bool reached = report("counting a question, times ripgrep's count of one expression",
                          turns.all / 60 / ripgrep, "", true, 1);
    reached &= report("longest turn while the questions are opened and counted", turns.longest, "s",
                      true, kLongestTurn);
    return reached;
}

bool marking(const Turns &scrollPlain, const Turns &scrollMarked, const Turns &arrivePlain,
             const Turns &arriveMarked) {
    bool reached = report("a page painted with marks of seven filters, times one without",
                          scrollMarked.all / scrollPlain.all, "", true, 1.5);
    reached &= report("longest turn meanwhile", scrollMarked.longest, "s", true, 0.1);
    std::printf("an arrival with what is painted: %.2f us, with marks %.2f us\n",
                arrivePlain.all * 1e6 / kArrivals, arriveMarked.all * 1e6 / kArrivals);
    reached &= report("longest turn of arrivals into marked rows", arriveMarked.longest, "s", true,
                      kLongestTurn);
    return reached;
}

int run(const std::filesystem::path &folder) {
    const auto log = folder / "sample.log";
    writeSampleLog(log, kLines.back(), kSpacing);
    bool reached = reading();
    Turns scrollPlain;
    Turns arrivePlain;
    for (const std::uint64_t lines : kLines) {
        Page page(log, lines);
        reached &= counting(log, lines, page);
        if (lines == kLines.back()) {
            scrollPlain = page.scroll();
            arrivePlain = page.arrive();
        }
    }
    keepMarkers(folder);
    {
        Page page(log, kLines.back());
        const Turns scrollMarked = page.scroll();
        reached &= marking(scrollPlain, scrollMarked, arrivePlain, page.arrive());
    }
    Page page(log, kLines.front() / 10);
    reached &= opensLargest(folder, page);
    std::filesystem::remove(log);
    return reached ? 0 : 1;
}

}  // namespace
}  // namespace quorbel::bench

int main(int argc, char **argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s EMPTY-FOLDER\n", argv[0]);
        return 2;
    }
    setenv("QUORBEL_LIBRARY", argv[1], 1);                           // NOLINT
    setenv("XDG_CONFIG_HOME", argv[1], 1);                           // NOLINT
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent", 1);  // NOLINT
    const QApplication application(argc, argv);
    return quorbel::bench::run(argv[1]);
}
