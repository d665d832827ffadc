#pragma once

#include "platform/Mutex.h"
#include "service/base/OutputState.h"
#include "service/output/EventFeed.h"
#include "service/store/AppendWaker.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

namespace quorbel {

/// Sends what is stored to a receiver, on a thread of its own: it never holds up storing.
///
/// What is in the way is said in the journal once until it is something else, and so is that it
/// works again. Whoever makes an output calls start() once, and stop() before its end.
class Output {
public:
    /// `kind` is that of OutputState. `store` must outlive the object. Throws std::system_error
    /// when there is no descriptor left.
    Output(LogStore &store, const std::filesystem::path &folder, std::string_view kind,
           EventFeed::Settings settings);
    virtual ~Output();
    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;

    void start();
    /// Asks the thread to end; any thread.
    void askToStop();
    /// Does that, and waits for it.
    void stop();
    /// Whether the thread has come to its end: stop() does not wait then.
    [[nodiscard]] bool hasEnded() const { return m_hasEnded; }

    /// Any thread, at once.
    [[nodiscard]] OutputState state() const;
    /// Since the object was made. Any thread, at once.
    [[nodiscard]] OutputTotals totals() const;

protected:
    using Clock = std::chrono::steady_clock;

    // All of these are for the output's thread.

    /// What the thread does until isStopping(). This one takes a piece, delivers and acknowledges
    /// it, and waits after a problem for a second, twice as long after each further one up to a
    /// minute.
    virtual void run();
    /// For run(): brings the piece to its receiver, or says in one line what is in the way, also
    /// when isStopping(). Calls noteSent().
    virtual std::optional<std::string> deliver(const EventFeed::Piece &piece);
    /// For run(): about the most bytes of a piece.
    [[nodiscard]] virtual std::size_t pieceSize() const { return std::size_t{1} << 20U; }

    [[nodiscard]] EventFeed &feed() { return m_feed; }
    [[nodiscard]] bool isStopping() const { return m_stopping; }
    /// The same for those who wait by other means; true from then on.
    [[nodiscard]] const std::atomic<bool> &stopping() const { return m_stopping; }

    /// The next piece. When there is none yet, waits until `limit` is over, something is stored,
    /// `fd` is readable (if it is not -1), or it is to stop, and looks once more. What the feed
    /// cannot do is noted as a problem.
    std::optional<EventFeed::Piece> next(std::size_t mostBytes, std::chrono::milliseconds limit,
                                         int fd = -1);
    /// Until `time` is over, or it is to stop.
    void pause(std::chrono::milliseconds time);
    /// How long to wait after a problem: longer from time to time, until noteWorking().
    std::chrono::milliseconds patience();
    /// Acknowledges, and notes what is in the way of that.
    bool acknowledge(std::uint64_t number);

    /// So many events reached the receiver.
    void noteSent(std::uint64_t events);
    /// What is in the way, as one line.
    void noteProblem(const std::string &problem);
    /// Nothing is.
    void noteWorking();
    /// Looks at the lag, if that was not done just now.
    void measure();

private:
    static constexpr std::size_t kRateSeconds = 60;

    void work();
    void waitForEvents(std::chrono::milliseconds limit, int fd);
    void sayOnce(const std::string &problem);

    EventFeed m_feed;
    const std::uint64_t m_removedBefore = m_feed.removedUnsent();
    AppendWaker m_waker;
    const std::string m_name;
    const Clock::time_point m_begin = Clock::now();
    std::atomic<bool> m_stopping = false;
    std::atomic<bool> m_hasEnded = false;

    // Of the output's thread.
    std::chrono::seconds m_patience{0};
    Clock::time_point m_measured;
    std::string m_said;  ///< the problem that the journal has; empty when it works

    mutable Mutex m_mutex;
    OutputState m_state GUARDED_BY(m_mutex);
    /// What was sent in each of the last seconds, by the second.
    struct Second {
        std::int64_t second = -1;
        std::uint64_t events = 0;
    };
    std::array<Second, kRateSeconds> m_seconds GUARDED_BY(m_mutex){};

    std::thread m_thread;
};

}  // namespace quorbel
