#include "events/questions/RowMarks.h"

#include "events/find/EventSpan.h"
#include "events/questions/FilterLibrary.h"
#include "platform/gui/PaintedText.h"
#include "platform/gui/QtText.h"

#include <QElapsedTimer>

#include <algorithm>
#include <utility>

namespace quorbel {

namespace {

constexpr int kSliceMilliseconds = 8;

}  // namespace

RowMarks::RowMarks(ArrangedEvents &events, const FilterLibrary &library,
                   std::function<QDateTime()> clock, QObject *parent)
    : QObject(parent), m_events(events), m_reader(events.list()), m_clock(std::move(clock)) {
    connect(&library, &FilterLibrary::changed, this, [this, &library] { takeOver(library); });
    connect(&m_slices, &QTimer::timeout, this, &RowMarks::makeMatchers);
    takeOver(library);
    m_events.list().addObserver(*this);
}

RowMarks::~RowMarks() {
    m_events.list().removeObserver(*this);
}

void RowMarks::takeOver(const FilterLibrary &library) {
    m_markers.clear();
    for (const SavedFilter &filter : library.kept()) {
        if (filter.mark) {
            m_markers.push_back({filter.query, {FilterLibrary::nameOf(filter), *filter.mark}});
        }
    }
    makeMatchers();
}

/// Makes those that are missing, which takes a millisecond or more each.
void RowMarks::makeMatchers() {
    QElapsedTimer time;
    time.start();
    const QDateTime now = m_clock();
    auto marker = m_markers.begin();
    for (; marker != m_markers.end() && time.elapsed() < kSliceMilliseconds; ++marker) {
        if (!marker->matcher) {
            marker->matcher.emplace(m_events.list(), queryAt(marker->query, now));
        }
    }
    if (marker == m_markers.end()) {
        m_slices.stop();
    } else {
        m_slices.start(0);
    }
    m_known.clear();
    Q_EMIT changed();
}

void RowMarks::follow() {
    const QDateTime now = m_clock();
    bool isOther = false;
    for (Marker &marker : m_markers) {
        if (marker.matcher && queryAt(marker.query, now) != marker.matcher->filter()) {
            marker.matcher.reset();
            isOther = true;
        }
    }
    if (isOther) {
        makeMatchers();
    }
}

/// Dates and ratings may be others by now, and texts have other numbers.
void RowMarks::forget() {
    m_known.clear();
    for (Marker &marker : m_markers) {
        if (marker.matcher) {
            marker.matcher->forgetTexts();
        }
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
        known = m_known.emplace(id, find(id, 0)).first;
    }
    return known->second == kNoMark ? nullptr : &m_markers[known->second].mark;
}

QString RowMarks::descriptionOf(int row) {
    if (m_markers.empty()) {
        return {};
    }
    QStringList names;
    const EventId id = m_events.idAt(static_cast<std::size_t>(row));
    for (std::size_t i = find(id, 0); i != kNoMark; i = find(id, i + 1)) {
        names += paintedRow(m_markers[i].mark.name);
    }
    return names.isEmpty() ? QString() : tr("Marked by %1").arg(names.join(QStringLiteral(", ")));
}

std::size_t RowMarks::find(EventId id, std::size_t from) {
    EventChunk &chunk = m_reader.chunk(m_reader.chunkFrom(id));
    const auto position = chunk.positionOf(id);
    for (std::size_t i = from; position && i < m_markers.size(); ++i) {
        if (isMeant(m_markers[i], chunk, *position)) {
            return i;
        }
    }
    return kNoMark;
}

bool RowMarks::isMeant(Marker &marker, EventChunk &chunk, std::size_t position) {
    if (!marker.matcher || !marker.matcher->matches(chunk, static_cast<std::uint32_t>(position))) {
        return false;
    }
    return marker.query.meansRating(chunk.record(position).image);
}

}  // namespace quorbel
