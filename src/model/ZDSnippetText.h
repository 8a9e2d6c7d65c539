#pragma once

#include <QString>

#include <memory>

/// The text of a snippet part: either a QString, or characters read in place from a buffer that
/// something else owns (the memory-mapped snippet cache), kept alive by a shared owner. Reading
/// a large library this way costs no allocation per text; the characters are copied into a
/// QString only when toString() is asked for. Immutable, so it may be read on any thread.
class ZDSnippetText
{
public:
    enum class Encoding { Latin1, Utf16 };

    ZDSnippetText() = default;
    explicit ZDSnippetText(const QString &string) : m_string(string) {}

    /// `size` characters at `data` (Latin-1 bytes, or UTF-16 code units in the machine's byte
    /// order at any alignment) that stay valid and unchanged while `owner` lives.
    static ZDSnippetText borrowed(std::shared_ptr<const void> owner, const char *data, qsizetype size,
                                  Encoding encoding);

    bool isBorrowed() const { return m_owner != nullptr; }
    /// Length in UTF-16 code units, as QString::size() gives it.
    qsizetype size() const { return m_owner ? m_size : m_string.size(); }
    bool isEmpty() const { return size() == 0; }

    /// The text as a QString: the held string itself, or a new copy of borrowed characters.
    QString toString() const;
    void appendTo(QString &out) const;

    /// The borrowed characters and their encoding (only when isBorrowed()).
    const char *borrowedData() const { return m_data; }
    Encoding borrowedEncoding() const { return m_encoding; }

    /// Whether both read the very same characters, so are equal without comparing them.
    bool sharesStorageWith(const ZDSnippetText &other) const;

    friend bool operator==(const ZDSnippetText &a, const ZDSnippetText &b);
    friend bool operator==(const ZDSnippetText &a, const QString &b);
    friend bool operator!=(const ZDSnippetText &a, const ZDSnippetText &b) { return !(a == b); }
    friend bool operator!=(const ZDSnippetText &a, const QString &b) { return !(a == b); }

private:
    QString m_string;
    std::shared_ptr<const void> m_owner;
    const char *m_data = nullptr;
    qsizetype m_size = 0;
    Encoding m_encoding = Encoding::Latin1;
};
