#include "reports/DateTable.h"

#include <string_view>

namespace quorbel {

DateTable::Queued DateTable::lookedAt(double seconds) {
    const std::string_view text = m_texts.text(seconds);
    const int order = m_greatest ? text.compare(*m_greatest) : 1;
    if (order > 0) {
        m_greatest = text;
        return {seconds, Order::kNew, 0};
    }
    if (order == 0) {
        return {seconds, Order::kGreatest, 0};
    }
    const std::size_t hash = hashBytes(text);
    m_index.prefetch(hash);
    return {seconds, Order::kBelow, hash};
}

std::uint32_t DateTable::number(const Queued &queued) {
    switch (queued.order) {
        case Order::kNew:
            m_greatestNumber = add(queued.seconds);
            return m_greatestNumber;
        case Order::kGreatest:
            return m_greatestNumber;
        default:
            return find(queued);
    }
}

std::uint32_t DateTable::find(const Queued &queued) {
    completeIndex();
    if (const auto known = m_index.find(queued.hash, [this, &queued](std::uint32_t number) {
            return areShownAlike(m_moments[number], queued.seconds);
        })) {
        return *known;
    }
    const std::uint32_t number = add(queued.seconds);
    m_index.insert(queued.hash, number);
    m_indexed = m_moments.size();
    return number;
}

std::uint32_t DateTable::add(double seconds) {
    m_moments.push_back(seconds);
    return static_cast<std::uint32_t>(m_moments.size() - 1);
}

void DateTable::completeIndex() {
    for (; m_indexed < m_moments.size(); ++m_indexed) {
        m_index.insert(hashBytes(m_texts.text(m_moments[m_indexed])),
                       static_cast<std::uint32_t>(m_indexed));
    }
}

bool DateTable::areShownAlike(double one, double other) {
    if (one == other) {
        return true;
    }
    m_scratch = m_texts.text(one);
    return m_texts.text(other) == m_scratch;
}

void DateTable::close() {
    m_index.clear();
    m_moments = {};
    m_greatest.reset();
}

}  // namespace quorbel
