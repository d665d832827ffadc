#pragma once

#include "core/PackedBytes.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace quorbel {

class PackedMessages;

/// Which packed messages are unpacked beside, because somebody looks at them: the last few.
/// Outlives all PackedMessages that it knows. Main thread only.
class UnpackedMessages {
public:
    static constexpr std::size_t kMost = 8;

    UnpackedMessages() = default;
    ~UnpackedMessages() = default;
    UnpackedMessages(const UnpackedMessages &) = delete;
    UnpackedMessages &operator=(const UnpackedMessages &) = delete;

private:
    friend class PackedMessages;
    /// Makes them one of the last; the one longest looked at makes room.
    void add(PackedMessages &messages);
    void forget(PackedMessages &messages);

    std::vector<PackedMessages *> m_latest;  // the last one last
    MessageBytes m_spare;                    // of those that were forgotten last, for its memory
};

/// A chunk's packed messages, unpacked for a while whenever they are looked at. Main thread only.
class PackedMessages {
public:
    /// `others` outlives this.
    PackedMessages(PackedBytes packed, UnpackedMessages &others);
    ~PackedMessages();
    PackedMessages(const PackedMessages &) = delete;
    PackedMessages &operator=(const PackedMessages &) = delete;

    /// Valid until UnpackedMessages::kMost other ones were looked at.
    [[nodiscard]] const MessageBytes &bytes() {
        if (!m_isUnpacked) {
            unpack();
        }
        return m_unpacked;
    }
    [[nodiscard]] const std::shared_ptr<const PackedBytes> &packed() const { return m_packed; }
    [[nodiscard]] std::size_t size() const { return m_packed->unpackedSize(); }
    [[nodiscard]] const TrigramFilter &filter() const { return m_packed->filter(); }

private:
    friend class UnpackedMessages;
    void unpack();

    std::shared_ptr<const PackedBytes> m_packed;
    UnpackedMessages &m_others;
    MessageBytes m_unpacked;
    bool m_isUnpacked = false;
};

}  // namespace quorbel
