#include "common/ConfigurationText.h"

#include "common/ConfigurationValues.h"
#include "platform/Text.h"

#include <algorithm>
#include <optional>

namespace quorbel {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// Why a line cannot be looked at.
std::optional<std::string> illegibleIn(std::string_view line) {
    const auto isControl = [](char c) {
        const auto code = static_cast<unsigned char>(c);
        return (code < 0x20U && c != '\t') || code == 0x7FU;
    };
    if (line.size() > ConfigurationText::kLongestLine) {
        return "the line is longer than " + std::to_string(ConfigurationText::kLongestLine) +
               " bytes";
    }
    if (std::ranges::any_of(line, isControl)) {
        return "there is a control character in the line";
    }
    return isUtf8(line) ? std::nullopt : std::optional<std::string>("the line is not UTF-8");
}

}  // namespace

ConfigurationText::ConfigurationText(std::string_view bytes) {
    if (bytes.starts_with(kByteOrderMark)) {
        bytes.remove_prefix(kByteOrderMark.size());
    }
    for (std::size_t number = 1; !bytes.empty() && mistakes.size() < kMostMistakes; ++number) {
        const std::size_t end = std::min(bytes.find('\n'), bytes.size());
        std::string_view line = bytes.substr(0, end);
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        readLine(number, line);
        bytes.remove_prefix(std::min(end + 1, bytes.size()));
    }
}

void ConfigurationText::readLine(std::size_t number, std::string_view line) {
    if (auto problem = illegibleIn(line)) {
        mistakes.push_back({number, std::move(*problem)});
        return;
    }
    line = trimmed(line);
    if (line.empty() || line.starts_with('#') || line.starts_with(';')) {
        return;
    }
    line.starts_with('[') ? readSection(number, line) : readEntry(number, line);
}

void ConfigurationText::readSection(std::size_t number, std::string_view line) {
    // What follows belongs to none that there is, even if this is not understood.
    sections.push_back({number, {}, {}, {}});
    if (!line.ends_with(']')) {
        mistakes.push_back(
            {number, "a section is [Section] or [Section \"name\"], not " + shownValue(line)});
        return;
    }
    const std::string_view inner = trimmed(line.substr(1, line.size() - 2));
    const std::size_t quote = std::min(inner.find('"'), inner.size());
    std::string_view name = inner.substr(quote);
    if (!name.empty()) {
        if (name.size() < 3 || name.find('"', 1) != name.size() - 1) {
            mistakes.push_back({number,
                                "the name of a section stands between two quotation "
                                "marks, and is not empty"});
            return;
        }
        name = name.substr(1, name.size() - 2);
    }
    sections.back().kind = trimmed(inner.substr(0, quote));
    sections.back().name = name;
    if (sections.back().kind.empty()) {
        mistakes.push_back({number, "the section has no kind"});
    }
}

void ConfigurationText::readEntry(std::size_t number, std::string_view line) {
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos || equals == 0) {
        mistakes.push_back({number, shownValue(line) + " is neither [Section] nor Key=Value"});
        return;
    }
    if (sections.empty()) {
        mistakes.push_back({number, shownValue(line) + " stands before the first [Section]"});
        return;
    }
    sections.back().entries.push_back(
        {number, trimmed(line.substr(0, equals)), trimmed(line.substr(equals + 1))});
}

}  // namespace quorbel
