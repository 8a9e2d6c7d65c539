#pragma once

#include "ZDHighlightRule.h"
#include "ZDLruCache.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QThreadPool>

#include <atomic>
#include <functional>
#include <memory>

class ZDPythonInterpreter;

/// The bridge to the embedded interpreter: syntax highlighting with Pygments, Markdown to HTML,
/// and counting the top-level blocks of a Markdown document, through the support module
/// "ZDPythonSupport" of the Vendors resource folder. A fast block count uses md4c and libxml2
/// instead.
///
/// Every Python call runs on the interpreter's own thread, one at a time. The synchronous calls
/// may be made from any thread and wait for that thread; the background variants deliver their
/// result on the main thread. Results for inputs of at least 500 characters are cached by MD5
/// digest. When the support module cannot be loaded every service answers with its empty result.
class ZDHighlighter
{
public:
    /// Inputs shorter than this are always recomputed.
    static constexpr int kCacheThreshold = 500;
    static constexpr int kHighlightCacheLimit = 1000;
    static constexpr int kMarkdownParseCacheLimit = 1000;
    static constexpr int kChildCountCacheLimit = 10000;

    explicit ZDHighlighter(const QString &vendorsDirectory = defaultVendorsDirectory(),
                           const QString &moduleName = QStringLiteral("ZDPythonSupport"));
    ~ZDHighlighter();
    ZDHighlighter(const ZDHighlighter &) = delete;
    ZDHighlighter &operator=(const ZDHighlighter &) = delete;

    /// The instance the program installed at start-up (null before).
    static ZDHighlighter *sharedHighlighter();
    static void install(ZDHighlighter *highlighter);
    static QString defaultVendorsDirectory();

    /// True when the support module was imported.
    bool isLoaded() const { return m_loaded; }

    ZDHighlightRules highlightCode(const QString &code, const QString &lexer);
    /// Highlights on a background thread; `handler` runs on the main thread unless `context`
    /// was given and has been destroyed by then.
    void highlightCodeAtBackground(const QString &code, const QString &lexer, QObject *context,
                                   std::function<void(const ZDHighlightRules &)> handler);

    QString parseMarkdown(const QString &source);
    void parseMarkdown(const QString &source, QObject *context, std::function<void(const QString &)> handler);

    /// Top-level blocks of the rendered Markdown; 0 for a null source.
    quint64 childCount(const QString &source);
    /// The same count through md4c (GitHub dialect) and libxml2, without Python.
    static qint64 childCountFast(const QString &source);
    /// Index of the last element child of the HTML's body; -1 when it has none.
    static qint64 indexOfLastRootElementInHTML(const QString &html);
    /// Removes HTML comments and footnote definition lines before counting.
    static QString preprocessedStringForCountingChildrens(const QString &string);

    /// Lower-case hexadecimal MD5 of the UTF-8 bytes.
    static QString digest(const QString &string);

    /// The interpreter behind the bridge, for benchmarks and diagnostics; work that calls into it
    /// runs on its queue.
    ZDPythonInterpreter &interpreter() { return *m_python; }

    /// How many calls reached the interpreter (for diagnostics and tests).
    quint64 pythonCallCount() const { return m_pythonCalls; }
    /// Waits until background work started so far has delivered its result to the event queue.
    void waitForBackgroundWork();

private:
    // The raw calls; they run only on the interpreter's thread. Highlighting takes the code and
    // the lexer name as UTF-8, and the name as text for reports.
    ZDHighlightRules py_performHighlight(const QByteArray &code, const QByteArray &lexerUtf8,
                                         const QString &lexer);
    QString py_performMarkdownParse(const QString &source);
    quint64 py_performComputeChildCount(const QString &text);
    void logErrorIfAny() {}

    void runInBackground(std::function<void()> work);

    std::unique_ptr<ZDPythonInterpreter> m_python;
    bool m_loaded = false;
    std::atomic<quint64> m_pythonCalls{0};
    ZDLruCache<ZDHighlightRules> m_highlightCache{kHighlightCacheLimit};
    ZDLruCache<QString> m_markdownParseCache{kMarkdownParseCacheLimit};
    ZDLruCache<quint64> m_childCountCache{kChildCountCacheLimit};
    QThreadPool m_background;
};
