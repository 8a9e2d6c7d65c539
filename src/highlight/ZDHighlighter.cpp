#include "ZDHighlighter.h"

#include "ZDAnalytics.h"
#include "ZDLogger.h"
#include "ZDPythonInterpreter.h"
#include "ZDResources.h"
#include "ZDSerialQueue.h"

#include <QCoreApplication>
#include <QCryptographicHash>

namespace {
ZDHighlighter *s_shared = nullptr;

const QString kHighlightCallable = QStringLiteral("ZDHighlight");
const QString kMarkdownParseCallable = QStringLiteral("ZDMarkdownParse");
const QString kChildCountCallable = QStringLiteral("ZDChildCountOfMarkdownSource");

// Posts the result to the main thread; a handler whose context object is gone by then is dropped.
template <typename Result>
void deliverOnMainThread(bool hasContext, QPointer<QObject> context,
                         std::function<void(const Result &)> handler, Result result)
{
    QObject *application = QCoreApplication::instance();
    if (!application)
        return;
    QMetaObject::invokeMethod(
        application,
        [hasContext, context, handler = std::move(handler), result = std::move(result)] {
            if (!hasContext || context)
                handler(result);
        },
        Qt::QueuedConnection);
}
} // namespace

ZDHighlighter::ZDHighlighter(const QString &vendorsDirectory, const QString &moduleName)
    : m_python(std::make_unique<ZDPythonInterpreter>(
          vendorsDirectory, moduleName,
          QStringList{kHighlightCallable, kMarkdownParseCallable, kChildCountCallable}))
{
    m_loaded = m_python->isModuleLoaded();
    m_background.setObjectName(QStringLiteral("com.varnok.Zandrio.CoreHighlighter.Background"));
    m_background.setMaxThreadCount(2);
    logErrorIfAny();
}

ZDHighlighter::~ZDHighlighter()
{
    m_background.waitForDone();
    if (s_shared == this)
        s_shared = nullptr;
}

ZDHighlighter *ZDHighlighter::sharedHighlighter()
{
    return s_shared;
}

void ZDHighlighter::install(ZDHighlighter *highlighter)
{
    s_shared = highlighter;
}

QString ZDHighlighter::defaultVendorsDirectory()
{
    return ZDResources::path(QStringLiteral("Vendors"));
}

QString ZDHighlighter::digest(const QString &string)
{
    return QString::fromLatin1(QCryptographicHash::hash(string.toUtf8(), QCryptographicHash::Md5).toHex());
}

void ZDHighlighter::waitForBackgroundWork()
{
    m_background.waitForDone();
}

void ZDHighlighter::runInBackground(std::function<void()> work)
{
    m_background.start(std::move(work));
}

// Highlighting ----------------------------------------------------------------------------------

ZDHighlightRules ZDHighlighter::highlightCode(const QString &code, const QString &lexer)
{
    if (code.isNull() || lexer.isNull())
        return {};
    // The code's UTF-8 serves both the key and the call; the key's digest is that of
    // lexer + "||" + code, fed in pieces.
    const QByteArray codeUtf8 = code.toUtf8();
    const QByteArray lexerUtf8 = lexer.toUtf8();
    const bool cacheable = code.size() >= kCacheThreshold;
    QString key;
    if (cacheable) {
        QCryptographicHash hash(QCryptographicHash::Md5);
        hash.addData(lexerUtf8);
        hash.addData(QByteArrayView("||"));
        hash.addData(codeUtf8);
        key = QString::fromLatin1(hash.result().toHex());
        if (std::optional<ZDHighlightRules> cached = m_highlightCache.object(key))
            return *std::move(cached);
    }
    ZDHighlightRules rules;
    m_python->queue().sync([&] { rules = py_performHighlight(codeUtf8, lexerUtf8, lexer); });
    if (cacheable)
        m_highlightCache.setObject(key, rules);
    return rules;
}

