#include "core/LiteralSearch.h"

#include <hs/hs.h>

#include <algorithm>
#include <limits>

namespace quorbel {

namespace {

bool isAscii(char character) {
    return static_cast<unsigned char>(character) < 0x80U;
}

}  // namespace

void LiteralSearch::Deleter::operator()(hs_database *database) const {
    hs_free_database(database);
}
void LiteralSearch::Deleter::operator()(hs_scratch *scratch) const {
    hs_free_scratch(scratch);
}

bool LiteralSearch::mayBeIn(const TrigramFilter &filter) const {
    return std::ranges::any_of(
        m_literals, [&](const Literal &literal) { return filter.mayHave(literal.text); });
}

bool LiteralSearch::canFind(std::string_view text, bool isCaseSensitive) {
    // The library takes a NUL at the beginning for the end.
    return !text.empty() && text.front() != '\0' && text.size() <= kMostBytes &&
           (isCaseSensitive || std::ranges::all_of(text, isAscii));
}

LiteralSearch::LiteralSearch(const std::vector<std::string> &texts, bool isCaseSensitive)
    : m_textCount(texts.size()), m_literals(literalsFor(texts, isCaseSensitive)) {
    if (hs_valid_platform() == HS_SUCCESS) {
        compile(isCaseSensitive);
    }
}

std::vector<LiteralSearch::Literal> LiteralSearch::literalsFor(
    const std::vector<std::string> &texts, bool isCaseSensitive) {
    std::vector<Literal> literals;
    const auto addOddLetter = [&](std::string_view alike, const char *odd) {
        if (!isCaseSensitive && std::ranges::any_of(texts, [&](const std::string &text) {
                return text.find_first_of(alike) != std::string::npos;
            })) {
            literals.push_back({odd, Answer::kUnsure});
        }
    };
    for (const std::string &text : texts) {
        literals.push_back({text, Answer::kYes});
    }
    addOddLetter("sS", "\u017F");
    addOddLetter("kK", "\u212A");
    return literals;
}

void LiteralSearch::compile(bool isCaseSensitive) {
    std::vector<const char *> texts;
    std::vector<std::size_t> sizes;
    std::vector<unsigned> numbers;
    std::vector<unsigned> flags;
    for (const Literal &literal : m_literals) {
        const bool hasCases = !isCaseSensitive && literal.answer == Answer::kYes;
        texts.push_back(literal.text.data());
        sizes.push_back(literal.text.size());
        numbers.push_back(static_cast<unsigned>(numbers.size()));
        flags.push_back(hasCases ? HS_FLAG_CASELESS : 0);
    }
    hs_database *database = nullptr;
    hs_compile_error_t *error = nullptr;
    hs_scratch *scratch = nullptr;
    if (hs_compile_lit_multi(texts.data(), flags.data(), numbers.data(), sizes.data(),
                             static_cast<unsigned>(texts.size()), HS_MODE_BLOCK, nullptr, &database,
                             &error) != HS_SUCCESS) {
        hs_free_compile_error(error);
        return;
    }
    m_database.reset(database);
    if (hs_alloc_scratch(database, &scratch) == HS_SUCCESS) {
        m_scratch.reset(scratch);
    }
}

bool LiteralSearch::run(std::string_view bytes, Handler *handler, void *context) const {
    if (!m_scratch || bytes.size() > std::numeric_limits<unsigned>::max()) {
        return false;
    }
    const hs_error_t result =
        bytes.empty() ? HS_SUCCESS
                      : hs_scan(m_database.get(), bytes.data(), static_cast<unsigned>(bytes.size()),
                                0, m_scratch.get(), handler, context);
    return result == HS_SUCCESS || result == HS_SCAN_TERMINATED;
}

std::size_t LiteralSearch::shortest() const {
    const auto end = m_literals.begin() + static_cast<std::ptrdiff_t>(m_textCount);
    const auto bySize = [](const Literal &literal) { return literal.text.size(); };
    return std::ranges::min_element(m_literals.begin(), end, {}, bySize)->text.size();
}

LiteralSearch::Answer LiteralSearch::isAnyIn(std::string_view bytes) const {
    Answer answer = Answer::kNo;
    const bool isDone = search(bytes, [&](Answer found, std::size_t, std::size_t) {
        answer = std::max(answer, found);
        return answer != Answer::kYes;
    });
    return isDone ? answer : Answer::kUnsure;
}

}  // namespace quorbel
