#include "service/input/FrameSplitter.h"

#include <sstream>

namespace quorbel {

namespace {

/// Another one for each change of what state() says.
constexpr std::string_view kStateVersion = "splitter1";

}  // namespace

std::string FrameSplitter::state() const {
    std::string text(kStateVersion);
    for (const std::size_t number :
         {static_cast<std::size_t>(m_framing), std::size_t{m_resync}, std::size_t{m_skipText},
          std::size_t{m_skipToHeader}, m_skipBytes, m_searched, m_inner, m_counts, m_links}) {
        text += ' ' + std::to_string(number);
    }
    return text + '\n' + m_buffer;
}

bool FrameSplitter::resume(std::string_view state) {
    const std::size_t end = state.find('\n');
    if (end == std::string_view::npos || !state.starts_with(kStateVersion)) {
        return false;
    }
    std::istringstream numbers(std::string(state.substr(kStateVersion.size(), end)));
    unsigned framing = 0;
    numbers >> framing >> m_resync >> m_skipText >> m_skipToHeader >> m_skipBytes >> m_searched >>
        m_inner >> m_counts >> m_links;
    m_framing = static_cast<Framing>(framing);
    m_buffer = state.substr(end + 1);
    return true;
}

}  // namespace quorbel
