#include "ZDHighlightRule.h"

#include <QHash>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

namespace {
// Reads the support module's usual output, a list of flat {'begin', 'length', 'class'}
// dictionaries, in one pass and without building JSON values: a long text has tens of thousands
// of rules. Both quote characters count as double quotes, as the blind replacement would make
// them. Anything else (other keys, escapes, fractions) returns false and goes to the full parser.
class FastRuleReader
{
public:
    explicit FastRuleReader(const QByteArray &text)
        : m_p(text.constData()), m_end(text.constData() + text.size())
    {
    }

    bool read(ZDHighlightRules *rules)
    {
        skipSpace();
        if (!take('['))
            return false;
        skipSpace();
        if (!take(']')) {
            do {
                skipSpace();
                ZDHighlightRule rule;
                if (!readRule(&rule))
                    return false;
                rules->append(rule);
                skipSpace();
            } while (take(','));
            if (!take(']'))
                return false;
        }
        skipSpace();
        return m_p == m_end;
    }

private:
    static bool isQuote(char c) { return c == '"' || c == '\''; }
    void skipSpace()
    {
        while (m_p < m_end && (*m_p == ' ' || *m_p == '\n' || *m_p == '\t' || *m_p == '\r'))
            ++m_p;
    }
    bool take(char c)
    {
        if (m_p < m_end && *m_p == c) {
            ++m_p;
            return true;
        }
        return false;
    }
    // A quoted run without escapes or control characters.
    bool readPlainString(QByteArrayView *out)
    {
        if (m_p >= m_end || !isQuote(*m_p))
            return false;
        const char *start = ++m_p;
        while (m_p < m_end && !isQuote(*m_p)) {
            if (*m_p == '\\' || static_cast<unsigned char>(*m_p) < 0x20)
                return false;
            ++m_p;
        }
        if (m_p >= m_end)
            return false;
        *out = QByteArrayView(start, m_p - start);
        ++m_p;
        return true;
    }
    bool readInteger(qint64 *out)
    {
        const bool negative = take('-');
        const char *start = m_p;
        qint64 value = 0;
        while (m_p < m_end && *m_p >= '0' && *m_p <= '9' && m_p - start < 15)
            value = value * 10 + (*m_p++ - '0');
        if (m_p == start || (*start == '0' && m_p - start > 1))
            return false;
        if (m_p < m_end && (*m_p == '.' || *m_p == 'e' || *m_p == 'E' || (*m_p >= '0' && *m_p <= '9')))
            return false;
        *out = negative ? -value : value;
        return true;
    }
    bool readRule(ZDHighlightRule *rule)
    {
        if (!take('{'))
            return false;
        int seen = 0;
        do {
            skipSpace();
            QByteArrayView key;
            if (!readPlainString(&key))
                return false;
            skipSpace();
            if (!take(':'))
                return false;
            skipSpace();
            if (key == "begin" && !(seen & 1)) {
                seen |= 1;
                if (!readInteger(&rule->begin))
                    return false;
            } else if (key == "length" && !(seen & 2)) {
                seen |= 2;
                if (!readInteger(&rule->length))
                    return false;
            } else if (key == "class" && !(seen & 4)) {
                seen |= 4;
                QByteArrayView name;
                if (!readPlainString(&name))
                    return false;
                rule->tokenClass = internedClass(name);
            } else {
                return false;
            }
            skipSpace();
        } while (take(','));
        return seen == 7 && take('}');
    }
    QString internedClass(QByteArrayView name)
    {
        const QByteArray key = name.toByteArray();
        auto found = m_classes.constFind(key);
        if (found == m_classes.constEnd())
            found = m_classes.insert(key, QString::fromUtf8(name));
        return found.value();
    }

    const char *m_p;
    const char *m_end;
    QHash<QByteArray, QString> m_classes;
};
} // namespace

namespace ZDHighlightRuleFormat {

ParseResult parse(const QByteArray &pythonOutput, ZDHighlightRules *rules)
{
    rules->clear();
    if (FastRuleReader(pythonOutput).read(rules))
        return ParseResult::Rules;
    rules->clear();

    QByteArray json = pythonOutput;
    json.replace('\'', '"');
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError || document.isNull())
        return ParseResult::Unparsable;
    if (!document.isArray())
        return ParseResult::NotAList;

    const QJsonArray array = document.array();
    rules->clear();
    rules->reserve(array.size());
    const QString beginKey = QStringLiteral("begin");
    const QString lengthKey = QStringLiteral("length");
    const QString classKey = QStringLiteral("class");
    for (const QJsonValue &entry : array) {
        ZDHighlightRule rule;
        const QJsonObject object = entry.toObject();
        const QJsonValue begin = object.value(beginKey);
        const QJsonValue length = object.value(lengthKey);
        rule.valid = entry.isObject() && begin.isDouble() && length.isDouble();
        rule.begin = qint64(begin.toDouble());
        rule.length = qint64(length.toDouble());
        rule.tokenClass = object.value(classKey).toString();
        rules->append(rule);
    }
    return ParseResult::Rules;
}

QJsonArray toJson(const ZDHighlightRules &rules)
{
    QJsonArray array;
    for (const ZDHighlightRule &rule : rules) {
        if (!rule.valid)
            continue;
        array.append(QJsonObject{{QStringLiteral("begin"), rule.begin},
                                 {QStringLiteral("length"), rule.length},
                                 {QStringLiteral("class"), rule.tokenClass}});
    }
    return array;
}

} // namespace ZDHighlightRuleFormat
