// What the user who runs it can do with the service on the system bus:
//   bus_probe command   sends a command and prints the reply, or the error's name
//   bus_probe status    asks for the service's counters and prints "counted", or the error's name
//   bus_probe batches   asks to be told in batches, says that it has taken one, and prints "taken",
//   or
//                       the error's name
//   bus_probe set       sets a property and prints "set", or the error's name
//   bus_probe own       asks for the service's name and prints "owned", or the error's name
//   bus_probe listen    prints "listening", "heard" with each notification, and how many there were
//                       when its standard input ends

#include "platform/bus/BusNames.h"
#include "platform/bus/SdBus.h"

#include <poll.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace {

using namespace quorbel;

int printOutcome(int result, sd_bus_error &error, const char *success) {
    std::puts(result >= 0 ? success : error.name != nullptr ? error.name : "no connection");
    sd_bus_error_free(&error);
    return result >= 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

int sendCommand(sd_bus *bus) {
    sd_bus_error error = SD_BUS_ERROR_NULL;
    sd_bus_message *reply = nullptr;
    const char *text = "";
    int result = sd_bus_call_method(bus, bus::kServiceName, bus::kServicePath,
                                    bus::kCommandInterface, bus::kSetCommand, &error, &reply,
                                    "a{sv}", 1, "command", "s", "nonsense");
    const bus::MessagePointer owner(reply);
    if (result >= 0) {
        result = sd_bus_message_read_basic(reply, SD_BUS_TYPE_STRING, &text);
    }
    return printOutcome(result, error, text);
}

int askForStatus(sd_bus *bus) {
    sd_bus_error error = SD_BUS_ERROR_NULL;
    sd_bus_message *reply = nullptr;
    const int result =
        sd_bus_get_property(bus, bus::kServiceName, bus::kServicePath, bus::kStatusInterface,
                            "Counters", &error, &reply, "a{st}");
    const bus::MessagePointer owner(reply);
    return printOutcome(result, error, "counted");
}

int takeBatches(sd_bus *bus) {
    sd_bus_error error = SD_BUS_ERROR_NULL;
    int result = 0;
    for (const auto &[member, types] : {std::pair(bus::kListen, ""), std::pair(bus::kTaken, "t")}) {
        if (result >= 0) {
            result = sd_bus_call_method(bus, bus::kServiceName, bus::kServicePath,
                                        bus::kNotificationInterface, member, &error, nullptr, types,
                                        std::uint64_t{1});
        }
    }
    return printOutcome(result, error, "taken");
}

int setProperty(sd_bus *bus) {
    sd_bus_error error = SD_BUS_ERROR_NULL;
    const int result =
        sd_bus_set_property(bus, bus::kServiceName, bus::kServicePath, bus::kStatusInterface,
                            "Since", &error, "x", std::int64_t{1});
    return printOutcome(result, error, "set");
}

int ownName(sd_bus *bus) {
    sd_bus_error error = SD_BUS_ERROR_NULL;
    const int result = sd_bus_call_method(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                          "org.freedesktop.DBus", "RequestName", &error, nullptr,
                                          "su", bus::kServiceName, 0U);
    return printOutcome(result, error, "owned");
}

int onNotification(sd_bus_message * /*message*/, void *count, sd_bus_error * /*error*/) {
    ++*static_cast<int *>(count);
    std::puts("heard");
    std::fflush(stdout);
    return 0;
}

int listenForNotifications(sd_bus *bus) {
    int count = 0;
    if (sd_bus_match_signal(bus, nullptr, bus::kServiceName, nullptr, bus::kNotificationInterface,
                            bus::kNotification, onNotification, &count) < 0) {
        return EXIT_FAILURE;
    }
    std::puts("listening");
    std::fflush(stdout);
    std::array<pollfd, 2> inputs{pollfd{STDIN_FILENO, POLLIN, 0},
                                 pollfd{sd_bus_get_fd(bus), POLLIN, 0}};
    do {
        while (sd_bus_process(bus, nullptr) > 0) {
        }
    } while (::poll(inputs.data(), inputs.size(), -1) > 0 && inputs[0].revents == 0);
    // What the bus sent before this reply is here with it.
    sd_bus_call_method(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                       "GetId", nullptr, nullptr, "");
    while (sd_bus_process(bus, nullptr) > 0) {
    }
    std::printf("%d\n", count);
    return EXIT_SUCCESS;
}

}  // namespace

int main(int count, char **values) {
    const std::string_view what = count == 2 ? values[1] : "";
    sd_bus *bus = nullptr;
    if (sd_bus_open_system(&bus) < 0) {
        std::puts("no connection");
        return EXIT_FAILURE;
    }
    const int result = what == "command"   ? sendCommand(bus)
                       : what == "status"  ? askForStatus(bus)
                       : what == "batches" ? takeBatches(bus)
                       : what == "set"     ? setProperty(bus)
                       : what == "own"     ? ownName(bus)
                       : what == "listen"  ? listenForNotifications(bus)
                                           : 2;
    sd_bus_flush_close_unref(bus);
    return result;
}
