#include "service/store/AlikeEvents.h"

#include <algorithm>
#include <bit>
#include <functional>

namespace quorbel {

AlikeEvents::AlikeEvents(std::size_t wanted)
    : m_table(std::bit_ceil(wanted + wanted / 2 + 1), kNone) {
    m_alike.reserve(wanted);
    m_seconds.reserve(wanted);
}

AlikeEvents::Key AlikeEvents::keyOf(std::int64_t seconds, std::string_view fields) {
    constexpr std::size_t kSpread = 0x9E3779B97F4A7C15U;
    const auto minute = static_cast<std::uint32_t>(seconds / kMinute);
    const std::size_t hash = std::hash<std::string_view>()(fields) ^ (minute * kSpread);
    return {minute, static_cast<std::uint32_t>(hash ^ hash >> 32U), fields};
}

std::size_t AlikeEvents::slotOf(const Key &key) const {
    std::size_t slot = key.hash % m_table.size();
    for (; m_table[slot] != kNone; slot = (slot + 1) % m_table.size()) {
        const Alike &alike = m_alike[m_table[slot]];
        if (alike.hash == key.hash && alike.minute == key.minute &&
            std::string_view(alike.fields, alike.size) == key.fields) {
            break;
        }
    }
    return slot;
}

AlikeEvents::OfSecond *AlikeEvents::ofSecond(const Alike &alike, std::uint32_t second) {
    std::uint32_t number = alike.seconds;
    while (number != kNone && m_seconds[number].second != second) {
        number = m_seconds[number].next;
    }
    return number == kNone ? nullptr : &m_seconds[number];
}

AlikeEvents::Event AlikeEvents::want(std::int64_t seconds, std::string_view fields) {
    const Key key = keyOf(seconds, fields);
    const std::size_t slot = slotOf(key);
    if (m_table[slot] == kNone) {
        m_table[slot] = static_cast<std::uint32_t>(m_alike.size());
        m_alike.push_back(
            {fields.data(), static_cast<std::uint32_t>(fields.size()), key.minute, key.hash});
    }
    ++m_alike[m_table[slot]].wanted;
    return add(m_table[slot], seconds);
}

std::optional<AlikeEvents::Event> AlikeEvents::list(std::int64_t seconds, std::string_view fields) {
    const std::uint32_t number = m_table[slotOf(keyOf(seconds, fields))];
    return number == kNone ? std::nullopt : std::optional(add(number, seconds));
}

/// One more that the log should have.
AlikeEvents::Event AlikeEvents::add(std::uint32_t number, std::int64_t seconds) {
    Alike &alike = m_alike[number];
    const auto second = static_cast<std::uint32_t>(seconds % kMinute);
    ++alike.room;
    OfSecond *known = ofSecond(alike, second);
    if (known == nullptr) {
        known = &m_seconds.emplace_back(OfSecond{second, 0, alike.seconds});
        alike.seconds = static_cast<std::uint32_t>(m_seconds.size() - 1);
    }
    ++known->lacking;
    return {number, second};
}

void AlikeEvents::countInLog(std::int64_t seconds, std::string_view fields) {
    if (seconds < 0 || seconds > kLatestTime) {
        return;
    }
    const std::uint32_t number = m_table[slotOf(keyOf(seconds, fields))];
    if (number == kNone) {
        return;
    }
    Alike &alike = m_alike[number];
    alike.room -= std::min(alike.room, 1U);
    if (OfSecond *same = ofSecond(alike, static_cast<std::uint32_t>(seconds % kMinute))) {
        same->lacking -= std::min(same->lacking, 1U);
    }
}

bool AlikeEvents::choose(Event event) {
    Alike &alike = m_alike[event.alike];
    OfSecond &same = *ofSecond(alike, event.second);
    if (same.lacking == 0 || alike.wanted == 0 || alike.room == 0) {
        return false;
    }
    --same.lacking;
    --alike.wanted;
    --alike.room;
    return true;
}

void AlikeEvents::forgetCounts() {
    m_seconds = {};
    m_table = {};
}

}  // namespace quorbel
