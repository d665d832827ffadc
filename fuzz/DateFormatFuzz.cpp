#include "Fuzz.h"
#include "platform/DateFormat.h"
#include "platform/Text.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>
#include <string>

namespace quorbel {

namespace {

std::int64_t momentFrom(std::string_view bytes) {
    std::int64_t moment = 0;
    if (!bytes.empty()) {
        std::memcpy(&moment, bytes.data(), std::min(bytes.size(), sizeof moment));
    }
    // Most within some thousand years, some anywhere.
    return moment % 4 == 0 ? moment : moment % 100'000'000'000;
}

std::optional<std::int64_t> slowRoundTrip(const DateFormat &format, std::int64_t moment) {
    const auto read = format.parse(format.render(static_cast<double>(moment)));
    return read ? std::optional(static_cast<std::int64_t>(std::floor(*read))) : std::nullopt;
}

}  // namespace

/// The short ways of a date format end where the long ones do, whatever its pattern is.
void tryInput(std::string_view input) {
    FuzzInput choices(input);
    const std::int64_t one = momentFrom(choices.bytes(8));
    // Unsigned: the sum may be beyond the last moment there is.
    const auto other = static_cast<std::int64_t>(static_cast<std::uint64_t>(one) +
                                                 choices.below(1U << 16U) - 32'768);
    const std::string_view pattern = choices.bytes(200);
    const DateFormat format(pattern);
    for (const std::int64_t moment : {one, other}) {
        require(isUtf8(format.render(static_cast<double>(moment))), "what is shown is text");
        require(format.roundTrip(moment) == slowRoundTrip(format, moment),
                "a moment shown and read back");
    }
    const bool isAlike =
        format.render(static_cast<double>(one)) == format.render(static_cast<double>(other));
    require(format.rendersAlike(one, other) == isAlike, "moments that look alike");
    if (format.tellsMinute() && DateFormat::isPlain(one)) {
        const DateFormat::Span span = format.momentsInMinuteOf(one);
        require(span.first <= one && one <= span.last, "a minute holds its moment");
    }
    require(!format.parse(choices.rest()) || !choices.rest().empty(), "nothing is no moment");
}

}  // namespace quorbel
