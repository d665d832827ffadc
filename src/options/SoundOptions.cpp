#include "options/SoundOptions.h"

#include "options/OptionsValues.h"
#include "options/SeverityBoxes.h"
#include "options/SoundTrial.h"
#include "platform/gui/FilePanel.h"
#include "platform/gui/QtText.h"

#include <QCheckBox>
#include <QPushButton>

namespace quorbel {

SoundOptions::SoundOptions(const Controls &controls, QWidget *page)
    : OptionsGroup(page), m(controls), m_page(page), m_boxes(new SeverityBoxes(m.boxes, this)) {
    connect(m.popupEventsPlay, &QAbstractButton::clicked, this,
            [this] { popupSound(m.popupEventsPlay); });
    connect(m.popupSoundFile, &QLineEdit::textEdited, this, &SoundOptions::takeSound);
    connect(m.popupSoundBrowse, &QAbstractButton::clicked, this, &SoundOptions::popupSoundBrowse);
    new SoundTrial(*m.popupSoundTry, *m.popupSoundFile, *m.popupSoundNote, this);
    connect(m_boxes, &SeverityBoxes::changed, this, &SoundOptions::changed);
}

void SoundOptions::showValues(const OptionsValues &values) {
    m_popupSound = values.popupSound;
    const std::string path = m_popupSound.value_or(std::string());
    m.popupEventsPlay->setChecked(!path.empty());
    showText(*m.popupSoundFile, toQString(path));
    m_boxes->setLabels(values.popupPlayArray);
    popupSound();
}

void SoundOptions::takeValues(OptionsValues &values) const {
    values.popupSound = m_popupSound;
    values.popupPlayArray = m_boxes->labels();
}

QWidgetList SoundOptions::tabOrder() const {
    return QWidgetList{m.popupEventsPlay, m.popupSoundFile, m.popupSoundBrowse, m.popupSoundTry} +
           m_boxes->tabOrder();
}

void SoundOptions::popupSound(const QObject *sender) {
    const bool isOn = m.popupEventsPlay->isChecked();
    m.popupSoundFile->setEnabled(isOn);
    m.popupSoundBrowse->setEnabled(isOn);
    m_boxes->setEnabled(isOn);
    if (!isOn) {
        // The path stays in the settings: it is there again the next time the page is shown.
        m.popupSoundFile->clear();
        m_boxes->uncheckAll();
    }
    if (sender == nullptr) {
        return;
    }
    if (isOn) {
        m_boxes->checkAll();
    }
    Q_EMIT changed();
}

void SoundOptions::popupEventsPlay(std::size_t severity) {
    m_boxes->take(severity);
}

void SoundOptions::popupSoundBrowse() {
    openFilePanel(m_page,
                  {.message = tr("Please select sound file name with 'aif' extension:"),
                   .extensions = {QStringLiteral("aiff"), QStringLiteral("aif")},
                   .folder = QStringLiteral("/System/Library/Sounds")},
                  [this](const QString &path) {
                      showText(*m.popupSoundFile, path);
                      takeSound(path);
                  });
}

void SoundOptions::takeSound(const QString &path) {
    m_popupSound = path.toStdString();
    Q_EMIT changed();
}

}  // namespace quorbel
