#include "actions/ActionCommandEvent.h"

#include "actions/ActionView.h"
#include "common/SettingsDocument.h"
#include "common/Severity.h"
#include "platform/gui/QtText.h"
#include "platform/gui/StoredChoice.h"
#include "ui_ActionCommandEvent.h"

#include <string>

namespace quorbel {

ActionCommandEvent::ActionCommandEvent(QWidget *parent)
    : ActionCommandSheet(&ActionView::setEvent, parent),
      ui(std::make_unique<Ui::ActionCommandEvent>()) {
    ui->setupUi(this);
}

ActionCommandEvent::~ActionCommandEvent() = default;

void ActionCommandEvent::viewDidLoad() {
    setWindowTitle(tr("Quorbel Event"));
    for (const SeverityClass &severity : kSeverityClasses) {
        if (!severity.name.empty()) {
            addStored(*ui->eventType, severity.name);
        }
    }
    connect(ui->onSave, &QAbstractButton::clicked, this, &ActionCommandEvent::onSave);
    connect(ui->onCancel, &QAbstractButton::clicked, this, &ActionCommandEvent::onCancel);
}

void ActionCommandEvent::viewWillAppear() {
    if (const Dictionary *setEvent = reaction()) {
        chooseStored(*ui->eventType, settingText(*setEvent, "Type"));
        if (const auto format = settingText(*setEvent, "Format")) {
            ui->eventFormat->setStoredText(*format);
        }
    }
    ui->eventBlank->setFocus();
}

void ActionCommandEvent::onSave() {
    if (Dictionary *setEvent = reaction()) {
        const std::string format = ui->eventFormat->storedText();
        if (format.empty()) {
            *setEvent = {};
        } else {
            setEvent->set("Type", storedChoice(*ui->eventType));
            setEvent->set("Format", format);
        }
    }
    onCancel();
}

}  // namespace quorbel
