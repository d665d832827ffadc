#include "Measure.h"
#include "SampleLog.h"
#include "cluster/ClickHouse.h"
#include "cluster/ClusterSchema.h"
#include "platform/Files.h"
#include "service/output/ClusterDelivery.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>

namespace quorbel::bench {

namespace {

constexpr std::uint64_t kRows = 2'000'000;
constexpr std::size_t kPiece = std::size_t{8} << 20U;
constexpr int kRounds = 3;

/// What one way of inserting took, at best.
struct Cost {
    double wall = std::numeric_limits<double>::max();
    double sender = std::numeric_limits<double>::max();  ///< processor time
    double server = std::numeric_limits<double>::max();
};

void keepBest(Cost &best, const Cost &cost) {
    best = {std::min(best.wall, cost.wall), std::min(best.sender, cost.sender),
            std::min(best.server, cost.server)};
}

void require(bool isGood, const std::string &what) {
    if (!isGood) {
        std::fprintf(stderr, "%s\n", what.c_str());
        std::exit(1);
    }
}

class Bench {
public:
    explicit Bench(const std::filesystem::path &folder)
        : m_folder(folder), m_server(folder / "server") {
        std::filesystem::create_directories(m_folder / "library");
        writeSampleLog(m_folder / "library" / "2026-10-10.log", kRows, 0.003);
        require(m_server.start(), "ClickHouse does not start");
        std::ofstream(m_folder / "schema") << clusterSchema({}, {});
        const std::string said = m_server.runClient(m_folder / "schema", {"--multiquery"});
        require(said.empty(), said);
    }

    bool run() {
        Cost ours;
        Cost theirs;
        for (int i = 0; i < kRounds; ++i) {
            keepBest(ours, send());
            if (i == 0) {
                writeRows();
                m_bytesARow = figure(
                    "SELECT sum(bytes) / sum(rows) FROM system.parts WHERE active"
                    " AND table = 'events'");
            }
            keepBest(theirs, insertByClient());
        }
        tell("this service's output", ours);
        tell("clickhouse-client", theirs);
        std::printf("%-60s %10.1f\n", "bytes a row compressed", m_bytesARow);
        askAll();
        const bool isFast = report("sending to a cluster, times clickhouse-client",
                                   theirs.wall / ours.wall, "", false, 0.5);
        return report("memory above it", m_memory, "MB", true, 64) && isFast;
    }

private:
    [[nodiscard]] double figure(const std::string &sql) const {
        return std::strtod(m_server.ask(sql).c_str(), nullptr);
    }
    void empty() const {
        require(m_server.ask("TRUNCATE TABLE quorbel.events").empty(), "TRUNCATE");
    }

    /// All that an output does, the batch that is written down and synced included.
    Cost send() {
        empty();
        std::filesystem::remove_all(m_folder / "library" / "outputs");
        const std::size_t before = residentBytes();
        const double server = m_server.processorSeconds();
        const Stopwatch wall;
        const ProcessorWatch sender;
        LogStore store(m_folder / "library");
        store.prepare();
        EventFeed feed(store, m_folder / "library" / "outputs",
                       {.name = "bench", .kept = true, .history = true});
        ClusterSettings settings;
        settings.servers = {m_server.address()};
        ClusterDelivery delivery(settings, "bench");
        const std::atomic<bool> stop = false;
        while (const auto piece = feed.take(kPiece)) {
            const auto problem = delivery.deliver(*piece, stop);
            require(!problem, problem.value_or(""));
            require(feed.acknowledge(piece->first + piece->count), "The cursor");
            m_memory = std::max(m_memory, static_cast<double>(residentBytes() - before) / 1e6);
        }
        const Cost cost{wall.seconds(), sender.seconds(), m_server.processorSeconds() - server};
        require(figure("SELECT count() FROM quorbel.events_once") == kRows, "Rows are missing");
        return cost;
    }
    void writeRows() const {
        std::ofstream(m_folder / "query") << "SELECT * FROM quorbel.events FORMAT TabSeparated";
        std::ofstream(m_folder / "rows") << m_server.runClient(m_folder / "query", {});
    }
    Cost insertByClient() {
        empty();
        const double server = m_server.processorSeconds();
        const Stopwatch wall;
        const std::string said = m_server.runClient(
            m_folder / "rows", {"--query", "INSERT INTO quorbel.events FORMAT TabSeparated"});
        require(said.empty(), said);
        return {wall.seconds(), 0, m_server.processorSeconds() - server};
    }
    static void tell(const std::string &who, const Cost &cost) {
        std::printf("%-60s %10.0f rows/s\n", who.c_str(), kRows / cost.wall);
        std::printf("%-60s %10.2f, %.2f µs\n", "  processor time a row, its own, the server's",
                    cost.sender / kRows * 1e6, cost.server / kRows * 1e6);
    }
    void askAll() const {
        ask("rows merged", "OPTIMIZE TABLE quorbel.events FINAL");
        ask("counted by host", "SELECT host, count() FROM quorbel.events_once GROUP BY host");
        ask("a text looked for",
            "SELECT count() FROM quorbel.events_once WHERE"
            " positionCaseInsensitive(message, 'no such text') > 0");
        ask("counted by host without FINAL",
            "SELECT host, count() FROM quorbel.events GROUP BY host");
    }
    void ask(const std::string &what, const std::string &sql) const {
        const double server = m_server.processorSeconds();
        const Stopwatch wall;
        const std::string answer = m_server.ask(sql);
        require(!answer.starts_with("! "), answer);
        const double seconds = wall.seconds();
        std::printf("%-60s %10.0f rows/s, %.3f µs of processor a row\n", what.c_str(),
                    kRows / seconds, (m_server.processorSeconds() - server) / kRows * 1e6);
    }

    const std::filesystem::path m_folder;
    testing::ClickHouse m_server;
    double m_bytesARow = 0;
    double m_memory = 0;
};

}  // namespace

}  // namespace quorbel::bench

int main(int argc, char **argv) {
    if (argc < 2) {
        std::fprintf(stderr, "Usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    return quorbel::bench::Bench(std::filesystem::path(argv[1]) / "cluster").run() ? 0 : 1;
}
