#pragma once

#include "core/MessagePacking.h"

#include <QObject>
#include <QTimer>

#include <chrono>

namespace quorbel {

/// Drives the packing of the list's messages from Qt's event loop: soon again while there is
/// something to pack, else now and then.
class PackingPump : public QObject {
    Q_OBJECT

public:
    static constexpr std::chrono::milliseconds kBusy{20};
    static constexpr std::chrono::milliseconds kIdle{5000};

    /// `list` outlives this.
    explicit PackingPump(EventList &list);

private:
    void step();

    MessagePacking m_packing;
    QTimer m_timer;
};

}  // namespace quorbel
