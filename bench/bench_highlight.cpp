// Prints what the highlighter bridge costs over calling Pygments directly in Python on the same
// inputs, and the time of a partial re-highlight after a one-character edit in a long text.
//
//   bench_highlight [rounds]
//
// "Directly" is lexing the text and walking its tokens inside the bridge's own embedded
// interpreter, interleaved with the bridge's calls on the same texts, so that both see the same
// interpreter build and the same load. Debian's /usr/bin/python3 is printed beside it for
// reference only: its statically linked interpreter runs Pygments faster than libpython does.
// Figures are process CPU time (all threads), with wall time beside them.

#include "ZDDocumentHighlighter.h"
#include "ZDHighlighter.h"
#include "ZDPythonInterpreter.h"
#include "ZDSerialQueue.h"

#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <vector>

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

double processSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) / 1e9;
}

struct Times
{
    std::vector<double> cpu, wall;
    void add(double cpuSeconds, double wallSeconds)
    {
        cpu.push_back(cpuSeconds);
        wall.push_back(wallSeconds);
    }
};

template <typename Work> void measure(Times *times, Work &&work)
{
    QElapsedTimer timer;
    timer.start();
    const double cpu = processSeconds();
    work();
    times->add(processSeconds() - cpu, timer.nsecsElapsed() / 1e9);
}

struct DirectTimes
{
    double pygments = 0; ///< the lexer alone
    double module = 0;   ///< the support module's highlight function, output text included
};

// Pygments alone in Debian's interpreter, on the same texts: median CPU seconds per text.
DirectTimes debianPythonSeconds(const QStringList &texts, const QString &vendors)
{
    QTemporaryDir dir;
    for (qsizetype i = 0; i < texts.size(); ++i) {
        QFile file(dir.filePath(QStringLiteral("%1.py").arg(i, 3, 10, QLatin1Char('0'))));
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
def walk(text):
    for kind, value in lexer.get_tokens(text):
        pass
def median_time(work):
    work(texts[0])
    times = []
    for text in texts:
        start = time.process_time()
        work(text)
        times.append(time.process_time() - start)
    return statistics.median(times)
print(median_time(walk), median_time(lambda text: ZDPythonSupport.ZDHighlight(text, 'PythonLexer')))
)";
    QProcess python;
    python.start(QStringLiteral("/usr/bin/python3"),
                 {QStringLiteral("-B"), QStringLiteral("-I"), QStringLiteral("-c"), QString::fromUtf8(script),
                  dir.path(), vendors});
    python.waitForFinished(600000);
    const QList<QByteArray> figures = python.readAllStandardOutput().trimmed().split(' ');
    return {figures.value(0).toDouble(), figures.value(1).toDouble()};
}

