// What passes the check before the window opens: WAV and MP3 headers, nothing else,
// and files that are missing, empty or no files at all, each named. (A file that cannot
// be read is not among them: every machine of the project runs the tests as root.)

#include <gtest/gtest.h>

#include <QByteArray>
#include <filesystem>

#include "sound_file_check.h"
#include "support/temp_dir.h"
#include "wav_bytes.h"

using namespace kestrel::chimer;
namespace test = kestrel::test;

namespace {

QByteArray bytes(std::initializer_list<int> values)
{
    QByteArray b;
    for (int v : values)
        b += static_cast<char>(v);
    return b;
}

// The whole literal, NUL bytes included.
template <std::size_t N>
QByteArray raw(const char (&text)[N])
{
    return QByteArray(text, N - 1);
}

} // namespace

TEST(SoundFileCheck, SniffsWavAndMp3Headers)
{
    EXPECT_EQ(SniffSoundFormat(QByteArray::fromStdString(test::SilentWav(0.01, 8000))), SoundFormat::Wav);
    EXPECT_EQ(SniffSoundFormat(raw("ID3\x04\x00")), SoundFormat::Mp3);
    // MPEG-1 layer III, 128 kbit/s, 44.1 kHz; MPEG-2 layer III; MPEG-2.5 layer III.
    EXPECT_EQ(SniffSoundFormat(bytes({0xFF, 0xFB, 0x90, 0x64})), SoundFormat::Mp3);
    EXPECT_EQ(SniffSoundFormat(bytes({0xFF, 0xF3, 0x48, 0xC4})), SoundFormat::Mp3);
    EXPECT_EQ(SniffSoundFormat(bytes({0xFF, 0xE3, 0x18, 0xC4})), SoundFormat::Mp3);

    EXPECT_EQ(SniffSoundFormat(raw("RIFF\x24\0\0\0AVI LIST")), SoundFormat::Unknown);  // RIFF, but video
    EXPECT_EQ(SniffSoundFormat(raw("RIFF\x24\0\0\0WAV")), SoundFormat::Unknown);       // cut short
    EXPECT_EQ(SniffSoundFormat("hello world\n"), SoundFormat::Unknown);
    EXPECT_EQ(SniffSoundFormat("ID"), SoundFormat::Unknown);
    EXPECT_EQ(SniffSoundFormat(""), SoundFormat::Unknown);
    // Frame sync with reserved version, layer, bit rate or sample rate is no MP3 frame.
    EXPECT_EQ(SniffSoundFormat(bytes({0xFF, 0xEB, 0x90, 0x64})), SoundFormat::Unknown); // version 01
    EXPECT_EQ(SniffSoundFormat(bytes({0xFF, 0xF9, 0x90, 0x64})), SoundFormat::Unknown); // layer 00
    EXPECT_EQ(SniffSoundFormat(bytes({0xFF, 0xFB, 0xF0, 0x64})), SoundFormat::Unknown); // bit rate 1111
    EXPECT_EQ(SniffSoundFormat(bytes({0xFF, 0xFB, 0x9C, 0x64})), SoundFormat::Unknown); // sample rate 11
    EXPECT_EQ(SniffSoundFormat(bytes({0xFF, 0xD0, 0x90, 0x64})), SoundFormat::Unknown); // sync cut short
    EXPECT_EQ(SniffSoundFormat(bytes({0xFF, 0xFB, 0x90})), SoundFormat::Unknown);
}

TEST(SoundFileCheck, NamesTheFileAndTheProblem)
{
    test::TempDir dir;
    const std::string wav = dir.file("bell.wav");
    test::WriteFile(wav, test::SilentWav(0.2, 8000));
    const std::string empty = dir.file("empty.wav");
    test::WriteFile(empty, "");
    const std::string text = dir.file("notes.wav");
    test::WriteFile(text, "not a sound at all\n");
    const std::string dangling = dir.file("dangling.wav");
    std::filesystem::create_symlink(dir.file("gone.wav"), dangling);

    EXPECT_EQ(SoundFileProblem(QString::fromStdString(wav)), QString());
    const struct {
        std::string path;
        const char *says;
    } cases[] = {
        {dir.file("missing.wav"), "no such file"},
        {dangling, "no such file"},
        {dir.path().string(), "not a regular file"},
        {"/dev/null", "not a regular file"},
        {empty, "empty"},
        {text, "not a WAV or MP3 file"},
    };
    for (const auto &c : cases) {
        const QString problem = SoundFileProblem(QString::fromStdString(c.path));
        EXPECT_TRUE(problem.contains(c.says)) << c.path << ": " << problem.toStdString();
        EXPECT_TRUE(problem.contains(QString::fromStdString(c.path))) << problem.toStdString();
    }
}
