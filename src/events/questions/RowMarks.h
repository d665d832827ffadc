#pragma once

#include "core/ArrangedEvents.h"
#include "core/SavedFilter.h"

#include <QDateTime>
#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>
#include <optional>
#include <unordered_map>
#include <vector>

namespace quorbel {

class FilterLibrary;

/// Which rows of the event list a kept filter marks. Each is looked at when it is painted.
class RowMarks : public QObject, private EventListObserver {
    Q_OBJECT

public:
    struct Mark {
        QString name;
        MarkColour colour;
    };

    /// All outlive this. `clock` tells the time.
    RowMarks(ArrangedEvents &events, const FilterLibrary &library, std::function<QDateTime()> clock,
             QObject *parent);
    ~RowMarks() override;
    RowMarks(const RowMarks &) = delete;
    RowMarks &operator=(const RowMarks &) = delete;

    /// The first kept filter that marks the row's event; null for none. Valid until changed().
    [[nodiscard]] const Mark *markOf(int row);
    /// All that do, in words; empty for none.
    [[nodiscard]] QString descriptionOf(int row);
    /// Looks whether filters mean other events by now.
    void follow();

Q_SIGNALS:
    void changed();

private:
    struct Marker {
        EventQuery query;
        Mark mark;
        std::optional<EventMatcher> matcher{};  // nothing until it is made
    };
    static constexpr std::size_t kNoMark = SIZE_MAX;
    static constexpr std::size_t kMostKnown = 4096;

    void rowsWillBeInsertedAtTop(std::size_t) override {}
    void rowsWereInserted(std::size_t) override {}
    void rowsWillBeRemoved(std::size_t, std::size_t) override {}
    void rowsWereRemoved() override { forget(); }
    void listWillChangeAtLarge() override {}
    void listChangedAtLarge() override { forget(); }

    void forget();
    void takeOver(const FilterLibrary &library);
    void makeMatchers();
    [[nodiscard]] std::size_t find(EventId id, std::size_t from);
    [[nodiscard]] static bool isMeant(Marker &marker, EventChunk &chunk, std::size_t position);

    ArrangedEvents &m_events;
    EventReader m_reader;
    std::function<QDateTime()> m_clock;
    std::vector<Marker> m_markers;
    QTimer m_slices;
    std::unordered_map<EventId, std::size_t> m_known;  // the number of its marker, or kNoMark
};

}  // namespace quorbel
