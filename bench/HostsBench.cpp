// What it costs to keep the pages of hosts current with as many hosts as are told apart: how long
// the main thread is busy at a time while some of them send, on the page of hosts and in the boxes
// of the home page.

#include "Measure.h"
#include "core/AppDelegate.h"
#include "hosts/HostBoxes.h"
#include "hosts/HostPulse.h"
#include "hosts/HostsView.h"
#include "platform/gui/Appearance.h"
#include "platform/gui/RowTableView.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>

namespace quorbel::bench {
namespace {

constexpr std::int64_t kEnd = 1'767'614'400;
constexpr std::int64_t kDays = 10;
constexpr std::int64_t kGap = 6 * 3600;
constexpr int kSeconds = 12;
constexpr std::size_t kSendersASecond = 500;
constexpr std::size_t kNewcomers = 2000;  // of all that are told apart

std::string nameOf(std::size_t host) {
    return "host-" +
           std::to_string(host % HostHistory::kMostHosts * 7919 % HostHistory::kMostHosts) +
           ".example.org";
}

void arrive(AppDelegate &delegate, const std::string &host, std::int64_t moment) {
    delegate.hosts.eventArrived({std::to_string(moment), "Local7.Notice", host, "state", {}}, 5);
}

/// Every host sends a few times a day; one in a hundred has stopped.
void fill(AppDelegate &delegate) {
    for (std::int64_t moment = kEnd - kDays * 86'400; moment < kEnd; moment += kGap) {
        const bool isLate = moment > kEnd - 4 * 86'400;
        for (std::size_t host = 0; host < HostHistory::kMostHosts - kNewcomers; ++host) {
            if (!isLate || host % 100 != 0) {
                arrive(delegate, nameOf(host), moment + static_cast<std::int64_t>(host));
            }
        }
    }
}

/// The processor time of a turn of the event loop, in seconds.
double turn() {
    const ProcessorWatch watch;
    QApplication::processEvents();
    return watch.seconds();
}

/// Asks for so many beats, each a second later, in which some of the hosts send, and returns the
/// longest turn.
double longestTurn(AppDelegate &delegate, HostPulse &pulse, std::int64_t &now,
                   const std::function<std::string(std::size_t)> &name = nameOf) {
    static std::size_t host = 0;
    int beats = 0;
    const auto connection = QObject::connect(&pulse, &HostPulse::beat, qApp, [&beats] { ++beats; });
    double longest = 0;
    for (int second = 0; second < kSeconds; ++second, ++now) {
        for (std::size_t i = 0; i < kSendersASecond; ++i) {
            arrive(delegate, name(host++), now);
        }
        for (const int before = beats; beats == before;) {
            longest = std::max(longest, turn());
        }
        longest = std::max(longest, turn());  // paints
    }
    QObject::disconnect(connection);
    return longest;
}

int run() {
    AppDelegate delegate;
    fill(delegate);
    std::printf("%zu hosts\n", delegate.hosts.history().size());
    std::int64_t now = kEnd + static_cast<std::int64_t>(HostHistory::kMostHosts);
    bool reached = true;
    {
        HostBoxes boxes(delegate);
        boxes.pulse().setClock([&now] { return now; });
        boxes.resize(900, 200);
        boxes.show();
        turn();
        reached &= report("longest turn, hosts on the home page",
                          longestTurn(delegate, boxes.pulse(), now), "s", true, 0.02);
    }
    HostsView page(delegate);
    page.pulse().setClock([&now] { return now; });
    page.viewDidLoad();
    page.resize(1000, 700);
    page.show();
    reached &= report("longest turn, page of hosts", longestTurn(delegate, page.pulse(), now), "s",
                      true, 0.02);
    auto &table = *page.findChild<RowTableView *>(QStringLiteral("hostTable"));
    double longest = 0;
    for (int column = 0; column < table.model()->columnCount(); ++column) {
        for (const Qt::SortOrder order : {Qt::AscendingOrder, Qt::DescendingOrder}) {
            const ProcessorWatch watch;
            table.sortByColumn(column, order);
            QApplication::processEvents();
            longest = std::max(longest, watch.seconds());
        }
    }
    reached &= report("longest turn, sorted by any column", longest, "s", true, 0.02);
    table.clearSelection();
    for (int row = 0; row < 100; ++row) {
        table.selectionModel()->select(table.model()->index(row * 100, 0),
                                       QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
    reached &= report("longest turn, page of hosts, 100 selected",
                      longestTurn(delegate, page.pulse(), now), "s", true, 0.02);
    table.selectAll();
    reached &= report("longest turn, page of hosts, all selected",
                      longestTurn(delegate, page.pulse(), now), "s", true, 0.02);
    table.clearSelection();
    const auto stranger = [](std::size_t number) { return "stranger-" + std::to_string(number); };
    reached &= report("longest turn, page of hosts, as many come and go",
                      longestTurn(delegate, page.pulse(), now, stranger), "s", true, 0.02);
    return reached ? 0 : 1;
}

}  // namespace
}  // namespace quorbel::bench

int main(int argc, char **argv) {
    const QTemporaryDir configuration;
    qputenv("XDG_CONFIG_HOME", configuration.path().toUtf8());
    QApplication application(argc, argv);
    quorbel::applyAppearance(application);
    return quorbel::bench::run();
}
