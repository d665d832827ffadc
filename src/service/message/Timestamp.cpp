#include "service/message/Timestamp.h"

#include "platform/Number.h"

#include <algorithm>
#include <array>

namespace quorbel {

namespace {

/// Walks over a text; once something expected is missing, everything after it is missing too.
class Scanner {
public:
    explicit Scanner(std::string_view text) : m_text(text) {}

    [[nodiscard]] std::size_t position() const { return m_failed ? 0 : m_position; }

    bool accept(char c) {
        if (m_failed || m_position >= m_text.size() || m_text[m_position] != c) {
            return false;
        }
        ++m_position;
        return true;
    }
    bool acceptAnyOf(std::string_view set) {
        return std::ranges::any_of(set, [this](char c) { return accept(c); });
    }
    void expect(char c) { m_failed = !accept(c) || m_failed; }
    void expectDigits(std::size_t least, std::size_t most) {
        const std::size_t count = digits(most);
        m_failed = m_failed || count < least;
    }
    std::size_t digits(std::size_t most) {
        std::size_t count = 0;
        while (!m_failed && count < most && m_position < m_text.size() &&
               isDigit(m_text[m_position])) {
            ++m_position;
            ++count;
        }
        return count;
    }
    void expectWordOf(std::string_view words, std::size_t length) {
        const std::string_view word = m_text.substr(std::min(m_position, m_text.size()), length);
        while (!m_failed && !words.empty() &&
               !(words.starts_with(word.substr(0, 1)) && words.starts_with(word))) {
            words.remove_prefix(length);
        }
        m_failed = m_failed || word.size() != length || words.empty();
        m_position += length;
    }
    /// Goes back to an earlier position when `optional` does not lead anywhere.
    template <typename Steps>
    void acceptOptional(Steps optional) {
        const std::size_t before = m_position;
        if (m_failed) {
            return;
        }
        optional(*this);
        if (m_failed) {
            m_failed = false;
            m_position = before;
        }
    }

private:
    std::string_view m_text;
    std::size_t m_position = 0;
    bool m_failed = false;
};

void clockTime(Scanner &scanner) {
    scanner.expectDigits(2, 2);
    scanner.expect(':');
    scanner.expectDigits(2, 2);
    scanner.expect(':');
    scanner.expectDigits(2, 2);
    scanner.acceptOptional([](Scanner &fraction) {
        if (!fraction.accept('.')) {
            fraction.expect(',');
        }
        fraction.expectDigits(1, 9);
    });
}

}  // namespace

std::size_t legacyTimestampLength(std::string_view text) {
    Scanner scanner(text);
    scanner.acceptAnyOf("*.");
    scanner.expectWordOf("JanFebMarAprMayJunJulAugSepOctNovDec", 3);
    scanner.expect(' ');
    scanner.accept(' ');
    scanner.expectDigits(1, 2);
    scanner.expect(' ');
    scanner.acceptOptional([](Scanner &year) {
        year.expectDigits(4, 4);
        year.expect(' ');
    });
    clockTime(scanner);
    scanner.accept(':');
    return scanner.position();
}

std::size_t isoTimestampLength(std::string_view text) {
    Scanner scanner(text);
    scanner.expectDigits(4, 4);
    scanner.expect('-');
    scanner.expectDigits(2, 2);
    scanner.expect('-');
    scanner.expectDigits(2, 2);
    scanner.expect('T');
    clockTime(scanner);
    scanner.acceptOptional([](Scanner &zone) {
        if (zone.accept('Z')) {
            return;
        }
        if (!zone.accept('+')) {
            zone.expect('-');
        }
        zone.expectDigits(2, 2);
        zone.accept(':');
        zone.expectDigits(2, 2);
    });
    return scanner.position();
}

}  // namespace quorbel
