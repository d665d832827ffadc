#include "Fuzz.h"
#include "common/LogReader.h"
#include "platform/DescriptorIo.h"
#include "platform/bus/NotificationBatch.h"

#include <fcntl.h>
#include <sys/mman.h>

#include <string>
#include <vector>

namespace quorbel {

namespace {

constexpr std::string_view kTypes[] = {"Set", "Remove", "", "set"};

UniqueFd sealed(std::string_view bytes, bool wholly) {
    UniqueFd file(::memfd_create("batch", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    require(writeFully(file.get(), bytes) == bytes.size(), "there is memory");
    const int seals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL;
    ::fcntl(file.get(), F_ADD_SEALS, wholly ? seals : F_SEAL_GROW);
    return file;
}

}  // namespace

/// A batch is taken whole or not at all, and what is taken is written as the same again.
void tryInput(std::string_view input) {
    FuzzInput choices(input);
    std::vector<NotificationBatch::Extent> extents;
    const bool isSealed = choices.byte() % 8 != 0;
    std::vector<std::string> types;
    for (std::size_t count = choices.byte() % 6; count > 0; --count) {
        const std::size_t type = choices.byte();
        extents.push_back({type < 250 ? kTypes[type % 2] : kTypes[type % 4], choices.below(300)});
    }
    const std::string_view bytes = choices.rest();
    const UniqueFd file = sealed(bytes, isSealed);
    const auto batch = NotificationBatch::read(file.get(), extents);
    if (!batch) {
        return;
    }
    require(isSealed, "only a sealed file is taken");
    require(batch->runs().size() == extents.size(), "all runs are there");
    std::string all;
    for (const NotificationRun &run : batch->runs()) {
        require(!run.lines.empty() && run.lines.back() == '\n', "runs are of whole lines");
        LogReader::readBytes(run.lines, [](const LogLine & /*line*/) { return true; });
        all += run.lines;
    }
    require(all == bytes, "nothing is left out");
    const UniqueFd again = NotificationBatch::write(batch->runs());
    const auto same = NotificationBatch::read(again.get(), extents);
    require(same && same->runs().size() == extents.size(), "what is written is taken");
}

}  // namespace quorbel
