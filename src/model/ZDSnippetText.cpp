#include "ZDSnippetText.h"

#include <cstring>

ZDSnippetText ZDSnippetText::borrowed(std::shared_ptr<const void> owner, const char *data, qsizetype size,
                                      Encoding encoding)
{
    ZDSnippetText text;
    if (size <= 0 || !data)
        return text;
    text.m_owner = std::move(owner);
    text.m_data = data;
    text.m_size = size;
    text.m_encoding = encoding;
    return text;
}

QString ZDSnippetText::toString() const
{
    if (!m_owner)
        return m_string.isNull() ? QStringLiteral("") : m_string; // a text is never null
    if (m_encoding == Encoding::Latin1)
        return QString::fromLatin1(m_data, m_size);
    QString string(m_size, Qt::Uninitialized);
    std::memcpy(string.data(), m_data, size_t(m_size) * sizeof(QChar));
    return string;
}

void ZDSnippetText::appendTo(QString &out) const
{
    if (!m_owner) {
        out += m_string;
    } else if (m_encoding == Encoding::Latin1) {
        out += QLatin1StringView(m_data, m_size);
    } else {
        const qsizetype start = out.size();
        out.resize(start + m_size);
        std::memcpy(out.data() + start, m_data, size_t(m_size) * sizeof(QChar));
    }
}

bool ZDSnippetText::sharesStorageWith(const ZDSnippetText &other) const
{
    if (m_owner)
        return other.m_owner && m_data == other.m_data && m_size == other.m_size && m_encoding == other.m_encoding;
    return !other.m_owner && m_string.constData() == other.m_string.constData() &&
           m_string.size() == other.m_string.size();
}

bool operator==(const ZDSnippetText &a, const QString &b)
{
    if (!a.m_owner)
        return a.m_string == b;
    if (a.m_encoding == ZDSnippetText::Encoding::Latin1)
        return QLatin1StringView(a.m_data, a.m_size) == b;
    return a.m_size == b.size() && std::memcmp(a.m_data, b.constData(), size_t(a.m_size) * sizeof(QChar)) == 0;
}

bool operator==(const ZDSnippetText &a, const ZDSnippetText &b)
{
    if (a.sharesStorageWith(b))
        return true;
    if (!a.m_owner)
        return b == a.m_string;
    if (!b.m_owner)
        return a == b.m_string;
    if (a.m_size != b.m_size)
        return false;
    if (a.m_encoding == b.m_encoding) {
        const size_t width = a.m_encoding == ZDSnippetText::Encoding::Latin1 ? 1 : sizeof(QChar);
        return std::memcmp(a.m_data, b.m_data, size_t(a.m_size) * width) == 0;
    }
    return a.toString() == b.toString();
}
