#pragma once

#include "settings/SettingsView.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

class QCheckBox;
class QLineEdit;
class QPushButton;

namespace Ui {
class ToolsViewExport;
}

namespace quorbel {

class NumberStepper;
struct ExportKind;

/// The export page: whether the service writes the events to a text file and to a database file,
/// how often, and where.
class ToolsViewExport : public SettingsView {
    Q_OBJECT

public:
    /// `delegate` outlives the page.
    explicit ToolsViewExport(AppDelegate &delegate, QWidget *parent = nullptr);
    ~ToolsViewExport() override;

    void viewDidLoad() override;
    void viewDidAppear() override;

    // The two check boxes. Without a sender they only bring the controls in line. Both look at the
    // text check box: the database export's controls follow it on purpose.
    void exportText(const QObject *sender = nullptr);
    void exportDatabase(const QObject *sender = nullptr);
    void browseText();
    void browseDatabase();
    void exportInterval();

protected:
    void showSettings(const SettingsCycle &settings) override;
    void takeSettings(SettingsCycle &settings) override;

private:
    /// One of the two exports: its controls and the working values that are saved.
    struct Export {
        const ExportKind *kind = nullptr;
        QCheckBox *box = nullptr;
        NumberStepper *interval = nullptr;
        QLineEdit *location = nullptr;
        QPushButton *browse = nullptr;
        std::int64_t workingInterval = 0;
        std::optional<std::string> workingLocation;
    };

    void connectControls(Export &entry);
    static void load(Export &entry, const Dictionary &settings);
    void followTextBox(Export &entry, const QObject *sender);
    void openPanel(Export &entry);
    static void setLocation(Export &entry, const QString &path);
    void controlTextDidChange(Export &entry);

    std::unique_ptr<Ui::ToolsViewExport> ui;
    Export m_text;
    Export m_database;
};

}  // namespace quorbel
