#include "service/bus/StatusProperties.h"

#include "common/LegibleText.h"
#include "platform/bus/BusNames.h"

#include <cstddef>
#include <string>
#include <vector>

namespace quorbel {

namespace {

/// An array whose elements `append(element)` appends.
template <typename Elements, typename AppendElement>
int appendArray(sd_bus_message *reply, const char *contents, const Elements &elements,
                AppendElement append) {
    int result = sd_bus_message_open_container(reply, SD_BUS_TYPE_ARRAY, contents);
    for (const auto &element : elements) {
        result = result < 0 ? result : append(element);
    }
    return result < 0 ? result : sd_bus_message_close_container(reply);
}

int appendResults(sd_bus_message *reply, const std::vector<NamedResult> &results) {
    return appendArray(reply, "(stxtsx)", results, [reply](const NamedResult &one) {
        const std::string name = legible(one.name, kMostToldBytes);
        const LastResult::Summary &last = one.summary;
        return sd_bus_message_append(reply, "(stxtsx)", name.c_str(), last.done, last.doneSeconds,
                                     last.failed, last.problem.c_str(), last.failedSeconds);
    });
}

}  // namespace

template <StatusProperties::Append kAppend>
int StatusProperties::get(sd_bus * /*bus*/, const char * /*path*/, const char * /*interface*/,
                          const char * /*property*/, sd_bus_message *reply, void *self,
                          sd_bus_error * /*error*/) {
    return (static_cast<StatusProperties *>(self)->*kAppend)(reply);
}

const sd_bus_vtable StatusProperties::kVtable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_PROPERTY("Version", "s", get<&StatusProperties::appendVersion>, 0,
                    SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Since", "x", get<&StatusProperties::appendSince>, 0,
                    SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Counters", "a{st}", get<&StatusProperties::appendCounters>, 0, 0),
    SD_BUS_PROPERTY("Listeners", "a(sq)", get<&StatusProperties::appendListeners>, 0, 0),
    SD_BUS_PROPERTY("Refusals", "a(sssxt)", get<&StatusProperties::appendRefusals>, 0, 0),
    SD_BUS_PROPERTY("Actions", "a(stxtsx)", get<&StatusProperties::appendActions>, 0, 0),
    SD_BUS_PROPERTY("Exports", "a(stxtsx)", get<&StatusProperties::appendExports>, 0, 0),
    SD_BUS_PROPERTY("Outputs", "a(sstttxdsx)", get<&StatusProperties::appendOutputs>, 0, 0),
    SD_BUS_VTABLE_END,
};

int StatusProperties::addTo(sd_bus *bus) {
    return sd_bus_add_object_vtable(bus, nullptr, bus::kServicePath, bus::kStatusInterface, kVtable,
                                    this);
}

int StatusProperties::appendVersion(sd_bus_message *reply) {
    return sd_bus_message_append_basic(reply, SD_BUS_TYPE_STRING, QUORBEL_VERSION);
}

int StatusProperties::appendSince(sd_bus_message *reply) {
    const std::int64_t seconds = m_source.startTime();
    return sd_bus_message_append_basic(reply, SD_BUS_TYPE_INT64, &seconds);
}

int StatusProperties::appendCounters(sd_bus_message *reply) {
    return appendArray(reply, "{st}", named(m_source.currentCounters()), [reply](const auto &one) {
        return sd_bus_message_append(reply, "{st}", std::string(one.first).c_str(), one.second);
    });
}

int StatusProperties::appendListeners(sd_bus_message *reply) {
    return appendArray(reply, "(sq)", m_source.listeners(), [reply](const Listener &one) {
        return sd_bus_message_append(reply, "(sq)", std::string(one.protocol).c_str(),
                                     static_cast<unsigned>(one.port));
    });
}

int StatusProperties::appendRefusals(sd_bus_message *reply) {
    const auto append = [reply](const Refusals::Refusal &one) {
        const std::string sender = one.sender.text();
        const std::string reason(refusalReasonName(one.reason));
        return sd_bus_message_append(reply, "(sssxt)", sender.c_str(), reason.c_str(),
                                     one.detail.c_str(), one.seconds, one.count);
    };
    return appendArray(reply, "(sssxt)", m_source.refusals().latest(), append);
}

int StatusProperties::appendActions(sd_bus_message *reply) {
    return appendResults(reply, m_source.actionResults());
}

int StatusProperties::appendExports(sd_bus_message *reply) {
    return appendResults(reply, m_source.exportResults());
}

int StatusProperties::appendOutputs(sd_bus_message *reply) {
    const auto append = [reply](const OutputState &one) {
        const std::string problem = legible(one.problem, kMostToldBytes);
        return sd_bus_message_append(reply, "(sstttxdsx)", one.name.c_str(),
                                     std::string(one.kind).c_str(), one.sent, one.removedUnsent,
                                     one.lagEvents, one.lagSeconds, one.rate, problem.c_str(),
                                     one.problemSeconds);
    };
    return appendArray(reply, "(sstttxdsx)", m_source.outputStates(), append);
}

}  // namespace quorbel
