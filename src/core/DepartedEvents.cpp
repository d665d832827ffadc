#include "core/DepartedEvents.h"

#include <algorithm>
#include <iterator>

namespace quorbel {

DepartedEvents::Group &DepartedEvents::groupFor(const EventChunk &chunk) {
    Groups &groups = m_chunks[chunk.first()];
    const auto known = std::ranges::find(groups, chunk.messages(), &Group::messages);
    return known != groups.end() ? *known : groups.emplace_back(Group{chunk.messages(), {}, 0});
}

void DepartedEvents::add(const EventChunk &chunk, const std::vector<std::uint32_t> &positions,
                         std::size_t showings, const EventExtrasById &extras) {
    Group &group = groupFor(chunk);
    const auto before = static_cast<std::ptrdiff_t>(group.events.size());
    if (before == 0) {
        group.events.reserve(positions.size());
    }
    chunk.visitIds(positions, [&](std::uint32_t position, EventId id) {
        Departed &departed = group.events.emplace_back(
            Departed{chunk.record(position), static_cast<std::uint16_t>(id - chunk.first()),
                     static_cast<std::uint16_t>(showings)});
        departed.record.isLeaving = 0;
        m_priorities.keep(departed.record.priority);
        m_hosts.keep(departed.record.host);
        if (departed.record.hasExtras != 0) {
            m_extras.insert_or_assign(id, extras.at(id));
        }
    });
    group.held += positions.size();
    std::ranges::inplace_merge(group.events, group.events.begin() + before, {}, &Departed::slot);
}

DepartedEvents::Chunks::iterator DepartedEvents::chunkOf(EventId id) {
    const auto after = m_chunks.upper_bound(id);
    if (after == m_chunks.begin() || id - std::prev(after)->first >= EventChunk::kSlots) {
        return m_chunks.end();
    }
    return std::prev(after);
}

DepartedEvents::Departed *DepartedEvents::find(Group &group, std::size_t slot) {
    auto event = std::ranges::lower_bound(group.events, slot, {}, &Departed::slot);
    while (event != group.events.end() && event->slot == slot && event->record.isLeaving != 0) {
        ++event;
    }
    return event != group.events.end() && event->slot == slot ? &*event : nullptr;
}

std::optional<DepartedEvents::Found> DepartedEvents::find(EventId id) {
    const auto chunk = chunkOf(id);
    if (chunk == m_chunks.end()) {
        return std::nullopt;
    }
    for (Group &group : chunk->second) {
        if (Departed *departed = find(group, id - chunk->first)) {
            const auto extras = m_extras.find(id);
            return Found{*departed, *group.messages,
                         extras == m_extras.end() ? nullptr : &extras->second};
        }
    }
    return std::nullopt;
}

void DepartedEvents::drop(Group &group, EventId id, Departed &departed) {
    departed.record.isLeaving = 1;
    --group.held;
    m_priorities.stopKeeping(departed.record.priority);
    m_hosts.stopKeeping(departed.record.host);
    if (departed.record.hasExtras != 0) {
        m_extras.erase(id);
    }
}

void DepartedEvents::letGo(EventId id) {
    const auto chunk = chunkOf(id);
    if (chunk == m_chunks.end()) {
        return;
    }
    for (Group &group : chunk->second) {
        if (Departed *departed = find(group, id - chunk->first)) {
            drop(group, id, *departed);
            tidy(chunk);
            return;
        }
    }
}

void DepartedEvents::letGo(const std::vector<EventId> &ids) {
    for (auto chunk = m_chunks.begin(); chunk != m_chunks.end();) {
        const auto next = std::next(chunk);
        for (Group &group : chunk->second) {
            letGoIn(group, chunk->first, ids);
        }
        tidy(chunk);
        chunk = next;
    }
}

void DepartedEvents::letGoIn(Group &group, EventId first, const std::vector<EventId> &ids) {
    auto id = std::ranges::lower_bound(ids, first);
    for (Departed &departed : group.events) {
        const EventId own = first + departed.slot;
        while (id != ids.end() && *id < own) {
            ++id;
        }
        if (id != ids.end() && *id == own && departed.record.isLeaving == 0) {
            drop(group, own, departed);
        }
    }
}

/// Gives back what nobody holds any more, once it is half of what there is.
void DepartedEvents::tidy(Chunks::iterator chunk) {
    Groups &groups = chunk->second;
    std::erase_if(groups, [](const Group &group) { return group.held == 0; });
    for (Group &group : groups) {
        if (group.events.size() > 2 * group.held) {
            std::erase_if(group.events,
                          [](const Departed &departed) { return departed.record.isLeaving != 0; });
            group.events.shrink_to_fit();
        }
    }
    if (groups.empty()) {
        m_chunks.erase(chunk);
    }
}

}  // namespace quorbel
