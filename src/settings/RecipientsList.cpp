#include "settings/RecipientsList.h"

#include "platform/gui/AlertBox.h"
#include "platform/gui/QtText.h"
#include "ui_RecipientsList.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QStandardItemModel>

namespace quorbel {

RecipientsList::RecipientsList(QWidget *parent)
    : QWidget(parent),
      ui(std::make_unique<Ui::RecipientsList>()),
      m_recipientsController(new QStandardItemModel(0, 1, this)) {
    ui->setupUi(this);
    m_recipientsController->setObjectName(QStringLiteral("recipientsController"));
    m_recipientsController->setHorizontalHeaderLabels({tr("Recipient")});
    ui->recipientsTable->setModel(m_recipientsController);
    ui->recipientsTable->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    ui->recipientEmail->installEventFilter(this);
    connect(ui->recipientEmail, &QLineEdit::textEdited, this,
            &RecipientsList::controlTextDidChange);
    connect(ui->addRecipient, &QAbstractButton::clicked, this, &RecipientsList::addRecipient);
    connect(ui->removeRecipient, &QAbstractButton::clicked, this, &RecipientsList::removeRecipient);
}

RecipientsList::~RecipientsList() = default;

void RecipientsList::start(const std::vector<std::string> &recipients) {
    ui->addRecipient->setEnabled(false);
    m_recipientsController->setRowCount(0);
    for (const std::string &recipient : recipients) {
        appendRow(toQString(recipient));
    }
    ui->recipientsTable->clearSelection();
    ui->recipientBlank->setFocus();
}

std::vector<std::string> RecipientsList::recipients() const {
    std::vector<std::string> result;
    for (int row = 0; row < m_recipientsController->rowCount(); ++row) {
        result.push_back(m_recipientsController->item(row)->text().toStdString());
    }
    return result;
}

void RecipientsList::alertNoRecipients() {
    openAlert(this,
              {.message = tr("No recipients selected"),
               .informativeText = tr("Please add recipients and try again."),
               .checkBox = {},
               .buttons = {}},
              {});
}

bool RecipientsList::eventFilter(QObject *watched, QEvent *event) {
    if (watched == ui->recipientEmail && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if ((key == Qt::Key_Return || key == Qt::Key_Enter) && ui->addRecipient->isEnabled()) {
            addRecipient();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void RecipientsList::controlTextDidChange() {
    const bool empty = ui->recipientEmail->text().isEmpty();
    ui->addRecipient->setEnabled(!empty);
    if (empty) {
        ui->recipientBlank->setFocus();
    }
}

void RecipientsList::addRecipient() {
    appendRow(ui->recipientEmail->text());
    ui->recipientsTable->scrollToBottom();
    ui->recipientBlank->setFocus();
    ui->recipientsTable->clearSelection();
    ui->addRecipient->setEnabled(false);
    ui->recipientEmail->clear();
}

void RecipientsList::removeRecipient() {
    const QModelIndexList selected = ui->recipientsTable->selectionModel()->selectedRows();
    if (selected.isEmpty()) {
        return;
    }
    m_recipientsController->removeRow(selected.first().row());
    ui->recipientsTable->clearSelection();
}

void RecipientsList::appendRow(const QString &recipient) {
    auto *item = new QStandardItem(recipient);
    item->setToolTip(recipient);
    m_recipientsController->appendRow(item);
}

}  // namespace quorbel
