#pragma once

#include "platform/gui/SoundPlayer.h"

#include <QObject>

class QAbstractButton;
class QLineEdit;

namespace quorbel {

class NoteLabel;

/// Plays the sound that is chosen, at the press of a button, and says why nothing is heard.
class SoundTrial : public QObject {
    Q_OBJECT

public:
    /// The controls outlive the object. `file` holds a path, and is disabled while there are to be
    /// no sounds.
    SoundTrial(QAbstractButton &play, QLineEdit &file, NoteLabel &note, QObject *parent);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void play();
    void follow();
    void say(const QString &path, bool played);

    QAbstractButton &m_play;
    QLineEdit &m_file;
    NoteLabel &m_note;
    SoundPlayer m_player;
};

}  // namespace quorbel
