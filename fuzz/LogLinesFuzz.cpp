#include "Fuzz.h"
#include "common/LogReader.h"
#include "platform/DescriptorIo.h"
#include "support/SlowLogReader.h"

#include <sys/mman.h>

#include <string>
#include <vector>

namespace quorbel {

namespace {

using testing::LogFieldTexts;
using Lines = std::vector<LogFieldTexts>;

LogReader::LineHandler adderTo(Lines &lines) {
    return [&lines](const LogLine &line) {
        lines.push_back({std::string(line.date), std::string(line.priority), std::string(line.host),
                         std::string(line.message)});
        return true;
    };
}

/// The same bytes as a file of two parts that touch anywhere.
Lines readInParts(std::string_view bytes, std::size_t cut) {
    Lines lines;
    const UniqueFd memory(::memfd_create("log", MFD_CLOEXEC));
    require(writeFully(memory.get(), bytes) == bytes.size(), "there is memory");
    const LogFile file("/proc/self/fd/" + std::to_string(memory.get()));
    require(file.isOpen(), "the file can be opened");
    LogExtent extent;
    LogReader::readPart(file, {0, cut}, adderTo(lines), {}, extent);
    LogReader::readPart(file, {cut, LogSpan::kNoEnd}, adderTo(lines), {}, extent);
    return lines;
}

}  // namespace

/// The fast reader takes what the rules of the format say, whole and in parts.
void tryInput(std::string_view input) {
    FuzzInput choices(input);
    const std::size_t wanted = choices.below(1U << 16U);
    const std::string_view bytes = choices.rest();
    const Lines expected = testing::readSlowly(std::string(bytes));
    Lines lines;
    LogReader::readBytes(bytes, adderTo(lines));
    require(lines == expected, "the lines are those of the rules");
    require(readInParts(bytes, wanted % (bytes.size() + 1)) == expected,
            "parts that touch have each line once");
}

}  // namespace quorbel
