#pragma once

#include <QObject>
#include <QString>

class QMediaPlayer;

namespace quorbel {

/// Plays sound files. A file that is missing or cannot be played, and a computer without a sound
/// device, give silence. Main thread only; what still plays ends with the object.
class SoundPlayer final : public QObject {
    Q_OBJECT

public:
    /// So many sounds play at the same time; a further one takes the place of the oldest.
    static constexpr qsizetype kMostAtOnce = 4;

    explicit SoundPlayer(QObject *parent = nullptr);

    /// Starts a file and returns at once.
    void play(const QString &path);
    [[nodiscard]] qsizetype playing() const;

Q_SIGNALS:
    /// A file was heard to its end (`played`), or is not played. Told a moment late: the device is
    /// given time to play what it has been handed.
    void finished(const QString &path, bool played);

private:
    void finish(QMediaPlayer *player, const QString &path, bool played);
};

}  // namespace quorbel
