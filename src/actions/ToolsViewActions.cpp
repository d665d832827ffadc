#include "actions/ToolsViewActions.h"

#include "common/SettingsDocument.h"
#include "core/AppDelegate.h"
#include "platform/gui/ContentArea.h"
#include "platform/gui/Sheet.h"
#include "settings/RecordList.h"
#include "settings/RecordTableModel.h"
#include "ui_ToolsViewActions.h"

#include <QStringList>

#include <array>
#include <string_view>
#include <utility>

namespace quorbel {

namespace {

constexpr std::string_view kActionsKey = "actionsArray";
constexpr std::array kColumnWidths = {190, 150, 86, 116, 160};

/// Which reactions of an action are on.
QString reactions(const Dictionary &record) {
    constexpr std::array<std::pair<std::string_view, const char *>, 3> kWords{
        {{"runCommand", QT_TRANSLATE_NOOP("quorbel::ToolsViewActions", "Command")},
         {"sendEmail", QT_TRANSLATE_NOOP("quorbel::ToolsViewActions", "E-mail")},
         {"setEvent", QT_TRANSLATE_NOOP("quorbel::ToolsViewActions", "Event")}}};
    QStringList words;
    for (const auto &[key, word] : kWords) {
        if (!settingDictionary(record, key).empty()) {
            words += ToolsViewActions::tr(word);
        }
    }
    return words.join(QStringLiteral(", "));
}

bool areEqualActions(const Value &left, const Value &right) {
    return left == right;
}

}  // namespace

ToolsViewActions::ToolsViewActions(AppDelegate &delegate, const Storyboard &storyboard,
                                   QWidget *parent)
    : SettingsView(delegate, parent),
      m_storyboard(storyboard),
      ui(std::make_unique<Ui::ToolsViewActions>()) {
    ui->setupUi(this);
    auto *controller = new RecordTableModel(this);
    controller->setObjectName(QStringLiteral("actionsController"));
    controller->setLastColumn(tr("Reactions"), &reactions);
    m_actions = new RecordList({.table = ui->actionsTable,
                                .edit = ui->actionsEdit,
                                .remove = ui->actionsRemove,
                                .controller = controller,
                                .working = &m_actionsArray,
                                .areEqual = &areEqualActions,
                                .columnWidths = kColumnWidths},
                               this);
    ui->actionResults->follow(delegate.service, *controller, delegate.state.newDateFormat);
}

ToolsViewActions::~ToolsViewActions() = default;

void ToolsViewActions::viewDidLoad() {
    setUpPage(*ui->saveButton, *ui->onCancel);
    ContentArea::wrap(*this);
    ui->actionsTable->setHint(
        tr("No actions yet.\nAdd one to run a command, send an e-mail or set an event "
           "when certain events arrive."));
    for (QAbstractButton *button : {ui->automaticActionsAdd, ui->actionsEdit}) {
        connect(button, &QAbstractButton::clicked, this,
                [this, button] { automaticActions(*button); });
    }
    connect(m_actions, &RecordList::clicked, this, &ToolsViewActions::automaticActionsTable);
    connect(m_actions, &RecordList::editRequested, this,
            [this] { automaticActions(*ui->actionsEdit); });
    connect(ui->actionsRemove, &QAbstractButton::clicked, this, &ToolsViewActions::removeActions);
    connect(ui->emailServer, &QAbstractButton::clicked, this, &ToolsViewActions::emailServer);
    connect(ui->emailFormat, &QAbstractButton::clicked, this, &ToolsViewActions::emailFormat);
    connect(ui->emailTest, &QAbstractButton::clicked, this, &ToolsViewActions::emailTest);
}

void ToolsViewActions::showSettings(const SettingsCycle &settings) {
    m_actionsArray = settingArray(settings.working(), kActionsKey);
    m_actions->load();
}

void ToolsViewActions::takeSettings(SettingsCycle &settings) {
    settings.set(kActionsKey, m_actionsArray);
}

void ToolsViewActions::viewDidAppear() {
    ui->actionsTable->setFocus();
}

void ToolsViewActions::automaticActionsTable() {
    m_actions->followSelection();
}

void ToolsViewActions::automaticActions(const QAbstractButton &sender) {
    if (&sender == ui->automaticActionsAdd) {
        m_actions->deselect();
    }
    present(QStringLiteral("actionView"));
}

void ToolsViewActions::propose(const Dictionary &record) {
    m_actions->deselect();
    m_proposal = record;
    present(QStringLiteral("actionView"));
    m_proposal.reset();
}

void ToolsViewActions::removeActions() {
    if (m_actions->removeSelected()) {
        enableSave();
    }
}

void ToolsViewActions::emailServer() {
    present(QStringLiteral("emailServer"));
}

void ToolsViewActions::emailFormat() {
    present(QStringLiteral("emailFormat"));
}

void ToolsViewActions::emailTest() {
    present(QStringLiteral("emailTest"));
}

void ToolsViewActions::present(const QString &sheet) {
    presentSheet(m_storyboard, sheet, this);
}

std::optional<Dictionary> ToolsViewActions::selectedRecord() const {
    return m_actions->selectedRecord();
}

EventList &ToolsViewActions::listedEvents() const {
    return delegate().events;
}

void ToolsViewActions::storeRecord(const Dictionary &record) {
    m_actions->store(record);
    enableSave();
}

CommandSender::AnswerHandler ToolsViewActions::awaitEmailAnswer() {
    return ui->emailAnswer->await();
}

}  // namespace quorbel
