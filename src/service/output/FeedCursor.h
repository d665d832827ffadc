#pragma once

#include "service/output/FeedPlace.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace quorbel {

/// What a feed knows of its way over restarts: a plain value, and its file form.
struct FeedCursor {
    using Places = std::map<std::string, FeedPlace>;  ///< by the log file's name

    /// The piece under way of a feed that keeps it.
    struct Batch {
        std::uint64_t count = 0;  ///< of lines; the first has the number `next`
        std::uint64_t bytes = 0;
        std::uint64_t hash = 0;
        std::string name;                 ///< of the log file that they are of
        std::optional<FeedPlace> behind;  ///< where that goes on; nothing: it is gone

        bool operator==(const Batch &) const = default;
    };
    /// Where the places in a file are once it was replaced. It is written down before that is done:
    /// after a crash, the file that is there says whether it was.
    struct Move {
        std::string name;
        FileMark from;
        FileMark to;  ///< all 0: the file is removed
        std::optional<FeedPlace> place;
        std::optional<FeedPlace> behind;  ///< in the batch
        std::uint64_t unsent = 0;         ///< lines that are removed then before they were sent

        bool operator==(const Move &) const = default;
    };

    std::uint64_t next = 0;     ///< the number behind what was acknowledged
    std::uint64_t removed = 0;  ///< how many lines were removed before they were acknowledged
    Places places;              ///< behind what was acknowledged
    std::optional<Batch> batch;
    std::optional<Move> move;

    bool operator==(const FeedCursor &) const = default;

    /// Lines of text with a hash of them at the end.
    [[nodiscard]] std::string text() const;
    /// Nothing unless every byte is as text() made it, and the names are those of log files.
    static std::optional<FeedCursor> parse(std::string_view text);
    /// Does what `move` says when `mark`, of the file that stands under its name now, tells that
    /// the file was replaced. Nothing stands for no file.
    void finishMove(const std::optional<FileMark> &mark);
};

}  // namespace quorbel
