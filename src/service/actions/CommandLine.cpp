#include "service/actions/CommandLine.h"

#include <algorithm>

namespace quorbel {

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

/// Takes a quotation that begins at the front of `rest`; false when it has no end.
bool takeQuoted(std::string_view &rest, std::string &word) {
    const char quote = rest.front();
    rest.remove_prefix(1);
    while (!rest.empty() && rest.front() != quote) {
        constexpr std::string_view kEscapable = "$`\"\\\n";
        if (quote == '"' && rest.front() == '\\' && rest.size() > 1 &&
            kEscapable.find(rest[1]) != std::string_view::npos) {
            rest.remove_prefix(1);
            // A line end with a backslash in front is no character at all.
            word += rest.front() == '\n' ? std::string_view() : rest.substr(0, 1);
        } else {
            word += rest.front();
        }
        rest.remove_prefix(1);
    }
    if (rest.empty()) {
        return false;
    }
    rest.remove_prefix(1);
    return true;
}

/// Takes one word, which may be in several quotations; false when one of them has no end.
bool takeWord(std::string_view &rest, std::string &word) {
    while (!rest.empty() && !isBlank(rest.front())) {
        if (rest.front() == '\'' || rest.front() == '"') {
            if (!takeQuoted(rest, word)) {
                return false;
            }
            continue;
        }
        if (rest.front() == '\\' && rest.size() > 1) {
            rest.remove_prefix(1);
            word += rest.front() == '\n' ? std::string_view() : rest.substr(0, 1);
        } else {
            word += rest.front();
        }
        rest.remove_prefix(1);
    }
    return true;
}

std::string_view withoutLeadingBlanks(std::string_view text) {
    return text.substr(
        static_cast<std::size_t>(std::ranges::find_if_not(text, isBlank) - text.begin()));
}

}  // namespace

std::optional<std::vector<std::string>> splitArguments(std::string_view text) {
    std::vector<std::string> arguments;
    std::string_view rest = withoutLeadingBlanks(text);
    while (!rest.empty()) {
        std::string word;
        if (!takeWord(rest, word)) {
            return std::nullopt;
        }
        arguments.push_back(std::move(word));
        rest = withoutLeadingBlanks(rest);
    }
    return arguments;
}

void setVariable(Environment &environment, std::string_view name, std::string_view value) {
    const std::string prefix = std::string(name) + '=';
    std::erase_if(environment,
                  [&prefix](const std::string &variable) { return variable.starts_with(prefix); });
    environment.push_back(prefix + std::string(value.substr(0, value.find('\0'))));
}

std::optional<std::string> addVariables(Environment &environment, std::string_view lines) {
    std::optional<std::string> unusable;
    while (!lines.empty()) {
        const std::size_t end = std::min(lines.find_first_of("\r\n"), lines.size());
        const std::string_view line = withoutLeadingBlanks(lines.substr(0, end));
        lines.remove_prefix(std::min(end + 1, lines.size()));
        const std::size_t equals = line.find('=');
        const std::string_view name = line.substr(0, equals);
        if (line.empty()) {
            continue;
        }
        if (equals == std::string_view::npos || name.empty() ||
            std::ranges::any_of(name, [](char c) { return isBlank(c) || c == '\0'; })) {
            unusable = unusable.value_or(std::string(line));
        } else {
            setVariable(environment, name, line.substr(equals + 1));
        }
    }
    return unusable;
}

}  // namespace quorbel
