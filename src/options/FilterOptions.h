#pragma once

#include "options/OptionsGroup.h"
#include "platform/Value.h"

#include <optional>

class QAbstractButton;

namespace quorbel {

class RecordList;
class RowTableView;

/// The lists of filters: what is included, and what is excluded. Their records are edited in a
/// sheet, which the page presents.
class FilterOptions : public OptionsGroup {
    Q_OBJECT

public:
    /// One list's.
    struct Controls {
        RowTableView *table;
        QAbstractButton *add;
        QAbstractButton *edit;
        QAbstractButton *remove;
    };

    /// The controls outlive the group.
    FilterOptions(const Controls &include, const Controls &exclude, QObject *parent);

    void showValues(const OptionsValues &values) override;
    void takeValues(OptionsValues &values) const override;
    [[nodiscard]] QWidgetList tabOrder() const override;

    // Both as FilterEditing says, for the list that editFilter() was about.
    [[nodiscard]] std::optional<Dictionary> filterToEdit() const;
    [[nodiscard]] const std::optional<Dictionary> &proposal() const { return m_proposal; }
    void storeFilter(const Dictionary &record);
    [[nodiscard]] bool editsExcludeFilter() const { return m_bExcludeFilters; }

    /// Opens the editor for a new record of the exclude list with these values.
    void proposeExclusion(const Dictionary &record);

    // The Add and the Edit button of a list, told apart by the sender's title.
    void includeFilters(const QAbstractButton &sender);
    void excludeFilters(const QAbstractButton &sender);
    void includeFiltersTable();
    void excludeFiltersTable();
    void includeFiltersRemove();
    void excludeFiltersRemove();

Q_SIGNALS:
    /// The user wants the filter editor.
    void editFilter();

private:
    RecordList *makeList(const QString &controller, const Controls &controls, Array &working);
    void removeFilter(RecordList &filters);

    Controls m_include;
    Controls m_exclude;
    Array m_includeFiltersArray;
    Array m_excludeFiltersArray;
    RecordList *m_includeFilters;
    RecordList *m_excludeFilters;
    // Which list the filter editor works on.
    bool m_bIncludeFilters = false;
    bool m_bExcludeFilters = false;
    std::optional<Dictionary> m_proposal;  ///< while the editor is being opened for one
};

}  // namespace quorbel
