#include "service/export/ExportDates.h"

#include "platform/Text.h"

#include <algorithm>
#include <cmath>

namespace quorbel {

void ExportDates::show(std::string_view date) {
    if (date == m_date) {
        return;
    }
    m_date = date;
    constexpr double kLimit = 9e17;
    m_seconds = static_cast<std::int64_t>(
        std::floor(std::clamp(floatingPointValue(date), -kLimit, kLimit)));
    m_text = m_format.render(static_cast<double>(m_seconds));
}

}  // namespace quorbel
