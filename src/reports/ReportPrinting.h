#pragma once

#include <QList>
#include <QObject>

#include <functional>
#include <memory>

class QPrintDialog;
class QPrinter;
class QWidget;

namespace quorbel {

class ReportTableModel;

/// Prints a page's report where and how the user says in the print dialog.
class ReportPrinting : public QObject {
    Q_OBJECT

public:
    /// Belongs to the page.
    explicit ReportPrinting(QWidget &page);
    ~ReportPrinting() override;
    ReportPrinting(const ReportPrinting &) = delete;
    ReportPrinting &operator=(const ReportPrinting &) = delete;

    /// Opens the dialog and returns at once; confirmed() follows unless it is cancelled.
    void openPanel();
    /// Prints these columns as was confirmed last. Returns when done, with a progress window over
    /// the page if it takes longer than a moment; that the rows are not there any more ends it.
    void print(const ReportTableModel &model, const QList<int> &columns,
               const std::function<bool()> &areStillThere);

Q_SIGNALS:
    /// After the dialog has closed.
    void confirmed();

private:
    void addPageNotes(QPrintDialog &dialog);
    void tellThatNoneWasPrinted(int pages);

    QWidget &m_page;
    std::unique_ptr<QPrinter> m_printer;  // of the last dialog
    bool m_hasPageNotes = false;
};

}  // namespace quorbel
