#include "actions/ActionsEmailServer.h"

#include "common/SettingsDocument.h"
#include "platform/Text.h"
#include "platform/gui/QtText.h"
#include "platform/gui/StoredChoice.h"
#include "ui_ActionsEmailServer.h"

#include <QLineEdit>
#include <QSignalBlocker>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace quorbel {

namespace {

constexpr std::string_view kPortKey = "actionsEmailPort";
constexpr std::string_view kTimeoutKey = "actionsEmailTimeout";
constexpr std::string_view kSecurityKey = "actionsEmailSecurity";
constexpr std::int64_t kDefaultPort = 25;
constexpr std::int64_t kDefaultTimeout = 1;  // minutes

struct TextField {
    std::string_view key;
    QLineEdit *Ui::ActionsEmailServer::*control;
};

// In the order in which they are written.
constexpr std::array kTextFields{
    TextField{"actionsEmailServer", &Ui::ActionsEmailServer::serverName},
    TextField{"actionsEmailSender", &Ui::ActionsEmailServer::serverSender},
    TextField{"actionsEmailUsername", &Ui::ActionsEmailServer::serverUsername},
    TextField{"actionsEmailPassword", &Ui::ActionsEmailServer::serverPassword},
};

/// A stored 0 stands for "not set".
std::int64_t numberOr(const Dictionary &settings, std::string_view key, std::int64_t otherwise) {
    const std::int64_t number = settingInteger(settings, key);
    return number != 0 ? number : otherwise;
}

}  // namespace

ActionsEmailServer::ActionsEmailServer(AppDelegate &delegate, QWidget *parent)
    : Sheet(parent), SettingsEditor(delegate), ui(std::make_unique<Ui::ActionsEmailServer>()) {
    ui->setupUi(this);
}

ActionsEmailServer::~ActionsEmailServer() = default;

void ActionsEmailServer::viewDidLoad() {
    setWindowTitle(tr("Quorbel E-mail Server"));
    translateStored(*ui->serverSecurity);
    connect(ui->timeoutSlider, &QAbstractSlider::valueChanged, this,
            &ActionsEmailServer::timeoutChanged);
    connect(ui->showPassword, &QAbstractButton::clicked, this, &ActionsEmailServer::showPassword);
    connect(ui->onSave, &QAbstractButton::clicked, this, [this] { onSave(); });
    connect(ui->onCancel, &QAbstractButton::clicked, this, &ActionsEmailServer::onCancel);
}

void ActionsEmailServer::viewWillAppear() {
    loadSettings();
    ui->serverBlank->setFocus();
}

void ActionsEmailServer::showSettings(const SettingsCycle &cycle) {
    const Dictionary &settings = cycle.working();
    ui->serverPort->setText(QString::number(numberOr(settings, kPortKey, kDefaultPort)));
    const std::int64_t timeout = numberOr(settings, kTimeoutKey, kDefaultTimeout);
    ui->serverTimeout->setText(QString::number(timeout));
    {
        const QSignalBlocker notAnEdit(ui->timeoutSlider);
        ui->timeoutSlider->setValue(static_cast<int>(std::clamp<std::int64_t>(
            timeout, ui->timeoutSlider->minimum(), ui->timeoutSlider->maximum())));
    }
    for (const TextField &field : kTextFields) {
        if (const auto text = settingText(settings, field.key)) {
            showText(*((*ui).*field.control), toQString(*text));
        }
    }
    chooseStored(*ui->serverSecurity, settingText(settings, kSecurityKey));
}

void ActionsEmailServer::timeoutChanged() {
    ui->serverTimeout->setText(QString::number(ui->timeoutSlider->value()));
}

void ActionsEmailServer::showPassword() {
    ui->serverPassword->setEchoMode(ui->showPassword->isChecked() ? QLineEdit::Normal
                                                                  : QLineEdit::Password);
}

void ActionsEmailServer::takeSettings(SettingsCycle &settings) {
    const auto integer = [](const QLineEdit &field) {
        return integerValue(field.text().toStdString());
    };
    settings.set(kPortKey, integer(*ui->serverPort));
    settings.set(kTimeoutKey, integer(*ui->serverTimeout));
    for (const TextField &field : kTextFields) {
        settings.set(field.key, ((*ui).*field.control)->text().toStdString());
    }
    settings.set(kSecurityKey, storedChoice(*ui->serverSecurity));
}

void ActionsEmailServer::onCancel() {
    close();
}

}  // namespace quorbel
