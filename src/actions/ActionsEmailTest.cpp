#include "actions/ActionsEmailTest.h"

#include "actions/TestEmail.h"
#include "actions/ToolsViewActions.h"
#include "common/SettingsDocument.h"
#include "core/AppDelegate.h"
#include "platform/DateFormat.h"
#include "ui_ActionsEmailTest.h"

#include <chrono>
#include <string>
#include <vector>

namespace quorbel {

ActionsEmailTest::ActionsEmailTest(AppDelegate &delegate, QWidget *parent)
    : Sheet(parent), m_delegate(delegate), ui(std::make_unique<Ui::ActionsEmailTest>()) {
    ui->setupUi(this);
}

ActionsEmailTest::~ActionsEmailTest() = default;

void ActionsEmailTest::viewDidLoad() {
    setWindowTitle(tr("Quorbel Test E-mail"));
    connect(ui->onSave, &QAbstractButton::clicked, this, &ActionsEmailTest::onSave);
    connect(ui->onCancel, &QAbstractButton::clicked, this, &ActionsEmailTest::onCancel);
}

void ActionsEmailTest::viewWillAppear() {
    ui->recipientsList->start({});
}

void ActionsEmailTest::onSave() {
    const std::vector<std::string> recipients = ui->recipientsList->recipients();
    if (recipients.empty()) {
        ui->recipientsList->alertNoRecipients();
        return;
    }
    const std::chrono::duration<double> now = std::chrono::system_clock::now().time_since_epoch();
    const std::string date = DateFormat(m_delegate.state.newDateFormat).render(now.count());
    auto *page = dynamic_cast<ToolsViewActions *>(presenter());
    m_delegate.setPipe(
        testEmailCommand(recipients, decodeSettings(AppDelegate::readSettings()), date),
        page != nullptr ? page->awaitEmailAnswer() : CommandSender::AnswerHandler());
    close();
}

void ActionsEmailTest::onCancel() {
    close();
}

}  // namespace quorbel