void ZDHighlighter::highlightCodeAtBackground(const QString &code, const QString &lexer, QObject *context,
                                              std::function<void(const ZDHighlightRules &)> handler)
{
    QPointer<QObject> guard(context);
    const bool hasContext = context != nullptr;
    runInBackground([this, code, lexer, guard, hasContext, handler = std::move(handler)]() mutable {
        deliverOnMainThread<ZDHighlightRules>(hasContext, guard, std::move(handler),
                                              highlightCode(code, lexer));
    });
}

ZDHighlightRules ZDHighlighter::py_performHighlight(const QByteArray &code, const QByteArray &lexerUtf8,
                                                    const QString &lexer)
{
    if (!m_loaded)
        return {};
    ++m_pythonCalls;
    // The rule list is read straight from the interpreter's string.
    ZDHighlightRules rules;
    auto result = ZDHighlightRuleFormat::ParseResult::Unparsable;
    if (!m_python->readString(kHighlightCallable, {code, lexerUtf8}, [&](const QByteArray &output) {
            result = ZDHighlightRuleFormat::parse(output, &rules);
        })) {
        logErrorIfAny();
        return {};
    }
    switch (result) {
    case ZDHighlightRuleFormat::ParseResult::Rules:
        return rules;
    case ZDHighlightRuleFormat::ParseResult::NotAList:
        return {};
    case ZDHighlightRuleFormat::ParseResult::Unparsable:
        break;
    }
    zdLog(ZDLogLevel::Error, ZDLogDomain::Core, QStringLiteral("Cannot Parse Json w/ lexer: %1").arg(lexer));
    zdReportEvent(QStringLiteral("PygmentsErr"),
                  {{QStringLiteral("Description"), QStringLiteral("Cannot Parse JSON")},
                   {QStringLiteral("Lexer"), lexer},
                   {QStringLiteral("Performance"), -1.0}});
    return {};
}

// Markdown --------------------------------------------------------------------------------------

QString ZDHighlighter::parseMarkdown(const QString &source)
{
    const bool cacheable = source.size() >= kCacheThreshold;
    const QString key = cacheable ? digest(source) : QString();
    if (cacheable) {
        if (std::optional<QString> cached = m_markdownParseCache.object(key))
            return *cached;
    }
    QString html;
    m_python->queue().sync([&] { html = py_performMarkdownParse(source); });
    if (cacheable)
        m_markdownParseCache.setObject(key, html);
    return html;
}

void ZDHighlighter::parseMarkdown(const QString &source, QObject *context,
                                  std::function<void(const QString &)> handler)
{
    QPointer<QObject> guard(context);
    const bool hasContext = context != nullptr;
    runInBackground([this, source, guard, hasContext, handler = std::move(handler)]() mutable {
        deliverOnMainThread<QString>(hasContext, guard, std::move(handler), parseMarkdown(source));
    });
}

QString ZDHighlighter::py_performMarkdownParse(const QString &source)
{
    if (source.isNull() || !m_loaded)
        return QStringLiteral("");
    ++m_pythonCalls;
    const std::optional<QByteArray> html = m_python->callForString(kMarkdownParseCallable, {source.toUtf8()});
    if (!html) {
        logErrorIfAny();
        return QStringLiteral("");
    }
    return QString::fromUtf8(*html);
}

quint64 ZDHighlighter::childCount(const QString &source)
{
    if (source.isNull())
        return 0;
    const QString key = digest(source);
    if (std::optional<quint64> cached = m_childCountCache.object(key))
        return *cached;
    quint64 count = 0;
    m_python->queue().sync(
        [&] { count = py_performComputeChildCount(preprocessedStringForCountingChildrens(source)); });
    m_childCountCache.setObject(key, count);
    return count;
}

quint64 ZDHighlighter::py_performComputeChildCount(const QString &text)
{
    if (text.isNull() || !m_loaded)
        return 0;
    ++m_pythonCalls;
    const std::optional<qint64> count = m_python->callForInteger(kChildCountCallable, {text.toUtf8()});
    if (!count) {
        logErrorIfAny();
        return 0;
    }
    return quint64(std::max<qint64>(0, *count));
}
