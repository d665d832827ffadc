#include "service/bus/Listeners.h"

#include <algorithm>
#include <utility>

namespace quorbel {

void Listeners::add(const std::string &name) {
    Listener &listener = m_listeners[name];
    listener.taken = listener.sent;
    listener.lags = false;
}

bool Listeners::taken(std::string_view name, std::uint64_t serial, Clock::time_point now) {
    const auto found = m_listeners.find(name);
    if (found == m_listeners.end()) {
        return false;
    }
    Listener &listener = found->second;
    if (serial <= listener.taken || serial > listener.sent) {
        return false;
    }
    listener.taken = serial;
    listener.since = now;
    // It gets nothing more before it has taken all.
    return serial == listener.sent && std::exchange(listener.lags, false);
}

bool Listeners::areBusy(Clock::time_point now, bool hurry) {
    const bool somebodyIsFaster = std::ranges::any_of(
        m_listeners, [](const auto &entry) { return !entry.second.lags && entry.second.mayGet(); });
    const Clock::duration patience =
        hurry && somebodyIsFaster ? Clock::duration(kHurriedPatience) : Clock::duration(kPatience);
    bool busy = false;
    for (auto &[name, listener] : m_listeners) {
        if (!listener.lags && !listener.mayGet()) {
            listener.lags = now - listener.since >= patience;
            busy = busy || !listener.lags;
        }
    }
    return busy;
}

std::vector<std::string> Listeners::ready() const {
    std::vector<std::string> names;
    for (const auto &[name, listener] : m_listeners) {
        if (!listener.lags) {
            names.push_back(name);
        }
    }
    return names;
}

std::uint64_t Listeners::send(const std::string &name, Clock::time_point now) {
    Listener &listener = m_listeners[name];
    if (listener.sent == listener.taken) {
        listener.since = now;
    }
    return ++listener.sent;
}

}  // namespace quorbel
