#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace quorbel {

/// UTF-8 text of the libraries as the widgets take it.
inline QString toQString(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace quorbel
