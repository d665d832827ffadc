#pragma once

#include "platform/Value.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace quorbel {

/// What became of a question to the service.
enum class StatusOutcome {
    kTold,
    kNoBus,       ///< there is no system bus, or it does not answer
    kNotRunning,  ///< nobody owns the service's name
    kNotAllowed,  ///< the bus lets this user not ask
    kTooOld,      ///< the service does not know the properties
    kNoAnswer     ///< in time
};

struct StatusAnswer {
    StatusOutcome outcome = StatusOutcome::kNoBus;
    /// The service's properties by their names when it told them, else none. Arrays and structs are
    /// arrays, dictionaries by text are dictionaries, numbers integers (unsigned only above those).
    Dictionary properties;
};

/// Asks the service for the properties of its interface "Status", one question at a time, and never
/// has it started.
///
/// It has no thread and no event loop of its own, and nothing here waits: while it isAsking(), the
/// owner's loop watches fd() for events() and calls dispatch(), also when timeout() has passed. The
/// connection is kept from one question to the next. fd() changes when it is opened anew.
class StatusReader {
public:
    using Handler = std::function<void(StatusAnswer answer)>;

    /// `patience` is how long an answer is waited for. The handler is called from within ask() or
    /// dispatch(), once for each question.
    explicit StatusReader(Handler handler,
                          std::chrono::milliseconds patience = std::chrono::seconds(3));
    ~StatusReader();
    StatusReader(const StatusReader &) = delete;
    StatusReader &operator=(const StatusReader &) = delete;

    /// Does nothing while the answer to another question is awaited.
    void ask();
    [[nodiscard]] bool isAsking() const;
    /// -1 while there is no connection.
    [[nodiscard]] int fd() const;
    /// What to poll fd() for (POLLIN and, while output is pending, POLLOUT).
    [[nodiscard]] short events() const;
    /// When to call dispatch() even if fd() is quiet; nothing while no question is asked.
    [[nodiscard]] std::optional<std::chrono::milliseconds> timeout() const;
    void dispatch();

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace quorbel
