// The service is killed under load, and sometimes everything that had not reached the disk is taken
// away as well, as a power failure would.

#include "load/LoadCheck.h"
#include "load/LoadSender.h"
#include "load/SoakForm.h"
#include "service/ServiceFixture.h"
#include "support/Seed.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace quorbel {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using load::Plan;
using load::Tally;
using testing::ServiceProcess;

constexpr std::uint64_t kPerBlock = 10;
constexpr std::chrono::milliseconds kBetweenBlocks{2};
// Local0.
constexpr unsigned kInformational = 134;
constexpr unsigned kCritical = 130;

struct CrashTest : testing::ServiceFixture {
    CrashTest() {
        plan.transport = Plan::Transport::kTcp;
        plan.count = 10'000;
        plan.length = 300;
    }

    std::unique_ptr<ServiceProcess> startProbed() {
        setenv("LD_PRELOAD", QUORBEL_SYNC_PROBE_PATH, 1);  // NOLINT(concurrency-mt-unsafe)
        setenv("QUORBEL_SYNC_PROBE", probe().c_str(), 1);  // NOLINT(concurrency-mt-unsafe)
        auto service = start();
        unsetenv("LD_PRELOAD");  // NOLINT(concurrency-mt-unsafe)
        return service;
    }

    /// Sends until that moment, and notes when each block was handed to the kernel.
    void sendUntil(const ServiceProcess &service, Clock::time_point end) {
        const UniqueFd socket = testing::connectTo(service.port(), SOCK_STREAM);
        sentAt.clear();
        for (std::uint64_t next = 0; next < plan.count && Clock::now() < end; next += kPerBlock) {
            std::string frames;
            for (std::uint64_t number = next; number < next + kPerBlock; ++number) {
                frames += load::streamFrame(plan, number);
            }
            testing::sendTo(socket, frames);
            sentAt.push_back(Clock::now());
            std::this_thread::sleep_until(std::min(end, sentAt.back() + kBetweenBlocks));
        }
    }

    /// Takes away what the service never synced.
    void losePower() const {
        std::map<std::uint64_t, std::uintmax_t> synced;
        std::ifstream stream(probe());
        std::uint64_t inode = 0;
        std::uintmax_t size = 0;
        while (stream >> inode >> size) {
            synced[inode] = std::max(synced[inode], size);
        }
        for (const std::string &name : listFolder(folder.path())) {
            struct stat status {};
            if (hasExtension(name, "log") && stat((folder.path() / name).c_str(), &status) == 0) {
                std::filesystem::resize_file(folder.path() / name, synced[status.st_ino]);
            }
        }
    }

    [[nodiscard]] std::string probe() const { return (probes.path() / "synced").string(); }

    /// Expects every message of that kind that was sent before `moment` to be stored.
    void expectStored(const Tally &found, unsigned priority, Clock::time_point moment) {
        for (std::size_t block = 0; block < sentAt.size() && sentAt[block] < moment; ++block) {
            for (std::size_t n = block * kPerBlock; n < (block + 1) * kPerBlock; ++n) {
                if (plan.priorities[n % plan.priorities.size()] == priority) {
                    ++owed;
                    EXPECT_TRUE(found.has[n]) << "message " << n << " of run " << plan.run;
                }
            }
        }
    }

    testing::TemporaryFolder probes;
    Plan plan;
    std::vector<Clock::time_point> sentAt;
    std::uint64_t owed = 0;
};

TEST_F(CrashTest, LosesNothingThatIsOlderThanAMoment) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizers' libraries must be loaded before any other";
#endif
    const unsigned seed = testing::seed();
    std::mt19937 random(seed);
    SCOPED_TRACE("seed " + std::to_string(seed));
    const int rounds = load::soakOr(100, 10);
    std::uint64_t sent = 0;
    std::uint64_t cut = 0;
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        plan.run = static_cast<std::uint64_t>(round) + 1;
        // Each critical message takes those before it to disk, so some rounds have none.
        plan.priorities.assign(1, kInformational);
        if (round % 4 > 1) {
            plan.priorities.assign(49, kInformational);
            plan.priorities.push_back(kCritical);
        }
        std::filesystem::remove(probe());
        const auto service = startProbed();
        const auto length = std::chrono::milliseconds(50 + random() % 2500);
        sendUntil(*service, Clock::now() + length);
        const auto killed = Clock::now();
        service->kill();
        const Tally before = load::tally(folder.path(), plan);
        const bool power = round % 2 == 0;
        if (power) {
            losePower();
        }
        // Whoever starts next repairs what there is to repair.
        const auto next = start();
        const Tally after = load::tally(folder.path(), plan);
        SCOPED_TRACE(load::describe(after));
        EXPECT_TRUE(after.isClean());
        EXPECT_LE(after.cut, 1U);
        EXPECT_EQ(after.disordered, 0U);
        if (!power) {
            EXPECT_EQ(after.has, before.has);
        }
        // A machine that builds or tests something else may be late itself.
        expectStored(after, kInformational, killed - load::soakOr(1500ms, 2000ms));
        expectStored(after, kCritical, killed - load::soakOr(500ms, 1000ms));
        sent += sentAt.size() * kPerBlock;
        cut += after.cut;
        EXPECT_EQ(next->terminate(), 0);
    }
    EXPECT_GT(owed, 0U);
    load::figure("kill -9 under load, every second time with a loss of power: " +
                 std::to_string(rounds) + " times, " + std::to_string(sent) + " messages sent, " +
                 std::to_string(owed) + " owed and there, " + std::to_string(cut) + " cut short");
}

}  // namespace
}  // namespace quorbel
