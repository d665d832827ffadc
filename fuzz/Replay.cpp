// Tries every file of some folders, and changed copies of them that are the same each time: what
// the fuzzers know to hold stays looked at by any compiler. Usage: PROGRAM COUNT WORDS FOLDER...

#include "Fuzz.h"
#include "platform/Files.h"
#include "platform/Number.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace quorbel;

/// A copy of its own, so that a sanitizer sees a read past its end.
void tryCopy(std::string_view input) {
    const std::vector<char> copy(input.begin(), input.end());
    tryInput({copy.data(), copy.size()});
}

/// What stands between quotation marks in a file of words, as libFuzzer takes them, but for
/// escapes.
std::vector<std::string> wordsOf(const std::filesystem::path &file) {
    std::vector<std::string> words{"\n", std::string(1, '\0'), "\xFF"};
    const std::string text = readFile(file).value_or("");
    for (FuzzInput rest(text); !rest.isEmpty();) {
        const std::string_view line = rest.line();
        const std::size_t begin = line.find('"');
        if (!line.starts_with('#') && begin != std::string_view::npos && line.ends_with('"') &&
            line.find('\\') == std::string_view::npos) {
            words.emplace_back(line.substr(begin + 1, line.size() - begin - 2));
        }
    }
    return words;
}

class Changes {
public:
    explicit Changes(std::vector<std::string> words) : m_words(std::move(words)) {}

    std::string changed(std::string text) {
        for (std::size_t count = 1 + below(4); count > 0; --count) {
            const std::size_t at = below(text.size() + 1);
            switch (below(4)) {
                case 0:
                    text.insert(at, m_words[below(m_words.size())]);
                    break;
                case 1:
                    text.erase(at, 1 + below(8));
                    break;
                case 2:
                    text.insert(at, text.substr(below(text.size() + 1), below(40)));
                    break;
                default:
                    text.insert(at, 1, static_cast<char>(m_random()));
            }
        }
        return text;
    }
    std::size_t below(std::size_t limit) { return m_random() % limit; }

private:
    std::vector<std::string> m_words;
    std::mt19937_64 m_random{1};  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same each time
};

}  // namespace

int main(int count, char **values) {
    const auto changesWanted = count > 3 ? readNumber<std::size_t>(values[1]) : std::nullopt;
    std::vector<std::string> inputs;
    for (int i = 3; i < count; ++i) {
        for (const std::string &name : listFolder(values[i])) {
            if (const auto bytes = readFile(std::filesystem::path(values[i]) / name)) {
                inputs.push_back(*bytes);
            }
        }
    }
    if (!changesWanted || inputs.empty()) {
        std::fputs("There is nothing to try.\n", stderr);
        return EXIT_FAILURE;
    }
    tryCopy("");
    std::ranges::for_each(inputs, tryCopy);
    Changes changes(wordsOf(values[2]));
    for (std::size_t i = 0; i < *changesWanted; ++i) {
        tryCopy(changes.changed(inputs[changes.below(inputs.size())]));
    }
    std::printf("%zu inputs and %zu changed ones\n", inputs.size() + 1, *changesWanted);
    return EXIT_SUCCESS;
}
