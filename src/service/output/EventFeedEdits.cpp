// How a feed's places move when a log file is replaced.

#include "service/output/EventFeed.h"

#include <cerrno>
#include <utility>

namespace quorbel {

/// Holds the feed's lock until the file is replaced: nothing is taken from it meanwhile.
bool EventFeed::onEdit(const LogEdit &edit, const std::function<bool()> &commit) {
    const MutexLock lock(m_mutex);
    const bool isRemoved = edit.replacement == nullptr;
    if (!open()) {
        // A file that is gone needs no place.
        return isRemoved && commit();
    }
    findPlaces(edit.name, edit.file);
    const std::uint64_t unsent = unsentOf(edit);
    FeedCursor next = m_cursor;
    next.move = moveFor(edit);
    next.move->unsent = unsent;
    const bool isIn = next.move->place || next.move->behind || unsent > 0;
    const bool isKnown = !isIn || write(next);
    // On a full disk, a file can still be removed.
    if ((!isKnown && !isRemoved) || !commit()) {
        return false;
    }
    finishEdit(edit, unsent);
    if (unsent > 0 || !isKnown) {
        write(m_cursor);
    }
    return true;
}

FeedCursor::Move EventFeed::moveFor(const LogEdit &edit) const {
    FeedCursor::Move move{edit.name, markOf(edit.file.get()).value_or(FileMark{}), {}, {}, {}, 0};
    if (edit.replacement != nullptr) {
        move.to = markOf(edit.replacement->get()).value_or(FileMark{});
    }
    const auto place = m_cursor.places.find(edit.name);
    if (place != m_cursor.places.end()) {
        move.place = place->second;
        movePlace(*move.place, edit);
    }
    if (m_cursor.batch && m_cursor.batch->name == edit.name && m_cursor.batch->behind) {
        move.behind = m_cursor.batch->behind;
        movePlace(*move.behind, edit);
    }
    return move;
}

/// How many lines go that have not reached the receiver, as far as is known. What is in a batch
/// that is kept does reach it.
std::uint64_t EventFeed::unsentOf(const LogEdit &edit) const {
    const auto acknowledged = m_cursor.places.find(edit.name);
    const FeedPlace *place =
        acknowledged == m_cursor.places.end() ? nullptr : &acknowledged->second;
    place = m_settings.kept ? placeIn(edit.name) : place;
    return linesRemovedBehind(place == nullptr ? 0 : place->offset, edit);
}

void EventFeed::finishEdit(const LogEdit &edit, std::uint64_t unsent) {
    eachPlaceIn(edit.name, [&edit](FeedPlace &place) {
        movePlace(place, edit);
        if (edit.replacement != nullptr) {
            const FeedPlace there = placeAt(*edit.replacement, place.offset);
            place.tail = there.tail;
            place.head = there.head;
        }
        return true;
    });
    if (unsent > 0) {
        m_cursor.removed += unsent;
        m_removedUnsent += unsent;
        warn("Events removed from " + edit.name +
             " before the receiver had them: " + std::to_string(unsent));
    }
}

}  // namespace quorbel
