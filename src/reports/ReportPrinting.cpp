#include "reports/ReportPrinting.h"

#include "platform/gui/AlertBox.h"
#include "platform/gui/FileIcons.h"
#include "platform/gui/FilePanel.h"
#include "platform/gui/ProgressWindow.h"
#include "platform/gui/QtText.h"
#include "reports/ReportPrinter.h"
#include "reports/ReportTableModel.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QFile>
#include <QFileInfo>
#include <QFileSystemModel>
#include <QPrintDialog>
#include <QPrinter>

namespace quorbel {

namespace {

constexpr QMarginsF kPaperMargins(15, 15, 15, 15);

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
                      {.message = ReportPrinting::tr("Please select a file to print to:"),
                       .extensions = {QStringLiteral("pdf")},
                       .folder = file.path(),
                       .name = file.fileName(),
                       .save = true},
                      [field](const QString &path) { field->setText(path); });
    });
}

}  // namespace

ReportPrinting::ReportPrinting(QWidget &page) : m_page(page) {}

ReportPrinting::~ReportPrinting() {
    // A print dialog must not outlive its printer, as the children of the page would.
    qDeleteAll(m_page.findChildren<QPrintDialog *>(Qt::FindDirectChildrenOnly));
}

void ReportPrinting::openPanel() {
    m_printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
    m_printer->setPageMargins(kPaperMargins, QPageLayout::Millimeter);
    auto *dialog = new QPrintDialog(m_printer.get(), &m_page);
    dialog->setObjectName(QStringLiteral("printPanel"));
    dialog->setOptions(QAbstractPrintDialog::PrintToFile | QAbstractPrintDialog::PrintShowPageSize |
                       QAbstractPrintDialog::PrintPageRange);
    // Pages are made one after the other, so the last cannot come first.
    if (auto *reverse = dialog->findChild<QWidget *>(QStringLiteral("reverse"))) {
        reverse->hide();
    }
    useOwnFilePanel(*dialog);
    addPageNotes(*dialog);
    connect(dialog, &QDialog::finished, dialog, &QObject::deleteLater);
    // Not from within the dialog's own signal: printing runs the event loop, which may delete it.
    connect(dialog, &QDialog::accepted, this, &ReportPrinting::confirmed, Qt::QueuedConnection);
    dialog->open();
}

/// Above the dialog's buttons.
void ReportPrinting::addPageNotes(QPrintDialog &dialog) {
    auto *layout = qobject_cast<QBoxLayout *>(dialog.layout());
    if (layout == nullptr) {
        return;
    }
    auto *choice =
        new QCheckBox(tr("Number the pages, and repeat a group's name where it goes on"), &dialog);
    choice->setObjectName(QStringLiteral("pageNotes"));
    choice->setToolTip(
        tr("\"Page 2 of 7\" in the margin, and the group at the top of each page that goes on "
           "with its events"));
    choice->setChecked(m_hasPageNotes);
    connect(choice, &QAbstractButton::toggled, this,
            [this](bool isChosen) { m_hasPageNotes = isChosen; });
    layout->insertWidget(std::max(layout->count() - 1, 0), choice);
}

void ReportPrinting::print(const ReportTableModel &model, const QList<int> &columns,
                           const std::function<bool()> &areStillThere) {
    bool isCancelled = false;
    ProgressWindow progress({.title = QStringLiteral("Quorbel"),
                             .work = tr("Printing the report"),
                             .accessibleName = tr("Rows printed")},
                            ProgressWindow::Unit::kRows, &m_page, ProgressWindow::Cancel::kOffered);
    ReportPrinter printer(model, columns);
    printer.setPageNotes(m_hasPageNotes);
    printer.setCopies(m_printer->supportsMultipleCopies() ? 1 : m_printer->copyCount());
    const bool isComplete = printer.print(*m_printer, [&](int done, int inAll) {
        isCancelled =
            !progress.update(static_cast<std::uint64_t>(done), static_cast<std::uint64_t>(inAll)) ||
            !areStillThere();
        return !isCancelled;
    });
    // On paper, the pages so far come out; a file is not left behind half done.
    if (isCancelled && printer.printedPages() > 0) {
        QFile::remove(m_printer->outputFileName());
    }
    if (isComplete && printer.printedPages() == 0) {
        tellThatNoneWasPrinted(printer.pageCount());
    }
}

void ReportPrinting::tellThatNoneWasPrinted(int pages) {
    openAlert(
        &m_page,
        {.message = tr("No page was printed"),
         .informativeText =
             pages == 1 ? tr("The report has only one page.")
                        : tr("The report has %1 pages.", nullptr, pages).arg(countText(pages)),
         .checkBox = {},
         .buttons = {}},
        {});
}

}  // namespace quorbel
