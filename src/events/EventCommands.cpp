#include "events/EventCommands.h"

#include "events/EventTableModel.h"
#include "events/EventTableView.h"
#include "platform/gui/RowCommands.h"

#include <utility>

namespace quorbel {

RowCommands &addEventCommands(EventTableView &table, std::function<void()> deleteEvents) {
    using Needs = RowCommands::Needs;
    auto *commands = new RowCommands(table, [&table](int row) {
        return table.model()->index(row, EventTableModel::kMessage).data().toString();
    });
    commands->addSeparator();
    // The key is the table's own: it opens the event chosen last, also when others came since.
    const QString key = QKeySequence(Qt::Key_Return).toString(QKeySequence::NativeText);
    commands->add("openDetails", QStringLiteral("De&tails") + u'\t' + key, {}, Needs::kSelection,
                  [&table] { Q_EMIT table.enterPressed(); });
    commands->addSeparator();
    commands->add("deleteSelected", QStringLiteral("&Delete..."), QKeySequence::Delete,
                  Needs::kNothing, std::move(deleteEvents));
    return *commands;
}

}  // namespace quorbel
