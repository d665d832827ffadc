#include "actions/ActionView.h"

#include "actions/ToolsViewActions.h"
#include "common/SettingsDocument.h"
#include "ui_ActionView.h"

#include <optional>

namespace quorbel {

ActionView::ActionView(const Storyboard &storyboard, QWidget *parent)
    : Sheet(parent), m_storyboard(storyboard), ui(std::make_unique<Ui::ActionView>()) {
    ui->setupUi(this);
}

ActionView::~ActionView() = default;

void ActionView::viewDidLoad() {
    setWindowTitle(tr("Quorbel Action"));
    ui->filterForm->setPrefix(QStringLiteral("action"));
    connect(ui->actionRun, &QAbstractButton::clicked, this, &ActionView::commandRun);
    connect(ui->actionEmail, &QAbstractButton::clicked, this, &ActionView::commandEmail);
    connect(ui->actionEvent, &QAbstractButton::clicked, this, &ActionView::commandEvent);
    connect(ui->actionRunText, &QAbstractButton::clicked, this, &ActionView::commandRunText);
    connect(ui->actionEmailText, &QAbstractButton::clicked, this, &ActionView::commandEmailText);
    connect(ui->actionEventText, &QAbstractButton::clicked, this, &ActionView::commandEventText);
    connect(ui->onSave, &QAbstractButton::clicked, this, &ActionView::onSave);
    connect(ui->onCancel, &QAbstractButton::clicked, this, &ActionView::onCancel);
}

void ActionView::viewWillAppear() {
    const auto *page = dynamic_cast<ToolsViewActions *>(presenter());
    const auto record = page != nullptr ? page->selectedRecord() : std::nullopt;
    if (record) {
        ui->filterForm->showRecord(*record);
    } else if (page != nullptr && page->proposal()) {
        ui->filterForm->showProposal(*page->proposal());
    } else {
        ui->filterForm->showNew(QStringLiteral("New Action"));
    }
    const Dictionary reactions = record.value_or(Dictionary{});
    runCommand = settingDictionary(reactions, "runCommand");
    sendEmail = settingDictionary(reactions, "sendEmail");
    setEvent = settingDictionary(reactions, "setEvent");
    checkReactions();
    ui->thresholdForm->showRecord(reactions);
    if (page != nullptr) {
        ui->actionEffect->follow(*ui->filterForm, page->listedEvents(),
                                 FilterEffect::Kind::kMatches);
    }
    ui->actionBlank->setFocus();
}

void ActionView::checkReactions() {
    ui->actionRun->setChecked(!runCommand.empty());
    ui->actionEmail->setChecked(!sendEmail.empty());
    ui->actionEvent->setChecked(!setEvent.empty());
}

void ActionView::commandRunText() {
    presentSheet(m_storyboard, QStringLiteral("commandRun"), this);
}

void ActionView::commandEmailText() {
    presentSheet(m_storyboard, QStringLiteral("commandEmail"), this);
}

void ActionView::commandEventText() {
    presentSheet(m_storyboard, QStringLiteral("commandEvent"), this);
}

void ActionView::commandRun() {
    if (ui->actionRun->isChecked()) {
        commandRunText();
    } else {
        runCommand = {};
    }
}

void ActionView::commandEmail() {
    if (ui->actionEmail->isChecked()) {
        commandEmailText();
    } else {
        sendEmail = {};
    }
}

void ActionView::commandEvent() {
    if (ui->actionEvent->isChecked()) {
        commandEventText();
    } else {
        setEvent = {};
    }
}

void ActionView::onSave() {
    FilterForm::Record form = ui->filterForm->record();
    if (form.complete) {
        form.fields.set("runCommand", runCommand);
        form.fields.set("sendEmail", sendEmail);
        form.fields.set("setEvent", setEvent);
        ui->thresholdForm->addTo(form.fields);
    }
    if (auto *page = dynamic_cast<ToolsViewActions *>(presenter())) {
        page->storeRecord(form.fields);
    }
    close();
}

void ActionView::onCancel() {
    close();
}

}  // namespace quorbel
