#include "service/base/QuotedText.h"

namespace quorbel {

std::string quoted(std::string_view text) {
    constexpr std::size_t kMostBytes = 80;
    return '"' + legible(text, kMostBytes) + '"';
}

}  // namespace quorbel
