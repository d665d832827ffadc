#include "control/ServiceStatus.h"

#include "control/VisibleText.h"
#include "platform/DateFormat.h"
#include "platform/bus/BusNames.h"
#include "platform/bus/SdBus.h"

#include <systemd/sd-bus.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

namespace quorbel {

namespace {

/// Calls `read()` for each element of the array that is next, as long as it is not negative.
template <typename Read>
int readArray(sd_bus_message *reply, const char *contents, Read read) {
    int result = sd_bus_message_enter_container(reply, SD_BUS_TYPE_ARRAY, contents);
    while (result >= 0 && sd_bus_message_at_end(reply, 0) == 0) {
        result = read();
    }
    return result < 0 ? result : sd_bus_message_exit_container(reply);
}

int readText(sd_bus_message *reply, std::string &text) {
    const char *value = "";
    const int result = sd_bus_message_read_basic(reply, SD_BUS_TYPE_STRING, &value);
    text = value;
    return result;
}

int readCounters(sd_bus_message *reply, ServiceStatus &status) {
    return readArray(reply, "{st}", [&] {
        const char *name = nullptr;
        std::uint64_t count = 0;
        const int result = sd_bus_message_read(reply, "{st}", &name, &count);
        if (result > 0) {
            status.counters.emplace_back(name, count);
        }
        return result;
    });
}

int readListeners(sd_bus_message *reply, ServiceStatus &status) {
    return readArray(reply, "(sq)", [&] {
        const char *protocol = nullptr;
        std::uint16_t port = 0;
        const int result = sd_bus_message_read(reply, "(sq)", &protocol, &port);
        if (result > 0) {
            status.listeners.emplace_back(protocol, port);
        }
        return result;
    });
}

int readRefusals(sd_bus_message *reply, ServiceStatus &status) {
    return readArray(reply, "(sssxt)", [&] {
        std::array<const char *, 3> texts{};
        std::int64_t seconds = 0;
        std::uint64_t count = 0;
        const int result = sd_bus_message_read(reply, "(sssxt)", &texts[0], &texts[1], &texts[2],
                                               &seconds, &count);
        if (result > 0) {
            status.refusals.push_back({texts[0], texts[1], texts[2], seconds, count});
        }
        return result;
    });
}

int readResults(sd_bus_message *reply, std::optional<std::vector<ServiceStatus::Result>> &results) {
    results.emplace();
    return readArray(reply, "(stxtsx)", [&] {
        const char *name = nullptr;
        const char *problem = nullptr;
        ServiceStatus::Result one;
        const int result =
            sd_bus_message_read(reply, "(stxtsx)", &name, &one.done, &one.doneSeconds, &one.failed,
                                &problem, &one.failedSeconds);
        if (result > 0) {
            one.name = name;
            one.problem = problem;
            results->push_back(std::move(one));
        }
        return result;
    });
}

int readOutputs(sd_bus_message *reply, ServiceStatus &status) {
    status.outputs.emplace();
    return readArray(reply, "(sstttxdsx)", [&] {
        std::array<const char *, 3> texts{};
        ServiceStatus::OutputState one;
        const int result = sd_bus_message_read(
            reply, "(sstttxdsx)", &texts[0], &texts[1], &one.sent, &one.removedUnsent,
            &one.lagEvents, &one.lagSeconds, &one.rate, &texts[2], &one.problemSeconds);
        if (result > 0) {
            one.name = texts[0];
            one.kind = texts[1];
            one.problem = texts[2];
            status.outputs->push_back(std::move(one));
        }
        return result;
    });
}

using ReadProperty = int (*)(sd_bus_message *reply, ServiceStatus &status);

struct Property {
    std::string_view name;
    const char *type;
    ReadProperty read;
};

constexpr Property kProperties[] = {
    {"Version", "s",
     [](sd_bus_message *reply, ServiceStatus &status) { return readText(reply, status.version); }},
    {"Since", "x",
     [](sd_bus_message *reply, ServiceStatus &status) {
         return sd_bus_message_read_basic(reply, SD_BUS_TYPE_INT64, &status.since);
     }},
    {"Counters", "a{st}", readCounters},
    {"Listeners", "a(sq)", readListeners},
    {"Refusals", "a(sssxt)", readRefusals},
    {"Actions", "a(stxtsx)",
     [](sd_bus_message *reply, ServiceStatus &status) {
         return readResults(reply, status.actions);
     }},
    {"Exports", "a(stxtsx)",
     [](sd_bus_message *reply, ServiceStatus &status) {
         return readResults(reply, status.exports);
     }},
    {"Outputs", "a(sstttxdsx)", readOutputs},
};

/// The value behind a property's name. What is not known here is passed over.
int readValue(sd_bus_message *reply, std::string_view name, ServiceStatus &status) {
    for (const Property &property : kProperties) {
        if (property.name == name) {
            int result = sd_bus_message_enter_container(reply, SD_BUS_TYPE_VARIANT, property.type);
            result = result < 0 ? result : property.read(reply, status);
            return result < 0 ? result : sd_bus_message_exit_container(reply);
        }
    }
    return sd_bus_message_skip(reply, "v");
}

int readStatus(sd_bus_message *reply, ServiceStatus &status) {
    return readArray(reply, "{sv}", [&] {
        std::string name;
        int result = sd_bus_message_enter_container(reply, SD_BUS_TYPE_DICT_ENTRY, "sv");
        result = result < 0 ? result : readText(reply, name);
        result = result < 0 ? result : readValue(reply, name, status);
        return result < 0 ? result : sd_bus_message_exit_container(reply);
    });
}

StatusProblem problemOf(const sd_bus_error &error, int result) {
    const std::string_view name = error.name != nullptr ? error.name : "";
    const auto is = [name](std::string_view last) {
        return name == "org.freedesktop.DBus.Error." + std::string(last);
    };
    if (is("AccessDenied")) {
        return {ExitCode::kNotAllowed,
                "You may not ask the service. Members of the groups quorbel and quorbel-readers "
                "may."};
    }
    if (is("NameHasNoOwner") || is("ServiceUnknown")) {
        return {ExitCode::kNotThere, "The service does not run."};
    }
    if (is("UnknownInterface") || is("UnknownProperty") || is("UnknownMethod")) {
        return {ExitCode::kNothing, "The service that runs is too old to tell its status."};
    }
    const std::string reason =
        error.message != nullptr ? error.message : std::generic_category().message(-result);
    return {ExitCode::kNotThere, "The service does not answer: " + reason};
}

using Answer = std::variant<ServiceStatus, StatusProblem>;

Answer ask(sd_bus *bus, std::chrono::microseconds patience) {
    sd_bus_message *call = nullptr;
    int result = sd_bus_message_new_method_call(bus, &call, bus::kServiceName, bus::kServicePath,
                                                "org.freedesktop.DBus.Properties", "GetAll");
    const bus::MessagePointer callOwner(call);
    result = result < 0 ? result : sd_bus_message_append(call, "s", bus::kStatusInterface);
    result = result < 0 ? result : sd_bus_message_set_auto_start(call, 0);
    sd_bus_error error = SD_BUS_ERROR_NULL;
    sd_bus_message *reply = nullptr;
    if (result >= 0) {
        result =
            sd_bus_call(bus, call, static_cast<std::uint64_t>(patience.count()), &error, &reply);
    }
    const bus::MessagePointer replyOwner(reply);
    ServiceStatus status;
    result = result < 0 ? result : readStatus(reply, status);
    Answer answer = std::move(status);
    if (result < 0) {
        answer = problemOf(error, result);
    }
    sd_bus_error_free(&error);
    return answer;
}

void appendCount(std::string &out, std::uint64_t count) {
    std::array<char, 32> number{};
    std::snprintf(number.data(), number.size(), "%12llu  ", static_cast<unsigned long long>(count));
    out += number.data();
}

using Results = std::optional<std::vector<ServiceStatus::Result>>;

void appendResults(std::string &out, const char *title, const Results &results) {
    const DateFormat dates("");
    if (!results || results->empty()) {
        return;
    }
    out += std::string("\n") + title + '\n';
    for (const ServiceStatus::Result &one : *results) {
        appendCount(out, one.done);
        appendVisible(out, one.name);
        out += one.done > 0 ? "  last " + dates.render(static_cast<double>(one.doneSeconds))
                            : "  never";
        if (one.failed > 0) {
            out += "  failed " + std::to_string(one.failed) + ", last " +
                   dates.render(static_cast<double>(one.failedSeconds)) + ": ";
            appendVisible(out, one.problem);
        }
        out += '\n';
    }
}

using Outputs = std::optional<std::vector<ServiceStatus::OutputState>>;

/// With one digit behind the point. Of what no rate is, nothing.
std::string rounded(double number) {
    constexpr double kMost = 1e15;
    std::array<char, 64> text{};
    number = number >= 0 && number <= kMost ? number : 0;
    std::snprintf(text.data(), text.size(), "%.1f", number);
    return text.data();
}

void appendOutput(std::string &out, const ServiceStatus::OutputState &one) {
    appendCount(out, one.sent);
    appendVisible(out, one.name + " (" + one.kind + ")");
    out += "  " + rounded(one.rate) + " a second  ";
    out += one.lagEvents == 0 ? "nothing waits"
                              : std::to_string(one.lagEvents) + " wait, the oldest for " +
                                    std::to_string(one.lagSeconds) + " s";
    if (one.removedUnsent > 0) {
        out += "  removed unsent " + std::to_string(one.removedUnsent);
    }
    if (!one.problem.empty()) {
        out += "  last problem " + DateFormat("").render(static_cast<double>(one.problemSeconds)) +
               ": ";
        appendVisible(out, one.problem);
    }
    out += '\n';
}

void appendOutputs(std::string &out, const Outputs &outputs) {
    if (!outputs || outputs->empty()) {
        return;
    }
    out += "\nOutputs\n";
    for (const ServiceStatus::OutputState &one : *outputs) {
        appendOutput(out, one);
    }
}

void appendJsonOutputs(std::string &out, const Outputs &outputs) {
    if (!outputs) {
        return;
    }
    out += ",\"outputs\":[";
    for (const ServiceStatus::OutputState &one : *outputs) {
        out += out.ends_with('[') ? "{\"name\":" : ",{\"name\":";
        appendJson(out, one.name);
        out += ",\"kind\":";
        appendJson(out, one.kind);
        out += ",\"sent\":" + std::to_string(one.sent) +
               ",\"removedUnsent\":" + std::to_string(one.removedUnsent) +
               ",\"lagEvents\":" + std::to_string(one.lagEvents) +
               ",\"lagSeconds\":" + std::to_string(one.lagSeconds) +
               ",\"rate\":" + rounded(one.rate) + ",\"problem\":";
        appendJson(out, one.problem);
        out += ",\"problemTime\":" + std::to_string(one.problemSeconds) + '}';
    }
    out += ']';
}

void appendJsonResults(std::string &out, const char *name, const Results &results) {
    if (!results) {
        return;
    }
    out += std::string(",\"") + name + "\":[";
    for (const ServiceStatus::Result &one : *results) {
        out += out.ends_with('[') ? "{\"name\":" : ",{\"name\":";
        appendJson(out, one.name);
        out += ",\"done\":" + std::to_string(one.done) +
               ",\"doneTime\":" + std::to_string(one.doneSeconds) +
               ",\"failed\":" + std::to_string(one.failed) + ",\"problem\":";
        appendJson(out, one.problem);
        out += ",\"failedTime\":" + std::to_string(one.failedSeconds) + '}';
    }
    out += ']';
}

}  // namespace

std::variant<ServiceStatus, StatusProblem> askForStatus(std::chrono::seconds patience) {
    const bus::BusPointer bus = bus::openSystemBus();
    if (!bus) {
        return StatusProblem{ExitCode::kNotThere,
                             "There is no system bus, so the service cannot "
                             "be asked."};
    }
    return ask(bus.get(), patience);
}

std::string ServiceStatus::text() const {
    const DateFormat dates("");
    std::string out = "QuorbelSrv " + visible(version) + ", running since " +
                      dates.render(static_cast<double>(since)) + "\n\nListening\n";
    for (const auto &[protocol, port] : listeners) {
        appendCount(out, port);
        appendVisible(out, protocol);
        out += '\n';
    }
    out += "\nCounted since then\n";
    for (const auto &[name, count] : counters) {
        appendCount(out, count);
        appendVisible(out, name);
        out += '\n';
    }
    out += refusals.empty() ? "\nNothing was refused\n" : "\nLast refusals\n";
    for (const Refusal &one : refusals) {
        appendCount(out, one.count);
        appendVisible(out, one.sender + "  " + one.reason + "  " + one.detail);
        out += (one.detail.empty() ? "" : "  ") + std::string("last ") +
               dates.render(static_cast<double>(one.seconds)) + '\n';
    }
    appendResults(out, "Actions", actions);
    appendResults(out, "Exports", exports);
    appendOutputs(out, outputs);
    return out;
}

std::string ServiceStatus::json() const {
    std::string out = "{\"version\":";
    appendJson(out, version);
    out += ",\"since\":" + std::to_string(since) + ",\"listeners\":[";
    for (const auto &[protocol, port] : listeners) {
        out += out.ends_with('[') ? "{\"protocol\":" : ",{\"protocol\":";
        appendJson(out, protocol);
        out += ",\"port\":" + std::to_string(port) + '}';
    }
    out += "],\"counters\":{";
    for (const auto &[name, count] : counters) {
        out += out.ends_with('{') ? "" : ",";
        appendJson(out, name);
        out += ':' + std::to_string(count);
    }
    out += "},\"refusals\":[";
    for (const Refusal &one : refusals) {
        out += out.ends_with('[') ? "{\"sender\":" : ",{\"sender\":";
        appendJson(out, one.sender);
        out += ",\"reason\":";
        appendJson(out, one.reason);
        out += ",\"detail\":";
        appendJson(out, one.detail);
        out += ",\"time\":" + std::to_string(one.seconds) +
               ",\"count\":" + std::to_string(one.count) + '}';
    }
    out += ']';
    appendJsonResults(out, "actions", actions);
    appendJsonResults(out, "exports", exports);
    appendJsonOutputs(out, outputs);
    return out + "}\n";
}

}  // namespace quorbel
