#include "reports/ReportsView.h"

#include "common/LogReader.h"
#include "core/AppDelegate.h"
#include "platform/gui/AlertBox.h"
#include "platform/gui/ColumnMemory.h"
#include "platform/gui/FileIcons.h"
#include "platform/gui/FilePanel.h"
#include "platform/gui/FontSize.h"
#include "platform/gui/Icons.h"
#include "platform/gui/ProgressWindow.h"
#include "platform/gui/QtText.h"
#include "platform/gui/RowCommands.h"
#include "platform/gui/TableExport.h"
#include "reports/ReportPrinter.h"
#include "reports/ReportTableModel.h"
#include "ui_ReportsView.h"

#include <QFile>
#include <QFileInfo>
#include <QFileSystemModel>
#include <QHeaderView>
#include <QPrintDialog>
#include <QPrinter>

#include <utility>

namespace quorbel {

namespace {

constexpr QMarginsF kPaperMargins(15, 15, 15, 15);
constexpr int kColumnWidth = 120;
constexpr int kDateWidth = 140;
constexpr int kDateGroupWidth = 165;
constexpr std::string_view kAllLogs =
    QT_TRANSLATE_NOOP("quorbel::ReportsView", "All Logs");  // also a file's name, in any language
constexpr int kOtherColumns = 380;                          // beside a column of messages

// By ReportKind: where what the user made of the columns is remembered.
constexpr const char *kMemoryNames[] = {"ReportByHost", "ReportByMessage", "ReportByPriority",
                                        "ReportByDate"};

/// The dialog would look into files to complete a name, and choose one in a nested event loop, with
/// a panel that deletes.
void useOwnFilePanel(QPrintDialog &dialog) {
    for (auto *files : dialog.findChildren<QFileSystemModel *>()) {
        files->setIconProvider(&fileIcons());
    }
    auto *button = dialog.findChild<QAbstractButton *>(QStringLiteral("fileBrowser"));
    auto *field = dialog.findChild<QLineEdit *>(QStringLiteral("filename"));
    if (button == nullptr || field == nullptr) {
        return;
    }
    button->disconnect();
    QObject::connect(button, &QAbstractButton::clicked, &dialog, [&dialog, field] {
        const QFileInfo file(field->text());
        openFilePanel(&dialog,
                      {.message = ReportsView::tr("Please select a file to print to:"),
                       .extensions = {QStringLiteral("pdf")},
                       .folder = file.path(),
                       .name = file.fileName(),
                       .save = true},
                      [field](const QString &path) { field->setText(path); });
    });
}

QString firstHint() {
    return ReportsView::tr(
        "No report yet.\nChoose what to group the events by and which log to read, then press "
        "Display.");
}

}  // namespace

ReportsView::ReportsView(AppDelegate &delegate, QWidget *parent)
    : Page(parent),
      m_delegate(delegate),
      m_model(std::make_unique<ReportTableModel>()),
      ui(std::make_unique<Ui::ReportsView>()) {
    ui->setupUi(this);
}

ReportsView::~ReportsView() {
    // A print dialog must not outlive its printer, as the children of this widget would.
    qDeleteAll(findChildren<QPrintDialog *>(Qt::FindDirectChildrenOnly));
}

void ReportsView::viewDidLoad() {
    setWhiteBackground();
    ui->exportResults->setIcon(lineIcon(QStringLiteral("export")));
    ui->printResults->setIcon(lineIcon(QStringLiteral("print")));
    ui->tableView->setModel(m_model.get());
    new RowCommands(*ui->tableView, [this](int row) { return m_model->message(row); });
    m_columnMemory = new ColumnMemory(*ui->tableView);
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

    connect(ui->tableView, &QAbstractItemView::clicked, this, &ReportsView::tableClicked);
    connect(ui->tableView, &ReportTableView::togglePressed, this, &ReportsView::tableClicked);
    const auto clickIf = [this](ReportTableModel::Marker marker) {
        if (const int row = selectedRow(); row >= 0 && m_model->marker(row) == marker) {
            tableClicked();
        }
    };
    connect(ui->tableView, &ReportTableView::expandPressed, this,
            [clickIf] { clickIf(ReportTableModel::Marker::kCollapsed); });
    connect(ui->tableView, &ReportTableView::collapsePressed, this,
            [clickIf] { clickIf(ReportTableModel::Marker::kExpanded); });
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
    m_model->clear();
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
    m_model->clear();
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
        m_model->setReport(std::move(report));
        ui->tableView->clearSelection();
        ui->tableView->scrollToTop();
    }
}

