#pragma once

#include "platform/bus/Checkpoint.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>

namespace quorbel {

/// Keeps account of which of the service's events a window has: up to which place of the log it has
/// everything, which ones it was told since, and which it has that are still to be told. Tells from
/// the numbers of a checkpoint whether anything was missed.
class NoticeLedger {
public:
    /// What is to be done at a checkpoint.
    enum class Verdict {
        kFits,  ///< nothing was missed
        kGap,   ///< the log is to be read from sure() to its place, but for what was received
        kAnew,  ///< the whole log is to be read: nobody knows which events are gone
        kAsk    ///< the service is to be asked where it is
    };

    /// `loaded` is the place up to which the window has read the log.
    explicit NoticeLedger(FilePlace loaded) : m_sure(std::move(loaded)), m_newest(m_sure.name) {}

    /// The service's answer to the question where it is; never kFits nor kAsk. `isLogSame` says
    /// whether the files that were read are still those that there are.
    [[nodiscard]] Verdict judgeAnswer(const Checkpoint &now, bool isLogSame) const;
    /// A checkpoint that the service tells of. When it fits, the place of it is the sure one.
    Verdict judge(const Checkpoint &checkpoint);
    /// The log was read as it had to be; `waiting` of the checkpoint's events are still to be told.
    void caughtUp(const Checkpoint &checkpoint, std::uint64_t waiting = 0);

    /// An event is told singly; whether it is to be taken in. `line` is what tells it from others.
    bool tellSet(std::string line);
    /// The same in a batch, between two checkpoints.
    bool tellSet();
    /// Whether it would say so of all that are told in this batch from now on; then many can be
    /// told with one step.
    [[nodiscard]] bool areSetsNew() const { return m_sets >= m_had; }
    void tellSets(std::uint64_t count) { m_sets += count; }
    void tellRemove() { ++m_removes; }

    /// Whether a line of the log was received since sure(); each counts once.
    bool wasReceived(const std::string &line);
    /// Whether there is a line that was.
    [[nodiscard]] bool wasAnyReceived() const { return !m_received.empty(); }

    [[nodiscard]] const FilePlace &sure() const { return m_sure; }
    /// The newest file of the log that the window has anything of.
    [[nodiscard]] const std::string &newest() const { return m_newest; }
    [[nodiscard]] std::uint64_t edits() const { return m_edits; }

private:
    [[nodiscard]] Verdict gap() const;
    void setSure(const Checkpoint &checkpoint);

    FilePlace m_sure;
    std::string m_newest;
    std::uint64_t m_epoch = 0;
    bool m_isKnown = false;  // whether there was an epoch
    std::uint64_t m_sets = 0;
    std::uint64_t m_removes = 0;
    std::uint64_t m_edits = 0;
    std::uint64_t m_had = 0;  // events up to that number need not be taken in
    std::unordered_map<std::string, std::size_t> m_received;
};

}  // namespace quorbel
