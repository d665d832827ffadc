#pragma once

#include "platform/Mutex.h"
#include "platform/UniqueFd.h"
#include "service/base/OutputState.h"
#include "service/output/EventFeed.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

namespace quorbel {

/// Sends what is stored to a receiver, on a thread of its own: it never holds up storing.
///
/// What goes wrong is said in the journal once until it is something else, and so is that it works
/// again. Whoever makes an output calls start() once and stop() before its end.
class Output {
public:
    /// `kind` is that of OutputState. `store` must outlive the object.
    Output(LogStore &store, const std::filesystem::path &folder, std::string_view kind,
           EventFeed::Settings settings);
    virtual ~Output();
    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;

    void start();
    /// Asks the thread to end, from any thread; stop() waits for it, too.
    void askToStop();
    void stop();

    /// Any thread, at once.
    [[nodiscard]] OutputState state() const;

protected:
    using Clock = std::chrono::steady_clock;

    // All of these are for the output's thread.

    /// What the thread does until isStopping(). This one takes a piece, delivers and acknowledges
    /// it, and waits after a problem for a second, twice as long after each further one up to a
    /// minute.
    virtual void run();
    /// For run(): the piece reaches its receiver, or what is in the way, as one line. Comes back
    /// soon when isStopping().
    virtual std::optional<std::string> deliver(const EventFeed::Piece &piece);
    /// For run(): the most bytes of a piece.
    [[nodiscard]] virtual std::size_t pieceSize() const { return std::size_t{1} << 20U; }

    [[nodiscard]] EventFeed &feed() { return m_feed; }
    [[nodiscard]] bool isStopping() const { return m_stopping; }
    /// For those who wait by other means: becomes true when stop was asked for.
    [[nodiscard]] const std::atomic<bool> &stopping() const { return m_stopping; }
    /// Becomes readable when the output is to stop, or when something was stored after
    /// armWaking(); cleared by clearWaking().
    [[nodiscard]] int wakeFd() const { return m_waker.fd(); }
    /// False when something was stored since clearWaking(): there is no need to wait.
    bool armWaking() { return m_waker.arm(); }
    void clearWaking() { m_waker.clear(); }

    /// Until something is stored or `limit` is over, or it is to stop.
    void waitForEvents(std::chrono::milliseconds limit);
    /// Until `time` is over, or it is to stop.
    void pause(std::chrono::milliseconds time);

    /// So many events reached the receiver.
    void noteSent(std::uint64_t events);
    /// What is in the way, as one line, or that nothing is.
    void noteProblem(const std::string &problem);
    void noteWorking();
    /// Looks at the lag, if that was not done within the last second.
    void measure();

private:
    EventFeed m_feed;
    AppendWaker m_waker;
    std::atomic<bool> m_stopping = false;

    mutable Mutex m_mutex;
    OutputState m_state GUARDED_BY(m_mutex);

    std::thread m_thread;
};

}  // namespace quorbel
