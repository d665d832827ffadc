#include "control/Output.h"

#include "control/VisibleText.h"
#include "platform/DescriptorIo.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace quorbel {

bool Output::endPiece() {
    constexpr std::size_t kMuch = std::size_t{1} << 16U;
    return m_text.size() < kMuch ? !m_isGone : flush();
}

/// Unlike writeFully(), gives up when a signal has come while nobody took anything.
bool Output::flush() {
    std::string_view rest = m_text;
    while (!m_isGone && !rest.empty()) {
        const ssize_t count = ::write(STDOUT_FILENO, rest.data(), rest.size());
        const bool hasFailed = count < 0 && errno != EINTR;
        m_error = hasFailed && errno != EPIPE ? errno : 0;
        rest.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        m_isGone = hasFailed || (!rest.empty() && m_isOver && m_isOver());
    }
    m_text.clear();
    return !m_isGone;
}

ExitCode finishOutput(Output &output, ExitCode code) {
    output.flush();
    if (output.error() != 0) {
        complain("The output cannot be written: " +
                 std::generic_category().message(output.error()));
        return ExitCode::kNothing;
    }
    return output.isGone() ? ExitCode::kDone : code;
}

void complain(std::string_view text) {
    writeFully(STDERR_FILENO, "quorbelctl: " + visible(text) + "\n");
}

}  // namespace quorbel
