#pragma once

#include "ZDRecordTypes.h"

#include <QString>

#include <mutex>

/// A tag of the library's tag list. Snippets hold tag UUIDs, never tags.
class ZDTag
{
public:
    /// A new tag titled "untitled tag".
    ZDTag();
    /// A new tag with a fresh UUID.
    explicit ZDTag(const QString &title);
    ZDTag(const QString &title, const QString &UUID);

    static ZDTagPtr create(const QString &title) { return std::make_shared<ZDTag>(title); }

    QString title() const;
    void setTitle(const QString &title);
    QString UUID() const { return m_UUID; }

    bool isEqual(const ZDTag *other) const { return other && (other == this || other->m_UUID == m_UUID); }
    /// Tag names are equivalent when they are equal ignoring case and diacritics ("Café", "cafe").
    static bool isTagNameEquivalentToName(const QString &name, const QString &other);
    QString description() const;

private:
    mutable std::mutex m_mutex; // the title is read from search threads
    QString m_title;
    QString m_UUID;
};
