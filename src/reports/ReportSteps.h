#pragma once

#include "core/EventList.h"
#include "core/PageLinks.h"
#include "reports/ReportTableModel.h"
#include "reports/ReportTableView.h"

#include <QPointer>

namespace quorbel {

/// A details sheet's way through the events that a report's table shows: from the selected one,
/// past groups and what is collapsed, with the selection. It ends where the report does, and may
/// outlive both the report and its table. Holds the events that it returned: what a report reads is
/// in no list.
class ReportSteps : public EventSteps {
public:
    ReportSteps(const ReportTableModel &model, ReportTableView &table);

    /// The selected one. Precondition: an event is selected, and no group.
    [[nodiscard]] Event current();

    [[nodiscard]] bool canStep(int direction) override;
    Event step(int direction) override;

private:
    [[nodiscard]] int rowBeside(int direction) const;

    QPointer<const ReportTableModel> m_model;
    QPointer<ReportTableView> m_table;
    unsigned m_report;
    EventList m_list;
};

}  // namespace quorbel
