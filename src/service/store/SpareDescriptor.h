#pragma once

#include "platform/UniqueFd.h"

#include <sys/eventfd.h>

#include <cerrno>

namespace quorbel {

/// A descriptor that is kept for when there is none left. One thread at a time.
class SpareDescriptor {
public:
    SpareDescriptor() { refill(); }

    /// What `open`, which gives a UniqueFd, gives; when that has no descriptor left it is called
    /// again with the spare one let go.
    template <typename Open>
    UniqueFd useFor(const Open &open) {
        UniqueFd fd = open();
        if (!fd.isOpen() && (errno == EMFILE || errno == ENFILE) && m_spare.isOpen()) {
            m_spare.reset();
            fd = open();
        }
        return fd;
    }
    /// Takes another one, when it was let go and there is one.
    void refill() {
        if (!m_spare.isOpen()) {
            m_spare = UniqueFd(::eventfd(0, EFD_CLOEXEC));
        }
    }

private:
    UniqueFd m_spare;
};

}  // namespace quorbel
