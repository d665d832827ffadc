#include "actions/ActionResults.h"

#include "common/LegibleText.h"
#include "common/SettingsDocument.h"
#include "core/ServiceResults.h"
#include "platform/gui/QtText.h"
#include "settings/RecordTableModel.h"
#include "settings/ResultTexts.h"

#include <QHeaderView>
#include <QStandardItemModel>

#include <array>
#include <map>
#include <vector>

namespace quorbel {

namespace {

constexpr int kColumns = 4;
constexpr std::array kColumnWidths = {190, 120, 150};

Dictionary recordOf(const RecordTableModel &actions, int row) {
    const Dictionary *fields = actions.record(row).dictionary();
    return fields != nullptr ? *fields : Dictionary();
}

std::string nameOf(const Dictionary &record) {
    return settingText(record, "Name").value_or("");
}

/// Whether the service has something to do for it, as far as a record tells.
bool isOn(const Dictionary &record) {
    return !settingDictionary(record, "runCommand").empty() ||
           !settingDictionary(record, "sendEmail").empty() ||
           !settingDictionary(record, "setEvent").empty();
}

QString howOften(qint64 times) {
    if (times < 2) {
        return times == 0 ? ActionResults::tr("never") : ActionResults::tr("once");
    }
    return ActionResults::tr("%1 times", nullptr, pluralNumber(times)).arg(countText(times));
}

/// For each action of the list the service's result; null where that is not certain.
std::vector<const ServiceResult *> matched(const RecordTableModel &actions,
                                           const std::vector<ServiceResult> &results) {
    std::map<std::string, std::vector<int>> rows;
    for (int row = 0; row < actions.rowCount(); ++row) {
        const Dictionary record = recordOf(actions, row);
        if (isOn(record)) {
            rows[legible(nameOf(record), kMostToldBytes)].push_back(row);
        }
    }
    std::map<std::string, std::vector<const ServiceResult *>> told;
    for (const ServiceResult &result : results) {
        told[result.name].push_back(&result);
    }
    std::vector<const ServiceResult *> found(static_cast<std::size_t>(actions.rowCount()));
    for (const auto &[name, places] : rows) {
        const auto &ofName = told[name];
        for (std::size_t i = 0; ofName.size() == places.size() && i < places.size(); ++i) {
            found[static_cast<std::size_t>(places[i])] = ofName[i];
        }
    }
    return found;
}

}  // namespace

ActionResults::ActionResults(QWidget *parent)
    : RowTableView(parent), m_rows(new QStandardItemModel(0, kColumns, this)) {
    m_rows->setHorizontalHeaderLabels(
        {tr("Action"), tr("Carried Out"), tr("Last"), tr("Last Problem")});
    for (int column = 0; column < kColumns; ++column) {
        m_rows->horizontalHeaderItem(column)->setTextAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    }
    setModel(m_rows);
    setColumnWidths(kColumnWidths);
    horizontalHeader()->setStretchLastSection(true);
}

ActionResults::~ActionResults() = default;

void ActionResults::follow(ServiceState &service, const RecordTableModel &actions,
                           const std::string &dateFormat) {
    m_service = &service;
    m_actions = &actions;
    m_dateFormat = &dateFormat;
    connect(&actions, &QAbstractItemModel::modelReset, this, &ActionResults::refresh);
    connect(&actions, &QAbstractItemModel::rowsInserted, this, &ActionResults::refresh);
    connect(&actions, &QAbstractItemModel::rowsRemoved, this, &ActionResults::refresh);
    connect(&actions, &QAbstractItemModel::dataChanged, this, &ActionResults::refresh);
}

void ActionResults::showEvent(QShowEvent *event) {
    RowTableView::showEvent(event);
    if (m_service != nullptr) {
        m_watch.emplace(*m_service, [this] { refresh(); });
        refresh();
    }
}

void ActionResults::hideEvent(QHideEvent *event) {
    m_watch.reset();
    RowTableView::hideEvent(event);
}

void ActionResults::refresh() {
    const auto results = serviceResults(m_service->report(), "Actions");
    const auto found =
        results
            ? matched(*m_actions, *results)
            : std::vector<const ServiceResult *>(static_cast<std::size_t>(m_actions->rowCount()));
    const std::int64_t since = m_service->report().since;
    setToolTip(since == 0
                   ? QString()
                   : tr("Since the service started at %1, or since the action was changed last")
                         .arg(resultTime(since, *m_dateFormat)));
    m_rows->setRowCount(m_actions->rowCount());
    for (int row = 0; row < m_actions->rowCount(); ++row) {
        const Dictionary record = recordOf(*m_actions, row);
        const ServiceResult *result = found[static_cast<std::size_t>(row)];
        const QString name = toQString(nameOf(record));
        if (!isOn(record)) {
            showRow(row, {name, tr("has nothing to do"), {}, {}});
        } else if (!results) {
            showRow(row, {name, tr("cannot be told"), {}, whyNotTold(m_service->outcome())});
        } else if (result == nullptr) {
            showRow(row, {name, tr("cannot be told"), {}, tr("the service does not have it so")});
        } else {
            showRow(row,
                    {name, howOften(static_cast<qint64>(result->done)),
                     result->done == 0 ? QString() : resultTime(result->doneSeconds, *m_dateFormat),
                     problemText(*result, *m_dateFormat)});
        }
    }
}

/// Only what is another text than before, so that nothing selected or read aloud is disturbed.
void ActionResults::showRow(int row, const QStringList &texts) {
    for (int column = 0; column < kColumns; ++column) {
        const QModelIndex cell = m_rows->index(row, column);
        if (cell.data().toString() != texts.at(column)) {
            m_rows->setData(cell, texts.at(column));
        }
    }
}

}  // namespace quorbel
