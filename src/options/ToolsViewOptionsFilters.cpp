#include "options/ToolsViewOptions.h"
#include "platform/gui/Sheet.h"
#include "settings/RecordList.h"
#include "settings/RecordTableModel.h"
#include "ui_ToolsViewOptions.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace quorbel {

namespace {

constexpr std::array kColumnWidths = {190, 160, 110, 120};
constexpr std::array<std::string_view, 6> kFields{"Name",     "IP",       "Mask",
                                                  "Facility", "Severity", "Message"};

/// Whether two records have the same six fields; others that they hold do not count.
bool areEqualFilters(const Value &left, const Value &right) {
    const Dictionary *first = left.dictionary();
    const Dictionary *second = right.dictionary();
    if (first == nullptr || second == nullptr) {
        return left == right;
    }
    return std::ranges::all_of(kFields, [first, second](std::string_view key) {
        const Value *one = first->find(key);
        const Value *other = second->find(key);
        return one == nullptr || other == nullptr ? one == other : *one == *other;
    });
}

}  // namespace

void ToolsViewOptions::makeFilterLists() {
    const auto make = [this](const QString &name, RowTableView *table, QPushButton *edit,
                             QPushButton *remove, Array &working) {
        auto *controller = new RecordTableModel(this);
        controller->setObjectName(name);
        return new RecordList({.table = table,
                               .edit = edit,
                               .remove = remove,
                               .controller = controller,
                               .working = &working,
                               .areEqual = &areEqualFilters,
                               .columnWidths = kColumnWidths},
                              this);
    };
    m_includeFilters =
        make(QStringLiteral("includeFiltersController"), ui->includeFiltersTable,
             ui->includeFiltersEdit, ui->includeFiltersRemove, m_values.includeFiltersArray);
    m_excludeFilters =
        make(QStringLiteral("excludeFiltersController"), ui->excludeFiltersTable,
             ui->excludeFiltersEdit, ui->excludeFiltersRemove, m_values.excludeFiltersArray);
}

void ToolsViewOptions::connectFilters() {
    for (auto *button : {ui->includeFiltersAdd, ui->includeFiltersEdit}) {
        connect(button, &QAbstractButton::clicked, this,
                [this, button] { includeFilters(button); });
    }
    for (auto *button : {ui->excludeFiltersAdd, ui->excludeFiltersEdit}) {
        connect(button, &QAbstractButton::clicked, this,
                [this, button] { excludeFilters(button); });
    }
    connect(ui->includeFiltersRemove, &QAbstractButton::clicked, this,
            &ToolsViewOptions::includeFiltersRemove);
    connect(ui->excludeFiltersRemove, &QAbstractButton::clicked, this,
            &ToolsViewOptions::excludeFiltersRemove);
    connect(m_includeFilters, &RecordList::clicked, this, &ToolsViewOptions::includeFiltersTable);
    connect(m_excludeFilters, &RecordList::clicked, this, &ToolsViewOptions::excludeFiltersTable);
    connect(m_includeFilters, &RecordList::editRequested, this,
            [this] { includeFilters(ui->includeFiltersEdit); });
    connect(m_excludeFilters, &RecordList::editRequested, this,
            [this] { excludeFilters(ui->excludeFiltersEdit); });
}

std::optional<Dictionary> ToolsViewOptions::filterToEdit() const {
    if (m_bIncludeFilters) {
        return m_includeFilters->selectedRecord();
    }
    return m_bExcludeFilters ? m_excludeFilters->selectedRecord() : std::nullopt;
}

void ToolsViewOptions::storeFilter(const Dictionary &record) {
    if (m_bIncludeFilters) {
        m_includeFilters->store(record);
    }
    if (m_bExcludeFilters) {
        m_excludeFilters->store(record);
    }
    enableSave();
}

bool ToolsViewOptions::adds(const QObject *sender) {
    const auto *button = qobject_cast<const QAbstractButton *>(sender);
    return button != nullptr && button->text().contains(QStringLiteral("Add"));
}

void ToolsViewOptions::includeFilters(QObject *sender) {
    if (adds(sender)) {
        m_includeFilters->deselect();
    }
    m_bIncludeFilters = true;
    m_bExcludeFilters = false;
    presentFilter();
}

void ToolsViewOptions::excludeFilters(QObject *sender) {
    if (adds(sender)) {
        // The other list's selection, on purpose: with a row of this list selected, Add edits it.
        m_includeFilters->deselect();
    }
    m_bExcludeFilters = true;
    m_bIncludeFilters = false;
    presentFilter();
}

void ToolsViewOptions::presentFilter() {
    presentSheet(m_storyboard, QStringLiteral("filterView"), this);
}

void ToolsViewOptions::includeFiltersTable() {
    m_includeFilters->followSelection();
}

void ToolsViewOptions::excludeFiltersTable() {
    m_excludeFilters->followSelection();
}

void ToolsViewOptions::includeFiltersRemove() {
    removeFilter(*m_includeFilters);
}

void ToolsViewOptions::excludeFiltersRemove() {
    removeFilter(*m_excludeFilters);
}

void ToolsViewOptions::removeFilter(RecordList &filters) {
    if (filters.removeSelected()) {
        filters.enableButtons(true);  // without a selection, Edit makes a new filter
        enableSave();
    }
}

}  // namespace quorbel
