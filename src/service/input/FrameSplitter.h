#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace quorbel {

/// Cuts the bytes of one stream connection into messages (RFC 6587).
///
/// Both framings are told apart anew for each frame: octet counting, "LEN SP" without a leading
/// zero and up to kMostCounted, in front of a message that begins with its priority, "<", one to
/// three digits and ">", as whoever counts sends it; else the frame ends at LF or NUL, and a CR in
/// front of that is dropped. Empty frames are no frames. Of a frame longer than kMaxFrame the first
/// kMaxFrame bytes are handed on; the rest has no priority of its own and is skipped.
///
/// Holds less than kMaxFrame bytes and what one call of feed() brought.
class FrameSplitter {
public:
    static constexpr std::size_t kMaxFrame = std::size_t{64} * 1024;
    /// A larger number is no count, or else a line of text could take much else with it.
    static constexpr std::size_t kMostCounted = std::size_t{1024} * 1024;

    /// The view lasts as long as the call. `cut` says that the end of the frame is missing.
    using FrameHandler = std::function<void(std::string_view frame, bool cut)>;

    explicit FrameSplitter(FrameHandler onFrame) : m_onFrame(std::move(onFrame)) {}

    void feed(std::string_view bytes);
    /// The stream has ended: an unfinished frame is handed on as it is.
    void finish();

private:
    bool takeFrame(std::string_view &rest);
    bool takeCounted(std::string_view &rest, std::size_t header, std::size_t length);
    bool takeLine(std::string_view &rest);
    void skip(std::string_view &rest);
    void handOn(std::string_view frame, bool cut);

    FrameHandler m_onFrame;
    std::string m_buffer;
    std::size_t m_searched = 0;   ///< so many bytes of the buffer are known to hold no line end
    std::size_t m_skipBytes = 0;  ///< left of a counted frame that was too long
    bool m_skipLine = false;      ///< within a line that was too long
};

}  // namespace quorbel
