#include "shell/PackingPump.h"

namespace quorbel {

PackingPump::PackingPump(EventList &list) : m_packing(list) {
    connect(&m_timer, &QTimer::timeout, this, &PackingPump::step);
    m_timer.start(kBusy);
}

void PackingPump::step() {
    m_timer.setInterval(m_packing.step() ? kBusy : kIdle);
}

}  // namespace quorbel
