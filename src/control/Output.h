#pragma once

#include "control/ExitCode.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace quorbel {

/// What goes to the standard output, in large pieces. Nobody has to read it: see isGone().
class Output {
public:
    Output() = default;
    /// `isOver` is asked when a write was interrupted: whether to give up then.
    explicit Output(std::function<bool()> isOver) : m_isOver(std::move(isOver)) {}
    ~Output() { flush(); }
    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;

    /// To append to; then endPiece().
    [[nodiscard]] std::string &text() { return m_text; }
    /// Writes when there is much. False once nobody takes anything any more.
    bool endPiece();
    bool flush();
    /// Whether the other end is gone (as `head` is when it has enough), or a signal has ended it.
    [[nodiscard]] bool isGone() const { return m_isGone; }
    /// What else went wrong (a full disk); 0 for nothing.
    [[nodiscard]] int error() const { return m_error; }

private:
    std::function<bool()> m_isOver;
    std::string m_text;
    bool m_isGone = false;
    int m_error = 0;
};

/// Writes what is left, says what is wrong with that, and returns how to end: `code`, unless it
/// could not be written. Nobody reading on is nothing wrong.
ExitCode finishOutput(Output &output, ExitCode code);

/// Writes a line to the standard error, with the program's name in front.
void complain(std::string_view text);

}  // namespace quorbel
