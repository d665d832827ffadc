#include "platform/LineCommand.h"

#include <utility>

namespace quorbel {

void LineCommand::begin(std::string key, Kind kind) {
    m_parts.push_back({std::move(key), kind, 0});
}

LineCommand::Place LineCommand::add(std::string_view line) {
    Part &part = m_parts.back();
    ++part.count;
    const std::size_t note = part.kind == Kind::kCounted ? 1 : m_lines.count();
    return m_lines.append(line, static_cast<std::uint32_t>(note));
}

void LineCommand::again(Place place) {
    Part &part = m_parts.back();
    const std::uint32_t note = m_lines.note(place);
    if (part.kind == Kind::kCounted) {
        m_lines.setNote(place, note + 1);
    } else {
        ++part.count;
        m_lines.append(std::string(m_lines.line(place)), note);
    }
}

Dictionary LineCommand::toDictionary() const {
    Dictionary command;
    command.append("command", m_name);
    PackedLines::Reader reader(m_lines);
    for (const Part &part : m_parts) {
        Dictionary counts;
        Array list;
        for (std::size_t i = 0; i < part.count; ++i) {
            const Place place = reader.next();
            std::string line(m_lines.line(place));
            if (part.kind == Kind::kCounted) {
                counts.append(std::move(line), std::to_string(m_lines.note(place)));
            } else {
                list.emplace_back(std::move(line));
            }
        }
        command.append(part.key, part.kind == Kind::kCounted ? Value(std::move(counts))
                                                             : Value(std::move(list)));
    }
    return command;
}

}  // namespace quorbel
