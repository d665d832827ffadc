#include "actions/ActionsEmailFormat.h"

#include "common/EmailTemplate.h"
#include "common/SettingsDocument.h"
#include "platform/gui/QtText.h"
#include "ui_ActionsEmailFormat.h"

#include <optional>
#include <string>

namespace quorbel {

ActionsEmailFormat::ActionsEmailFormat(AppDelegate &delegate, QWidget *parent)
    : Sheet(parent), SettingsEditor(delegate), ui(std::make_unique<Ui::ActionsEmailFormat>()) {
    ui->setupUi(this);
}

ActionsEmailFormat::~ActionsEmailFormat() = default;

void ActionsEmailFormat::viewDidLoad() {
    setWindowTitle(tr("Quorbel E-mail Format"));
    connect(ui->sendSubject, &QAbstractButton::clicked, this, &ActionsEmailFormat::sendSubject);
    connect(ui->sendBody, &QAbstractButton::clicked, this, &ActionsEmailFormat::sendBody);
    connect(ui->onSave, &QAbstractButton::clicked, this, [this] { onSave(); });
    connect(ui->onCancel, &QAbstractButton::clicked, this, &ActionsEmailFormat::onCancel);
}

void ActionsEmailFormat::viewWillAppear() {
    loadSettings();
    ui->textBlank->setFocus();
}

void ActionsEmailFormat::showSettings(const SettingsCycle &settings) {
    std::optional<std::string> subject(kDefaultFormatSubject);
    std::optional<std::string> body(kDefaultFormatBody);
    if (settings.exists()) {
        // Even where there are none: the defaults are for a system without any settings.
        subject = settingText(settings.working(), kFormatSubjectKey);
        body = settingText(settings.working(), kFormatBodyKey);
    }
    if (subject) {
        showText(*ui->textSubject, toQString(*subject));
    }
    if (body) {
        ui->textBody->setStoredText(*body);
    }
    ui->sendSubject->setChecked(subject && !subject->empty());
    ui->sendBody->setChecked(body && !body->empty());
    sendSubject();
    sendBody();
}

void ActionsEmailFormat::viewDidAppear() {
    ui->textBody->scrollToBeginning();
}

void ActionsEmailFormat::sendSubject() {
    const bool send = ui->sendSubject->isChecked();
    ui->textSubject->setEnabled(send);
    if (send) {
        ui->textSubject->setFocus();
    } else {
        ui->textSubject->clear();
    }
}

void ActionsEmailFormat::sendBody() {
    const bool send = ui->sendBody->isChecked();
    ui->textBody->setReadOnly(!send);
    if (send) {
        ui->textBody->setFocus();
    } else {
        ui->textBody->clear();
    }
}

void ActionsEmailFormat::takeSettings(SettingsCycle &settings) {
    settings.set(kFormatSubjectKey, ui->textSubject->text().toStdString());
    settings.set(kFormatBodyKey, ui->textBody->storedText());
}

void ActionsEmailFormat::onCancel() {
    close();
}

}  // namespace quorbel
