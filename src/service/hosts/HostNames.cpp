#include "service/hosts/HostNames.h"

#include "common/SettingsDocument.h"
#include "platform/Mutex.h"
#include "service/base/Journal.h"

#include <netdb.h>

#include <array>
#include <atomic>
#include <deque>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace quorbel {

namespace {

std::optional<std::string> askSystem(const IpAddress &address) {
    sockaddr_storage socketAddress{};
    const socklen_t length = address.toSocketAddress(socketAddress);
    std::array<char, NI_MAXHOST> name{};
    if (::getnameinfo(reinterpret_cast<const sockaddr *>(&socketAddress), length, name.data(),
                      name.size(), nullptr, 0, NI_NAMEREQD) != 0) {
        return std::nullopt;
    }
    return name.data();
}

/// A name as it is shown. Whoever owns an address decides what it is called: a name that reads as
/// an address would pass for another host.
std::string usableName(std::string name) {
    if (name.ends_with('.')) {
        name.pop_back();
    }
    return IpAddress::parse(name) ? std::string() : name;
}

}  // namespace

/// What the object and its threads share.
struct HostNames::Shared {
    struct Answer {
        IpAddress address;
        std::string name;
    };

    explicit Shared(Lookup lookup_) : lookup(std::move(lookup_)) {}

    void work() {
        MutexLock lock(mutex);
        for (;;) {
            wake.wait(lock, [this]() REQUIRES(mutex) { return stop || !waiting.empty(); });
            if (stop) {
                return;
            }
            const IpAddress address = waiting.front();
            waiting.pop_front();
            lock.unlock();
            std::string name = usableName(lookup(address).value_or(""));
            lock.lock();
            answers.push_back({address, std::move(name)});
            hasAnswers = true;
        }
    }

    const Lookup lookup;
    std::atomic<bool> hasAnswers = false;
    Mutex mutex;
    Condition wake;
    bool started GUARDED_BY(mutex) = false;
    bool stop GUARDED_BY(mutex) = false;
    std::deque<IpAddress> waiting GUARDED_BY(mutex);
    std::vector<Answer> answers GUARDED_BY(mutex);
};

HostNames::HostNames() : HostNames(askSystem) {}

HostNames::HostNames(Lookup lookup) : m_shared(std::make_shared<Shared>(std::move(lookup))) {}

HostNames::~HostNames() {
    {
        const MutexLock lock(m_shared->mutex);
        m_shared->stop = true;
    }
    m_shared->wake.notifyAll();
}

void HostNames::configure(const Dictionary &settings) {
    m_wanted = settingFlag(settings, "hostsDisplay");
}

void HostNames::beginTurn(Clock::time_point now) {
    m_now = now;
    if (!m_shared->hasAnswers) {
        return;
    }
    std::vector<Shared::Answer> answers;
    {
        const MutexLock lock(m_shared->mutex);
        answers = std::exchange(m_shared->answers, {});
        m_shared->hasAnswers = false;
    }
    for (Shared::Answer &answer : answers) {
        --m_waiting;
        ++m_lookedUp;
        m_found += answer.name.empty() ? 0U : 1U;
        const auto expires = now + (answer.name.empty() ? kKeepFailure : kKeepName);
        m_entries[answer.address] = {std::move(answer.name), false, expires};
    }
}

std::string_view HostNames::nameOf(const IpAddress &address) {
    const auto found = m_entries.find(address);
    if (found == m_entries.end()) {
        if (request(address)) {
            makeRoom();
            m_entries.emplace(address, Entry());
        }
        return {};
    }
    Entry &entry = found->second;
    if (!entry.waiting && m_now >= entry.expires) {
        entry.waiting = request(address);
    }
    return entry.name;
}

/// False when too many wait.
bool HostNames::request(const IpAddress &address) {
    if (m_waiting >= kMostWaiting) {
        ++m_notLookedUp;
        return false;
    }
    const MutexLock lock(m_shared->mutex);
    if (!std::exchange(m_shared->started, true)) {
        startThreads();
    }
    m_shared->waiting.push_back(address);
    ++m_waiting;
    m_shared->wake.notifyOne();
    return true;
}

void HostNames::startThreads() {
    try {
        for (std::size_t i = 0; i < kThreads; ++i) {
            std::thread([shared = m_shared] { shared->work(); }).detach();
        }
    } catch (const std::system_error &error) {
        // With none of them, all hosts keep their addresses.
        say(JournalLevel::kError, std::string("Host names are not looked up: ") + error.what());
    }
}

/// Anybody can invent senders, so there is an end to what is kept of them.
void HostNames::makeRoom() {
    if (m_entries.size() < kMostKept) {
        return;
    }
    std::erase_if(m_entries, [this](const auto &entry) {
        return !entry.second.waiting && m_now >= entry.second.expires;
    });
    if (m_entries.size() >= kMostKept) {
        std::erase_if(m_entries, [](const auto &entry) { return !entry.second.waiting; });
    }
}

}  // namespace quorbel
