#include "sound_file_check.h"

#include <QFile>
#include <QFileInfo>

namespace kestrel::chimer {

namespace {

// An MPEG audio frame header: 11 sync bits, then a version, layer, bit rate and sample
// rate that are not the reserved values. Checking them keeps text files that happen to
// start with 0xFF from passing.
bool isMpegFrameHeader(QByteArrayView h)
{
    if (h.size() < 4)
        return false;
    const auto b = [&h](int i) { return static_cast<unsigned char>(h[i]); };
    const bool sync = b(0) == 0xFF && (b(1) & 0xE0) == 0xE0;
    const int version = (b(1) >> 3) & 0x3;  // 1 is reserved
    const int layer = (b(1) >> 1) & 0x3;    // 0 is reserved
    const int bitRate = (b(2) >> 4) & 0xF;  // 15 is invalid
    const int sampleRate = (b(2) >> 2) & 0x3; // 3 is reserved
    return sync && version != 1 && layer != 0 && bitRate != 15 && sampleRate != 3;
}

} // namespace

SoundFormat SniffSoundFormat(QByteArrayView head)
{
    if (head.size() >= 12 && head.first(4) == "RIFF" && head.sliced(8, 4) == "WAVE")
        return SoundFormat::Wav;
    // An ID3v2 tag usually comes before the first frame of an MP3 file.
    if (head.size() >= 3 && head.first(3) == "ID3")
        return SoundFormat::Mp3;
    if (isMpegFrameHeader(head))
        return SoundFormat::Mp3;
    return SoundFormat::Unknown;
}

QString SoundFileProblem(const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return QStringLiteral("no such file: %1").arg(path);
    if (!info.isFile())
        return QStringLiteral("not a regular file: %1").arg(path);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("cannot read %1: %2").arg(path, file.errorString());
    const QByteArray head = file.read(12);
    if (head.isEmpty())
        return QStringLiteral("the file is empty: %1").arg(path);
    if (SniffSoundFormat(head) == SoundFormat::Unknown)
        return QStringLiteral("not a WAV or MP3 file: %1").arg(path);
    return {};
}

} // namespace kestrel::chimer
