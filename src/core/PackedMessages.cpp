#include "core/PackedMessages.h"

#include <utility>

namespace quorbel {

void UnpackedMessages::add(PackedMessages &messages) {
    if (m_latest.size() == kMost) {
        forget(*m_latest.front());
    }
    m_latest.push_back(&messages);
}

void UnpackedMessages::forget(PackedMessages &messages) {
    std::erase(m_latest, &messages);
    messages.m_isUnpacked = false;
    m_spare = std::exchange(messages.m_unpacked, {});
}

PackedMessages::PackedMessages(PackedBytes packed, UnpackedMessages &others)
    : m_packed(std::make_shared<const PackedBytes>(std::move(packed))), m_others(others) {}

PackedMessages::~PackedMessages() {
    if (m_isUnpacked) {
        m_others.forget(*this);
    }
}

void PackedMessages::unpack() {
    m_others.add(*this);
    m_unpacked = std::exchange(m_others.m_spare, {});
    m_packed->unpackInto(m_unpacked);
    m_isUnpacked = true;
}

}  // namespace quorbel
