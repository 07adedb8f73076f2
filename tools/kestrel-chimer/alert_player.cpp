#include "alert_player.h"

#include <QAudioDevice>
#include <QAudioOutput>
#include <QMediaDevices>
#include <QMediaPlayer>
#include <QUrl>

namespace kestrel::chimer {

AlertPlayer::AlertPlayer(QObject *parent)
    : QObject(parent), player_(new QMediaPlayer(this)), output_(new QAudioOutput(this))
{
    player_->setAudioOutput(output_);
    connect(player_, &QMediaPlayer::errorOccurred, this, [this](QMediaPlayer::Error error, const QString &text) {
        if (error == QMediaPlayer::NoError || failed_)
            return;
        failed_ = true; // one report: the back end may repeat the same error
        emit failed(text.isEmpty() ? QStringLiteral("unknown playback error") : text);
    });
    connect(player_, &QMediaPlayer::mediaStatusChanged, this, [this](QMediaPlayer::MediaStatus status) {
        if (status == QMediaPlayer::InvalidMedia && !failed_) {
            failed_ = true;
            emit failed(QStringLiteral("the file holds no sound that can be played"));
        } else if (status == QMediaPlayer::EndOfMedia && player_->loops() != QMediaPlayer::Infinite && !failed_) {
            emit playedOnce();
        }
    });
}

void AlertPlayer::play(const QString &path, bool repeat)
{
    failed_ = false;
    player_->setLoops(repeat ? QMediaPlayer::Infinite : QMediaPlayer::Once);
    player_->setSource(QUrl::fromLocalFile(path));
    player_->play();
}

void AlertPlayer::stop()
{
    player_->stop();
}

bool AlertPlayer::noAudioOutput()
{
    return QMediaDevices::audioOutputs().isEmpty();
}

} // namespace kestrel::chimer
