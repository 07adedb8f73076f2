#pragma once
// A screenshot program in one of the shipped styles: KESTREL_SHOT_STYLE=Dark
// (or Light) gives the whole program that style's palette and sheet, as the
// options would. Without it the platform look stays.

#include <QApplication>
#include <QFile>

#include <cstdlib>
#include <cstring>

#include "app/app_style.h"

namespace kestrel::test {

inline void ApplyShotStyle()
{
    const char *style = std::getenv("KESTREL_SHOT_STYLE");
    if (style == nullptr || *style == '\0')
        return;
    QApplication::setPalette(StylePalette(std::strcmp(style, "Dark") == 0));
    QFile sheet(QStringLiteral(KESTREL_THEMES_DIR "/") + QString::fromLatin1(style) + QStringLiteral(".qss"));
    if (sheet.open(QIODevice::ReadOnly))
        qApp->setStyleSheet(QString::fromUtf8(sheet.readAll()));
}

} // namespace kestrel::test