int ReportsView::selectedRow() const {
    const QModelIndexList selected = ui->tableView->selectionModel()->selectedRows();
    return selected.isEmpty() ? -1 : selected.first().row();
}

void ReportsView::tableClicked() {
    if (const int row = selectedRow(); row >= 0) {
        const int before = m_model->rowCount();
        m_model->toggle(row);
        ui->tableView->selectRow(row);
        ui->tableView->revealBelow(row, m_model->rowCount() - before);
    }
}

void ReportsView::exportResults() {
    openExportPanel(this, "report", [this](const QString &path) { writeRows(path); });
}

void ReportsView::writeRows(const QString &path) {
    const auto row = [this](std::size_t number) {
        return m_model->index(static_cast<int>(number), 0);
    };
    // The page may be shown anew meanwhile, from the tray.
    const auto areStillThere = [this, resets = m_resets] { return resets == m_resets; };
    // A file that cannot be written stays as it was; nobody is told.
    exportTable(path, *m_model, {static_cast<std::size_t>(m_model->rowCount()), row, areStillThere},
                this);
}

void ReportsView::printResults() {
    m_printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
    m_printer->setPageMargins(kPaperMargins, QPageLayout::Millimeter);
    auto *dialog = new QPrintDialog(m_printer.get(), this);
    dialog->setObjectName(QStringLiteral("printPanel"));
    dialog->setOptions(QAbstractPrintDialog::PrintToFile | QAbstractPrintDialog::PrintShowPageSize |
                       QAbstractPrintDialog::PrintPageRange);
    // Pages are made one after the other, so the last cannot come first.
    if (auto *reverse = dialog->findChild<QWidget *>(QStringLiteral("reverse"))) {
        reverse->hide();
    }
    useOwnFilePanel(*dialog);
    connect(dialog, &QDialog::finished, dialog, &QObject::deleteLater);
    // Not from within the dialog's own signal: printing runs the event loop, which may delete it.
    connect(
        dialog, &QDialog::accepted, this, [this] { print(); }, Qt::QueuedConnection);
    dialog->open();
}

void ReportsView::print() {
    QList<int> columns;
    for (int place = 0; place < m_model->columnCount(); ++place) {
        const int column = ui->tableView->horizontalHeader()->logicalIndex(place);
        if (!ui->tableView->isColumnHidden(column)) {
            columns.append(column);
        }
    }
    const unsigned resets = m_resets;
    bool isCancelled = false;
    ProgressWindow progress({.title = QStringLiteral("Quorbel"),
                             .work = tr("Printing the report"),
                             .accessibleName = tr("Rows printed")},
                            ProgressWindow::Unit::kRows, this, ProgressWindow::Cancel::kOffered);
    ReportPrinter printer(*m_model, columns);
    printer.setCopies(m_printer->supportsMultipleCopies() ? 1 : m_printer->copyCount());
    const bool isComplete = printer.print(*m_printer, [&](int done, int inAll) {
        isCancelled =
            !progress.update(static_cast<std::uint64_t>(done), static_cast<std::uint64_t>(inAll)) ||
            resets != m_resets;
        return !isCancelled;
    });
    // On paper, the pages so far come out; a file is not left behind half done.
    if (isCancelled && printer.printedPages() > 0) {
        QFile::remove(m_printer->outputFileName());
    }
    if (isComplete && printer.printedPages() == 0) {
        openAlert(
            this,
            {.message = tr("No page was printed"),
             .informativeText = printer.pageCount() == 1
                                    ? tr("The report has only one page.")
                                    : tr("The report has %1 pages.", nullptr, printer.pageCount())
                                          .arg(countText(printer.pageCount())),
             .checkBox = {},
             .buttons = {}},
            {});
    }
}

}  // namespace quorbel
