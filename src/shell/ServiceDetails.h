#pragma once

#include "core/ServiceState.h"
#include "platform/gui/Sheet.h"

#include <optional>

class QLabel;

namespace quorbel {

class RowTableView;
class ServiceRows;

/// A sheet with all that the service says of itself: where it listens, what it refused from whom,
/// and what it counted. Follows it while it is open.
class ServiceDetails : public Sheet {
    Q_OBJECT

public:
    /// `service` outlives this.
    explicit ServiceDetails(ServiceState &service, QWidget *parent = nullptr);
    ~ServiceDetails() override;

private:
    RowTableView *addTable(const char *name, const QString &title, ServiceRows *rows);
    void addButtons();
    void refresh();
    [[nodiscard]] QString headText() const;

    ServiceState &m_service;
    QLabel *m_head;
    ServiceRows *m_refusals;
    ServiceRows *m_counters;
    RowTableView *m_refusalTable = nullptr;
    std::optional<ServiceState::Watch> m_watch;
};

}  // namespace quorbel
