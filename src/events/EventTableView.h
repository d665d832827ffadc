#pragma once

#include "platform/gui/RowTableView.h"

namespace quorbel {

/// The table of events. Says in the middle what to expect while there are none.
///
/// Its columns are as wide as their texts need in its font, and the message takes the rest. The
/// hosts' column widens to the longest host that comes into sight, up to a full IPv6 address, as
/// far as that leaves the message its share. Once the user has set a width, all stay as they are.
class EventTableView : public RowTableView {
    Q_OBJECT

public:
    explicit EventTableView(QWidget *parent = nullptr);

    /// `model` has the columns of an EventTableModel.
    void setModel(QAbstractItemModel *model) override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    [[nodiscard]] int widthFor(const QString &text) const;
    [[nodiscard]] int widestHostInSight() const;
    void fitColumns();

    int m_narrowHost = 0;
    int m_widestHost = 0;  // at least the narrow one
    bool m_isFitting = false;
    bool m_isSetByUser = false;
};

}  // namespace quorbel
