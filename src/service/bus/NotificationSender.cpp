#include "service/bus/NotificationSender.h"

#include "common/LogReader.h"
#include "platform/bus/BusNames.h"

#include <cerrno>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorbel {

namespace {

constexpr std::uint64_t kTickMicroseconds = 1'000'000;
// Taken in within some ten milliseconds, and worth its way.
constexpr std::size_t kBatchBytes = std::size_t{1} << 20U;

/// No other run of the service has it, as far as chance goes.
std::uint64_t newEpoch() {
    std::random_device random;
    return (std::uint64_t{random()} << 32U) | random();
}

int appendEntry(sd_bus_message *message, const char *key, std::string_view value) {
    char *space = nullptr;
    int result = sd_bus_message_open_container(message, SD_BUS_TYPE_DICT_ENTRY, "ss");
    if (result >= 0) {
        result = sd_bus_message_append_basic(message, SD_BUS_TYPE_STRING, key);
    }
    if (result >= 0) {
        // Spares a copy that ends in NUL. The log files hold nothing that a bus refuses.
        result = sd_bus_message_append_string_space(message, value.size(), &space);
    }
    if (result < 0) {
        return result;
    }
    value.copy(space, value.size());
    return sd_bus_message_close_container(message);
}

int appendUserInfo(sd_bus_message *message, NotificationType type, const LogLine &line) {
    const std::pair<const char *, std::string_view> entries[] = {
        {"Type", nameOf(type)}, {"Date", line.date},       {"Priority", line.priority},
        {"Host", line.host},    {"Message", line.message},
    };
    int result = sd_bus_message_open_container(message, SD_BUS_TYPE_ARRAY, "{ss}");
    for (const auto &[key, value] : entries) {
        if (result < 0) {
            return result;
        }
        result = appendEntry(message, key, value);
    }
    return result < 0 ? result : sd_bus_message_close_container(message);
}

/// A signal of the notifications' interface; null when there is none to be had.
bus::MessagePointer newSignal(sd_bus *bus, const char *member) {
    sd_bus_message *message = nullptr;
    sd_bus_message_new_signal(bus, &message, bus::kServicePath, bus::kNotificationInterface,
                              member);
    return bus::MessagePointer(message);
}

int sendNotification(sd_bus *bus, const Notification &notification) {
    const auto line = splitLogLine(notification.line);
    const bus::MessagePointer message = newSignal(bus, bus::kNotification);
    if (!line || !message) {
        return -EINVAL;
    }
    const int result = appendUserInfo(message.get(), notification.type, *line);
    return result < 0 ? result : sd_bus_send(bus, message.get(), nullptr);
}

int appendRuns(sd_bus_message *message,
               const std::vector<std::pair<const char *, std::uint64_t>> &runs) {
    int result = sd_bus_message_open_container(message, SD_BUS_TYPE_ARRAY, "(st)");
    for (const auto &[type, bytes] : runs) {
        if (result >= 0) {
            result = sd_bus_message_append(message, "(st)", type, bytes);
        }
    }
    return result < 0 ? result : sd_bus_message_close_container(message);
}

}  // namespace

