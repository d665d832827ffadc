// The way of one event, from the datagram to the painted row, with 2 million listed: the real
// service on a bus of its own, the real window's classes on a display. At rest, and beside 5,000
// other events a second.

#include "Measure.h"
#include "SampleLog.h"
#include "core/EventList.h"
#include "events/EventTableView.h"
#include "load/LoadSender.h"
#include "platform/Number.h"
#include "platform/UniqueFd.h"
#include "support/FrontEnd.h"
#include "support/PrivateBus.h"
#include "support/ServiceProcess.h"
#include "support/TemporaryFolder.h"

#include <QAbstractItemDelegate>
#include <QApplication>
#include <QTableView>

#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace quorbel::bench {
namespace {

constexpr std::uint64_t kListed = 2'000'000;
constexpr std::size_t kProbes = 500;
constexpr std::size_t kWarmUp = 20;
constexpr std::uint64_t kTraffic = 5'000;  // a second
constexpr std::string_view kMark = "way-probe ";

using Clock = std::chrono::steady_clock;
using Time = Clock::time_point;

/// One event that is followed.
struct Probe {
    std::atomic<Time> sent{};
    Time listed{};   ///< seen in the list first
    Time painted{};  ///< when a painting that shows it had gone to the display
    EventId id = 0;
};

/// Sees which probes came into the list, and up to which event the table was painted.
class Witness : public QAbstractItemDelegate {
public:
    Witness(EventList &list, QTableView &table, std::vector<Probe> &probes)
        : m_list(list), m_probes(probes), m_inner(*table.itemDelegate()) {
        m_newest = list.idAt(0);
        table.setItemDelegate(this);
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override {
        m_inner.paint(painter, option, index);
        m_paintedUpTo = std::max(m_paintedUpTo, m_list.idAt(static_cast<std::size_t>(index.row())));
        m_textsPainted += index.data().toString().contains(QLatin1String(kMark)) ? 1U : 0U;
    }
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem &option,
                                 const QModelIndex &index) const override {
        return m_inner.sizeHint(option, index);
    }

    /// What painted before.
    [[nodiscard]] QAbstractItemDelegate *replaced() const { return &m_inner; }

    /// After each event of the window.
    void look(bool wasPainting) {
        const Time now = Clock::now();
        const EventId newest = m_list.idAt(0);
        std::size_t row = 0;
        while (row < m_list.size() && m_list.idAt(row) > m_newest) {
            ++row;
        }
        while (row-- > 0) {
            note(row, now);
        }
        m_newest = newest;
        if (wasPainting) {
            for (; m_nextUnpainted < m_came.size() && m_came[m_nextUnpainted]->id <= m_paintedUpTo;
                 ++m_nextUnpainted) {
                m_came[m_nextUnpainted]->painted = now;
            }
        }
    }
    [[nodiscard]] std::size_t painted() const { return m_nextUnpainted; }
    /// How often a cell with a probe's text was painted.
    [[nodiscard]] std::size_t textsPainted() const { return m_textsPainted; }

private:
    void note(std::size_t row, Time now) {
        const std::string_view message = m_list.message(row).value_or("");
        const auto at = message.find(kMark);
        if (at == std::string_view::npos) {
            return;
        }
        const auto number = readNumber<std::size_t>(message.substr(at + kMark.size()));
        if (number && *number < m_probes.size()) {
            Probe &probe = m_probes[*number];
            probe.listed = now;
            probe.id = m_list.idAt(row);
            m_came.push_back(&probe);
        }
    }

    EventList &m_list;
    std::vector<Probe> &m_probes;
    QAbstractItemDelegate &m_inner;
    EventId m_newest = 0;
    mutable EventId m_paintedUpTo = 0;
    mutable std::size_t m_textsPainted = 0;
    std::vector<Probe *> m_came;
    std::size_t m_nextUnpainted = 0;
};

/// Tells of each event that was handled, the painting of a window included.
class Application : public QApplication {
public:
    using QApplication::QApplication;

