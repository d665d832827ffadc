#include "service/output/Life.h"

#include "support/WaitUntil.h"

#include <sys/mman.h>
#include <unistd.h>

#include <ctime>
#include <fstream>
#include <new>
#include <utility>

namespace quorbel::testing {

namespace {

constexpr std::int64_t kHour = 3600;
constexpr std::int64_t kDay = 24 * kHour;

LogStore &prepared(LogStore &store) {
    store.prepare();
    return store;
}

}  // namespace

CollectorTalk &CollectorTalk::make() {
    void *memory = ::mmap(nullptr, sizeof(CollectorTalk), PROT_READ | PROT_WRITE,
                          MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return *new (memory) CollectorTalk;
}

Life::Life(const Setup &setup, unsigned seed, CollectorTalk &talk)
    : m_talk(talk),
      m_random(seed),
      m_name(std::to_string(seed)),
      m_ledger(setup.ledger),
      m_store(setup.library),
      m_feed(prepared(m_store), setup.library / "outputs",
             EventFeed::Settings{.name = "main", .kept = true, .history = true}),
      m_delivery(setup.cluster, "here", kToInsert),
      m_forward(m_store, setup.library / "outputs", setup.forward, kToInsert) {
    m_forward.start();
}

void Life::run() {
    while (true) {
        append();
        send();
        remove();
    }
}

bool Life::finish() {
    return waitUntil([this] {
        while (send()) {
        }
        return m_feed.measure().events == 0;
    });
}

void Life::append() {
    // A clock that is set back now and then: another day's file.
    append("Error", m_random() % 10 == 0 ? kDay : 0, m_random() % 300);
}

std::size_t Life::append(const std::string &severity, std::int64_t age, std::size_t count) {
    const std::int64_t seconds = std::time(nullptr) - age;
    std::string lines;
    for (; count > 0; --count) {
        lines += std::to_string(seconds) + ",Local7." + severity + ",h,event " + m_name + '-' +
                 std::to_string(++m_count) + ".\r\n";
    }
    const auto result = m_store.append(lines, seconds, false);
    m_talk.diskProblems += result.notStored > 0 ? 1 : 0;
    return result.stored;
}

/// Among others that stay, in today's file or an old one.
void Life::appendRemovable() {
    const std::int64_t age = m_random() % 2 == 0 ? kHour : 3 * kDay;
    std::ofstream ledger(m_ledger, std::ios::app);
    for (auto i = m_random() % 5; i-- > 0;) {
        const std::size_t first = m_count + 1;
        const std::size_t stored = append("Debug", age, m_random() % 300);
        for (std::size_t number = first; number < first + stored; ++number) {
            ledger << "event " << m_name << '-' << number << ".\n";
        }
        append("Error", age, m_random() % 100);
        ledger.flush();
        for (auto more = m_random() % 5; more > 0; --more) {
            send();
        }
    }
}

Life::Removal::Removal(LogStore &store, std::atomic<unsigned> &passes)
    : retention(
          store, feed,
          [&passes] {
              ++passes;
              return ClockReading{std::time(nullptr), 0, true};
          },
          std::chrono::milliseconds(1)) {
    retention.configure({{"removalDebug", 10}, {"removalDebugUnits", 0}});
}

/// Goes on sending while retention goes through the files.
void Life::remove() {
    constexpr unsigned kWhole = 3;  // the first pass may have had other rules
    if (!m_removal && m_talk.removalsDone != m_talk.removalsWanted) {
        appendRemovable();
        m_passes = 0;
        m_removal.emplace(m_store, m_passes);
        m_talk.removalsBegun = m_talk.removalsWanted.load();
    } else if (m_removal && m_passes >= kWhole) {
        m_removal.reset();
        m_talk.removalsDone = m_talk.removalsBegun.load();
    }
}

/// False when there was nothing to send.
bool Life::send() {
    const auto piece = m_feed.take(4096U << m_random() % 4);
    if (!piece) {
        m_talk.diskProblems += m_feed.problem().empty() ? 0 : 1;
        return false;
    }
    const auto problem = m_delivery.deliver(*piece, m_stop);
    if (problem) {
        m_talk.certificateProblems += problem->find("certificate") == std::string::npos ? 0 : 1;
        usleep(10'000);
        m_feed.rewind();
    } else if (!m_feed.acknowledge(piece->first + piece->count)) {
        ++m_talk.diskProblems;
    }
    return true;
}

}  // namespace quorbel::testing
