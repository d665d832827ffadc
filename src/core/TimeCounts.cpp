#include "core/TimeCounts.h"

#include <algorithm>
#include <iterator>

namespace quorbel {

namespace {

std::size_t keyAt(std::int64_t unitInBlock) {
    return static_cast<std::size_t>(unitInBlock) * kRatingCount;
}

}  // namespace

void TimeCounts::add(std::int64_t moment, EventRating rating) {
    for (std::size_t level = 0; level < kUnits.size(); ++level) {
        m_levels[level].add(moment / kUnits[level], rating);
    }
}

void TimeCounts::subtract(std::int64_t moment, EventRating rating) {
    for (std::size_t level = 0; level < kUnits.size(); ++level) {
        if (!m_levels[level].subtract(moment / kUnits[level], rating)) {
            return;
        }
    }
}

RatingCounts TimeCounts::sum(std::int64_t from, std::int64_t until) const {
    RatingCounts counts{};
    addTo(counts, kUnits.size() - 1, std::clamp<std::int64_t>(from, 0, kEnd),
          std::clamp<std::int64_t>(until, 0, kEnd));
    return counts;
}

void TimeCounts::addTo(RatingCounts &counts, std::size_t level, std::int64_t from,
                       std::int64_t until) const {
    if (from >= until) {
        return;
    }
    const std::int64_t unit = kUnits[level];
    const std::int64_t first = (from + unit - 1) / unit;
    const std::int64_t end = until / unit;
    if (first >= end) {
        addTo(counts, level - 1, from, until);  // a second's span always holds a whole one
        return;
    }
    m_levels[level].addTo(counts, first, end);
    if (level > 0) {
        addTo(counts, level - 1, from, first * unit);
        addTo(counts, level - 1, end * unit, until);
    }
}

void TimeCounts::Level::add(std::int64_t unit, EventRating rating) {
    const std::int64_t number = unit / kBlock;
    // Nearly all events come in the order of their time.
    const bool isLast = !m_blocks.empty() && m_blocks.rbegin()->first == number;
    Entries &entries = isLast ? m_blocks.rbegin()->second : m_blocks[number];
    const Entry added{static_cast<std::uint16_t>(unit % kBlock), rating, 1};
    if (entries.empty() || entries.back().key() < added.key()) {
        entries.push_back(added);
        return;
    }
    const auto place = std::ranges::lower_bound(entries, added.key(), {}, &Entry::key);
    if (place->key() == added.key()) {
        ++place->count;
    } else {
        entries.insert(place, added);
    }
}

bool TimeCounts::Level::subtract(std::int64_t unit, EventRating rating) {
    const auto block = m_blocks.find(unit / kBlock);
    if (block == m_blocks.end()) {
        return false;
    }
    Entries &entries = block->second;
    const Entry taken{static_cast<std::uint16_t>(unit % kBlock), rating, 1};
    const auto place = std::ranges::lower_bound(entries, taken.key(), {}, &Entry::key);
    if (place == entries.end() || place->key() != taken.key()) {
        return false;
    }
    if (--place->count == 0) {
        entries.erase(place);
    }
    if (entries.empty()) {
        m_blocks.erase(block);
    }
    return true;
}

void TimeCounts::Level::addTo(RatingCounts &counts, std::int64_t firstUnit,
                              std::int64_t endUnit) const {
    for (auto block = m_blocks.lower_bound(firstUnit / kBlock);
         block != m_blocks.end() && block->first * kBlock < endUnit; ++block) {
        const std::int64_t start = block->first * kBlock;
        const auto firstKey = keyAt(std::max<std::int64_t>(firstUnit - start, 0));
        const auto endKey = keyAt(std::min(endUnit - start, kBlock));
        const Entries &entries = block->second;
        for (auto entry = std::ranges::lower_bound(entries, firstKey, {}, &Entry::key);
             entry != entries.end() && entry->key() < endKey; ++entry) {
            counts[entry->rating] += entry->count;
        }
    }
}

std::int64_t TimeCounts::Level::first() const {
    const auto &[number, entries] = *m_blocks.begin();
    return number * kBlock + entries.front().unit;
}

std::int64_t TimeCounts::Level::last() const {
    const auto &[number, entries] = *m_blocks.rbegin();
    return number * kBlock + entries.back().unit;
}

}  // namespace quorbel
