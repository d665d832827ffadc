#pragma once

#include "platform/FileMapping.h"
#include "platform/KeyedArchive.h"
#include "platform/UniqueFd.h"

#include <string_view>
#include <utility>
#include <variant>

namespace quorbel {

/// The bytes of a command that a client wrote as a keyed archive into a memfd, where they are.
class CommandFile {
public:
    /// The file must be sealed against writing and shrinking, so that it cannot change or vanish
    /// while it is read. It can be closed afterwards.
    static std::variant<CommandFile, ArchiveError> open(const UniqueFd &file);

    [[nodiscard]] std::string_view bytes() const { return m_mapping.bytes(); }
    /// See FileMapping::giveBack().
    void giveBack() const { m_mapping.giveBack(); }

private:
    explicit CommandFile(FileMapping mapping) : m_mapping(std::move(mapping)) {}

    FileMapping m_mapping;
};

}  // namespace quorbel
