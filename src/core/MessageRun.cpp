#include "core/MessageRun.h"

#include <algorithm>

namespace quorbel {

namespace {

/// Goes from message to message of a run.
class MessageCursor {
public:
    MessageCursor(const char *bytes, const MessageRun::Places &places)
        : m_bytes(bytes), m_places(places) {}

    /// Goes on to the first message that ends at `end` or later, which is not 0. False when there
    /// is none.
    bool moveTo(const char *end) {
        while (m_end < end) {
            if (m_next == m_places.size()) {
                return false;
            }
            const std::uint32_t place = m_places[m_next++];
            if (place != MessageRun::kNowhere) {
                const std::string_view message = StoredMessage::at(m_bytes + place).text;
                m_begin = message.data();
                m_end = m_begin + message.size();
            }
        }
        return true;
    }
    [[nodiscard]] std::size_t number() const { return m_next - 1; }
    [[nodiscard]] const char *begin() const { return m_begin; }

private:
    const char *m_bytes;
    const MessageRun::Places &m_places;
    std::size_t m_next = 0;
    const char *m_begin = nullptr;
    const char *m_end = nullptr;
};

}  // namespace

StoredMessage StoredMessage::at(const char *bytes) {
    std::size_t length = 0;
    std::size_t used = 0;
    unsigned char byte = 0;
    do {
        byte = static_cast<unsigned char>(bytes[used]);
        length |= static_cast<std::size_t>(byte & 0x7FU) << (7 * used);
        ++used;
    } while ((byte & 0x80U) != 0);
    return {{bytes + used, length}, used + length};
}

MessageRun::Places MessageRun::allPlaces(std::string_view bytes) {
    Places places;
    for (std::size_t place = 0; place < bytes.size();
         place += StoredMessage::at(bytes.data() + place).storedSize) {
        places.push_back(static_cast<std::uint32_t>(place));
    }
    return places;
}

/// A single search through the bytes of all messages takes a fraction of one for each, unless there
/// is much between them or much to be found in each, where one is enough.
void MessageRun::glance(const TextPattern &pattern, std::vector<Answer> &answers) const {
    constexpr std::size_t kManyBytes = 1024;
    answers.assign(m_places.size(), Answer::kNo);
    const auto &needed = pattern.needed();
    const std::string_view bytes = region();
    if (needed && needed->shortest() > 1 && bytes.size() / kManyBytes < m_places.size() &&
        mark(bytes, pattern, answers)) {
        return;
    }
    for (std::size_t number = 0; number < m_places.size(); ++number) {
        answers[number] = pattern.glanceAt(text(number));
    }
}

/// The bytes from the first message to the last one.
std::string_view MessageRun::region() const {
    const auto isThere = [](std::uint32_t place) { return place != kNowhere; };
    const auto first = std::ranges::find_if(m_places, isThere);
    if (first == m_places.end()) {
        return {};
    }
    const auto last = std::find_if(m_places.rbegin(), m_places.rend(), isThere);
    return {m_bytes + *first, *last - *first + StoredMessage::at(m_bytes + *last).storedSize};
}

/// Searches the messages' bytes as one text. What is found there counts when it lies within one
/// message; between them stands what is no part of any.
bool MessageRun::mark(std::string_view region, const TextPattern &pattern,
                      std::vector<Answer> &answers) const {
    MessageCursor message(m_bytes, m_places);
    return pattern.needed()->search(region, [&](Answer answer, std::size_t begin, std::size_t end) {
        if (!message.moveTo(region.data() + end)) {
            return false;
        }
        if (region.data() + begin >= message.begin()) {
            Answer &known = answers[message.number()];
            known = std::max(known, pattern.answerFor(answer));
        }
        return true;
    });
}

}  // namespace quorbel
