#include "core/PackedMessages.h"

#include <utility>

namespace quorbel {

MessageBytes UnpackedMessages::takeRoom() {
    if (m_spare.empty()) {
        return {};
    }
    MessageBytes room = std::move(m_spare.back());
    m_spare.pop_back();
    return room;
}

void UnpackedMessages::giveRoom(MessageBytes room) {
    if (m_spare.size() < UnpackingAhead::kMost) {
        m_spare.push_back(std::move(room));
    }
}

void UnpackedMessages::add(PackedMessages &messages) {
    if (m_latest.size() == kMost) {
        forget(*m_latest.front());
    }
    m_latest.push_back(&messages);
}

void UnpackedMessages::forget(PackedMessages &messages) {
    std::erase(m_latest, &messages);
    messages.m_isUnpacked = false;
    giveRoom(std::exchange(messages.m_unpacked, {}));
}

PackedMessages::PackedMessages(PackedBytes packed, UnpackedMessages &others)
    : m_packed(std::make_shared<const PackedBytes>(std::move(packed))), m_others(others) {}

PackedMessages::~PackedMessages() {
    if (m_isUnpacked) {
        m_others.forget(*this);
    }
}

void PackedMessages::foresee() {
    if (!m_isUnpacked) {
        MessageBytes room = m_others.takeRoom();
        m_others.m_ahead.begin(m_packed, room);
        m_others.giveRoom(std::move(room));
    }
}

void PackedMessages::unpack() {
    m_others.add(*this);
    if (auto bytes = m_others.m_ahead.take(*m_packed)) {
        m_unpacked = std::move(*bytes);
    } else {
        m_unpacked = m_others.takeRoom();
        m_packed->unpackInto(m_unpacked);
    }
    m_isUnpacked = true;
}

}  // namespace quorbel
