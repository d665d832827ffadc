#include "Fuzz.h"
#include "platform/KeyedArchive.h"
#include "platform/UniqueFd.h"
#include "platform/bus/BusValue.h"
#include "platform/bus/Checkpoint.h"
#include "platform/bus/NotificationInfo.h"
#include "platform/bus/SdBus.h"

#include <sys/socket.h>
#include <systemd/sd-bus.h>

#include <array>
#include <string>
#include <variant>

namespace quorbel {

namespace {

using bus::BusPointer;
using bus::MessagePointer;

/// Messages are made and read here, and never sent: the other end of the connection is silent.
sd_bus *connection() {
    static const BusPointer connection = [] {
        std::array<int, 2> ends{};
        require(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) == 0, "a socket");
        sd_bus *made = nullptr;
        require(sd_bus_new(&made) >= 0 && sd_bus_set_fd(made, ends[0], ends[0]) >= 0 &&
                    sd_bus_start(made) >= 0,
                "a connection");
        return BusPointer(made);
    }();
    return connection.get();
}

MessagePointer newMessage() {
    sd_bus_message *message = nullptr;
    require(sd_bus_message_new_signal(connection(), &message, "/a", "b.c", "D") >= 0, "a message");
    return MessagePointer(message);
}

sd_bus_message *readable(const MessagePointer &message) {
    require(sd_bus_message_seal(message.get(), 1, 0) >= 0, "it can be read");
    sd_bus_message_rewind(message.get(), 1);
    return message.get();
}

/// Builds a message of any types and values, as a stranger may send it.
class Stranger {
public:
    Stranger(FuzzInput &choices, sd_bus_message *message)
        : m_choices(choices), m_message(message) {}

    void append(unsigned depth) {
        switch (depth > 40 ? 0 : m_choices.byte() % 8) {
            case 0:
                sd_bus_message_append(m_message, "s", text().c_str());
                break;
            case 1:
                sd_bus_message_append(m_message, "x", static_cast<std::int64_t>(m_choices.byte()));
                break;
            case 2:
                sd_bus_message_append(m_message, "d", m_choices.byte() / 3.0);
                break;
            case 3:
                sd_bus_message_append(m_message, "(sd)", text().c_str(), 1.0);
                break;
            case 4:
                sd_bus_message_append_array(m_message, 'y', "abc", m_choices.byte() % 4U);
                break;
            case 5:
                appendAll("a{sv}", depth);
                break;
            case 6:
                appendAll("av", depth);
                break;
            default:
                appendAll("a{ss}", depth);
        }
    }
    void appendDictionary(unsigned depth, const char *type) {
        sd_bus_message_open_container(m_message, 'a', type + 1);
        for (unsigned left = m_choices.byte() % 5U; left > 0; --left) {
            appendElement(type + 1, depth + 1);
        }
        sd_bus_message_close_container(m_message);
    }

private:
    std::string text() {
        const std::string raw(m_choices.bytes(m_choices.byte() % 16U));
        return raw.substr(0, raw.find('\0'));
    }
    /// Bodies of variants; what does not fit is left out by sd-bus, which is a message, too.
    void appendAll(const char *type, unsigned depth) { appendDictionary(depth, type); }
    void appendElement(const std::string &type, unsigned depth) {
        if (type == "v") {
            appendVariant(depth);
            return;
        }
        sd_bus_message_open_container(m_message, 'e', type == "{ss}" ? "ss" : "sv");
        sd_bus_message_append(m_message, "s", text().c_str());
        type == "{ss}" ? static_cast<void>(sd_bus_message_append(m_message, "s", text().c_str()))
                       : appendVariant(depth);
        sd_bus_message_close_container(m_message);
    }
    void appendVariant(unsigned depth) {
        static constexpr const char *kTypes[] = {"s",  "x",     "d",  "(sd)",
                                                 "ay", "a{sv}", "av", "a{ss}"};
        const std::string_view front = m_choices.rest().substr(0, 1);
        const unsigned kind =
            depth > 40 || front.empty() ? 0 : static_cast<unsigned char>(front[0]) % 8U;
        sd_bus_message_open_container(m_message, 'v', kTypes[kind]);
        append(depth);
        sd_bus_message_close_container(m_message);
    }

    FuzzInput &m_choices;
    sd_bus_message *m_message;
};

/// A dictionary goes over the bus as it is.
void requireSame(const Dictionary &dictionary) {
    if (!fitsOnBus(Value(dictionary))) {
        return;
    }
    const MessagePointer message = newMessage();
    if (appendToMessage(message.get(), dictionary) < 0) {
        return;  // nested more deeply than the bus takes
    }
    const auto read = readFromMessage(readable(message));
    require(read && writeKeyedArchive(Value(*read)) == writeKeyedArchive(Value(dictionary)),
            "a dictionary arrives as it was sent");
}

}  // namespace

/// What strangers put into messages is read or not, and what was read can be sent.
void tryInput(std::string_view input) {
    FuzzInput choices(input);
    const bool isArchive = choices.byte() % 2 == 0;
    if (isArchive) {
        const auto read = readKeyedArchive(choices.rest());
        const Value *value = std::get_if<Value>(&read);
        if (value != nullptr && value->dictionary() != nullptr) {
            requireSame(*value->dictionary());
        }
        return;
    }
    const MessagePointer message = newMessage();
    Stranger(choices, message.get())
        .appendDictionary(0, choices.byte() % 4 == 0 ? "a{ss}" : "a{sv}");
    if (sd_bus_message_seal(message.get(), 1, 0) < 0) {
        return;
    }
    sd_bus_message_rewind(message.get(), 1);
    if (const auto read = readFromMessage(message.get())) {
        requireSame(*read);
    }
    sd_bus_message_rewind(message.get(), 1);
    NotificationInfo info;
    bus::readNotificationInfo(message.get(), info);
    sd_bus_message_rewind(message.get(), 1);
    Checkpoint checkpoint;
    bus::readCheckpoint(message.get(), checkpoint);
}

}  // namespace quorbel
