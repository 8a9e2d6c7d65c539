#pragma once

#include <QPixmap>
#include <QSize>

class ZDEditorTheme;

/// A small picture of an editor theme: a few lines of code in the theme's background, gutter,
/// selection and token colours, for the theme chooser.
QPixmap zdThemePreview(const ZDEditorTheme &theme, QSize size, qreal devicePixelRatio = 1.0);
