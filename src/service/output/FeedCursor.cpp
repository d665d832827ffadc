#include "service/output/FeedCursor.h"

#include "platform/Files.h"
#include "platform/Number.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <utility>

namespace quorbel {

namespace {

constexpr std::string_view kTitle = "quorbel-feed 1";
// Beyond that, counting on could begin anew.
constexpr std::uint64_t kMostNumber = std::uint64_t{1} << 62U;

constexpr std::string_view kHexDigits = "0123456789ABCDEF";

/// A name as one word.
std::string packed(std::string_view name) {
    std::string word;
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte > ' ' && c != '%') {
            word += c;
        } else {
            word += {'%', kHexDigits[byte >> 4U], kHexDigits[byte & 0xFU]};
        }
    }
    return word;
}

std::optional<std::string> unpacked(std::string_view word) {
    std::string name;
    for (std::size_t at = 0; at < word.size(); ++at) {
        if (word[at] != '%') {
            name += word[at];
            continue;
        }
        const std::size_t high = kHexDigits.find(word.substr(at + 1, 1));
        const std::size_t low = kHexDigits.find(word.substr(std::min(at + 2, word.size()), 1));
        if (word.size() - at < 3 || high > 0xF || low > 0xF) {
            return std::nullopt;
        }
        name += static_cast<char>(high * 0x10 + low);
        at += 2;
    }
    const bool isFit = hasExtension(name, "log") && name.find('/') == std::string::npos &&
                       name.find('\0') == std::string::npos;
    return isFit ? std::optional(name) : std::nullopt;
}

void writeNumbers(std::string &text, std::string_view key,
                  std::initializer_list<std::uint64_t> numbers, std::string_view name = "") {
    text += key;
    for (const std::uint64_t number : numbers) {
        text += ' ';
        text += std::to_string(number);
    }
    text += name.empty() ? "" : " " + packed(name);
    text += '\n';
}

void writePlace(std::string &text, std::string_view key, const std::string &name,
                const FeedPlace &place) {
    writeNumbers(text, key,
                 {place.file.inode, place.file.born, place.offset, place.tail, place.head,
                  place.cutLine, static_cast<std::uint64_t>(place.cutSeconds)},
                 name);
}

/// A line: its key, its numbers, and a name where there is one.
struct Words {
    static constexpr std::size_t kMost = 7;

    std::string_view key;
    std::array<std::uint64_t, kMost> numbers{};
    std::size_t count = 0;
    std::string name;
    bool isFit = true;

    explicit Words(std::string_view line) {
        key = takeWord(line);
        while (!line.empty()) {
            take(takeWord(line));
        }
    }
    static std::string_view takeWord(std::string_view &line) {
        const std::string_view word = line.substr(0, line.find(' '));
        line.remove_prefix(std::min(word.size() + 1, line.size()));
        return word;
    }
    void take(std::string_view word) {
        const auto number = readNumber<std::uint64_t>(word);
        const auto asName = number ? std::nullopt : unpacked(word);
        isFit = isFit && name.empty() && (number ? count < kMost : asName.has_value());
        if (isFit && number) {
            numbers[count++] = *number;
        } else if (isFit) {
            name = *asName;
        }
    }
    [[nodiscard]] bool is(std::string_view wanted, std::size_t wantedCount, bool named) const {
        return isFit && key == wanted && count == wantedCount && named != name.empty();
    }
    [[nodiscard]] FeedPlace place() const {
        return {{numbers[0], numbers[1]},
                numbers[2],
                numbers[3],
                numbers[4],
                numbers[5],
                static_cast<std::int64_t>(numbers[6])};
    }
};

bool takeLine(FeedCursor &cursor, const Words &words) {
    const auto &numbers = words.numbers;
    if (words.is("next", 1, false)) {
        cursor.next = numbers[0];
    } else if (words.is("removed", 1, false)) {
        cursor.removed = numbers[0];
    } else if (words.is("file", Words::kMost, true)) {
        cursor.places[words.name] = words.place();
    } else if (words.is("batch", 3, true)) {
        cursor.batch = {numbers[0], numbers[1], numbers[2], words.name, {}};
    } else if (words.is("behind", Words::kMost, true) && cursor.batch) {
        cursor.batch->behind = words.place();
    } else if (words.is("move", 4, true)) {
        cursor.move = {words.name, {numbers[0], numbers[1]}, {numbers[2], numbers[3]}, {}, {}, 0};
    } else if (words.is("moved-file", Words::kMost, true) && cursor.move) {
        cursor.move->place = words.place();
    } else if (words.is("moved-behind", Words::kMost, true) && cursor.move) {
        cursor.move->behind = words.place();
    } else if (words.is("moved-unsent", 1, false) && cursor.move) {
        cursor.move->unsent = numbers[0];
    } else {
        return false;
    }
    return true;
}

void writeMove(std::string &text, const FeedCursor::Move &move) {
    writeNumbers(text, "move", {move.from.inode, move.from.born, move.to.inode, move.to.born},
                 move.name);
    if (move.place) {
        writePlace(text, "moved-file", move.name, *move.place);
    }
    if (move.behind) {
        writePlace(text, "moved-behind", move.name, *move.behind);
    }
    if (move.unsent > 0) {
        writeNumbers(text, "moved-unsent", {move.unsent});
    }
}

}  // namespace

std::string FeedCursor::text() const {
    std::string text = std::string(kTitle) + '\n';
    writeNumbers(text, "next", {next});
    writeNumbers(text, "removed", {removed});
    for (const auto &[name, place] : places) {
        writePlace(text, "file", name, place);
    }
    if (batch) {
        writeNumbers(text, "batch", {batch->count, batch->bytes, batch->hash}, batch->name);
    }
    if (batch && batch->behind) {
        writePlace(text, "behind", batch->name, *batch->behind);
    }
    if (move) {
        writeMove(text, *move);
    }
    return text + "end " + std::to_string(feedHash(text)) + '\n';
}

std::optional<FeedCursor> FeedCursor::parse(std::string_view text) {
    const std::size_t end = text.rfind("end ");
    if (end == std::string_view::npos || !text.starts_with(kTitle) ||
        text.substr(end) != "end " + std::to_string(feedHash(text.substr(0, end))) + "\n") {
        return std::nullopt;
    }
    FeedCursor cursor;
    std::string_view rest = text.substr(0, end);
    rest.remove_prefix(kTitle.size() + 1);
    while (!rest.empty()) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        if (!takeLine(cursor, Words(line))) {
            return std::nullopt;
        }
    }
    // What somebody wrote by hand could not be read back to the same.
    const bool isSmall =
        cursor.next < kMostNumber && (!cursor.batch || cursor.batch->count < kMostNumber);
    return isSmall && cursor.text() == text ? std::optional(std::move(cursor)) : std::nullopt;
}

void FeedCursor::finishMove(const std::optional<FileMark> &mark) {
    const auto done = std::exchange(move, std::nullopt);
    const FileMark there = mark.value_or(FileMark{});
    if (!done || (done->to == FileMark{} ? there == done->from : there != done->to)) {
        return;
    }
    removed += done->unsent;
    if (done->place) {
        places[done->name] = *done->place;
    }
    if (batch && done->behind) {
        batch->behind = *done->behind;
    }
}

}  // namespace quorbel
