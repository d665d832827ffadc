#pragma once

#include <functional>
#include <memory>

namespace quorbel {

/// Keeps one instance of the program per user session, by the name com.Halvern.Quorbel on the
/// session bus, after the conventions of org.freedesktop.Application: a second start calls
/// Activate on the first and ends.
class SingleInstance {
public:
    enum class Role {
        kFirst,     ///< owns the name; `onActivate` is called for each later start
        kSecond,    ///< the first instance was asked to show itself; this one should end
        kNoSession  ///< no session bus; the program runs on its own
    };

    explicit SingleInstance(std::function<void()> onActivate);
    ~SingleInstance();
    SingleInstance(const SingleInstance &) = delete;
    SingleInstance &operator=(const SingleInstance &) = delete;

    [[nodiscard]] Role role() const;
    /// The descriptor to watch for input, after which dispatch() is to be called; -1 when none.
    [[nodiscard]] int fd() const;
    void dispatch();

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace quorbel
