#include "hosts/HostsView.h"

#include "hosts/HostPulse.h"
#include "hosts/HostTableModel.h"
#include "hosts/HostTexts.h"
#include "hosts/RetiredHosts.h"
#include "platform/gui/ColumnMemory.h"
#include "platform/gui/QtText.h"
#include "platform/gui/RowCommands.h"
#include "ui_HostsView.h"

#include <QAction>
#include <QHeaderView>

#include <algorithm>

namespace quorbel {

namespace {

/// More selected rows would take too long to follow where they move.
constexpr int kMostFollowed = 100;
constexpr int kColumnWidths[] = {136, 88, 136, 66, 90, 68, 84, 100};

}  // namespace

HostsView::HostsView(AppDelegate &delegate, QWidget *parent)
    : Page(parent),
      m_delegate(delegate),
      m_model(std::make_unique<HostTableModel>()),
      ui(std::make_unique<Ui::HostsView>()),
      m_pulse(new HostPulse(delegate.hosts, *this)) {
    ui->setupUi(this);
    m_delegate.hosts.setRetired(rememberedRetiredHosts());
}

HostsView::~HostsView() = default;

void HostsView::viewDidLoad() {
    setWhiteBackground();
    RowTableView &table = *ui->hostTable;
    table.setModel(m_model.get());
    table.setTextElideMode(Qt::ElideMiddle);
    table.horizontalHeader()->setSortIndicator(HostTableModel::kSilent, Qt::DescendingOrder);
    table.setSortingEnabled(true);
    table.setColumnWidths(kColumnWidths);
    table.horizontalHeader()->setStretchLastSection(true);
    table.setHint(tr("No host has sent anything yet."));
    addCommands();
    (new ColumnMemory(table))->recall(QStringLiteral("Hosts"));
    connect(m_pulse, &HostPulse::beat, this, &HostsView::refresh);
    connect(table.selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &HostsView::showSelected);
    connect(&table, &QAbstractItemView::doubleClicked, this, &HostsView::showEvents);
    connect(&table, &RowTableView::enterPressed, this, &HostsView::showEvents);
    connect(ui->hostEvents, &QAbstractButton::clicked, this, &HostsView::showEvents);
    connect(ui->hostExpected, &QAbstractButton::clicked, this, &HostsView::changeExpected);
    connect(ui->hostsDone, &QAbstractButton::clicked, this, &HostsView::done);
}

void HostsView::addCommands() {
    auto *commands = new RowCommands(*ui->hostTable, [this](int row) -> std::optional<QString> {
        return m_model->row(row).name;
    });
    commands->findChild<QAction *>(QStringLiteral("copyMessages"))->setText(tr("Copy &Name"));
    commands->addSeparator();
    commands->add("showHostEvents", tr("Show &Events"), {}, RowCommands::Needs::kSelection,
                  [this] { showEvents(); });
}

void HostsView::viewWillAppear() {
    m_model->setDateFormat(m_delegate.state.newDateFormat);
    showSelected();
}

int HostsView::selectedCount() const {
    int count = 0;
    for (const QItemSelectionRange &range : ui->hostTable->selectionModel()->selection()) {
        count += range.height();
    }
    return count;
}

void HostsView::refresh() {
    m_model->setOrderKept(selectedCount() > kMostFollowed);
    m_model->setRows(hostRows(m_delegate.hosts, m_delegate.state, m_pulse->now()));
    showSummary();
    showSelected();
}

void HostsView::showSummary() {
    const HostHistory &history = m_delegate.hosts.history();
    const auto count = static_cast<qint64>(history.size());
    const qint64 overdue = std::ranges::count_if(m_model->hosts(), &HostRow::isOverdue);
    QString summary = count == 1
                          ? tr("1 host")
                          : tr("%1 hosts", nullptr, pluralNumber(count)).arg(countText(count));
    if (overdue > 0) {
        summary =
            tr("%1, %2 overdue", "after the number of hosts").arg(summary, countText(overdue));
    }
    if (history.crowdedOut() > 0) {
        summary = tr("%1; there were more than can be told apart").arg(summary);
    }
    ui->hostSummary->setText(summary);
}

QStringList HostsView::selectedHosts() const {
    QModelIndexList rows = ui->hostTable->selectionModel()->selectedRows();
    std::ranges::sort(rows, {}, &QModelIndex::row);
    QStringList hosts;
    for (const QModelIndex &row : std::as_const(rows)) {
        hosts.append(m_model->row(row.row()).name);
    }
    return hosts;
}

bool HostsView::areAllRetired(const QStringList &hosts) const {
    return !hosts.isEmpty() && std::ranges::none_of(hosts, [this](const QString &host) {
        return m_delegate.hosts.isExpected(host.toStdString());
    });
}

QString HostsView::habitText(const QStringList &hosts) const {
    const HostRecord *host =
        hosts.size() == 1 ? m_delegate.hosts.history().find(hosts.first().toStdString()) : nullptr;
    return host == nullptr ? QString()
                           : HostTexts::habit(*host, m_delegate.hosts.isExpected(host->name));
}

void HostsView::showSelected() {
    const QStringList hosts = selectedHosts();
    ui->hostEvents->setEnabled(hosts.size() == 1);
    ui->hostExpected->setEnabled(!hosts.isEmpty());
    const bool areRetired = areAllRetired(hosts);
    ui->hostExpected->setText(areRetired ? tr("Expect again") : tr("Stop expecting"));
    ui->hostExpected->setAccessibleName(ui->hostExpected->text());
    ui->hostExpected->setToolTip(areRetired ? tr("Say again when it falls silent")
                                            : tr("Say no more that it has fallen silent"));
    ui->hostHabit->setText(habitText(hosts));
}

void HostsView::showEvents() {
    const QStringList hosts = selectedHosts();
    MainWindowLink *window = m_delegate.mainWindow();
    if (!hosts.isEmpty() && window != nullptr) {
        window->showEvents(eventsOf(hosts.first(), m_delegate.hosts.history()));
    }
}

void HostsView::changeExpected() {
    const QStringList hosts = selectedHosts();
    const bool expect = areAllRetired(hosts);
    for (const QString &host : hosts) {
        m_delegate.hosts.setExpected(host.toStdString(), expect);
    }
    rememberRetiredHosts(m_delegate.hosts.retired());
    refresh();
}

void HostsView::done() {
    if (MainWindowLink *window = m_delegate.mainWindow()) {
        window->selectTab(parentTab);
    }
}

}  // namespace quorbel
