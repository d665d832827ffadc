#pragma once

#include "service/input/FrameHeader.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace quorbel {

/// Cuts the bytes of one stream connection into messages (RFC 6587).
///
/// Both framings are told apart anew for each frame: octet counting, a FrameHeader in front of a
/// message that begins with its priority; else the frame ends at LF or NUL, and a CR in front of
/// that is dropped. Empty frames are no frames. Of a frame longer than kMaxFrame the first
/// kMaxFrame bytes are handed on; the rest has no priority of its own and is skipped.
///
/// A stream can get out of step: a counted message has no priority, or its sender has counted
/// characters instead of bytes. Behind counted frames, text that is no frame therefore ends at the
/// next header, too, and is handed on as a frame of its own (kStray). A count without a priority
/// is taken for one when the next frame, or another such count, begins right where it says.
/// What stands within a counted frame, or in a line of a sender that has not counted, is not looked
/// at: a text cannot make a message of its own parts. (Only when what came first on a connection
/// has neither a priority nor a line end, for kMaxFrame bytes or until the stream ends, is it
/// searched for a header.)
///
/// What is handed on depends on the bytes alone, not on the pieces in which they come. Holds less
/// than twice kMaxFrame, and next to nothing between frames.
class FrameSplitter {
public:
    static constexpr std::size_t kMaxFrame = std::size_t{64} * 1024;
    static constexpr std::size_t kMostCounted = FrameHeader::kMostCounted;

    enum class Kind {
        kWhole,
        kCut,   ///< the end of the frame is missing
        kStray  ///< belongs to no frame
    };
    /// The view lasts as long as the call.
    using FrameHandler = std::function<void(std::string_view frame, Kind kind)>;

    explicit FrameSplitter(FrameHandler onFrame) : m_onFrame(std::move(onFrame)) {}

    void feed(std::string_view bytes);
    /// The stream has ended: an unfinished frame is handed on as it is.
    void finish();

    /// All that it knows of the stream and holds of it, for another splitter to go on.
    [[nodiscard]] std::string state() const;
    /// Goes on where a splitter was that has handed on nothing of what comes now. False, and
    /// nothing changes, when this is no state of one of the same version.
    bool resume(std::string_view state);

    /// How many bytes were handed on in no frame: the rest of those that were too long.
    [[nodiscard]] std::uint64_t skipped() const { return m_skipped; }

private:
    enum class Framing { kUnknown, kLines, kCounted };
    enum class Answer { kNo, kYes, kOpen };  ///< kOpen: bytes that follow decide
    enum class End { kNone, kOpen, kLineEnd, kHeader, kStream, kTooLong };
    struct TextEnd {
        End end = End::kOpen;
        std::size_t at = 0;
    };

    void takeFrames(std::string_view &rest);
    bool takeFrame(std::string_view &rest);
    bool takeCounted(std::string_view &rest, const FrameHeader &header);
    Answer findTail(std::string_view rest, const FrameHeader &header, std::size_t &length) const;
    [[nodiscard]] Answer isBoundary(std::string_view rest, std::size_t at) const;
    Answer findBareCount(std::string_view rest);
    Answer followCounts(std::string_view rest);
    bool takeBareCounted(std::string_view &rest);
    bool takeText(std::string_view &rest);
    TextEnd findTextEnd(std::string_view rest);
    TextEnd findHeaderAt(std::string_view rest, std::size_t at);
    void takeTooLong(std::string_view &rest);
    void skipBytes(std::string_view &rest);
    bool skipText(std::string_view &rest);
    void consume(std::string_view &rest, std::size_t count);
    void consumeAlongCounts(std::string_view &rest, std::size_t count);
    void handOn(std::string_view frame, Kind kind);
    void handOnStray(std::string_view text);

    FrameHandler m_onFrame;
    std::string m_buffer;
    Framing m_framing = Framing::kUnknown;
    bool m_resync = false;        ///< the text at the front may end at a header
    bool m_skipText = false;      ///< within a text that was too long
    bool m_skipToHeader = false;  ///< which may end at a header
    bool m_ended = false;
    std::size_t m_skipBytes = 0;  ///< left of a counted frame that was too long
    std::uint64_t m_skipped = 0;
    // What is known of the text at the front. All are offsets.
    std::size_t m_searched = 0;  ///< it does not end before
    std::size_t m_inner = 0;     ///< no header behind that at m_searched begins before
    std::size_t m_counts = 0;    ///< counts without a priority lead up to there
    std::size_t m_links = 0;     ///< and are so many
};

}  // namespace quorbel
