#include "core/NoticeLedger.h"

#include <algorithm>

namespace quorbel {

NoticeLedger::Verdict NoticeLedger::judgeAnswer(const Checkpoint &now, bool isLogSame) const {
    // Removals are numbered in one run of the service only.
    const bool isSameRun = m_isKnown && now.epoch == m_epoch;
    const bool areRemovalsKnown = isSameRun ? now.removes == m_removes : isLogSame;
    return areRemovalsKnown ? gap() : Verdict::kAnew;
}

/// Where the service's clock was set back by days, the files' order is not that of the events.
NoticeLedger::Verdict NoticeLedger::gap() const {
    // (Without a name, there was no file.)
    return !m_sure.name.empty() && m_sure.name < m_newest ? Verdict::kAnew : Verdict::kGap;
}

NoticeLedger::Verdict NoticeLedger::judge(const Checkpoint &checkpoint) {
    if (!m_isKnown || checkpoint.epoch != m_epoch || checkpoint.sets < m_sets) {
        return Verdict::kAsk;
    }
    if (checkpoint.removes != m_removes) {
        return Verdict::kAnew;
    }
    if (checkpoint.sets > std::max(m_sets, m_had)) {
        return gap();
    }
    m_sets = checkpoint.sets;
    m_edits = checkpoint.edits;
    // Until then, the sure place is further on.
    if (m_sets >= m_had) {
        setSure(checkpoint);
    }
    return Verdict::kFits;
}

void NoticeLedger::caughtUp(const Checkpoint &checkpoint, std::uint64_t waiting) {
    m_isKnown = true;
    m_epoch = checkpoint.epoch;
    m_sets = checkpoint.sets - waiting;
    m_removes = checkpoint.removes;
    m_edits = checkpoint.edits;
    setSure(checkpoint);
}

void NoticeLedger::setSure(const Checkpoint &checkpoint) {
    m_had = checkpoint.sets;
    m_sure = checkpoint.place;
    m_newest = std::max(m_newest, m_sure.name);
    m_received.clear();
}

bool NoticeLedger::tellSet(std::string line) {
    const bool isNew = tellSet();
    if (isNew) {
        ++m_received[std::move(line)];
    }
    return isNew;
}

bool NoticeLedger::tellSet() {
    return ++m_sets > m_had;
}

bool NoticeLedger::wasReceived(const std::string &line) {
    const auto found = m_received.find(line);
    if (found == m_received.end()) {
        return false;
    }
    if (--found->second == 0) {
        m_received.erase(found);
    }
    return true;
}

}  // namespace quorbel
