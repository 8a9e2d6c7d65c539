#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>

/// The editor font as the preferences keep it: a family and a point size, archived as a small
/// JSON object so that the core does not need the GUI's font classes.
struct ZDFontDescriptor
{
    QString family;
    double pointSize = 12.0;

    QByteArray archived() const;
    /// The font in archived data, or nothing when the data is missing or is not a font archive.
    static std::optional<ZDFontDescriptor> unarchive(const QByteArray &data);

    bool operator==(const ZDFontDescriptor &) const = default;
};

/// What the desktop knows about its fonts; the window layer installs one backed by the font
/// database. Without it, no named font is known to exist and the system font is "Monospace".
struct ZDFontCatalog
{
    std::function<bool(const QString &family)> fontExists;
    std::function<ZDFontDescriptor()> systemFixedFont;
};
