#include "actions/ActionCommandEmail.h"

#include "actions/ActionView.h"
#include "common/SettingsDocument.h"
#include "ui_ActionCommandEmail.h"

#include <string>
#include <vector>

namespace quorbel {

ActionCommandEmail::ActionCommandEmail(QWidget *parent)
    : ActionCommandSheet(&ActionView::sendEmail, parent),
      ui(std::make_unique<Ui::ActionCommandEmail>()) {
    ui->setupUi(this);
}

ActionCommandEmail::~ActionCommandEmail() = default;

void ActionCommandEmail::viewDidLoad() {
    setWindowTitle(tr("Quorbel E-mail"));
    connect(ui->onSave, &QAbstractButton::clicked, this, &ActionCommandEmail::onSave);
    connect(ui->onCancel, &QAbstractButton::clicked, this, &ActionCommandEmail::onCancel);
}

void ActionCommandEmail::viewWillAppear() {
    const Dictionary *sendEmail = reaction();
    ui->recipientsList->start(sendEmail != nullptr ? settingTexts(*sendEmail, "Recipients")
                                                   : std::vector<std::string>{});
}

void ActionCommandEmail::onSave() {
    const std::vector<std::string> recipients = ui->recipientsList->recipients();
    if (recipients.empty()) {
        ui->recipientsList->alertNoRecipients();
        return;
    }
    if (Dictionary *sendEmail = reaction()) {
        sendEmail->set("Recipients", Array(recipients.begin(), recipients.end()));
    }
    onCancel();
}

}  // namespace quorbel
