#include "options/SoundTrial.h"

#include "platform/gui/NoteLabel.h"

#include <QAbstractButton>
#include <QEvent>
#include <QFileInfo>
#include <QLineEdit>

namespace quorbel {

SoundTrial::SoundTrial(QAbstractButton &play, QLineEdit &file, NoteLabel &note, QObject *parent)
    : QObject(parent), m_play(play), m_file(file), m_note(note), m_player(this) {
    connect(&m_play, &QAbstractButton::clicked, this, &SoundTrial::play);
    connect(&m_file, &QLineEdit::textChanged, this, &SoundTrial::follow);
    connect(&m_player, &SoundPlayer::finished, this, &SoundTrial::say);
    m_file.installEventFilter(this);
    follow();
}

bool SoundTrial::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::EnabledChange) {
        follow();
    }
    return QObject::eventFilter(watched, event);
}

void SoundTrial::follow() {
    m_play.setEnabled(m_file.isEnabled() && !m_file.text().isEmpty());
    m_note.hide();
}

void SoundTrial::play() {
    m_note.hide();
    m_player.play(m_file.text());
}

void SoundTrial::say(const QString &path, bool played) {
    // Another file may have been chosen meanwhile.
    if (played || path != m_file.text()) {
        return;
    }
    m_note.say(QFileInfo(path).isFile()
                   ? tr("It cannot be played: it is no sound file, or there is no sound device")
                   : tr("There is no such file: no sound will be heard"),
               true);
    m_note.show();
}

}  // namespace quorbel
