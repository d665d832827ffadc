#include "platform/bus/CommandDelivery.h"

#include "platform/DescriptorIo.h"
#include "platform/KeyedArchive.h"
#include "platform/bus/BusNames.h"
#include "platform/bus/BusValue.h"

#include <fcntl.h>
#include <sys/mman.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

namespace quorbel::bus {

namespace {

// About the bytes that a value takes in a message, on the high side.
std::size_t sizeInMessage(const Value &value) {
    constexpr std::size_t kVariant = 16;  // signature, length and padding
    constexpr std::size_t kKey = 16;      // length, padding and the final NUL
    std::size_t size = kVariant;
    if (const std::string *text = value.string()) {
        size += text->size();
    } else if (const Data *data = value.data()) {
        size += data->bytes.size();
    } else if (const Array *array = value.array()) {
        for (const Value &item : *array) {
            size += sizeInMessage(item);
        }
    } else if (const Dictionary *dictionary = value.dictionary()) {
        for (const auto &[key, content] : *dictionary) {
            size += kKey + key.size() + sizeInMessage(content);
        }
    }
    return size;
}

bool fitsInMessage(const CommandDelivery::Command &command) {
    const auto *value = std::get_if<Value>(&command);
    return value != nullptr && fitsOnBus(*value) && sizeInMessage(*value) <= kMessageLimit;
}

bool writeArchive(CommandDelivery::Command command, int fd) {
    if (auto *lines = std::get_if<LineCommand>(&command)) {
        return std::move(*lines).writeArchive(fd);
    }
    const std::string bytes = writeKeyedArchive(std::get<Value>(command));
    return writeFully(fd, bytes) == bytes.size();
}

int appendAsFile(sd_bus_message *message, CommandDelivery::Command command) {
    errno = 0;
    const UniqueFd file(memfd_create("quorbel-command", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (!file.isOpen() || !writeArchive(std::move(command), file.get()) ||
        fcntl(file.get(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL) !=
            0) {
        return errno != 0 ? -errno : -EIO;
    }
    const int descriptor = file.get();
    return sd_bus_message_append_basic(message, SD_BUS_TYPE_UNIX_FD, &descriptor);
}

// The connection is ready: whether it passes descriptors is known only then.
MessagePointer newCall(sd_bus *bus, CommandDelivery::Command command) {
    const bool asMessage = fitsInMessage(command);
    sd_bus_message *message = nullptr;
    if (sd_bus_message_new_method_call(bus, &message, kServiceName, kServicePath, kCommandInterface,
                                       asMessage ? kSetCommand : kSetCommandFile) < 0) {
        return nullptr;
    }
    MessagePointer call(message);
    const int result = asMessage ? appendToMessage(message, *std::get<Value>(command).dictionary())
                                 : appendAsFile(message, std::move(command));
    return result < 0 ? nullptr : std::move(call);
}

}  // namespace

CommandDelivery::CommandDelivery(Command command, const CommandSender::ReplyHandler &onReply,
                                 CommandSender::AnswerHandler onAnswer)
    : m_command(std::move(command)),
      m_onReply(onReply),
      m_onAnswer(std::move(onAnswer)),
      m_deadline(Clock::now() + kSendLimit),
      m_bus(openSystemBus()) {
    if (m_bus == nullptr) {
        finish();
    }
}

CommandDelivery::~CommandDelivery() {
    if (m_onAnswer) {
        m_onAnswer(std::nullopt);
    }
}

void CommandDelivery::process() {
    int result = 0;
    do {
        result = isFinished() ? 0 : sd_bus_process(m_bus.get(), nullptr);
    } while (result > 0);
    if (result < 0) {
        finish();
    } else {
        advance();
    }
}

void CommandDelivery::advance() {
    if (m_state == State::kConnecting && sd_bus_is_ready(m_bus.get()) > 0) {
        if (!call() || !askWhetherRouted()) {
            finish();
            return;
        }
        enter(State::kSending, kSendLimit);
    }
    if (m_state == State::kSending && (sd_bus_get_events(m_bus.get()) & POLLOUT) == 0) {
        enter(State::kRouting, kOrderLimit);
    }
    if (!holdsUpNext() || Clock::now() < m_deadline) {
        return;
    }
    if (m_state == State::kRouting) {
        // The bus has it all; it may only be slow.
        m_state = State::kAwaitingReply;
    } else {
        finish();
    }
}

void CommandDelivery::enter(State state, std::chrono::seconds limit) {
    m_state = state;
    m_deadline = Clock::now() + limit;
}

bool CommandDelivery::holdsUpNext() const {
    return m_state != State::kAwaitingReply && !isFinished();
}

pollfd CommandDelivery::input() const {
    return {sd_bus_get_fd(m_bus.get()), static_cast<short>(sd_bus_get_events(m_bus.get())), 0};
}

Clock::time_point CommandDelivery::nextTime() const {
    const auto own = holdsUpNext() ? m_deadline : Clock::time_point::max();
    return std::min(own, processingTime(m_bus.get()).value_or(own));
}

int CommandDelivery::onMessage(sd_bus_message *reply, void *self, sd_bus_error * /*error*/) {
    auto *delivery = static_cast<CommandDelivery *>(self);
    delivery->m_state = State::kFinished;
    const char *text = nullptr;
    if (sd_bus_message_is_method_error(reply, nullptr) == 0 &&
        sd_bus_message_read_basic(reply, SD_BUS_TYPE_STRING, &text) > 0) {
        delivery->m_onReply(text);
        if (const auto onAnswer = std::exchange(delivery->m_onAnswer, {})) {
            onAnswer(text);
        }
    }
    return 1;
}

// The bus takes the messages of a connection one after the other, so whatever it answers to one
// that came behind the command, it has routed the command.
int CommandDelivery::onRouted(sd_bus_message *reply, void *self, sd_bus_error * /*error*/) {
    auto *delivery = static_cast<CommandDelivery *>(self);
    int isOwned = 1;
    sd_bus_message_read_basic(reply, SD_BUS_TYPE_BOOLEAN, &isOwned);
    delivery->m_awaitsStart = isOwned == 0;
    if (delivery->holdsUpNext()) {
        delivery->m_state = State::kAwaitingReply;
    }
    return 1;
}

bool CommandDelivery::askWhetherRouted() {
    return sd_bus_call_method_async(m_bus.get(), nullptr, "org.freedesktop.DBus",
                                    "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameHasOwner",
                                    &onRouted, this, "s", kServiceName) >= 0;
}

bool CommandDelivery::call() {
    const MessagePointer message = newCall(m_bus.get(), std::exchange(m_command, Value()));
    const std::chrono::microseconds limit = kReplyLimit;
    return message != nullptr &&
           sd_bus_call_async(m_bus.get(), nullptr, message.get(), &onMessage, this,
                             static_cast<std::uint64_t>(limit.count())) >= 0;
}

void CommandDelivery::finish() {
    m_state = State::kFinished;
    m_command = Value();
    m_bus.reset();
}

}  // namespace quorbel::bus
