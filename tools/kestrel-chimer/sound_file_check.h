#pragma once
// Checks, before any window opens, that a file is there, can be read and holds a sound the
// chimer plays: a RIFF WAVE file or an MPEG audio (MP3) file. Decoding problems the check
// cannot see show up later, in the window.

#include <QByteArrayView>
#include <QString>

namespace kestrel::chimer {

enum class SoundFormat { Unknown, Wav, Mp3 };

// The format the first bytes of a file announce (12 bytes are enough).
[[nodiscard]] SoundFormat SniffSoundFormat(QByteArrayView head);

// Empty when the file can be handed to the player; otherwise why not, naming the file.
[[nodiscard]] QString SoundFileProblem(const QString &path);

} // namespace kestrel::chimer
