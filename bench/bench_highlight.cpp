// Prints what the highlighter bridge costs over calling Pygments directly in Python on the same
// inputs, and the time of a partial re-highlight after a one-character edit in a long text.
//
//   bench_highlight [rounds]

#include "ZDDocumentHighlighter.h"
#include "ZDHighlighter.h"
#include "ZDPythonInterpreter.h"
#include "ZDSerialQueue.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QProcess>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

#include <algorithm>
#include <cstdio>

namespace {
// Python source of realistic texture: classes, docstrings, comments, strings, numbers.
QString pythonSource(qsizetype minimumLength, int seed = 0)
{
    QString text = QStringLiteral("# Generated sample %1\nimport os\nimport sys\n\n").arg(seed);
    for (int i = 0; text.size() < minimumLength; ++i) {
        text += QStringLiteral("class Record%1(object):\n"
                               "    \"\"\"A record of the sample, number %1 (caf\u00e9).\"\"\"\n\n"
                               "    limit = %2\n\n"
                               "    def __init__(self, name='item-%1', size=0x%3):\n"
                               "        self.name = name  # the display name\n"
                               "        self.size = size * 1.5 + %1\n\n"
                               "    def describe(self):\n"
                               "        if self.size > self.limit and not self.name.startswith(\"_\"):\n"
                               "            return f\"{self.name}: {self.size:.2f}\"\n"
                               "        return os.path.join(sys.prefix, self.name)\n\n")
                    .arg(i)
                    .arg(i * 7)
                    .arg(i * 31, 0, 16);
    }
    return text;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

struct DirectTimes
{
    double pygments = 0; ///< the lexer alone
    double module = 0;   ///< the support module's highlight function, output text included
};

// Pygments alone in Debian's interpreter, on the same texts: median seconds per text.
DirectTimes directPygmentsSeconds(const QStringList &texts, const QString &vendors)
{
    QTemporaryDir dir;
    for (qsizetype i = 0; i < texts.size(); ++i) {
        QFile file(dir.filePath(QStringLiteral("%1.py").arg(i)));
        file.open(QIODevice::WriteOnly);
        file.write(texts[i].toUtf8());
    }
    static const char script[] = R"(
import glob, statistics, sys, time
sys.path.insert(0, sys.argv[2])
from pygments.lexers import PythonLexer
import ZDPythonSupport
lexer = PythonLexer()
texts = [open(p, encoding='utf-8').read() for p in sorted(glob.glob(sys.argv[1] + '/*.py'))]
def median_time(work):
    work(texts[0])
    times = []
    for text in texts:
        start = time.perf_counter()
        work(text)
        times.append(time.perf_counter() - start)
    return statistics.median(times)
print(median_time(lambda text: list(lexer.get_tokens(text))),
      median_time(lambda text: ZDPythonSupport.ZDHighlight(text, 'PythonLexer')))
)";
    QProcess python;
    python.start(QStringLiteral("/usr/bin/python3"),
                 {QStringLiteral("-B"), QStringLiteral("-I"), QStringLiteral("-c"), QString::fromUtf8(script),
                  dir.path(), vendors});
    python.waitForFinished(600000);
    const QList<QByteArray> figures = python.readAllStandardOutput().trimmed().split(' ');
    return {figures.value(0).toDouble(), figures.value(1).toDouble()};
}
// Pygments alone inside the embedded interpreter (the same shared libpython as the bridge),
// through a module of our own: median seconds per text. Needs no other interpreter alive.
double embeddedPygmentsSeconds(const QStringList &texts)
{
    QTemporaryDir dir;
    QFile module(dir.filePath(QStringLiteral("ZDBenchPygments.py")));
    module.open(QIODevice::WriteOnly);
    module.write("from pygments.lexers import PythonLexer\n"
                 "lexer = PythonLexer()\n"
                 "def lex(code):\n"
                 "    return str(len(list(lexer.get_tokens(code))))\n");
    module.close();
    ZDPythonInterpreter python(dir.path(), QStringLiteral("ZDBenchPygments"), {QStringLiteral("lex")});
    std::vector<double> times;
    python.queue().sync([&] {
        python.callForString(QStringLiteral("lex"), {texts.first().toUtf8()});
        for (const QString &text : texts) {
            const QByteArray utf8 = text.toUtf8();
            QElapsedTimer timer;
            timer.start();
            python.callForString(QStringLiteral("lex"), {utf8});
            times.push_back(timer.nsecsElapsed() / 1e9);
        }
    });
    return median(times);
}
} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const int rounds = argc > 1 ? std::max(3, atoi(argv[1])) : 15;
    auto owned = std::make_unique<ZDHighlighter>();
    ZDHighlighter &highlighter = *owned;
    if (!highlighter.isLoaded()) {
        std::fprintf(stderr, "the support module did not load\n");
        return 1;
    }

    // 1. Bridge against Pygments alone. Every text differs, so no result comes from the cache.
    QList<QPair<QStringList, double>> measured;
    for (const qsizetype size : {qsizetype(5 * 1024), qsizetype(50 * 1024)}) {
        QStringList texts;
        for (int i = 0; i < rounds; ++i)
            texts.append(pythonSource(size, i));
        highlighter.highlightCode(pythonSource(size, -1), QStringLiteral("PythonLexer")); // warm up
        std::vector<double> bridge;
        size_t ruleCount = 0;
        for (const QString &text : texts) {
            QElapsedTimer timer;
            timer.start();
            ruleCount = size_t(highlighter.highlightCode(text, QStringLiteral("PythonLexer")).size());
            bridge.push_back(timer.nsecsElapsed() / 1e9);
        }
        const DirectTimes direct = directPygmentsSeconds(texts, ZDHighlighter::defaultVendorsDirectory());
        const double through = median(bridge);
        std::printf("highlight %3lld KB (%zu rules): bridge %.2f ms, Pygments alone %.2f ms, ratio %.3fx "
                    "(target <= 1.15x); support module alone %.2f ms\n",
                    static_cast<long long>(size / 1024), ruleCount, through * 1e3, direct.pygments * 1e3,
                    through / direct.pygments, direct.module * 1e3);
        measured.append({texts, through});
    }

    // 2. Partial re-highlight after typing one character in a 5,000-line text.
    {
        QString text;
        for (int i = 0; text.count(QLatin1Char('\n')) < 5000; ++i)
            text += pythonSource(1, i);
        QTextDocument document;
        document.setPlainText(text);
        ZDDocumentHighlighter documentHighlighter(&document, &highlighter);
        documentHighlighter.setCurrentLexer(QStringLiteral("PythonLexer"));
        QElapsedTimer whole;
        whole.start();
        documentHighlighter.updateHighlightAsync(false);
        const double wholeMs = whole.nsecsElapsed() / 1e6;

        std::vector<double> partial;
        const int lines = document.blockCount();
        for (int i = 0; i < rounds; ++i) {
            QTextCursor cursor(document.findBlockByNumber(lines * (i + 1) / (rounds + 2)));
            cursor.movePosition(QTextCursor::EndOfBlock);
            QElapsedTimer timer;
            timer.start();
            cursor.insertText(QStringLiteral("x"));
            partial.push_back(timer.nsecsElapsed() / 1e6);
        }
        std::printf("whole text of %d lines (%lld characters): %.1f ms; mode after an edit: %s\n", lines,
                    static_cast<long long>(text.size()), wholeMs,
                    documentHighlighter.updateModeOnTextEditedByUser() ==
                            ZDDocumentHighlighter::UpdateMode::Partial
                        ? "partial"
                        : "full");
        std::printf("partial re-highlight after a one-character edit: median %.2f ms, worst %.2f ms (target "
                    "<= 20 ms)\n",
                    median(partial), *std::max_element(partial.begin(), partial.end()));
    }

    // 3. The same lexing inside the embedded interpreter, once the bridge's is gone: how much of
    // the difference is the shared interpreter library itself.
    owned.reset();
    for (const auto &[texts, through] : measured) {
        const double embedded = embeddedPygmentsSeconds(texts);
        std::printf("Pygments alone in the embedded interpreter, %3lld KB: %.2f ms; bridge over it %.3fx\n",
                    static_cast<long long>(texts.first().size() / 1024), embedded * 1e3, through / embedded);
    }
    return 0;
}
