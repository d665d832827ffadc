#pragma once

#include "service/base/StatusSource.h"

#include <systemd/sd-bus.h>

namespace quorbel {

/// What anybody who may read can ask of the service: the properties of its interface "Status". They
/// are read only, and told of no changes. Loop thread only; an answer waits for nothing.
class StatusProperties {
public:
    /// `source` outlives the object.
    explicit StatusProperties(StatusSource &source) : m_source(source) {}
    StatusProperties(const StatusProperties &) = delete;
    StatusProperties &operator=(const StatusProperties &) = delete;

    /// Serves them on a connection, which this object outlives. Negative when that fails.
    int addTo(sd_bus *bus);

private:
    using Append = int (StatusProperties::*)(sd_bus_message *reply);

    int appendVersion(sd_bus_message *reply);
    int appendSince(sd_bus_message *reply);
    int appendCounters(sd_bus_message *reply);
    int appendListeners(sd_bus_message *reply);
    int appendRefusals(sd_bus_message *reply);
    int appendActions(sd_bus_message *reply);
    int appendExports(sd_bus_message *reply);
    int appendOutputs(sd_bus_message *reply);
    template <Append kAppend>
    static int get(sd_bus *bus, const char *path, const char *interface, const char *property,
                   sd_bus_message *reply, void *self, sd_bus_error *error);

    static const sd_bus_vtable kVtable[];

    StatusSource &m_source;
};

}  // namespace quorbel
