#include "core/TextSearch.h"

#include <numeric>
#include <utility>

namespace quorbel {

namespace {

using Answer = TextSearch::Answer;

/// Whether a pattern matches each message of a run; no more answers than that once it is unwanted.
void answer(const TextPattern &pattern, const MessageRun &run, std::vector<Answer> &answers,
            const std::atomic<bool> &isUnwanted) {
    run.glance(pattern, answers);
    for (std::size_t number = 0; number < answers.size() && !isUnwanted; ++number) {
        if (answers[number] == Answer::kUnsure) {
            answers[number] = pattern.matches(run.text(number)) ? Answer::kYes : Answer::kNo;
        }
    }
}

/// Those messages of all that may still be meant.
struct Left {
    explicit Left(const MessageRun::Places &all) : numbers(all.size()), places(all) {
        std::iota(numbers.begin(), numbers.end(), std::size_t{0});
    }

    std::vector<std::size_t> numbers;
    MessageRun::Places places;
};

/// Leaves those whose answers let the text's condition be met.
void keepOpen(Left &left, const std::vector<Answer> &answers, bool isNegated, bool isElsewhere) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < answers.size(); ++i) {
        const bool isFound = answers[i] == Answer::kYes;
        left.numbers[kept] = left.numbers[i];
        left.places[kept] = left.places[i];
        kept += isFound != isNegated || (!isNegated && isElsewhere) ? 1U : 0U;
    }
    left.numbers.resize(kept);
    left.places.resize(kept);
}

}  // namespace

std::unique_ptr<TextSearch::Patterns> TextSearch::takePatterns() {
    {
        const MutexLock lock(m_mutex);
        if (!m_idle.empty()) {
            auto patterns = std::move(m_idle.back());
            m_idle.pop_back();
            return patterns;
        }
    }
    auto patterns = std::make_unique<Patterns>();
    for (const TextCondition &text : m_texts) {
        patterns->emplace_back(text.pattern);
    }
    return patterns;
}

void TextSearch::giveBack(std::unique_ptr<Patterns> patterns) {
    const MutexLock lock(m_mutex);
    m_idle.push_back(std::move(patterns));
}

std::optional<TextSearch::Found> TextSearch::search(const Request &request, MessageBytes &room,
                                                    const std::atomic<bool> &isUnwanted) {
    auto patterns = takePatterns();
    request.packed->unpackInto(room);
    Found found;
    found.places =
        request.places ? *request.places : MessageRun::allPlaces({room.data(), room.size()});
    Left left(found.places);
    std::vector<Answer> answers;
    for (std::size_t i = 0; i < m_texts.size() && !isUnwanted; ++i) {
        const TextPattern &pattern = (*patterns)[i];
        answers.assign(left.places.size(), Answer::kNo);
        if (pattern.mayBeIn(request.packed->filter())) {
            answer(pattern, MessageRun(room.data(), left.places), answers, isUnwanted);
        }
        auto &known = found.answers.emplace_back(found.places.size(), Answer::kUnsure);
        for (std::size_t number = 0; number < answers.size(); ++number) {
            known[left.numbers[number]] = answers[number];
        }
        keepOpen(left, answers, m_texts[i].isNegated, request.isElsewhere[i]);
    }
    giveBack(std::move(patterns));
    return isUnwanted ? std::nullopt : std::optional(std::move(found));
}

}  // namespace quorbel
