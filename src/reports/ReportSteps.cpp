#include "reports/ReportSteps.h"

namespace quorbel {

namespace {

EventFields fieldsOf(const LogLine &line) {
    EventFields fields;
    fields.date = line.date;
    fields.priority = line.priority;
    fields.host = line.host;
    fields.message = line.message;
    return fields;
}

}  // namespace

ReportSteps::ReportSteps(const ReportTableModel &model, ReportTableView &table)
    : m_model(&model), m_table(&table), m_report(model.reportNumber()) {}

Event ReportSteps::current() {
    return {m_list, m_list.insertRaw(fieldsOf(*m_model->detail(m_table->selectedRow())))};
}

bool ReportSteps::canStep(int direction) {
    return rowBeside(direction) >= 0;
}

Event ReportSteps::step(int direction) {
    m_table->goTo(rowBeside(direction));
    return current();
}

int ReportSteps::rowBeside(int direction) const {
    if (m_model == nullptr || m_table == nullptr || m_model->reportNumber() != m_report) {
        return -1;
    }
    const int row = m_table->selectedRow();
    return row < 0 ? -1 : direction < 0 ? m_model->detailAbove(row) : m_model->detailBelow(row);
}

}  // namespace quorbel