    bool notify(QObject *receiver, QEvent *event) override {
        const bool isPainting = event->type() == QEvent::UpdateRequest;
        const bool result = QApplication::notify(receiver, event);
        if (m_onHandled) {
            m_onHandled(isPainting);
        }
        return result;
    }
    void onHandled(std::function<void(bool isPainting)> handler) {
        m_onHandled = std::move(handler);
    }

private:
    std::function<void(bool)> m_onHandled;
};

/// Sends the probes, at times that nothing else is in step with.
void sendProbes(std::uint16_t port, std::vector<Probe> &probes) {
    const UniqueFd socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(port);
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::connect(socket.get(), reinterpret_cast<const sockaddr *>(&to), sizeof to);
    std::mt19937 random(1);
    std::uniform_int_distribution<int> pause(15'000, 35'000);
    for (std::size_t number = 0; number < probes.size(); ++number) {
        std::this_thread::sleep_for(std::chrono::microseconds(pause(random)));
        const std::string message = "<134>" + std::string(kMark) + std::to_string(number);
        probes[number].sent = Clock::now();
        ::send(socket.get(), message.data(), message.size(), 0);
    }
}

struct Spans {
    double median = 0;
    double most = 0;  ///< of 99 %
};

Spans spansOf(const std::vector<Probe> &probes, Time (*from)(const Probe &),
              Time (*to)(const Probe &)) {
    std::vector<double> spans;
    for (std::size_t i = kWarmUp; i < probes.size(); ++i) {
        spans.push_back(std::chrono::duration<double>(to(probes[i]) - from(probes[i])).count());
    }
    std::ranges::sort(spans);
    return {spans[spans.size() / 2], spans[spans.size() * 99 / 100]};
}

class Bench {
public:
    explicit Bench(Application &application) : m_application(application) {
        writeSampleLog(m_folder.path() / "sample.log", kListed, 0.04);
        setenv("QUORBEL_LIBRARY", m_folder.path().c_str(), 1);  // NOLINT(concurrency-mt-unsafe)
        m_service.emplace(testing::ServiceProcess::Setup{.library = m_folder.path(),
                                                         .busAddress = m_bus.address()});
        m_window.emplace();
        m_window->window->Scan();
    }

    bool run() {
        if (!m_window->waitUntilItHears() || list().size() != kListed) {
            std::printf("The window does not hear the service.\n");
            return false;
        }
        bool reached = follow("at rest", 0.02);
        std::atomic<bool> stop = false;
        std::thread traffic([&] {
            load::Plan plan;
            plan.port = m_service->port();
            plan.perSecond = kTraffic;
            plan.count = kTraffic * 3600;
            load::send(plan, &stop);
        });
        reached &= follow("beside 5,000 events a second", 0.05);
        stop = true;
        traffic.join();
        return reached;
    }

private:
    EventList &list() { return m_window->delegate.events; }
    QTableView &table() { return *m_window->window->findChild<EventTableView *>(); }

    bool follow(const std::string &when, double aim) {
        std::vector<Probe> probes(kWarmUp + kProbes);
        Witness witness(list(), table(), probes);
        QAbstractItemDelegate *const before = witness.replaced();
        m_application.onHandled([&](bool isPainting) { witness.look(isPainting); });
        std::thread sender([&] { sendProbes(m_service->port(), probes); });
        const Stopwatch watch;
        while (witness.painted() < probes.size() && watch.seconds() < 120) {
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        sender.join();
        m_application.onHandled({});
        table().setItemDelegate(before);
        return witness.painted() == probes.size() && tell(when, aim, probes, witness);
    }

    static bool tell(const std::string &when, double aim, const std::vector<Probe> &probes,
                     const Witness &witness) {
        const auto sent = [](const Probe &probe) { return probe.sent.load(); };
        const auto listed = [](const Probe &probe) { return probe.listed; };
        const auto painted = [](const Probe &probe) { return probe.painted; };
        const Spans first = spansOf(probes, sent, listed);
        const Spans second = spansOf(probes, listed, painted);
        const Spans whole = spansOf(probes, sent, painted);
        std::printf(
            "%s: median %.1f ms; to the list %.1f and 99 %% %.1f ms, from there %.1f and "
            "%.1f ms; %zu cells with a probe's text painted\n",
            when.c_str(), 1e3 * whole.median, 1e3 * first.median, 1e3 * first.most,
            1e3 * second.median, 1e3 * second.most, witness.textsPainted());
        return report("from the datagram to the painted row, 99 %, " + when, whole.most, "s", true,
                      aim);
    }

    Application &m_application;
    testing::TemporaryFolder m_folder;
    testing::PrivateBus m_bus;
    std::optional<testing::ServiceProcess> m_service;
    std::optional<testing::FrontEnd> m_window;
};

}  // namespace
}  // namespace quorbel::bench

int main(int argc, char **argv) {
    quorbel::bench::Application application(argc, argv);
    if (QGuiApplication::platformName() != QLatin1String("xcb")) {
        std::fprintf(stderr, "%s paints on a display: see bench/run\n", argv[0]);
        return 2;
    }
    return quorbel::bench::Bench(application).run() ? 0 : 1;
}