const sd_bus_vtable NotificationSender::kVtable[] = {
    SD_BUS_VTABLE_START(0),
    // Who may call is the business of the bus's policy file.
    SD_BUS_METHOD_WITH_NAMES(bus::kListen, "", "", "(tttt(sttt))t",
                             SD_BUS_PARAM(checkpoint) SD_BUS_PARAM(waiting), onListen,
                             SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_NAMES(bus::kTaken, "t", SD_BUS_PARAM(number), "", "", onTaken,
                             SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_SIGNAL_WITH_NAMES(bus::kNotification, "a{ss}", SD_BUS_PARAM(event), 0),
    SD_BUS_SIGNAL_WITH_NAMES(bus::kBatch, "tha(st)(tttt(sttt))(tttt(sttt))",
                             SD_BUS_PARAM(number) SD_BUS_PARAM(lines) SD_BUS_PARAM(runs)
                                 SD_BUS_PARAM(before) SD_BUS_PARAM(behind),
                             0),
    SD_BUS_SIGNAL_WITH_NAMES(bus::kCheckpoint, "t(tttt(sttt))",
                             SD_BUS_PARAM(number) SD_BUS_PARAM(checkpoint), 0),
    SD_BUS_VTABLE_END,
};

NotificationSender::NotificationSender(sd_event *loop, NotificationQueue &queue, LogStore &store,
                                       RemovalsNow removals)
    : m_queue(queue), m_store(store), m_removals(std::move(removals)), m_epoch(newEpoch()) {
    sd_event_source *tick = nullptr;
    sd_event_add_time_relative(loop, &tick, CLOCK_MONOTONIC, kTickMicroseconds, 0, onTick, this);
    m_tick = required(EventSourcePointer(tick));
    sd_event_source_set_enabled(m_tick.get(), SD_EVENT_OFF);
}

int NotificationSender::addTo(sd_bus *bus) {
    leave();
    sd_bus_track *track = nullptr;
    const int result = sd_bus_track_new(bus, &track, nullptr, nullptr);
    m_track.reset(track);
    m_bus = bus;
    return result < 0 ? result
                      : sd_bus_add_object_vtable(bus, nullptr, bus::kServicePath,
                                                 bus::kNotificationInterface, kVtable, this);
}

void NotificationSender::leave() {
    m_listeners.clear();
    m_track.reset();
    m_bus = nullptr;
    sd_event_source_set_enabled(m_tick.get(), SD_EVENT_OFF);
}

/// What was told until now.
Checkpoint NotificationSender::told() {
    // Before the question whether removals are told: of these, none may be later.
    const std::uint64_t edits = m_store.edits();
    const Removals removals = m_removals();
    if (removals.areTold && m_queue.waiting(NotificationType::kRemove) == 0) {
        m_edits = edits;
    }
    const auto place = m_queue.toldPlace();
    return {m_epoch, m_queue.told(NotificationType::kSet),
            m_queue.told(NotificationType::kRemove) + removals.untold, m_edits,
            place ? *place : m_store.end()};
}

/// The same as if what waits had been told, but for removals.
Checkpoint NotificationSender::toldAndWaiting() {
    Checkpoint checkpoint = told();
    checkpoint.sets += m_queue.waiting(NotificationType::kSet);
    checkpoint.place = m_store.end();
    return checkpoint;
}

int NotificationSender::onListen(sd_bus_message *call, void *self, sd_bus_error * /*error*/) {
    auto *sender = static_cast<NotificationSender *>(self);
    const char *name = sd_bus_message_get_sender(call);
    if (name == nullptr || sd_bus_track_add_sender(sender->m_track.get(), call) < 0) {
        return -EINVAL;
    }
    sender->m_listeners.add(name);
    sender->armTick();
    sd_bus_message *made = nullptr;
    int result = sd_bus_message_new_method_return(call, &made);
    const bus::MessagePointer reply(made);
    if (result >= 0) {
        result = bus::appendCheckpoint(reply.get(), sender->toldAndWaiting());
    }
    if (result >= 0) {
        result = sd_bus_message_append(reply.get(), "t",
                                       sender->m_queue.waiting(NotificationType::kSet));
    }
    return result < 0 ? result : sd_bus_send(nullptr, reply.get(), nullptr);
}

int NotificationSender::onTaken(sd_bus_message *call, void *self, sd_bus_error * /*error*/) {
    auto *sender = static_cast<NotificationSender *>(self);
    std::uint64_t number = 0;
    const char *name = sd_bus_message_get_sender(call);
    if (name != nullptr && sd_bus_message_read(call, "t", &number) > 0 &&
        sender->m_listeners.taken(name, number, Listeners::Clock::now())) {
        // It may have missed anything meanwhile.
        sender->sendCheckpoint();
    }
    // Goes to those only who have asked for an answer.
    return sd_bus_reply_method_return(call, "");
}

int NotificationSender::onTick(sd_event_source * /*source*/, std::uint64_t /*time*/, void *self) {
    auto *sender = static_cast<NotificationSender *>(self);
    sender->forgetThoseGone();
    if (sender->m_listeners.empty()) {
        return 0;
    }
    const bool isBusy = sender->m_listeners.areBusy(Listeners::Clock::now(), false);
    if (!isBusy && sender->told() != sender->m_said) {
        sender->sendCheckpoint();
    }
    sender->armTick();
    return 0;
}

void NotificationSender::armTick() {
    int state = SD_EVENT_OFF;
    sd_event_source_get_enabled(m_tick.get(), &state);
    if (state == SD_EVENT_OFF) {
        sd_event_source_set_time_relative(m_tick.get(), kTickMicroseconds);
        sd_event_source_set_enabled(m_tick.get(), SD_EVENT_ONESHOT);
    }
}

void NotificationSender::forgetThoseGone() {
    m_listeners.keep([this](const std::string &name) {
        return sd_bus_track_contains(m_track.get(), name.c_str()) != nullptr;
    });
}

bool NotificationSender::travelTogether() const {
    return !m_listeners.empty() && m_queue.size() >= kMany;
}

bool NotificationSender::canSend() {
    return !m_queue.empty() && !(travelTogether() && m_listeners.areBusy(Listeners::Clock::now(),
                                                                         m_queue.isHalfFull()));
}

NotificationSender::Sent NotificationSender::send() {
    if (travelTogether() && sendBatch()) {
        return Sent::kBatch;
    }
    if (sendNotification(m_bus, m_queue.front()) >= 0) {
        m_queue.pop();
        return Sent::kSingle;
    }
    if (sd_bus_is_ready(m_bus) > 0) {
        m_queue.drop();
    }
    return Sent::kNothing;
}

/// False when there is no file to be had for it.
bool NotificationSender::sendBatch() {
    forgetThoseGone();
    const std::vector<NotificationRun> runs = m_queue.frontRuns(kBatchBytes);
    const std::vector<std::string> names = m_listeners.ready();
    if (names.empty()) {
        // They read the log files once they are back.
        m_queue.dropRuns(runs);
        return true;
    }
    const UniqueFd file = NotificationBatch::write(runs);
    if (!file.isOpen()) {
        return false;
    }
    std::vector<std::pair<const char *, std::uint64_t>> extents;
    extents.reserve(runs.size());
    for (const NotificationRun &run : runs) {
        extents.emplace_back(nameOf(run.type), run.lines.size());
    }
    const Checkpoint before = told();
    m_queue.popRuns(runs);
    m_said = told();
    for (const std::string &name : names) {
        const bus::MessagePointer message = newSignal(m_bus, bus::kBatch);
        const std::uint64_t number = m_listeners.send(name, Listeners::Clock::now());
        // Whoever does not get it learns that from the next one.
        if (message && sd_bus_message_append(message.get(), "th", number, file.get()) >= 0 &&
            appendRuns(message.get(), extents) >= 0 &&
            bus::appendCheckpoint(message.get(), before) >= 0 &&
            bus::appendCheckpoint(message.get(), m_said) >= 0) {
            sd_bus_send_to(m_bus, message.get(), name.c_str(), nullptr);
        }
    }
    return true;
}

void NotificationSender::sendCheckpoint() {
    m_said = told();
    for (const std::string &name : m_listeners.ready()) {
        const bus::MessagePointer message = newSignal(m_bus, bus::kCheckpoint);
        const std::uint64_t number = m_listeners.send(name, Listeners::Clock::now());
        if (message && sd_bus_message_append(message.get(), "t", number) >= 0 &&
            bus::appendCheckpoint(message.get(), m_said) >= 0) {
            sd_bus_send_to(m_bus, message.get(), name.c_str(), nullptr);
        }
    }
}

}  // namespace quorbel
