#include "export/ToolsViewExport.h"

#include "common/SettingsDocument.h"
#include "core/AppDelegate.h"
#include "platform/gui/ContentArea.h"
#include "platform/gui/FilePanel.h"
#include "platform/gui/QtText.h"
#include "settings/NumberStepper.h"
#include "ui_ToolsViewExport.h"

#include <QFileInfo>

#include <string_view>

namespace quorbel {

/// What differs between the two exports, beside their controls.
struct ExportKind {
    std::string_view intervalKey;
    std::string_view locationKey;
    const char *panelMessage;
    QStringList extensions;
};

namespace {

constexpr int kOfferedInterval = 5;  // minutes
constexpr int kLeastInterval = 1;
constexpr int kMostInterval = 24 * 60;

const ExportKind &textKind() {
    static const ExportKind kind{
        "textInterval",
        "textLocation",
        QT_TRANSLATE_NOOP("quorbel::ToolsViewExport",
                          "Please select text file location with 'txt' or 'csv' extensions:"),
        {QStringLiteral("txt"), QStringLiteral("csv")}};
    return kind;
}

const ExportKind &databaseKind() {
    static const ExportKind kind{
        "databaseInterval",
        "databaseLocation",
        QT_TRANSLATE_NOOP("quorbel::ToolsViewExport",
                          "Please select database file location with 'db' extension:"),
        {QStringLiteral("db")}};
    return kind;
}

}  // namespace

ToolsViewExport::ToolsViewExport(AppDelegate &delegate, QWidget *parent)
    : SettingsView(delegate, parent), ui(std::make_unique<Ui::ToolsViewExport>()) {
    ui->setupUi(this);
    m_text = {.kind = &textKind(),
              .box = ui->exportText,
              .interval = new NumberStepper(ui->textInterval, ui->textIntervalStepper,
                                            kLeastInterval, kMostInterval, this),
              .location = ui->textLocation,
              .browse = ui->textBrowse,
              .workingLocation = {}};
    m_database = {.kind = &databaseKind(),
                  .box = ui->exportDatabase,
                  .interval = new NumberStepper(ui->databaseInterval, ui->databaseIntervalStepper,
                                                kLeastInterval, kMostInterval, this),
                  .location = ui->databaseLocation,
                  .browse = ui->databaseBrowse,
                  .workingLocation = {}};
    ui->textResult->follow(delegate.service, "text", delegate.state.newDateFormat);
    ui->databaseResult->follow(delegate.service, "database", delegate.state.newDateFormat);
}

ToolsViewExport::~ToolsViewExport() = default;

void ToolsViewExport::viewDidLoad() {
    setUpPage(*ui->saveButton, *ui->onCancel);
    ContentArea::wrap(*this);
    connectControls(m_text);
    connectControls(m_database);
    connect(ui->exportText, &QAbstractButton::clicked, this,
            [this] { exportText(ui->exportText); });
    connect(ui->exportDatabase, &QAbstractButton::clicked, this,
            [this] { exportDatabase(ui->exportDatabase); });
    connect(ui->textBrowse, &QAbstractButton::clicked, this, &ToolsViewExport::browseText);
    connect(ui->databaseBrowse, &QAbstractButton::clicked, this, &ToolsViewExport::browseDatabase);
}

void ToolsViewExport::connectControls(Export &entry) {
    connect(entry.interval, &NumberStepper::edited, this, [this, &entry](std::int64_t value) {
        entry.workingInterval = value;
        exportInterval();
    });
    connect(entry.location, &QLineEdit::textEdited, this,
            [this, &entry] { controlTextDidChange(entry); });
}

void ToolsViewExport::showSettings(const SettingsCycle &settings) {
    load(m_text, settings.working());
    exportText();
    load(m_database, settings.working());
    exportDatabase();
}

void ToolsViewExport::takeSettings(SettingsCycle &settings) {
    settings.set(m_text.kind->intervalKey, m_text.workingInterval);
    settings.set(m_database.kind->intervalKey, m_database.workingInterval);
    settings.setText(m_text.kind->locationKey, m_text.workingLocation);
    settings.setText(m_database.kind->locationKey, m_database.workingLocation);
}

void ToolsViewExport::viewDidAppear() {
    ui->exportText->setFocus();
}

void ToolsViewExport::load(Export &entry, const Dictionary &settings) {
    entry.workingInterval = settingInteger(settings, entry.kind->intervalKey);
    entry.workingLocation = settingText(settings, entry.kind->locationKey);
    const bool on = entry.workingInterval != 0 && !entry.workingLocation.value_or("").empty();
    entry.box->setChecked(on);
    if (on) {
        entry.interval->setValue(entry.workingInterval);
    } else {
        entry.interval->clear();
    }
    setLocation(entry, on ? toQString(*entry.workingLocation) : QString());
}

void ToolsViewExport::exportText(const QObject *sender) {
    followTextBox(m_text, sender);
}

void ToolsViewExport::exportDatabase(const QObject *sender) {
    followTextBox(m_database, sender);
}

void ToolsViewExport::followTextBox(Export &entry, const QObject *sender) {
    const bool on = ui->exportText->isChecked();
    entry.interval->setEnabled(on);
    entry.location->setEnabled(on);
    entry.browse->setEnabled(on);
    if (!on) {
        entry.workingInterval = 0;
        entry.interval->clear();
        setLocation(entry, {});
    } else if (sender != nullptr) {
        entry.workingInterval = kOfferedInterval;
        entry.interval->setValue(kOfferedInterval);
    }
    if (sender != nullptr) {
        enableSave();
    }
}

void ToolsViewExport::browseText() {
    openPanel(m_text);
}

void ToolsViewExport::browseDatabase() {
    openPanel(m_database);
}

void ToolsViewExport::openPanel(Export &entry) {
    const QString location = toQString(entry.workingLocation.value_or(""));
    openFilePanel(this,
                  {.message = tr(entry.kind->panelMessage),
                   .extensions = entry.kind->extensions,
                   .folder = location.isEmpty() ? QString() : QFileInfo(location).path(),
                   .name = location.isEmpty()
                               ? QStringLiteral("Quorbel events.") + entry.kind->extensions.first()
                               : QFileInfo(location).fileName(),
                   .save = true},
                  [this, &entry](const QString &path) {
                      entry.workingLocation = path.toStdString();
                      setLocation(entry, path);
                      enableSave();
                  });
}

void ToolsViewExport::setLocation(Export &entry, const QString &path) {
    showText(*entry.location, path);
    // A location that is kept although the field is empty shows through.
    entry.location->setPlaceholderText(toQString(entry.workingLocation.value_or("")));
}

void ToolsViewExport::exportInterval() {
    enableSave();
}

void ToolsViewExport::controlTextDidChange(Export &entry) {
    entry.workingLocation = entry.location->text().toStdString();
    entry.location->setPlaceholderText({});
    enableSave();
}

}  // namespace quorbel
