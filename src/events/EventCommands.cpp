#include "events/EventCommands.h"

#include "core/AppDelegate.h"
#include "events/EventFinder.h"
#include "events/EventTableModel.h"
#include "events/EventTableView.h"
#include "events/FindBar.h"
#include "events/find/LikePattern.h"
#include "events/find/LikeRecord.h"
#include "platform/gui/RowCommands.h"
#include "platform/gui/ViewCommands.h"

#include <QAbstractButton>
#include <QAction>
#include <QCoreApplication>

#include <utility>

namespace quorbel {

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(quorbel::EventCommands)
};

using Needs = RowCommands::Needs;

const QKeySequence kSurroundings(Qt::CTRL | Qt::SHIFT | Qt::Key_F);

QString shown(const QKeySequence &key) {
    return u'\t' + key.toString(QKeySequence::NativeText);
}

/// Of the row that was selected last.
QString selectedText(const EventTableView &table, int column) {
    const QItemSelectionModel &selection = *table.selectionModel();
    QModelIndex row = selection.currentIndex();
    if (!selection.isSelected(row)) {
        row = selection.selection().first().topLeft();
    }
    return row.siblingAtColumn(column).data().toString();
}

void addFilters(RowCommands &commands, const EventTableView &table, FindBar &bar,
                EventFinder &finder) {
    const auto host = [&table](auto use) {
        if (const QString name = selectedText(table, EventTableModel::kHost); !name.isEmpty()) {
            use(name);
        }
    };
    commands.add("onlyThisHost", Texts::tr("Only This &Host"), {}, Needs::kSelection,
                 [host, &bar] { host([&bar](const QString &name) { bar.onlyHost(name); }); });
    commands.add("notThisHost", Texts::tr("&Not This Host"), {}, Needs::kSelection,
                 [host, &bar] { host([&bar](const QString &name) { bar.excludeHost(name); }); });
    commands.add("onlyLikeThis", Texts::tr("Only &Like This"), {}, Needs::kSelection,
                 [&table, &bar] {
                     const QString message = selectedText(table, EventTableModel::kMessage);
                     bar.addText({{likePattern(message), true, true}, false});
                 });
    // The key is the page's.
    commands.add("surroundings", Texts::tr("&Show Surroundings") + shown(kSurroundings), {},
                 Needs::kSelection, [&finder] { finder.showSurroundings(); });
}

/// Both open the page that keeps such records, with one like the selected event in its editor.
void addRecords(RowCommands &commands, const EventTableView &table, AppDelegate &delegate) {
    const auto propose = [&table, &delegate](Tab page) {
        if (MainWindowLink *window = delegate.mainWindow()) {
            const auto text = [&table](int column) { return selectedText(table, column); };
            window->proposeRecord(
                page, Tab::kEvents,
                likeRecord(text(EventTableModel::kPriority), text(EventTableModel::kHost),
                           text(EventTableModel::kMessage)));
        }
    };
    commands.add("excludeLikeThis", Texts::tr("&Exclude Messages Like This..."), {},
                 Needs::kSelection, [propose] { propose(Tab::kOptions); });
    commands.add("actionLikeThis", Texts::tr("&Automatic Action..."), {}, Needs::kSelection,
                 [propose] { propose(Tab::kActions); });
}

}  // namespace

RowCommands &addEventCommands(EventTableView &table, FindBar &bar, EventFinder &finder,
                              AppDelegate &delegate, std::function<void()> deleteEvents) {
    auto *commands = new RowCommands(table, [&table](int row) {
        return table.model()->index(row, EventTableModel::kMessage).data().toString();
    });
    commands->addSeparator();
    // The key is the table's own: it opens the event chosen last, also when others came since.
    commands->add("openDetails", Texts::tr("De&tails") + shown(Qt::Key_Return), {},
                  Needs::kSelection, [&table] { Q_EMIT table.enterPressed(); });
    commands->addSeparator();
    addFilters(*commands, table, bar, finder);
    commands->addSeparator();
    addRecords(*commands, table, delegate);
    commands->addSeparator();
    commands->add("deleteSelected", Texts::tr("&Delete..."), QKeySequence::Delete, Needs::kNothing,
                  std::move(deleteEvents));
    return *commands;
}

void addListCommands(QWidget &page, FindBar &bar, EventFinder &finder, QAbstractButton &hold,
                     QAbstractButton &timeline, EventTableView &table) {
    auto *commands = new ViewCommands(page);
    commands->add("findEvents", Texts::tr("&Find..."), QKeySequence::Find, [&bar] { bar.open(); });
    commands->add("findSavedQuestions", Texts::tr("&Questions..."),
                  QKeySequence(Qt::CTRL | Qt::Key_L), [&bar] { bar.openSaved(); });
    QAction *clear =
        commands->add("clearFilter", Texts::tr("&Clear the Filter"),
                      QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_L), [&bar] { bar.clear(); });
    QAction *surroundings = commands->add("showSurroundings", Texts::tr("&Show Surroundings"),
                                          kSurroundings, [&finder] { finder.showSurroundings(); });
    QAction *held = commands->add(
        "holdList", Texts::tr("&Hold New Events"), QKeySequence(QStringLiteral("Ctrl+H")),
        [&hold] { hold.toggle(); },
        /*hasOwnKey=*/false);
    held->setCheckable(true);
    QAction *fold = commands->add(
        "showTimeline", Texts::tr("&Timeline"), QKeySequence(QStringLiteral("Ctrl+T")),
        [&timeline] { timeline.click(); },
        /*hasOwnKey=*/false);
    fold->setCheckable(true);
    commands->add(
        "goToNewest", Texts::tr("Go to the &Newest"), QKeySequence(Qt::CTRL | Qt::Key_Home),
        [&table] { table.scrollToTop(); },
        /*hasOwnKey=*/false);
    QObject::connect(commands, &ViewCommands::aboutToShow, commands,
                     [&bar, &hold, &timeline, &table, clear, surroundings, held, fold] {
                         clear->setEnabled(bar.filter().isInUse());
                         surroundings->setEnabled(table.selectionModel()->hasSelection());
                         held->setChecked(hold.isChecked());
                         fold->setChecked(timeline.isChecked());
                     });
}

}  // namespace quorbel
