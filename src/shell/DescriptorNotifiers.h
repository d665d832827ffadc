#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace quorbel {

/// Watches a descriptor from Qt's event loop for somebody whose descriptor comes, goes and changes.
class DescriptorNotifiers {
public:
    /// `onActivity` is called on the main thread, where it may call watch().
    explicit DescriptorNotifiers(std::function<void()> onActivity)
        : m_onActivity(std::move(onActivity)) {}
    ~DescriptorNotifiers();
    DescriptorNotifiers(const DescriptorNotifiers &) = delete;
    DescriptorNotifiers &operator=(const DescriptorNotifiers &) = delete;

    /// From now on that descriptor, -1 for none, for POLLIN and POLLOUT as far as in `events`.
    void watch(int fd, short events);

private:
    void replace(std::unique_ptr<QSocketNotifier> &notifier, QSocketNotifier::Type type);

    std::function<void()> m_onActivity;
    int m_fd = -1;
    std::unique_ptr<QSocketNotifier> m_input;
    std::unique_ptr<QSocketNotifier> m_output;
};

}  // namespace quorbel
