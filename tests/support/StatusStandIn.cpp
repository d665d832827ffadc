#include "support/StatusStandIn.h"

#include "platform/bus/BusNames.h"
#include "platform/bus/SdBus.h"

#include <systemd/sd-bus.h>

#include <atomic>
#include <cerrno>
#include <mutex>
#include <stdexcept>
#include <string_view>
#include <thread>

namespace quorbel::testing {

namespace {

constexpr std::uint64_t kWait = 10'000;  // microseconds

int append(std::string_view property, const StatusStandIn::Status &status, sd_bus_message *reply) {
    if (property == "Version") {
        return sd_bus_message_append(reply, "s", status.version.c_str());
    }
    if (property == "Since") {
        return sd_bus_message_append(reply, "x", status.since);
    }
    if (property == "Counters") {
        sd_bus_message_open_container(reply, 'a', "{st}");
        for (const auto &[name, count] : status.counters) {
            sd_bus_message_append(reply, "{st}", name.c_str(), count);
        }
    } else if (property == "Listeners") {
        sd_bus_message_open_container(reply, 'a', "(sq)");
        for (const auto &[protocol, port] : status.listeners) {
            sd_bus_message_append(reply, "(sq)", protocol.c_str(), static_cast<int>(port));
        }
    } else if (property == "Actions" || property == "Exports") {
        sd_bus_message_open_container(reply, 'a', "(stxtsx)");
        for (const StatusStandIn::Result &one :
             property == "Actions" ? status.actions : status.exports) {
            sd_bus_message_append(reply, "(stxtsx)", one.name.c_str(), one.done, one.doneSeconds,
                                  one.failed, one.problem.c_str(), one.failedSeconds);
        }
    } else {
        sd_bus_message_open_container(reply, 'a', "(sssxt)");
        for (const StatusStandIn::Refusal &one : status.refusals) {
            sd_bus_message_append(reply, "(sssxt)", one.sender.c_str(), one.reason.c_str(),
                                  one.detail.c_str(), one.seconds, one.count);
        }
    }
    return sd_bus_message_close_container(reply);
}

int get(sd_bus * /*bus*/, const char * /*path*/, const char * /*interface*/, const char *property,
        sd_bus_message *reply, void *self, sd_bus_error * /*error*/) {
    return append(property, *static_cast<const StatusStandIn::Status *>(self), reply);
}

const sd_bus_vtable kVtable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_PROPERTY("Version", "s", get, 0, 0),
    SD_BUS_PROPERTY("Since", "x", get, 0, 0),
    SD_BUS_PROPERTY("Counters", "a{st}", get, 0, 0),
    SD_BUS_PROPERTY("Listeners", "a(sq)", get, 0, 0),
    SD_BUS_PROPERTY("Refusals", "a(sssxt)", get, 0, 0),
    SD_BUS_PROPERTY("Actions", "a(stxtsx)", get, 0, 0),
    SD_BUS_PROPERTY("Exports", "a(stxtsx)", get, 0, 0),
    SD_BUS_VTABLE_END,
};
const sd_bus_vtable kOldVtable[] = {SD_BUS_VTABLE_START(0), SD_BUS_VTABLE_END};

}  // namespace

int serveStatus(sd_bus *bus, const StatusStandIn::Status &status) {
    return sd_bus_add_object_vtable(bus, nullptr, bus::kServicePath, bus::kStatusInterface, kVtable,
                                    const_cast<StatusStandIn::Status *>(&status));
}

struct StatusStandIn::Impl {
    bus::BusPointer connection = bus::openSystemBus();
    mutable std::mutex mutex;
    Status status;
    OnQuestion reaction = OnQuestion::kTell;
    int questions = 0;
    std::atomic<bool> hasEnded = false;
    std::thread thread;

    explicit Impl(bool isTooOld) {
        sd_bus *bus = connection.get();
        const bool isServed =
            sd_bus_add_filter(bus, nullptr, onMessage, this) >= 0 &&
            (isTooOld ? sd_bus_add_object_vtable(bus, nullptr, bus::kServicePath,
                                                 bus::kCommandInterface, kOldVtable, nullptr)
                      : serveStatus(bus, status)) >= 0 &&
            sd_bus_request_name(bus, bus::kServiceName, 0) >= 0;
        if (!isServed) {
            throw std::runtime_error("the service's name cannot be owned");
        }
        thread = std::thread([this] { serve(); });
    }
    ~Impl() {
        hasEnded = true;
        thread.join();
        sd_bus_release_name(connection.get(), bus::kServiceName);
    }
    Impl(const Impl &) = delete;
    Impl &operator=(const Impl &) = delete;

    void serve() const {
        while (!hasEnded && sd_bus_wait(connection.get(), kWait) >= 0) {
            const std::scoped_lock lock(mutex);
            while (sd_bus_process(connection.get(), nullptr) > 0) {
            }
        }
    }

    static int onMessage(sd_bus_message *message, void *self, sd_bus_error * /*error*/) {
        if (sd_bus_message_is_method_call(message, "org.freedesktop.DBus.Properties", "GetAll") <=
            0) {
            return 0;
        }
        auto *impl = static_cast<Impl *>(self);
        ++impl->questions;
        if (impl->reaction == OnQuestion::kRefuse) {
            sd_bus_reply_method_errorf(message, SD_BUS_ERROR_ACCESS_DENIED, "not for you");
        } else if (impl->reaction == OnQuestion::kFail) {
            sd_bus_reply_method_errorf(message, SD_BUS_ERROR_FAILED, "broken");
        }
        return impl->reaction == OnQuestion::kTell ? 0 : 1;
    }
};

StatusStandIn::StatusStandIn(bool isTooOld) : m_impl(std::make_unique<Impl>(isTooOld)) {}

StatusStandIn::~StatusStandIn() = default;

void StatusStandIn::change(const std::function<void(Status &status)> &change) {
    const std::scoped_lock lock(m_impl->mutex);
    change(m_impl->status);
}

void StatusStandIn::onQuestion(OnQuestion reaction) {
    const std::scoped_lock lock(m_impl->mutex);
    m_impl->reaction = reaction;
}

int StatusStandIn::questions() const {
    const std::scoped_lock lock(m_impl->mutex);
    return m_impl->questions;
}

}  // namespace quorbel::testing
