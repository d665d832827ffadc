#include "actions/ActionCommandRun.h"

#include "actions/ActionView.h"
#include "common/SettingsDocument.h"
#include "platform/gui/FilePanel.h"
#include "platform/gui/QtText.h"
#include "ui_ActionCommandRun.h"

namespace quorbel {

ActionCommandRun::ActionCommandRun(QWidget *parent)
    : ActionCommandSheet(&ActionView::runCommand, parent),
      ui(std::make_unique<Ui::ActionCommandRun>()) {
    ui->setupUi(this);
}

ActionCommandRun::~ActionCommandRun() = default;

void ActionCommandRun::viewDidLoad() {
    setWindowTitle(tr("Quorbel Command"));
    connect(ui->browseCommand, &QAbstractButton::clicked, this, &ActionCommandRun::browseCommand);
    connect(ui->onSave, &QAbstractButton::clicked, this, &ActionCommandRun::onSave);
    connect(ui->onCancel, &QAbstractButton::clicked, this, &ActionCommandRun::onCancel);
}

void ActionCommandRun::viewWillAppear() {
    if (const Dictionary *runCommand = reaction()) {
        if (const auto command = settingText(*runCommand, "Command")) {
            showText(*ui->taskCommand, toQString(*command));
        }
        if (const auto arguments = settingText(*runCommand, "Arguments")) {
            showText(*ui->taskArguments, toQString(*arguments));
        }
        if (const auto environment = settingText(*runCommand, "Environment")) {
            ui->taskEnvironment->setStoredText(*environment);
        }
    }
    ui->taskBlank->setFocus();
}

void ActionCommandRun::viewDidAppear() {
    ui->taskEnvironment->scrollToBeginning();
}

void ActionCommandRun::browseCommand() {
    openFilePanel(this,
                  {.message = tr("Please select command file path:"),
                   .extensions = {},
                   .folder = QStringLiteral("/usr/bin"),
                   .save = false},
                  [this](const QString &path) { showText(*ui->taskCommand, path); });
}

void ActionCommandRun::onSave() {
    if (Dictionary *runCommand = reaction()) {
        if (ui->taskCommand->text().isEmpty()) {
            *runCommand = {};
        } else {
            runCommand->set("Command", ui->taskCommand->text().toStdString());
            runCommand->set("Arguments", ui->taskArguments->text().toStdString());
            runCommand->set("Environment", ui->taskEnvironment->storedText());
        }
    }
    onCancel();
}

}  // namespace quorbel
