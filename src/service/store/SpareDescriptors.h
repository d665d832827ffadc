#pragma once

#include "platform/UniqueFd.h"

#include <fcntl.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <utility>
#include <vector>

namespace quorbel {

/// Descriptors that are kept for when there are none left. One thread at a time. Other threads may
/// take whatever descriptor is free at any moment.
class SpareDescriptors {
public:
    explicit SpareDescriptors(std::size_t count) : m_count(count) { refill(); }

    /// What `open`, which gives a UniqueFd, gives; when that has no descriptor left it is called
    /// again with a spare one let go, which another thread may then be quicker to take.
    template <typename Open>
    UniqueFd useFor(const Open &open) {
        UniqueFd fd = open();
        if (!fd.isOpen() && (errno == EMFILE || errno == ENFILE) && !m_spare.empty()) {
            m_spare.pop_back();
            fd = open();
        }
        return fd;
    }
    /// Another descriptor of what `fd` is, which nobody can take away from this.
    UniqueFd duplicate(int fd) {
        UniqueFd copy(::fcntl(fd, F_DUPFD_CLOEXEC, 0));
        if (!copy.isOpen() && !m_spare.empty() &&
            ::dup3(fd, m_spare.back().get(), O_CLOEXEC) >= 0) {
            copy = std::move(m_spare.back());
            m_spare.pop_back();
        }
        return copy;
    }
    /// Takes others for those that were let go, as far as there are some.
    void refill() {
        while (m_spare.size() < m_count) {
            UniqueFd fd(::fcntl(nothing(), F_DUPFD_CLOEXEC, 0));
            if (!fd.isOpen()) {
                break;
            }
            m_spare.push_back(std::move(fd));
        }
    }
    /// Closes what `fd` stands for. When a spare one was let go, the descriptor takes its place:
    /// whoever waits for descriptors would have it sooner than refill().
    void refillWith(UniqueFd fd) {
        if (m_spare.size() < m_count && fd.isOpen() &&
            ::dup3(nothing(), fd.get(), O_CLOEXEC) >= 0) {
            m_spare.push_back(std::move(fd));
        }
    }

private:
    /// What spare descriptors stand for.
    static int nothing() {
        static const UniqueFd descriptor(::eventfd(0, EFD_CLOEXEC));
        return descriptor.get();
    }

    std::size_t m_count;
    std::vector<UniqueFd> m_spare;
};

}  // namespace quorbel
