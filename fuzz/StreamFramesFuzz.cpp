#include "Fuzz.h"
#include "service/input/FrameSplitter.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace quorbel {

namespace {

struct Frames {
    std::vector<std::pair<std::string, FrameSplitter::Kind>> all;
    std::uint64_t skipped = 0;

    bool operator==(const Frames &) const = default;
};

class Splitting {
public:
    Splitting() { begin(); }
    void feed(std::string_view bytes) { m_splitter->feed(bytes); }
    /// Another splitter goes on, as after a restart.
    void handOver() {
        const std::string state = m_splitter->state();
        m_skipped += m_splitter->skipped();
        begin();
        require(m_splitter->resume(state), "a state is taken on");
        m_skipped -= m_splitter->skipped();
    }
    Frames finish() {
        m_splitter->finish();
        m_frames.skipped = m_skipped + m_splitter->skipped();
        return m_frames;
    }

private:
    void begin() {
        m_splitter = std::make_unique<FrameSplitter>(
            [this](std::string_view frame, FrameSplitter::Kind kind) {
                m_frames.all.emplace_back(frame, kind);
            });
    }

    Frames m_frames;
    std::uint64_t m_skipped = 0;
    std::unique_ptr<FrameSplitter> m_splitter;
};

}  // namespace

/// What comes out of a stream depends on its bytes alone, not on the pieces in which they come, nor
/// on a restart in between; and no bytes come out that did not go in.
void tryInput(std::string_view input) {
    FuzzInput choices(input);
    const std::string_view cuts = choices.bytes(8);
    const std::string_view stream = choices.rest();
    Splitting whole;
    whole.feed(stream);
    const Frames expected = whole.finish();
    Splitting pieces;
    std::string_view rest = stream;
    for (std::size_t i = 0; !rest.empty(); ++i) {
        const unsigned cut = cuts.empty() ? 0 : static_cast<unsigned char>(cuts[i % cuts.size()]);
        const std::string_view piece = rest.substr(0, 1 + cut / 2);
        pieces.feed(piece);
        rest.remove_prefix(piece.size());
        if (cut % 2 == 1) {
            pieces.handOver();
        }
    }
    require(pieces.finish() == expected, "pieces make no difference");
    std::size_t size = 0;
    for (const auto &[frame, kind] : expected.all) {
        require(!frame.empty() && frame.size() <= FrameSplitter::kMaxFrame, "frames have bounds");
        size += frame.size();
    }
    require(size + expected.skipped <= stream.size(), "no bytes come from nowhere");
}

}  // namespace quorbel
