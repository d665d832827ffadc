#include "Fuzz.h"
#include "common/SettingsDocument.h"
#include "platform/ArchivedCounts.h"
#include "platform/DescriptorIo.h"
#include "platform/Files.h"
#include "platform/KeyedArchive.h"
#include "service/bus/Commands.h"
#include "support/TemporaryFolder.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace quorbel {

namespace {

constexpr std::string_view kLogName = "2026-01-02.log";
constexpr std::string_view kLog =
    "1767312000,Local7.Error,10.0.0.5,disk full\r\n"
    "1767312000,Local7.Error,10.0.0.5,disk full\r\n"
    "1767312060,Kern.Emergency,h2,a, b and c\r\n"
    "1767312061,User.Notice,h2,-\r\n";

/// A service's folder with a log, to carry commands out in.
struct Place {
    void refill() const {
        for (const std::string &name : listFolder(folder.path())) {
            ::unlink((folder.path() / name).c_str());
        }
        folder.write(kLogName, kLog);
    }
    /// Every file by its name.
    [[nodiscard]] std::map<std::string, std::string> content() const {
        std::map<std::string, std::string> files;
        for (const std::string &name : listFolder(folder.path())) {
            files[name] = readFile(folder.path() / name).value_or("");
        }
        return files;
    }

    testing::TemporaryFolder folder;
    LogStore store{folder.path()};
    SettingsFile settings{folder.path() / kSettingsFileName};
    MailSender mail;
    Commands commands{store, settings, mail};
};

UniqueFd sealed(std::string_view bytes) {
    UniqueFd file(::memfd_create("command", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    require(writeFully(file.get(), bytes) == bytes.size(), "there is memory");
    ::fcntl(file.get(), F_ADD_SEALS, F_SEAL_WRITE | F_SEAL_SHRINK | F_SEAL_GROW);
    return file;
}

/// What is read where it stands is what the archive holds.
void requireSameCounts(std::string_view bytes, const Dictionary *command) {
    auto counts = ArchivedCounts::open(bytes, "update", "Events");
    std::vector<std::pair<std::string, std::string>> entries;
    const auto keep = [&entries](std::string_view line, std::string_view count) {
        entries.emplace_back(line, count);
        return true;
    };
    if (!counts || !counts->forEach(keep) || command == nullptr) {
        return;
    }
    require(settingText(*command, "command") == "update", "it is that command");
    const Dictionary events = settingDictionary(*command, "Events");
    std::map<std::string, std::string> first;
    for (auto &[line, count] : entries) {
        first.try_emplace(line, count);
    }
    require(first.size() == events.size(), "as many lines");
    for (const auto &[line, count] : first) {
        require(settingText(events, line) == count, "each with its count");
    }
}

bool isRemaining(const std::string &log) {
    std::string_view rest = kLog;
    for (FuzzInput lines(log); !lines.isEmpty();) {
        const std::string line = std::string(lines.line()) + '\n';
        const std::size_t at = rest.find(line);
        if (at == std::string_view::npos) {
            return false;
        }
        rest.remove_prefix(at + line.size());
    }
    return true;
}

}  // namespace

/// A command's archive does the same wherever its values are looked at; an update takes lines away
/// and adds none; every reply is one line.
void tryInput(std::string_view bytes) {
    const auto read = readKeyedArchive(bytes);
    const Value *value = std::get_if<Value>(&read);
    const Dictionary *command = value != nullptr ? value->dictionary() : nullptr;
    requireSameCounts(bytes, command);
    const auto name = command != nullptr ? settingText(*command, "command") : std::nullopt;
    if (name == "email") {
        return;  // it would go where it says
    }
    static Place one;
    static Place other;
    one.refill();
    other.refill();
    const std::string reply = one.commands.carryOut(sealed(bytes));
    require(!reply.empty() && reply.find('\n') == std::string::npos, "the reply is one line");
    if (command == nullptr) {
        require(one.content().at(std::string(kLogName)) == kLog, "what is no command does nothing");
        return;
    }
    const std::string again = other.commands.carryOut(*command);
    require(reply == again, "the same reply");
    require(one.content() == other.content(), "the same files");
    const auto content = one.content();
    const auto log = content.find(std::string(kLogName));
    require(name == "restore" || log == content.end() || isRemaining(log->second),
            "nothing is added");
}

}  // namespace quorbel
