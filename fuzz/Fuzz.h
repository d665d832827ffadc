#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace quorbel {

/// What a fuzzer does with one input: whatever its bytes are, this returns, and what require() says
/// of them holds. Each program has one.
void tryInput(std::string_view bytes);

/// Ends the program when something that has to hold for every input does not.
inline void require(bool holds, const char *what) {
    if (!holds) {
        std::fprintf(stderr, "Does not hold: %s\n", what);
        std::abort();
    }
}

/// Takes an input apart: choices from its front, the rest as bytes. Where nothing is left, choices
/// are 0.
class FuzzInput {
public:
    explicit FuzzInput(std::string_view bytes) : m_rest(bytes) {}

    [[nodiscard]] bool isEmpty() const { return m_rest.empty(); }
    [[nodiscard]] std::string_view rest() const { return m_rest; }
    std::uint8_t byte() {
        const std::uint8_t value = m_rest.empty() ? 0 : static_cast<std::uint8_t>(m_rest.front());
        m_rest.remove_prefix(m_rest.empty() ? 0 : 1);
        return value;
    }
    /// Below `limit`, which is not 0.
    std::size_t below(std::size_t limit) {
        const std::size_t high = byte();
        return (high << 8U | byte()) % limit;
    }
    std::string_view bytes(std::size_t most) {
        const std::string_view taken = m_rest.substr(0, most);
        m_rest.remove_prefix(taken.size());
        return taken;
    }
    /// Up to the next line feed, which is taken away.
    std::string_view line() {
        const std::string_view taken = m_rest.substr(0, m_rest.find('\n'));
        m_rest.remove_prefix(taken.size() == m_rest.size() ? taken.size() : taken.size() + 1);
        return taken;
    }

private:
    std::string_view m_rest;
};

}  // namespace quorbel
