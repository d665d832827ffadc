#pragma once

#include <QString>

#include <cstddef>

namespace quorbel {

/// "1,207 events", as the language in use says it.
QString eventsText(std::size_t count);
/// "312 of 1,207 events"; `part` is written as numbers are, with what may stand behind it.
QString eventsText(const QString &part, std::size_t count);

}  // namespace quorbel
