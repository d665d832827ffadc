#pragma once

#include "platform/Mutex.h"

#include <QHash>
#include <QString>
#include <QVariant>

#include <optional>
#include <thread>
#include <vector>

namespace quorbel {

/// A value to be set in a settings file; one without a value is removed.
struct MemoryChange {
    QString file;
    QString key;
    QVariant value;
};

/// Writes settings files on a thread, in the order in which it is told.
///
/// QSettings writes with a lock file and waits for the disk, and whoever reads the same file
/// meanwhile waits with it, so what is on its way is read from here.
class MemoryWriter {
public:
    MemoryWriter() = default;
    ~MemoryWriter() { finish(); }
    MemoryWriter(const MemoryWriter &) = delete;
    MemoryWriter &operator=(const MemoryWriter &) = delete;

    void write(MemoryChange change);
    /// The value as it will be, invalid where there is none; nothing when only the file says.
    [[nodiscard]] std::optional<QVariant> find(const QString &file, const QString &key);
    /// Waits until all is written. What comes later is written as before.
    void finish();

private:
    /// What a file held before it was written to.
    struct Values {
        QString file;
        QHash<QString, QVariant> byKey;
    };

    void work();
    void writeFile(const std::vector<MemoryChange> &changes);

    Mutex m_mutex;
    Condition m_wake;
    std::vector<MemoryChange> m_waiting GUARDED_BY(m_mutex);
    std::vector<MemoryChange> m_underWay GUARDED_BY(m_mutex);  // of one file
    std::optional<Values> m_before GUARDED_BY(m_mutex);        // while that is written
    bool m_stop GUARDED_BY(m_mutex) = false;
    std::thread m_thread;  // from the first change on
};

}  // namespace quorbel
