#include "service/base/LastResult.h"

#include "common/LegibleText.h"

#include <ctime>
#include <utility>

namespace quorbel {

void LastResult::noteDone() {
    const MutexLock lock(m_mutex);
    ++m_summary.done;
    m_summary.doneSeconds = std::time(nullptr);
}

void LastResult::noteFailed(std::string_view problem) {
    std::string text = legible(problem, kMostToldBytes);
    const MutexLock lock(m_mutex);
    ++m_summary.failed;
    m_summary.problem = std::move(text);
    m_summary.failedSeconds = std::time(nullptr);
}

LastResult::Summary LastResult::summary() const {
    const MutexLock lock(m_mutex);
    return m_summary;
}

}  // namespace quorbel
