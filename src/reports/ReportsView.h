#pragma once

#include "platform/gui/Page.h"
#include "reports/ReportEngine.h"

#include <QString>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace Ui {
class ReportsView;
}

namespace quorbel {

class AppDelegate;
class ColumnMemory;
class ReportPrinting;
class ReportTableModel;
class Storyboard;

/// The reports page: the stored events, grouped by one of their fields.
class ReportsView : public Page {
    Q_OBJECT

public:
    /// `delegate` and `storyboard` outlive the page.
    ReportsView(AppDelegate &delegate, const Storyboard &storyboard, QWidget *parent = nullptr);
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
    void expandAll();
    void collapseAll();
    /// Whether the table has the largest groups first, for this and all further reports. Files and
    /// pages have them in the order in which they first appear all the same.
    void setLargestFirst(bool largestFirst);
    /// Opens the details of the selected event; nothing for a group.
    void openDetails();
    void exportResults();
    void printResults();

private:
    void connectControls();
    void connectKeys();
    void choiceMade();
    [[nodiscard]] std::optional<ReportKind> chosenKind() const;
    [[nodiscard]] std::vector<std::filesystem::path> chosenFiles() const;
    void showColumns(std::optional<ReportKind> kind);
    void showReport(std::unique_ptr<const ReportEngine> report);
    [[nodiscard]] int selectedRow() const;
    void openPressed();
    void expandPressed();
    void collapsePressed();
    void goTo(int row);
    void changeRows(const std::function<void()> &change);
    [[nodiscard]] std::shared_ptr<const ReportTableModel> modelInOrder() const;
    void writeRows(const QString &path);
    void print();

    AppDelegate &m_delegate;
    const Storyboard &m_storyboard;
    std::unique_ptr<ReportTableModel> m_model;
    std::unique_ptr<Ui::ReportsView> ui;
    ColumnMemory *m_columnMemory = nullptr;  // the table's
    std::unique_ptr<ReportPrinting> m_printing;
    unsigned m_resets = 0;  // how often the page was emptied
};

}  // namespace quorbel
