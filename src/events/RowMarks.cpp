#include "events/RowMarks.h"

#include "events/FilterLibrary.h"
#include "platform/gui/QtText.h"

namespace quorbel {

RowMarks::RowMarks(ArrangedEvents &events, const FilterLibrary &library, QObject *parent)
    : QObject(parent), m_events(events), m_reader(events.list()) {
    connect(&library, &FilterLibrary::changed, this, [this, &library] {
        takeOver(library);
        Q_EMIT changed();
    });
    takeOver(library);
    m_events.list().addObserver(*this);
}

RowMarks::~RowMarks() {
    m_events.list().removeObserver(*this);
}

void RowMarks::takeOver(const FilterLibrary &library) {
    m_known.clear();
    m_markers.clear();
    for (const SavedFilter &filter : library.kept()) {
        if (filter.mark) {
            m_markers.push_back({EventMatcher(m_events.list(), filter.query),
                                 {toQString(filter.name), *filter.mark}});
        }
    }
}

/// Dates and ratings may be others by now, and texts have other numbers.
void RowMarks::forget() {
    m_known.clear();
    for (Marker &marker : m_markers) {
        marker.matcher.forgetTexts();
    }
}

const RowMarks::Mark *RowMarks::markOf(int row) {
    if (m_markers.empty()) {
        return nullptr;
    }
    const EventId id = m_events.idAt(static_cast<std::size_t>(row));
    auto known = m_known.find(id);
    if (known == m_known.end()) {
        if (m_known.size() >= kMostKnown) {
            m_known.clear();
        }
        known = m_known.emplace(id, find(id)).first;
    }
    return known->second == kNoMark ? nullptr : &m_markers[known->second].mark;
}

std::size_t RowMarks::find(EventId id) {
    EventChunk &chunk = m_reader.chunk(m_reader.chunkFrom(id));
    const auto position = chunk.positionOf(id);
    for (std::size_t i = 0; position && i < m_markers.size(); ++i) {
        if (isMeant(m_markers[i], chunk, *position)) {
            return i;
        }
    }
    return kNoMark;
}

bool RowMarks::isMeant(Marker &marker, EventChunk &chunk, std::size_t position) {
    const auto &ratings = marker.matcher.filter().ratings;
    return marker.matcher.matches(chunk, static_cast<std::uint32_t>(position)) &&
           (ratings.none() || ratings[chunk.record(position).image]);
}

}  // namespace quorbel
