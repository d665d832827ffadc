#include "reports/ReportsView.h"

#include "common/LogReader.h"
#include "core/AppDelegate.h"
#include "core/PageLinks.h"
#include "platform/gui/ColumnMemory.h"
#include "platform/gui/FontSize.h"
#include "platform/gui/Icons.h"
#include "platform/gui/ProgressWindow.h"
#include "platform/gui/QtText.h"
#include "platform/gui/RowCommands.h"
#include "platform/gui/Sheet.h"
#include "platform/gui/Storyboard.h"
#include "platform/gui/TableExport.h"
#include "reports/ReportCounts.h"
#include "reports/ReportPrinting.h"
#include "reports/ReportSteps.h"
#include "reports/ReportTableModel.h"
#include "ui_ReportsView.h"

#include <QHeaderView>

#include <utility>

namespace quorbel {

namespace {

constexpr int kColumnWidth = 120;
constexpr int kDateWidth = 140;
constexpr int kDateGroupWidth = 165;
constexpr std::string_view kAllLogs =
    QT_TRANSLATE_NOOP("quorbel::ReportsView", "All Logs");  // also a file's name, in any language
constexpr int kOtherColumns = 380;                          // beside a column of messages

// By ReportKind: where what the user made of the columns is remembered.
constexpr const char *kMemoryNames[] = {"ReportByHost", "ReportByMessage", "ReportByPriority",
                                        "ReportByDate"};

QString firstHint() {
    return ReportsView::tr(
        "No report yet.\nChoose what to group the events by and which log to read, then press "
        "Display.");
}

}  // namespace

ReportsView::ReportsView(AppDelegate &delegate, const Storyboard &storyboard, QWidget *parent)
    : Page(parent),
      m_delegate(delegate),
      m_storyboard(storyboard),
      m_model(std::make_unique<ReportTableModel>()),
      ui(std::make_unique<Ui::ReportsView>()) {
    ui->setupUi(this);
}

ReportsView::~ReportsView() = default;

void ReportsView::viewDidLoad() {
    setWhiteBackground();
    ui->exportResults->setIcon(lineIcon(QStringLiteral("export")));
    ui->printResults->setIcon(lineIcon(QStringLiteral("print")));
    ui->tableView->setModel(m_model.get());
    new RowCommands(*ui->tableView, [this](int row) { return m_model->message(row); });
    m_columnMemory = new ColumnMemory(*ui->tableView);
    m_printing = std::make_unique<ReportPrinting>(*this);
    // A group's value begins there.
    ui->tableView->horizontalHeader()->setFirstSectionMovable(false);
    connectControls();
}

void ReportsView::connectControls() {
    connect(ui->reportName, &QComboBox::activated, this, &ReportsView::reportNameSelected);
    connect(ui->reportFilter, &QComboBox::activated, this, &ReportsView::reportFilterSelected);
    connect(ui->reportDisplay, &QAbstractButton::clicked, this, &ReportsView::displayReport);
    connect(ui->exportResults, &QAbstractButton::clicked, this, &ReportsView::exportResults);
    connect(ui->printResults, &QAbstractButton::clicked, this, &ReportsView::printResults);

    connect(ui->expandAll, &QAbstractButton::clicked, this, &ReportsView::expandAll);
    connect(ui->collapseAll, &QAbstractButton::clicked, this, &ReportsView::collapseAll);
    connect(ui->largestFirst, &QAbstractButton::toggled, this, &ReportsView::setLargestFirst);
    connect(m_printing.get(), &ReportPrinting::confirmed, this, &ReportsView::print);
    connect(ui->tableView, &QAbstractItemView::clicked, this, &ReportsView::tableClicked);
    connect(ui->tableView, &QAbstractItemView::doubleClicked, this, &ReportsView::openDetails);
    connectKeys();
}

void ReportsView::connectKeys() {
    const ReportTableView *table = ui->tableView;
    connect(table, &ReportTableView::togglePressed, this, &ReportsView::tableClicked);
    connect(table, &ReportTableView::openPressed, this, &ReportsView::openPressed);
    connect(table, &ReportTableView::expandPressed, this, &ReportsView::expandPressed);
    connect(table, &ReportTableView::collapsePressed, this, &ReportsView::collapsePressed);
    connect(table, &ReportTableView::expandAllPressed, this, &ReportsView::expandAll);
    connect(table, &ReportTableView::collapseAllPressed, this, &ReportsView::collapseAll);
    connect(table, &ReportTableView::nextSmallerPressed, this,
            [this] { goTo(m_model->rowOfNextSmaller(selectedRow())); });
    connect(table, &ReportTableView::nextLargerPressed, this,
            [this] { goTo(m_model->rowOfNextLarger(selectedRow())); });
}

void ReportsView::viewWillAppear() {
    ++m_resets;
    ui->reportName->setCurrentIndex(-1);
    ui->reportFilter->clear();
    ui->reportFilter->addItem(tr(kAllLogs.data()));
    for (const auto &file : logFiles()) {
        // A name need not be text; the bytes tell which file is meant.
        const std::string name = file.stem().string();
        ui->reportFilter->addItem(toQString(name), QByteArray::fromStdString(name));
    }
    ui->reportFilter->setCurrentIndex(0);
    showReport(nullptr);
    for (int column = 0; column < m_model->columnCount(); ++column) {
        ui->tableView->hideColumn(column);
    }
    ui->tableView->setHint(firstHint());
}

void ReportsView::viewDidAppear() {
    ui->reportName->setFocus();
}

void ReportsView::reportNameSelected() {
    choiceMade();
}

void ReportsView::reportFilterSelected() {
    choiceMade();
}

void ReportsView::choiceMade() {
    if (ui->reportName->currentIndex() >= 0 && ui->reportFilter->currentIndex() >= 0) {
        ui->reportDisplay->setEnabled(true);
    }
    // Away from the controls; from the page itself, Tab goes on to them.
    setFocus();
}

std::optional<ReportKind> ReportsView::chosenKind() const {
    const int index = ui->reportName->currentIndex();
    return index < 0 ? std::nullopt : std::optional(static_cast<ReportKind>(index));
}

std::vector<std::filesystem::path> ReportsView::chosenFiles() const {
    std::vector<std::filesystem::path> files;
    if (ui->reportFilter->currentIndex() < 0) {
        return files;
    }
    files = logFiles();
    const std::string name = ui->reportFilter->currentData().toByteArray().toStdString();
    if (ui->reportFilter->currentIndex() > 0 && name != kAllLogs) {
        std::erase_if(files, [&name](const auto &file) { return file.stem().string() != name; });
    }
    return files;
}

void ReportsView::showColumns(std::optional<ReportKind> kind) {
    ui->tableView->horizontalHeader()->setStretchLastSection(false);
    for (int column = 0; column < m_model->columnCount(); ++column) {
        ui->tableView->showColumn(column);
        ui->tableView->setColumnWidth(column, sizedToFont(kColumnWidth));
    }
    if (!kind) {
        return;
    }
    m_model->setKind(*kind);
    if (kind == ReportKind::kDate) {
        ui->tableView->setColumnWidth(0, sizedToFont(kDateGroupWidth));
    } else {
        ui->tableView->setColumnWidth(1, sizedToFont(kDateWidth));
    }
    if (kind == ReportKind::kMessage) {
        ui->tableView->setColumnWidth(
            0, ui->tableView->widthForColumns() - sizedToFont(kOtherColumns));
    } else {
        ui->tableView->horizontalHeader()->setStretchLastSection(true);
    }
    m_columnMemory->recall(QString::fromLatin1(kMemoryNames[static_cast<std::size_t>(*kind)]));
}

void ReportsView::displayReport() {
    showReport(nullptr);
    ui->tableView->setHint({});
    const std::optional<ReportKind> kind = chosenKind();
    showColumns(kind);

    auto report = std::make_unique<ReportEngine>(kind, m_delegate.state.newDateFormat);
    const unsigned resets = m_resets;
    bool isComplete = false;
    {
        ProgressWindow progress({.title = QStringLiteral("Quorbel"),
                                 .work = tr("Reading the log files"),
                                 .accessibleName = tr("Bytes read")},
                                ProgressWindow::Unit::kBytes, this,
                                ProgressWindow::Cancel::kOffered);
        isComplete = report->read(chosenFiles(), [&](std::uint64_t done, std::uint64_t inAll) {
            // The page may be shown anew meanwhile, from the tray.
            return progress.update(done, inAll) && resets == m_resets;
        });
    }
    if (resets != m_resets) {
        return;
    }
    ui->tableView->setHint(!isComplete ? tr("The report was cancelled.")
                           : kind      ? tr("No events in the chosen log.")
                                       : firstHint());
    if (isComplete) {
        showReport(std::move(report));
        ui->tableView->clearSelection();
        ui->tableView->scrollToTop();
    }
}

void ReportsView::showReport(std::unique_ptr<const ReportEngine> report) {
    ui->reportCounts->setText(report ? reportCounts(*report) : QString());
    m_model->setReport(std::move(report));
    const bool hasGroups = m_model->rowCount() > 0;
    ui->expandAll->setEnabled(hasGroups);
    ui->collapseAll->setEnabled(hasGroups);
}

int ReportsView::selectedRow() const {
    return ui->tableView->selectedRow();
}

void ReportsView::tableClicked() {
    if (const int row = selectedRow(); row >= 0) {
        const int before = m_model->rowCount();
        m_model->toggle(row);
        ui->tableView->selectRow(row);
        ui->tableView->revealBelow(row, m_model->rowCount() - before);
    }
}

void ReportsView::openPressed() {
    const int row = selectedRow();
    if (row >= 0 && m_model->marker(row) == ReportTableModel::Marker::kNone) {
        openDetails();
    } else {
        tableClicked();
    }
}

void ReportsView::expandPressed() {
    const int row = selectedRow();
    if (row >= 0 && m_model->marker(row) == ReportTableModel::Marker::kCollapsed) {
        tableClicked();
    }
}

void ReportsView::collapsePressed() {
    const int row = selectedRow();
    if (row < 0) {
        return;
    }
    if (m_model->marker(row) == ReportTableModel::Marker::kNone) {
        goTo(m_model->rowOf({m_model->placeOf(row).group, std::nullopt}));
    } else if (m_model->marker(row) == ReportTableModel::Marker::kExpanded) {
        tableClicked();
    }
}

void ReportsView::goTo(int row) {
    if (row >= 0) {
        ui->tableView->goTo(row);
    }
}

void ReportsView::expandAll() {
    changeRows([this] { m_model->setAllExpanded(true); });
}

void ReportsView::collapseAll() {
    changeRows([this] { m_model->setAllExpanded(false); });
}

void ReportsView::setLargestFirst(bool largestFirst) {
    changeRows([this, largestFirst] { m_model->setLargestFirst(largestFirst); });
    ui->tableView->scrollToTop();
}

/// Changes the rows at large. What was selected stays so, and in its place on the screen; a hidden
/// event hands both on to its group. Without a selection it is the row at the top that stays.
void ReportsView::changeRows(const std::function<void()> &change) {
    if (m_model->rowCount() == 0) {
        change();
        return;
    }
    const int selected = selectedRow();
    const int top = ui->tableView->topRow();
    const int anchor = selected >= 0 ? selected : top;
    const ReportRows::Place place = m_model->placeOf(anchor);
    change();
    const int row = m_model->rowOf(place);
    ui->tableView->setTopRow(row - (anchor - top));
    if (selected >= 0) {
        goTo(row);
    }
}

void ReportsView::openDetails() {
    const int row = selectedRow();
    if (row < 0 || m_model->marker(row) != ReportTableModel::Marker::kNone) {
        return;
    }
    std::unique_ptr<QWidget> controller = m_storyboard.instantiate(QStringLiteral("eventView"));
    auto *sheet = dynamic_cast<Sheet *>(controller.get());
    auto *details = dynamic_cast<EventSheetLink *>(controller.get());
    if (sheet == nullptr || details == nullptr) {
        return;
    }
    auto steps = std::make_shared<ReportSteps>(*m_model, *ui->tableView);
    details->setDict(steps->current());
    details->setSteps(std::move(steps));
    controller.release();  // NOLINT(bugprone-unused-return-value): it deletes itself
    sheet->presentOver(this);
}

void ReportsView::exportResults() {
    openExportPanel(this, "report", [this](const QString &path) { writeRows(path); });
}

void ReportsView::writeRows(const QString &path) {
    const auto model = modelInOrder();
    const auto row = [&model](std::size_t number) {
        return model->index(static_cast<int>(number), 0);
    };
    // The page may be shown anew meanwhile, from the tray.
    const auto areStillThere = [this, resets = m_resets] { return resets == m_resets; };
    // A file that cannot be written stays as it was; nobody is told.
    exportTable(path, *model, {static_cast<std::size_t>(model->rowCount()), row, areStillThere},
                this);
}

void ReportsView::printResults() {
    m_printing->openPanel();
}

void ReportsView::print() {
    QList<int> columns;
    for (int place = 0; place < m_model->columnCount(); ++place) {
        const int column = ui->tableView->horizontalHeader()->logicalIndex(place);
        if (!ui->tableView->isColumnHidden(column)) {
            columns.append(column);
        }
    }
    const auto ordered = modelInOrder();
    m_printing->print(*ordered, columns, [this, resets = m_resets] { return resets == m_resets; });
}

/// As exported and printed: in the order of appearance, whatever the table shows.
std::shared_ptr<const ReportTableModel> ReportsView::modelInOrder() const {
    if (m_model->isLargestFirst()) {
        return m_model->inOrderOfAppearance();
    }
    return {std::shared_ptr<void>(), m_model.get()};
}

}  // namespace quorbel
