#include "service/base/Refusals.h"

#include "service/base/QuotedText.h"

#include <algorithm>
#include <ctime>

namespace quorbel {

namespace {

/// Longer than what is shown of it, so that what is shown says that there was more.
constexpr std::size_t kMostKept = 128;

}  // namespace

std::string_view refusalReasonName(RefusalReason reason) {
    constexpr std::array<std::string_view, kRefusalReasonCount> kNames{
        "malformed", "filtered", "too long", "connection closed", "TLS refused", "wrong port"};
    return kNames.at(static_cast<std::size_t>(reason));
}

void Refusals::note(const IpAddress &sender, RefusalReason reason, std::string_view detail) {
    Known &known = senderOf(sender).reasons.at(static_cast<std::size_t>(reason));
    known.detail.assign(detail.substr(0, kMostKept));
    known.seconds = std::time(nullptr);
    ++known.count;
}

void Refusals::noteTlsFailure(const IpAddress &sender, std::string_view reason) {
    constexpr std::array<std::string_view, 4> kNoTls{
        "wrong version number", "http request", "https proxy request", "packet length too long"};
    if (std::ranges::find(kNoTls, reason) != kNoTls.end()) {
        note(sender, RefusalReason::kWrongPort, "no TLS");
    } else {
        note(sender, RefusalReason::kTlsRefused, reason);
    }
}

/// Moves it to the front.
Refusals::Sender &Refusals::senderOf(const IpAddress &address) {
    const auto found = std::ranges::find(m_senders, address, &Sender::address);
    if (found != m_senders.end()) {
        m_senders.splice(m_senders.begin(), m_senders, found);
        return m_senders.front();
    }
    if (m_senders.size() == kMostSenders) {
        m_senders.pop_back();
    }
    return m_senders.emplace_front(Sender{address, {}});
}

std::vector<Refusals::Refusal> Refusals::latest() const {
    std::vector<Refusal> refusals;
    for (const Sender &sender : m_senders) {
        for (std::size_t reason = 0; reason < kRefusalReasonCount; ++reason) {
            const Known &known = sender.reasons.at(reason);
            if (known.count > 0) {
                refusals.push_back({sender.address, static_cast<RefusalReason>(reason),
                                    known.detail.empty() ? "" : quoted(known.detail), known.seconds,
                                    known.count});
            }
        }
    }
    return refusals;
}

}  // namespace quorbel
