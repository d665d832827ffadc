#include "platform/gui/SoundPlayer.h"

#include <QAudioDevice>
#include <QAudioOutput>
#include <QFileInfo>
#include <QMediaDevices>
#include <QMediaPlayer>
#include <QUrl>

namespace quorbel {

SoundPlayer::SoundPlayer(QObject *parent) : QObject(parent) {
    // Qt's other backend crashes where GStreamer's own plugins are not all installed (Qt 6.4).
    if (!qEnvironmentVariableIsSet("QT_MEDIA_BACKEND")) {
        qputenv("QT_MEDIA_BACKEND", "ffmpeg");
    }
}

void SoundPlayer::play(const QString &path) {
    // Opening anything but a file, a pipe for one, can take for ever. Without a device the backend
    // crashes or plays without end (Qt 6.4).
    if (!QFileInfo(path).isFile() || QMediaDevices::defaultAudioOutput().isNull()) {
        Q_EMIT finished(path, false);
        return;
    }
    const auto players = findChildren<QMediaPlayer *>(QString(), Qt::FindDirectChildrenOnly);
    if (players.size() >= kMostAtOnce) {
        delete players.first();
    }
    auto *player = new QMediaPlayer(this);
    player->setAudioOutput(new QAudioOutput(player));
    connect(player, &QMediaPlayer::mediaStatusChanged, this,
            [this, player](QMediaPlayer::MediaStatus status) {
                if (status == QMediaPlayer::EndOfMedia || status == QMediaPlayer::InvalidMedia) {
                    finish(player, status == QMediaPlayer::EndOfMedia);
                }
            });
    connect(player, &QMediaPlayer::errorOccurred, this, [this, player] { finish(player, false); });
    player->setSource(QUrl::fromLocalFile(path));
    player->play();
}

qsizetype SoundPlayer::playing() const {
    return findChildren<QMediaPlayer *>(QString(), Qt::FindDirectChildrenOnly).size();
}

void SoundPlayer::finish(QMediaPlayer *player, bool played) {
    const QString path = player->source().toLocalFile();
    player->disconnect(this);
    player->deleteLater();
    Q_EMIT finished(path, played);
}

}  // namespace quorbel
