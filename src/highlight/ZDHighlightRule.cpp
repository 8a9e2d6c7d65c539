#include "ZDHighlightRule.h"

#include <QHash>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

#include <limits>
#include <string_view>
#include <unordered_map>

namespace {
// Reads the support module's usual output, a list of flat {'begin', 'length', 'class'}
// dictionaries, in one pass and without building JSON values: a long text has tens of thousands
// of rules. Both quote characters count as double quotes, as the blind replacement would make
// them. Anything else (other keys, escapes, fractions, bytes outside ASCII) returns false and goes
// to the JSON reader, which decides what such output means.
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
        // A rule takes about fifty bytes of output.
        rules->reserve(qsizetype((m_end - m_p) / 48 + 1));
        skipSpace();
        if (!take(']')) {
            do {
                skipSpace();
                ZDHighlightRule rule;
                if (!readRule(&rule))
                    return false;
                rules->append(std::move(rule));
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
    // A quoted run of printable ASCII without escapes.
    bool readPlainString(std::string_view *out)
    {
        if (m_p >= m_end || !isQuote(*m_p))
            return false;
        const char *start = ++m_p;
        while (m_p < m_end && !isQuote(*m_p)) {
            const auto c = static_cast<unsigned char>(*m_p);
            if (c == '\\' || c < 0x20 || c > 0x7e)
                return false;
            ++m_p;
        }
        if (m_p >= m_end)
            return false;
        *out = std::string_view(start, size_t(m_p - start));
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
            std::string_view key;
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
                std::string_view name;
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
    // A text has a few dozen distinct classes; rules of one class share one string. The keys
    // point into the output, which outlives the reader.
    const QString &internedClass(std::string_view name)
    {
        auto found = m_classes.find(name);
        if (found == m_classes.end())
            found = m_classes.emplace(name, QString::fromLatin1(name.data(), qsizetype(name.size()))).first;
        return found->second;
    }

    const char *m_p;
    const char *m_end;
    std::unordered_map<std::string_view, QString> m_classes;
};
// Numbers in the output are read as doubles; those beyond the integer range (never a real
// position) saturate instead of overflowing the conversion.
qint64 saturatedInteger(double value)
{
    constexpr double limit = 9.2e18;
    if (value >= limit)
        return std::numeric_limits<qint64>::max();
    if (value <= -limit)
        return std::numeric_limits<qint64>::min();
    return value == value ? qint64(value) : 0;
}
} // namespace

namespace ZDHighlightRuleFormat {

ParseResult parse(const QByteArray &pythonOutput, ZDHighlightRules *rules)
{
    if (readUsualShape(pythonOutput, rules))
        return ParseResult::Rules;
    return parseAsJson(pythonOutput, rules);
}

bool readUsualShape(const QByteArray &pythonOutput, ZDHighlightRules *rules)
{
    rules->clear();
    if (FastRuleReader(pythonOutput).read(rules))
        return true;
    rules->clear();
    return false;
}

ParseResult parseAsJson(const QByteArray &pythonOutput, ZDHighlightRules *rules)
{
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
        rule.begin = saturatedInteger(begin.toDouble());
        rule.length = saturatedInteger(length.toDouble());
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
