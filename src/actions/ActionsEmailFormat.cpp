#include "actions/ActionsEmailFormat.h"

#include "common/EmailTemplate.h"
#include "common/SettingsDocument.h"
#include "core/AppDelegate.h"
#include "platform/gui/QtText.h"
#include "ui_ActionsEmailFormat.h"

#include <optional>
#include <string>

namespace quorbel {

ActionsEmailFormat::ActionsEmailFormat(AppDelegate &delegate, QWidget *parent)
    : Sheet(parent), m_delegate(delegate), ui(std::make_unique<Ui::ActionsEmailFormat>()) {
    ui->setupUi(this);
}

ActionsEmailFormat::~ActionsEmailFormat() = default;

void ActionsEmailFormat::viewDidLoad() {
    setWindowTitle(QStringLiteral("Quorbel E-mail Format"));
    connect(ui->sendSubject, &QAbstractButton::clicked, this, &ActionsEmailFormat::sendSubject);
    connect(ui->sendBody, &QAbstractButton::clicked, this, &ActionsEmailFormat::sendBody);
    connect(ui->onSave, &QAbstractButton::clicked, this, &ActionsEmailFormat::onSave);
    connect(ui->onCancel, &QAbstractButton::clicked, this, &ActionsEmailFormat::onCancel);
}

void ActionsEmailFormat::viewWillAppear() {
    std::optional<std::string> subject(kDefaultFormatSubject);
    std::optional<std::string> body(kDefaultFormatBody);
    if (m_settings.load(AppDelegate::readSettings())) {
        // Even where there are none: the defaults are for a system without any settings.
        subject = settingText(m_settings.working(), kFormatSubjectKey);
        body = settingText(m_settings.working(), kFormatBodyKey);
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
    ui->textBlank->setFocus();
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

void ActionsEmailFormat::onSave() {
    m_settings.set(kFormatSubjectKey, ui->textSubject->text().toStdString());
    m_settings.set(kFormatBodyKey, ui->textBody->storedText());
    m_delegate.saveSettings(m_settings.working());
    close();
}

void ActionsEmailFormat::onCancel() {
    close();
}

}  // namespace quorbel
