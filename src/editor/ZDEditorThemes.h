#pragma once

#include "ZDEditorTheme.h"

#include <QList>
#include <QPair>

/// What a concrete theme is made of: its identity, its base colours and the token types it
/// colours (the others inherit).
struct ZDEditorThemeDescription
{
    QString name;
    bool dark = false;
    QString previewImageName;
    QColor background, foreground, caret, selection, invisibles, gutterText, tint;
    QList<QPair<QString, QString>> tokenColors; ///< type without "Token." -> "#RRGGBB"
};

/// A theme given by a description.
class ZDDescribedEditorTheme : public ZDEditorTheme
{
public:
    explicit ZDDescribedEditorTheme(const ZDEditorThemeDescription &description) : m_d(description) {}

    QString name() const override { return m_d.name; }
    bool isDark() const override { return m_d.dark; }
    QString previewImageName() const override { return m_d.previewImageName; }
    QHash<QString, QString> colorDictionary() const override;

    QColor backgroundColor() const override { return m_d.background; }
    QColor foregroundColor() const override { return m_d.foreground; }
    QColor caretColor() const override { return m_d.caret; }
    QColor selectedTextBackgroundColor() const override { return m_d.selection; }
    QColor invisibleCharacterColor() const override { return m_d.invisibles; }
    QColor gutterTextColor() const override { return m_d.gutterText; }
    QColor editorTintColor() const override { return m_d.tint; }
    bool allowsSidebarVibrancy() const override { return !m_d.dark; }

private:
    ZDEditorThemeDescription m_d;
};

class ZDXcodeEditorTheme : public ZDDescribedEditorTheme
{
public:
    ZDXcodeEditorTheme();
    /// The full dictionary, built once per run and shared.
    QHash<QString, QString> colorDictionary() const override;
};

class ZDTomorrowEditorTheme : public ZDDescribedEditorTheme
{
public:
    ZDTomorrowEditorTheme();
};
class ZDTomorrowNightEditorTheme : public ZDDescribedEditorTheme
{
public:
    ZDTomorrowNightEditorTheme();
};
class ZDTomorrowNightEightiesEditorTheme : public ZDDescribedEditorTheme
{
public:
    ZDTomorrowNightEightiesEditorTheme();
};
class ZDSolarizedLightEditorTheme : public ZDDescribedEditorTheme
{
public:
    ZDSolarizedLightEditorTheme();
};
class ZDSolarizedDarkEditorTheme : public ZDDescribedEditorTheme
{
public:
    ZDSolarizedDarkEditorTheme();
};
class ZDSpaceGrayEditorTheme : public ZDDescribedEditorTheme
{
public:
    ZDSpaceGrayEditorTheme();
};
class ZDCodeRunnerEditorTheme : public ZDDescribedEditorTheme
{
public:
    ZDCodeRunnerEditorTheme();
};
class ZDDuskEditorTheme : public ZDDescribedEditorTheme
{
public:
    ZDDuskEditorTheme();
};
class ZDMonokaiEditorTheme : public ZDDescribedEditorTheme
{
public:
    ZDMonokaiEditorTheme();
};
class ZDMaterialEditorTheme : public ZDDescribedEditorTheme
{
public:
    ZDMaterialEditorTheme();
};
class ZDOneDarkEditorTheme : public ZDDescribedEditorTheme
{
public:
    ZDOneDarkEditorTheme();
};

/// "Mojave Dark": the One Dark token colours over the desktop's own palette (window, text,
/// selection, accent), read when the theme is made.
class MojaveDarkEditorTheme : public ZDDescribedEditorTheme
{
public:
    MojaveDarkEditorTheme();
    /// True when a desktop palette is available (a GUI application is running).
    static bool isSupported();
};
