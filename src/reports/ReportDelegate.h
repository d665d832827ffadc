#pragma once

#include "platform/gui/RowTableView.h"
#include "reports/ReportTally.h"

#include <QFont>

#include <optional>

namespace quorbel {

/// Paints the rows of a report. A group's value runs on over the empty cells behind it, however
/// narrow its own column is, and behind it stands the group's tally.
class ReportDelegate : public RowDelegate {
    Q_OBJECT

public:
    using RowDelegate::RowDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;

private:
    void paintGroup(QPainter &painter, const QStyleOptionViewItem &option,
                    const QModelIndex &index) const;
    [[nodiscard]] ReportTally tally(const QStyleOptionViewItem &option,
                                    const QModelIndex &index) const;
    [[nodiscard]] int widestName(const QStyleOptionViewItem &option,
                                 const ReportTableModel &model) const;

    /// Of the report and in the font that it was measured for.
    struct Names {
        unsigned report;
        QFont font;
        int width;
    };
    mutable std::optional<Names> m_names;
};

}  // namespace quorbel
