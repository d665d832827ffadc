#pragma once

#include "core/TrigramFilter.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct hs_database;
struct hs_scratch;

namespace quorbel {

/// Finds any of a few texts as they stand; ASCII letters may be alike, capital or small.
///
/// What is searched may be any bytes. Time grows with them and with what is found, whatever the
/// texts are. One search at a time.
class LiteralSearch {
public:
    static constexpr std::size_t kMostTexts = 64;
    static constexpr std::size_t kMostBytes = 64;
    enum class Answer : std::uint8_t {
        kNo,
        kUnsure,  ///< there is a letter beyond ASCII (the long s, the sign of kelvins) that is
                  ///< alike to one of the texts', or the search failed
        kYes,
    };

    /// Whether a text can be looked for in this way: one of 1 to kMostBytes bytes, no
    /// NUL the first, that is ASCII where capital and small letters are to be alike.
    [[nodiscard]] static bool canFind(std::string_view text, bool isCaseSensitive);

    /// Precondition: canFind() each of 1 to kMostTexts texts. Where the library does not run, every
    /// search fails.
    LiteralSearch(const std::vector<std::string> &texts, bool isCaseSensitive);

    [[nodiscard]] std::size_t textCount() const { return m_textCount; }
    /// The size of the shortest of the texts.
    [[nodiscard]] std::size_t shortest() const;
    /// False when it is certain that a search of a filter's bytes finds nothing.
    [[nodiscard]] bool mayBeIn(const TrigramFilter &filter) const;
    [[nodiscard]] Answer isAnyIn(std::string_view bytes) const;
    /// Calls `visit(answer, begin, end)` for each place where one of the texts (kYes) or such a
    /// letter (kUnsure) stands, by ascending ends, until it returns false. Returns whether all was
    /// well; else, places may have been left out. No other search may be made meanwhile.
    template <typename Visit>
    [[nodiscard]] bool search(std::string_view bytes, Visit visit) const;

private:
    using Handler = int(unsigned number, unsigned long long, unsigned long long end, unsigned,
                        void *context);
    struct Deleter {
        void operator()(hs_database *database) const;
        void operator()(hs_scratch *scratch) const;
    };
    struct Literal {
        std::string text;
        Answer answer;
    };

    [[nodiscard]] static std::vector<Literal> literalsFor(const std::vector<std::string> &texts,
                                                          bool isCaseSensitive);
    void compile(bool isCaseSensitive);
    [[nodiscard]] bool run(std::string_view bytes, Handler *handler, void *context) const;

    std::size_t m_textCount;
    std::vector<Literal> m_literals;
    std::unique_ptr<hs_database, Deleter> m_database;
    std::unique_ptr<hs_scratch, Deleter> m_scratch;
};

template <typename Visit>
bool LiteralSearch::search(std::string_view bytes, Visit visit) const {
    struct Context {
        const LiteralSearch &search;
        Visit &visit;
        std::size_t end = 0;
        bool isInOrder = true;
    } context{*this, visit};
    const bool isDone = run(
        bytes,
        [](unsigned number, unsigned long long, unsigned long long end, unsigned, void *pointer) {
            auto &here = *static_cast<Context *>(pointer);
            here.isInOrder = end >= here.end;  // as it always is, but the library promises nothing
            here.end = end;
            const Literal &literal = here.search.m_literals[number];
            const bool goesOn =
                here.isInOrder && here.visit(literal.answer, end - literal.text.size(), here.end);
            return goesOn ? 0 : 1;
        },
        &context);
    return isDone && context.isInOrder;
}

}  // namespace quorbel
