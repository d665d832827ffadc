#include "settings/SettingsView.h"

#include "core/AppDelegate.h"

#include <QAbstractButton>
#include <QKeySequence>

namespace quorbel {

SettingsView::SettingsView(AppDelegate &delegate, QWidget *parent)
    : Page(parent), SettingsEditor(delegate) {}

void SettingsView::setUpPage(QAbstractButton &save, QAbstractButton &cancel) {
    setWhiteBackground();
    m_saveButton = &save;
    save.setShortcut(QKeySequence::Save);
    connect(&save, &QAbstractButton::clicked, this, [this] { onSave(); });
    connect(&cancel, &QAbstractButton::clicked, this, &SettingsView::onCancel);
}

void SettingsView::viewWillAppear() {
    m_saveButton->setEnabled(false);
    loadSettings();
}

void SettingsView::enableSave() {
    m_saveButton->setEnabled(true);
}

void SettingsView::onCancel() {
    if (MainWindowLink *window = delegate().mainWindow()) {
        window->selectTab(parentTab);
    }
}

}  // namespace quorbel
