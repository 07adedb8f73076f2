#pragma once
// Helpers of the screenshot programs: let the event loop run for a while, and
// tell a drawn picture from a blank or black one.

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QList>

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

} // namespace kestrel::test
