#include "platform/gui/MemoryWriter.h"

#include <QSettings>

#include <algorithm>
#include <iterator>
#include <utility>

namespace quorbel {

void MemoryWriter::write(MemoryChange change) {
    {
        const MutexLock lock(m_mutex);
        m_waiting.push_back(std::move(change));
    }
    m_wake.notifyOne();
    if (!m_thread.joinable()) {
        m_thread = std::thread([this] { work(); });
    }
}

std::optional<QVariant> MemoryWriter::find(const QString &file, const QString &key) {
    const MutexLock lock(m_mutex);
    for (const auto *changes : {&m_waiting, &m_underWay}) {
        const auto last = std::find_if(
            changes->rbegin(), changes->rend(),
            [&](const MemoryChange &change) { return change.file == file && change.key == key; });
        if (last != changes->rend()) {
            return last->value;
        }
    }
    return m_before && m_before->file == file ? std::optional(m_before->byKey.value(key))
                                              : std::nullopt;
}

void MemoryWriter::finish() {
    if (!m_thread.joinable()) {
        return;
    }
    {
        const MutexLock lock(m_mutex);
        m_stop = true;
    }
    m_wake.notifyOne();
    m_thread.join();
    const MutexLock lock(m_mutex);
    m_stop = false;
}

void MemoryWriter::work() {
    MutexLock lock(m_mutex);
    for (;;) {
        m_wake.wait(lock, [this]() REQUIRES(m_mutex) { return m_stop || !m_waiting.empty(); });
        if (m_waiting.empty()) {
            return;
        }
        const auto others = std::ranges::find_if(
            m_waiting, [file = m_waiting.front().file](const MemoryChange &change) {
                return change.file != file;
            });
        m_underWay.assign(std::make_move_iterator(m_waiting.begin()),
                          std::make_move_iterator(others));
        m_waiting.erase(m_waiting.begin(), others);
        const std::vector<MemoryChange> changes = m_underWay;
        lock.unlock();
        writeFile(changes);
        lock.lock();
        m_underWay.clear();
        m_before.reset();
    }
}

/// Its end writes them.
void MemoryWriter::writeFile(const std::vector<MemoryChange> &changes) {
    QSettings settings(changes.front().file, QSettings::IniFormat);
    Values before{changes.front().file, {}};
    for (const QString &key : settings.allKeys()) {
        before.byKey.insert(key, settings.value(key));
    }
    {
        const MutexLock lock(m_mutex);
        m_before = std::move(before);
    }
    for (const MemoryChange &change : changes) {
        change.value.isValid() ? settings.setValue(change.key, change.value)
                               : settings.remove(change.key);
    }
}

}  // namespace quorbel
