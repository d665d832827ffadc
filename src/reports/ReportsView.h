#pragma once

#include "platform/gui/Page.h"
#include "reports/ReportEngine.h"

#include <QString>

#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

class QPrinter;

namespace Ui {
class ReportsView;
}

namespace quorbel {

class AppDelegate;
class ColumnMemory;
class ReportTableModel;

/// The reports page: the stored events, grouped by one of their fields.
class ReportsView : public Page {
    Q_OBJECT

public:
    /// `delegate` outlives the page.
    explicit ReportsView(AppDelegate &delegate, QWidget *parent = nullptr);
    ~ReportsView() override;

    void viewDidLoad() override;
    void viewWillAppear() override;
    void viewDidAppear() override;

    void reportNameSelected();
    void reportFilterSelected();
    /// Reads the chosen files and shows their events in groups. The user may cancel it when it
    /// takes longer than a moment; then the table is empty.
    void displayReport();
    /// Expands or collapses the selected group.
    void tableClicked();
    void exportResults();
    void printResults();

private:
    void connectControls();
    void choiceMade();
    [[nodiscard]] std::optional<ReportKind> chosenKind() const;
    [[nodiscard]] std::vector<std::filesystem::path> chosenFiles() const;
    void showColumns(std::optional<ReportKind> kind);
    [[nodiscard]] int selectedRow() const;
    void writeRows(const QString &path);
    void print();

    AppDelegate &m_delegate;
    std::unique_ptr<ReportTableModel> m_model;
    std::unique_ptr<Ui::ReportsView> ui;
    ColumnMemory *m_columnMemory = nullptr;  // the table's
    std::unique_ptr<QPrinter> m_printer;     // of the last print dialog
    unsigned m_resets = 0;                   // how often the page was emptied
};

}  // namespace quorbel
