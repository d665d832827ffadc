#include "options/FilterOptions.h"

#include "options/OptionsValues.h"
#include "platform/gui/RowTableView.h"
#include "settings/RecordList.h"
#include "settings/RecordTableModel.h"

#include <QAbstractButton>

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

FilterOptions::FilterOptions(const Controls &include, const Controls &exclude, QObject *parent)
    : OptionsGroup(parent),
      m_include(include),
      m_exclude(exclude),
      m_includeFilters(
          makeList(QStringLiteral("includeFiltersController"), include, m_includeFiltersArray)),
      m_excludeFilters(
          makeList(QStringLiteral("excludeFiltersController"), exclude, m_excludeFiltersArray)) {
    for (auto *button : {include.add, include.edit}) {
        connect(button, &QAbstractButton::clicked, this,
                [this, button] { includeFilters(*button); });
    }
    for (auto *button : {exclude.add, exclude.edit}) {
        connect(button, &QAbstractButton::clicked, this,
                [this, button] { excludeFilters(*button); });
    }
    connect(include.remove, &QAbstractButton::clicked, this, &FilterOptions::includeFiltersRemove);
    connect(exclude.remove, &QAbstractButton::clicked, this, &FilterOptions::excludeFiltersRemove);
    connect(m_includeFilters, &RecordList::clicked, this, &FilterOptions::includeFiltersTable);
    connect(m_excludeFilters, &RecordList::clicked, this, &FilterOptions::excludeFiltersTable);
    connect(m_includeFilters, &RecordList::editRequested, this,
            [this] { includeFilters(*m_include.edit); });
    connect(m_excludeFilters, &RecordList::editRequested, this,
            [this] { excludeFilters(*m_exclude.edit); });
}

RecordList *FilterOptions::makeList(const QString &controller, const Controls &controls,
                                    Array &working) {
    auto *model = new RecordTableModel(this);
    model->setObjectName(controller);
    return new RecordList({.table = controls.table,
                           .edit = controls.edit,
                           .remove = controls.remove,
                           .controller = model,
                           .working = &working,
                           .areEqual = &areEqualFilters,
                           .columnWidths = kColumnWidths},
                          this);
}

void FilterOptions::showValues(const OptionsValues &values) {
    m_includeFiltersArray = values.includeFiltersArray;
    m_excludeFiltersArray = values.excludeFiltersArray;
    m_bIncludeFilters = m_bExcludeFilters = false;
    m_includeFilters->load();
    m_excludeFilters->load();
}

void FilterOptions::takeValues(OptionsValues &values) const {
    values.includeFiltersArray = m_includeFiltersArray;
    values.excludeFiltersArray = m_excludeFiltersArray;
}

QWidgetList FilterOptions::tabOrder() const {
    return {m_include.table, m_include.add, m_include.edit, m_include.remove,
            m_exclude.table, m_exclude.add, m_exclude.edit, m_exclude.remove};
}

std::optional<Dictionary> FilterOptions::filterToEdit() const {
    if (m_bIncludeFilters) {
        return m_includeFilters->selectedRecord();
    }
    return m_bExcludeFilters ? m_excludeFilters->selectedRecord() : std::nullopt;
}

void FilterOptions::storeFilter(const Dictionary &record) {
    if (m_bIncludeFilters) {
        m_includeFilters->store(record);
    }
    if (m_bExcludeFilters) {
        m_excludeFilters->store(record);
    }
    Q_EMIT changed();
}

void FilterOptions::includeFilters(const QAbstractButton &sender) {
    if (&sender == m_include.add) {
        m_includeFilters->deselect();
    }
    m_bIncludeFilters = true;
    m_bExcludeFilters = false;
    Q_EMIT editFilter();
}

void FilterOptions::excludeFilters(const QAbstractButton &sender) {
    if (&sender == m_exclude.add) {
        // The other list's selection, on purpose: with a row of this list selected, Add edits it.
        m_includeFilters->deselect();
    }
    m_bExcludeFilters = true;
    m_bIncludeFilters = false;
    Q_EMIT editFilter();
}

void FilterOptions::proposeExclusion(const Dictionary &record) {
    m_excludeFilters->deselect();
    m_bExcludeFilters = true;
    m_bIncludeFilters = false;
    m_proposal = record;
    Q_EMIT editFilter();
    m_proposal.reset();
}

void FilterOptions::includeFiltersTable() {
    m_includeFilters->followSelection();
}

void FilterOptions::excludeFiltersTable() {
    m_excludeFilters->followSelection();
}

void FilterOptions::includeFiltersRemove() {
    removeFilter(*m_includeFilters);
}

void FilterOptions::excludeFiltersRemove() {
    removeFilter(*m_excludeFilters);
}

void FilterOptions::removeFilter(RecordList &filters) {
    if (filters.removeSelected()) {
        filters.enableButtons(true);  // without a selection, Edit makes a new filter
        Q_EMIT changed();
    }
}

}  // namespace quorbel