// A support module that is the real one plus a plain walk over Pygments' tokens, so that the
// bridge and Pygments alone run in one interpreter.
bool writeBenchModule(const QString &directory)
{
    QString vendors = ZDHighlighter::defaultVendorsDirectory();
    vendors.replace(QLatin1String("\\"), QLatin1String("\\\\"))
        .replace(QLatin1String("'"), QLatin1String("\\'"));
    QFile module(directory + QStringLiteral("/ZDBenchSupport.py"));
    if (!module.open(QIODevice::WriteOnly))
        return false;
    module.write(QStringLiteral("import sys\n"
                                "sys.path.insert(0, '%1')\n"
                                "from ZDPythonSupport import ZDHighlight, ZDMarkdownParse, "
                                "ZDChildCountOfMarkdownSource\n"
                                "from pygments.lexers import PythonLexer\n"
                                "_lexer = PythonLexer()\n"
                                "def ZDBenchWalk(code):\n"
                                "    count = 0\n"
                                "    for kind, value in _lexer.get_tokens(code):\n"
                                "        count += 1\n"
                                "    return count\n")
                     .arg(vendors)
                     .toUtf8());
    return true;
}
} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const int rounds = argc > 1 ? std::max(3, atoi(argv[1])) : 15;
    QTemporaryDir moduleDirectory;
    if (!writeBenchModule(moduleDirectory.path()))
        return 1;
    ZDHighlighter highlighter(moduleDirectory.path(), QStringLiteral("ZDBenchSupport"));
    if (!highlighter.isLoaded()) {
        std::fprintf(stderr, "the support module did not load\n");
        return 1;
    }
    ZDPythonInterpreter &python = highlighter.interpreter();
    const QString lexer = QStringLiteral("PythonLexer");

    // 1. Bridge against Pygments alone. Every text differs, so no result comes from the cache.
    for (const qsizetype size : {qsizetype(5 * 1024), qsizetype(50 * 1024)}) {
        QStringList texts;
        for (int i = 0; i < rounds; ++i)
            texts.append(pythonSource(size, i));
        const QString warmUp = pythonSource(size, -1);
        highlighter.highlightCode(warmUp, lexer);
        python.queue().sync([&] { python.callForInteger(QStringLiteral("ZDBenchWalk"), {warmUp.toUtf8()}); });

        Times bridge, direct, module, reading;
        size_t ruleCount = 0;
        for (int i = 0; i < texts.size(); ++i) {
            const QString &text = texts[i];
            const QByteArray utf8 = text.toUtf8();
            auto walk = [&] {
                python.queue().sync([&] {
                    measure(&direct, [&] { python.callForInteger(QStringLiteral("ZDBenchWalk"), {utf8}); });
                });
            };
            auto bridged = [&] {
                measure(&bridge, [&] { ruleCount = size_t(highlighter.highlightCode(text, lexer).size()); });
            };
            // Alternate the order, so that neither side always runs on a warmer cache.
            if (i % 2) {
                bridged();
                walk();
            } else {
                walk();
                bridged();
            }
            // Where the bridge's time goes: the support module's call, and reading its output.
            QByteArray output;
            python.queue().sync([&] {
                measure(&module, [&] {
                    output = python.callForString(QStringLiteral("ZDHighlight"), {utf8, lexer.toUtf8()})
                                 .value_or(QByteArray());
                });
            });
            ZDHighlightRules rules;
            measure(&reading, [&] { ZDHighlightRuleFormat::parse(output, &rules); });
        }
        const DirectTimes debian = debianPythonSeconds(texts, ZDHighlighter::defaultVendorsDirectory());
        const double cpuRatio = median(bridge.cpu) / median(direct.cpu);
        std::printf(
            "highlight %3lld KB (%zu rules), CPU: bridge %.2f ms, Pygments alone %.2f ms, ratio %.3fx "
            "(target <= 1.15x)\n",
            static_cast<long long>(size / 1024), ruleCount, median(bridge.cpu) * 1e3,
            median(direct.cpu) * 1e3, cpuRatio);
        std::printf("    wall: bridge %.2f ms, Pygments alone %.2f ms, ratio %.3fx\n",
                    median(bridge.wall) * 1e3, median(direct.wall) * 1e3,
                    median(bridge.wall) / median(direct.wall));
        std::printf("    CPU parts: support module %.2f ms, reading its output %.2f ms\n",
                    median(module.cpu) * 1e3, median(reading.cpu) * 1e3);
        std::printf(
            "    /usr/bin/python3 for reference, CPU: Pygments alone %.2f ms, support module %.2f ms\n",
            debian.pygments * 1e3, debian.module * 1e3);
    }

    // 2. Partial re-highlight after typing one character in a 5,000-line text.
    {
        QString text;
        for (int i = 0; text.count(QLatin1Char('\n')) < 5000; ++i)
            text += pythonSource(1, i);
        QTextDocument document;
        document.setPlainText(text);
        ZDDocumentHighlighter documentHighlighter(&document, &highlighter);
        documentHighlighter.setCurrentLexer(lexer);
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
    return 0;
}
