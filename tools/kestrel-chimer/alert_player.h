#pragma once
// Plays one sound file, once or endlessly, and reports when it has played or why it cannot.

#include <QObject>
#include <QString>

class QAudioOutput;
class QMediaPlayer;

namespace kestrel::chimer {

class AlertPlayer : public QObject {
    Q_OBJECT
public:
    explicit AlertPlayer(QObject *parent = nullptr);

    // Starts playing; with repeat the file starts over each time it ends.
    void play(const QString &path, bool repeat);
    void stop();

    // True when the machine offers no sound output; playback then goes on without sound.
    [[nodiscard]] static bool noAudioOutput();

signals:
    void playedOnce();                     // end of the file, without repeat
    void failed(const QString &reason);    // the file could not be played

private:
    QMediaPlayer *player_;
    QAudioOutput *output_;
    bool failed_ = false;
};

} // namespace kestrel::chimer
