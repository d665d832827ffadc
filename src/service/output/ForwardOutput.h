#pragma once

#include "common/ServiceConfiguration.h"
#include "service/output/ForwardConnection.h"
#include "service/output/Output.h"
#include "service/output/SyslogMessage.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <memory>
#include <string>

namespace quorbel {

/// Sends events to a syslog server. At least once: the server says nothing of what it has, so an
/// event counts as delivered when the server's system has confirmed it and the connection has
/// lived for five seconds from then on, or when the server has closed the connection in order once
/// we did. After anything else, what was not delivered is sent again. Over UDP, what was sent is
/// delivered.
class ForwardOutput final : public Output {
public:
    /// `proof` is for how long the connection has to live, for tests.
    ForwardOutput(LogStore &store, const std::filesystem::path &folder,
                  const ForwardSettings &settings,
                  std::chrono::milliseconds proof = std::chrono::seconds(5));

private:
    /// What went into the connection up to a place.
    struct Mark {
        std::uint64_t number = 0;   ///< of the event behind it
        std::uint64_t written = 0;  ///< bytes
        std::uint64_t events = 0;
        Clock::time_point confirmed = Clock::time_point::max();
    };

    void run() override;
    bool connect();
    bool turn();
    bool sendPiece(const EventFeed::Piece &piece);
    bool sendDatagrams(const EventFeed::Piece &piece, std::uint64_t &events);
    bool sendStream(const EventFeed::Piece &piece, std::uint64_t &events);
    bool sendBytes(std::string_view bytes);
    void noteConfirmed(Clock::time_point alive);
    void acknowledgeSome(Clock::time_point alive, bool all);
    void finish();
    void breakOff();
    [[nodiscard]] bool isUdp() const {
        return m_settings.protocol == ForwardSettings::Protocol::kUdp;
    }

    const ForwardSettings m_settings;
    const std::chrono::milliseconds m_proof;
    SyslogMessage m_message;
    std::unique_ptr<ForwardConnection> m_connection;
    std::deque<Mark> m_marks;  ///< not acknowledged
    Clock::time_point m_acknowledged;
    std::string m_bytes;
    bool m_isCut = false;  ///< stop was asked for within a message
};

}  // namespace quorbel
