#pragma once

#include <QColor>

/// The colours the code editor paints with; the window fills them from the current theme.
struct ZDEditorColors
{
    QColor background = Qt::white;
    QColor foreground = Qt::black;
    QColor caret = Qt::black;
    QColor selection = QColor(0xB5, 0xD5, 0xFF);
    QColor invisibles = QColor(0xC0, 0xC0, 0xC0);
    QColor gutterText = QColor(0x90, 0x90, 0x90);
    QColor gutterBackground = QColor(0xF4, 0xF4, 0xF4);
    QColor currentLine = QColor(0xF2, 0xF6, 0xFF);
};
