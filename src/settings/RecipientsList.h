#pragma once

#include <QWidget>

#include <memory>
#include <string>
#include <vector>

class QStandardItemModel;

namespace Ui {
class RecipientsList;
}

namespace quorbel {

/// A list of e-mail addresses with a field to add one and a link to remove the selected one. Any
/// text is taken as an address, and the same one may stand twice. Its controls: "recipientEmail",
/// "addRecipient", "removeRecipient", "recipientsTable", "recipientBlank".
class RecipientsList : public QWidget {
    Q_OBJECT

public:
    explicit RecipientsList(QWidget *parent = nullptr);
    ~RecipientsList() override;

    /// Shows these, none selected, with nothing to add and the focus in no field.
    void start(const std::vector<std::string> &recipients);
    [[nodiscard]] std::vector<std::string> recipients() const;

    /// Says over this window that there are no recipients.
    void alertNoRecipients();

protected:
    /// Return in the address field adds the address instead of closing the sheet.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void controlTextDidChange();
    void addRecipient();
    void removeRecipient();
    void appendRow(const QString &recipient);

    std::unique_ptr<Ui::RecipientsList> ui;
    QStandardItemModel *m_recipientsController;
};

}  // namespace quorbel
