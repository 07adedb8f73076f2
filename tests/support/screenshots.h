#pragma once
// Helpers of the screenshot programs: let the event loop run for a while, tell
// a drawn picture from a blank or black one, and save a window's picture.

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QList>
#include <QPixmap>
#include <QWidget>

#include <cstdio>
#include <filesystem>

namespace kestrel::test {

inline void Pump(int ms)
{
    QElapsedTimer t;
    t.start();
    while (t.elapsed() < ms)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
}

// A picture of at least minWidth x minHeight with more than `colours` colours
// (sampled every `step` pixels): a blank or black window fails.
inline bool LooksDrawn(const QImage &img, int minWidth, int minHeight, int colours = 8, int step = 7)
{
    if (img.isNull() || img.width() < minWidth || img.height() < minHeight)
        return false;
    QList<QRgb> seen;
    for (int y = 0; y < img.height(); y += step)
        for (int x = 0; x < img.width(); x += step) {
            const QRgb c = img.pixel(x, y);
            if (!seen.contains(c))
                seen.append(c);
            if (seen.size() > colours)
                return true;
        }
    return false;
}

// The folder a screenshot program saves into (its first argument), made if
// need be; empty, with a usage line, when the argument is missing.
inline std::filesystem::path ShotFolder(int argc, char **argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s OUTPUT_FOLDER\n", argv[0]);
        return {};
    }
    std::filesystem::create_directories(argv[1]);
    return argv[1];
}

struct ShotCheck {
    int minWidth = 200, minHeight = 150; // a smaller picture is no picture of the window
    int colours = 4;                     // fewer is blank
    int step = 5;
    QSize room;                          // when valid, the window's frame must fit it
};

// Saves the picture of w as path; false, with the reason on stderr, when it
// cannot be written, looks blank, or the window does not fit the room.
inline bool SaveShot(QWidget &w, const std::filesystem::path &path, const ShotCheck &check = {})
{
    Pump(150);
    const QPixmap shot = w.grab();
    if (!shot.save(QString::fromStdString(path.string())) ||
        !LooksDrawn(shot.toImage(), check.minWidth, check.minHeight, check.colours, check.step)) {
        std::fprintf(stderr, "screenshot %s is missing or blank\n", path.c_str());
        return false;
    }
    const QSize frame = w.frameGeometry().size();
    if (check.room.isValid() && (frame.width() > check.room.width() || frame.height() > check.room.height())) {
        std::fprintf(stderr, "%s: the window (%dx%d) does not fit %dx%d\n", path.c_str(), frame.width(),
                     frame.height(), check.room.width(), check.room.height());
        return false;
    }
    std::printf("saved %s (%dx%d)\n", path.c_str(), shot.width(), shot.height());
    return true;
}

} // namespace kestrel::test
