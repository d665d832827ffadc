#pragma once

#include "core/ServiceState.h"
#include "platform/gui/RowTableView.h"

#include <optional>
#include <string>

class QStandardItemModel;

namespace quorbel {

class RecordTableModel;

/// What came of each action of a list, a row each, in the list's order: how often it was carried
/// out, when last, and what went wrong last. Asks the service once a second while it is on screen.
///
/// Actions are known to the service by their names, as it tells these; of several of one name, it
/// is the first, the second and so on of those that have something to do. An action that the
/// service does not have yet, or not in that number, cannot be told of.
class ActionResults : public RowTableView {
    Q_OBJECT

public:
    explicit ActionResults(QWidget *parent = nullptr);
    ~ActionResults() override;

    /// `service` and `actions` outlive this. Dates are shown in `dateFormat`, which does, too.
    void follow(ServiceState &service, const RecordTableModel &actions,
                const std::string &dateFormat);

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void refresh();
    void showRow(int row, const QStringList &texts);

    QStandardItemModel *m_rows;
    ServiceState *m_service = nullptr;
    const RecordTableModel *m_actions = nullptr;
    const std::string *m_dateFormat = nullptr;
    std::optional<ServiceState::Watch> m_watch;
};

}  // namespace quorbel
