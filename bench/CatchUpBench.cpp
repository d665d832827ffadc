// The real service with a long backlog for a cluster, while it receives 20,000 events a second:
// bench_catch_up FOLDER [EVENTS], a folder with room for 500 bytes an event, 10 million unless it
// is said. Then the same service without outputs, which receives as much, beside which the column
// store's own client inserts the same rows: what catching up costs is measured against these.

#include "Measure.h"
#include "MemoryWatch.h"
#include "SampleLog.h"
#include "cluster/ClickHouse.h"
#include "cluster/ClusterSchema.h"
#include "load/LoadCheck.h"
#include "load/LoadSender.h"
#include "platform/Number.h"
#include "support/ServiceProcess.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

namespace quorbel::bench {

namespace {

using testing::ServiceProcess;

constexpr std::uint64_t kBacklog = 10'000'000;
constexpr std::uint64_t kPerSecond = 20'000;

void require(bool isGood, const std::string &what) {
    if (!isGood) {
        std::fprintf(stderr, "%s\n", what.c_str());
        std::exit(2);
    }
}

/// Messages to a service, for as long as the object lives.
class Traffic {
public:
    explicit Traffic(const ServiceProcess &service)
        : m_thread([this, port = service.port()] {
              load::Plan plan;
              plan.port = port;
              plan.transport = load::Plan::Transport::kTcp;
              plan.count = std::uint64_t{1} << 40U;
              plan.perSecond = kPerSecond;
              m_sent = load::send(plan, &m_stop);
          }) {}
    ~Traffic() { finish(); }
    Traffic(const Traffic &) = delete;
    Traffic &operator=(const Traffic &) = delete;

    load::Sent finish() {
        m_stop = true;
        if (m_thread.joinable()) {
            m_thread.join();
        }
        return m_sent;
    }

private:
    std::atomic<bool> m_stop = false;
    load::Sent m_sent;
    std::thread m_thread;
};

class Bench {
public:
    Bench(std::filesystem::path folder, std::uint64_t backlog)
        : m_folder(std::move(folder)), m_backlog(backlog), m_server(m_folder / "server") {
        std::filesystem::create_directories(m_folder / "library");
        std::filesystem::create_directories(m_folder / "alone");
        writeSampleLog(m_folder / "library" / "2026-01-01.log", m_backlog, 0.003);
        require(m_server.start(), "ClickHouse does not start");
        std::ofstream(m_folder / "schema") << clusterSchema({}, {});
        const std::string said = m_server.runClient(m_folder / "schema", {"--multiquery"});
        require(said.empty(), said);
        std::ofstream(m_folder / "library" / "quorbelsrv.conf")
            << "[Cluster \"main\"]\nHistory=yes\nUser=quorbel\nServers=" << m_server.address()
            << "\nPasswordFile=" << m_server.connection().passwordFile << '\n';
    }

    bool run() {
        const double ours = catchUp();
        const double theirs = insertByClient();
        std::printf("%-60s %10.0f rows/s\n", "  the service's output", ours);
        std::printf("%-60s %10.0f rows/s\n", "  clickhouse-client", theirs);
        std::printf("%-60s %10.1f, %.1f MiB\n",
                    "  the service's memory, with and without the output", m_memory, m_memoryAlone);
        const bool isFast = report("catching up with a backlog, times clickhouse-client",
                                   ours / theirs, "", false, 0.5);
        const bool isSmall = report("memory above the service without outputs",
                                    m_memory - m_memoryAlone, "MiB", true, 64);
        // As much as is sent: over TCP, whoever does not keep up slows the sender down.
        const bool isReceiving = report("events received a second meanwhile", m_received, "", false,
                                        0.95 * static_cast<double>(kPerSecond));
        return isFast && isSmall && isReceiving;
    }

private:
    [[nodiscard]] std::uint64_t rowsIn(const std::string &table) const {
        const std::string answer = m_server.ask("SELECT count() FROM quorbel." + table);
        const auto rows = readNumber<std::uint64_t>(answer);
        require(rows.has_value(), answer);
        return *rows;
    }
    /// How many rows a second reached the cluster until no more than two seconds' waited.
    double catchUp() {
        ServiceProcess service({m_folder / "library", "", {"--port", "0"}});
        const Stopwatch wall;
        Traffic traffic(service);
        const auto isBehind = [&](std::uint64_t rows) {
            const double there = static_cast<double>(m_backlog) + wall.seconds() * kPerSecond;
            return static_cast<double>(rows) < there - 2.0 * kPerSecond;
        };
        std::uint64_t rows = rowsIn("events");
        for (; isBehind(rows); rows = rowsIn("events")) {
            require(wall.seconds() < 3600, "It does not catch up: " + service.journal());
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        const double rate = static_cast<double>(rows) / wall.seconds();
        const load::Sent sent = traffic.finish();
        m_received = static_cast<double>(sent.count) / sent.seconds;
        require(testing::waitUntil([&] { return rowsIn("events") == m_backlog + sent.count; }),
                "Rows are missing: " + service.journal());
        require(rowsIn("events_once") == m_backlog + sent.count, "Rows are there twice");
        m_memory = peakResident(service.pid());
        finish(service, sent);
        return rate;
    }
    double insertByClient() {
        writeRows();
        ServiceProcess service({m_folder / "alone", "", {"--port", "0"}});
        Traffic traffic(service);
        const Stopwatch wall;
        const std::string said = m_server.runClient(
            m_folder / "rows", {"--query", "INSERT INTO quorbel.events FORMAT TabSeparated"});
        const double seconds = wall.seconds();
        require(said.empty(), said);
        m_memoryAlone = peakResident(service.pid());
        finish(service, traffic.finish());
        return static_cast<double>(m_backlog) / seconds;
    }
    void writeRows() const {
        std::ofstream(m_folder / "query")
            << "SELECT * FROM quorbel.events WHERE time < '2026-02-01 00:00:00' INTO OUTFILE '"
            << (m_folder / "rows").string() << "' FORMAT TabSeparated";
        const std::string said = m_server.runClient(m_folder / "query", {});
        require(said.empty(), said);
        require(m_server.ask("TRUNCATE TABLE quorbel.events").empty(), "TRUNCATE");
    }
    static void finish(ServiceProcess &service, const load::Sent &sent) {
        service.terminate();
        require(load::counter(service.journal(), "stored") == sent.count,
                "Not all was stored: " + service.journal());
    }

    const std::filesystem::path m_folder;
    const std::uint64_t m_backlog;
    testing::ClickHouse m_server;
    double m_memory = 0;
    double m_memoryAlone = 0;
    double m_received = 0;
};

}  // namespace

}  // namespace quorbel::bench

int main(int argc, char **argv) {
    const auto events = argc == 3 ? quorbel::readNumber<std::uint64_t>(argv[2])
                                  : std::optional(quorbel::bench::kBacklog);
    if (argc < 2 || argc > 3 || !events) {
        std::fprintf(stderr, "Usage: %s FOLDER [EVENTS]\n", argv[0]);
        return 2;
    }
    return quorbel::bench::Bench(std::filesystem::path(argv[1]) / "catch-up", *events).run() ? 0
                                                                                             : 1;
}
