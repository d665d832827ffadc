#pragma once

#include "common/FilterConditions.h"
#include "common/IpAddress.h"
#include "platform/Value.h"
#include "service/message/Priority.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// What filters look at: one message as it came in. Its text is seen as the log files hold it, but
/// in one piece however many events it became. Texts are made when first asked for, in buffers that
/// are used again: keep one object for many messages.
class FilterSubject {
public:
    /// `address` is where the message came from, `relayedHost` the host that a relay there has
    /// named; empty without. `lines` are its lines as the RecordWriter wrote them, each with
    /// `prefix` bytes in front of the message; both must last until the next call.
    void set(const IpAddress &address, Priority priority, std::string_view lines,
             std::size_t prefix, std::string_view relayedHost = {});

    [[nodiscard]] const IpAddress &address() const { return *m_address; }
    [[nodiscard]] std::string_view relayedHost() const { return m_relayedHost; }
    [[nodiscard]] Priority priority() const { return m_priority; }
    /// Valid until the next set().
    [[nodiscard]] const std::string &message() const;
    /// The message after foldCase(); valid until the next set().
    [[nodiscard]] const std::string &foldedMessage() const;

private:
    const IpAddress *m_address = nullptr;
    Priority m_priority;
    std::string_view m_relayedHost;
    std::string_view m_lines;
    std::size_t m_prefix = 0;
    mutable std::string m_message;
    mutable std::string m_folded;
};

/// One filter record of the settings, made ready for matching.
class EventFilter {
public:
    explicit EventFilter(const Dictionary &record);

    [[nodiscard]] bool matches(const FilterSubject &subject) const;

    /// As the record holds it.
    [[nodiscard]] const std::string &name() const { return m_name; }
    [[nodiscard]] const FilterConditions &conditions() const { return m_conditions; }

private:
    std::string m_name;
    FilterConditions m_conditions;
};

/// The include and exclude filters of the settings.
class FilterSet {
public:
    FilterSet() = default;
    explicit FilterSet(const Dictionary &settings);

    /// Whether there are no filters, so that passes() need not be asked.
    [[nodiscard]] bool isEmpty() const { return m_includes.empty() && m_excludes.empty(); }
    /// Whether an include filter matches, or there are none, and no exclude filter matches.
    [[nodiscard]] bool passes(const FilterSubject &subject) const { return !refusalOf(subject); }
    /// The name of the exclude filter that keeps a message out, or of no filter, which is empty,
    /// when there are include filters and none matches; nothing when it passes. As long as the set.
    [[nodiscard]] std::optional<std::string_view> refusalOf(const FilterSubject &subject) const;

private:
    std::vector<EventFilter> m_includes;
    std::vector<EventFilter> m_excludes;
};

}  // namespace quorbel
