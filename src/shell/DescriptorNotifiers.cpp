#include "shell/DescriptorNotifiers.h"

#include <poll.h>

#include <utility>

namespace quorbel {

DescriptorNotifiers::~DescriptorNotifiers() = default;

void DescriptorNotifiers::watch(int fd, short events) {
    if (fd != m_fd) {
        m_fd = fd;
        replace(m_input, QSocketNotifier::Read);
        replace(m_output, QSocketNotifier::Write);
    }
    if (m_fd >= 0) {
        m_input->setEnabled((events & POLLIN) != 0);
        m_output->setEnabled((events & POLLOUT) != 0);
    }
}

void DescriptorNotifiers::replace(std::unique_ptr<QSocketNotifier> &notifier,
                                  QSocketNotifier::Type type) {
    if (notifier) {
        // It may be the one whose signal is being handled.
        notifier->setEnabled(false);
        notifier.release()->deleteLater();
    }
    if (m_fd >= 0) {
        notifier = std::make_unique<QSocketNotifier>(m_fd, type);
        QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(),
                         [this] { m_onActivity(); });
    }
}

}  // namespace quorbel
