#include "platform/Number.h"
#include "service/input/FrameSplitter.h"

#include <algorithm>
#include <array>
#include <optional>

namespace quorbel {

namespace {

/// Another one for each change of what state() says.
constexpr std::string_view kStateVersion = "splitter1";

using Numbers = std::array<std::size_t, 9>;

/// Those behind the version, a space in front of each; nothing when that is not what stands there.
std::optional<Numbers> readNumbers(std::string_view line) {
    if (!line.starts_with(kStateVersion)) {
        return std::nullopt;
    }
    line.remove_prefix(kStateVersion.size());
    Numbers numbers{};
    for (std::size_t &number : numbers) {
        const std::size_t end = std::min(line.find(' ', 1), line.size());
        const auto read =
            line.starts_with(' ') ? readNumber<std::size_t>(line.substr(1, end - 1)) : std::nullopt;
        if (!read) {
            return std::nullopt;
        }
        number = *read;
        line.remove_prefix(end);
    }
    return line.empty() ? std::optional(numbers) : std::nullopt;
}

}  // namespace

std::string FrameSplitter::state() const {
    std::string text(kStateVersion);
    for (const std::size_t number :
         Numbers{static_cast<std::size_t>(m_framing), m_resync, m_skipText, m_skipToHeader,
                 m_skipBytes, m_searched, m_inner, m_counts, m_links}) {
        text += ' ' + std::to_string(number);
    }
    return text + '\n' + m_buffer;
}

bool FrameSplitter::resume(std::string_view state) {
    const std::size_t end = std::min(state.find('\n'), state.size());
    const std::optional<Numbers> numbers = readNumbers(state.substr(0, end));
    const std::string_view held = state.substr(std::min(end + 1, state.size()));
    if (!numbers || end == state.size() || held.size() >= 2 * kMaxFrame) {
        return false;
    }
    const auto [framing, resync, skipText, skipToHeader, skipBytes, searched, inner, counts,
                links] = *numbers;
    const std::size_t largestFlag = std::max({resync, skipText, skipToHeader});
    if (framing > static_cast<std::size_t>(Framing::kCounted) || largestFlag > 1 ||
        std::max(searched, inner) > held.size()) {
        return false;
    }
    m_framing = static_cast<Framing>(framing);
    m_resync = resync != 0;
    m_skipText = skipText != 0;
    m_skipToHeader = skipToHeader != 0;
    m_skipBytes = skipBytes;
    m_searched = searched;
    m_inner = inner;
    m_counts = counts;
    m_links = links;
    m_buffer = held;
    return true;
}

}  // namespace quorbel
