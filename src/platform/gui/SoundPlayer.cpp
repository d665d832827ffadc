#include "platform/gui/SoundPlayer.h"

#include <QAudioDevice>
#include <QAudioOutput>
#include <QFile>
#include <QFileInfo>
#include <QMediaDevices>
#include <QMediaPlayer>
#include <QTimer>

#include <chrono>

namespace quorbel {

namespace {

/// A file ends when its last samples have been handed to the device, which goes with the player:
/// so long it has to play them.
constexpr std::chrono::milliseconds kDrainTime{2000};

}  // namespace

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
    // Handed over open: the backend takes a path's characters for Latin-1 (Qt 6.4).
    auto *file = new QFile(path, player);
    if (!file->open(QIODevice::ReadOnly)) {
        finish(player, path, false);
        return;
    }
    player->setAudioOutput(new QAudioOutput(player));
    connect(player, &QMediaPlayer::mediaStatusChanged, this,
            [this, player, path](QMediaPlayer::MediaStatus status) {
                if (status == QMediaPlayer::EndOfMedia) {
                    QTimer::singleShot(kDrainTime, player,
                                       [this, player, path] { finish(player, path, true); });
                } else if (status == QMediaPlayer::InvalidMedia) {
                    finish(player, path, false);
                }
            });
    connect(player, &QMediaPlayer::errorOccurred, this,
            [this, player, path] { finish(player, path, false); });
    player->setSourceDevice(file);
    player->play();
}

qsizetype SoundPlayer::playing() const {
    return findChildren<QMediaPlayer *>(QString(), Qt::FindDirectChildrenOnly).size();
}

void SoundPlayer::finish(QMediaPlayer *player, const QString &path, bool played) {
    player->disconnect(this);
    player->deleteLater();
    Q_EMIT finished(path, played);
}

}  // namespace quorbel
