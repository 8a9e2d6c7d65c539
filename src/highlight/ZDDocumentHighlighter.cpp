#include "ZDDocumentHighlighter.h"

#include "ZDAnalytics.h"
#include "ZDHighlighter.h"
#include "ZDLogger.h"

#include <QElapsedTimer>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>

namespace {
const QString kTextLexer = QStringLiteral("TextLexer");
const QString kPhpLexer = QStringLiteral("PhpLexer");
const QString kMarkdownLexer = QStringLiteral("MarkdownLexer");
const QString kPhpPrefix = QStringLiteral("<?php\n");

QString rangeText(ZDCharacterRange range)
{
    return QStringLiteral("{%1, %2}").arg(range.location).arg(range.length);
}

QString mapText(const QVariantMap &map)
{
    return QString::fromUtf8(QJsonDocument::fromVariant(map).toJson(QJsonDocument::Compact));
}
} // namespace

ZDDocumentHighlighter::ZDDocumentHighlighter(QTextDocument *document, ZDHighlighter *highlighter,
                                             QObject *parent)
    : QObject(parent), m_document(document), m_highlighter(highlighter)
{
    m_palette.colorForType = [](const QString &) { return QColor(Qt::black); };
    m_palette.foregroundColor = Qt::black;
    m_palette.invisibleCharacterColor = Qt::gray;
    m_palette.linkTextColor = Qt::blue;
    m_classNames = {QString(), QString()};
    m_classColors = {QColor(), QColor()};

    // The document reports edits with their positions only once it has a layout.
    document->documentLayout();
    const qsizetype length = document->characterCount() - 1;
    m_classes.assign(size_t(length), kForeground);
    m_contextual.assign(size_t(length), 0);
    m_links.assign(size_t(length), 0);
    connect(document, &QTextDocument::contentsChange, this, &ZDDocumentHighlighter::onContentsChange);
    // Replacing the whole text reports only the removal; the insertion shows in the length.
    connect(document, &QTextDocument::contentsChanged, this, [this] {
        const qsizetype oldLength = textLength();
        if (!m_applyingFormats && m_document && m_document->characterCount() - 1 != oldLength)
            textDidChangeInRange({0, oldLength}, oldLength, m_document->characterCount() - 1);
    });

    m_delayedPass.setSingleShot(true);
    m_delayedPass.setInterval(kDelayedWholeTextPassMs);
    connect(&m_delayedPass, &QTimer::timeout, this, [this] { updateHighlightAsync(true); });
}

ZDDocumentHighlighter::~ZDDocumentHighlighter() = default;

QString ZDDocumentHighlighter::currentLexer() const
{
    return m_lexer.isEmpty() ? kTextLexer : m_lexer;
}

void ZDDocumentHighlighter::setPalette(const ZDHighlightPalette &palette)
{
    m_palette = palette;
    for (QColor &color : m_classColors)
        color = QColor();
    markDirty(0, textLength());
    flushFormats();
}

// Requesting highlighting -----------------------------------------------------------------------

QString ZDDocumentHighlighter::codeForRange(const QString &text, ZDCharacterRange range, bool *phpPrefixed) const
{
    const QString code = text.mid(range.location, range.length);
    *phpPrefixed = currentLexer() == kPhpLexer && !code.trimmed().startsWith(QStringLiteral("<?php"));
    return *phpPrefixed ? kPhpPrefix + code : code;
}

void ZDDocumentHighlighter::updateHighlightForRange(ZDCharacterRange range, bool async)
{
    if (!m_document)
        return;
    const QString lexer = currentLexer();
    if (range.location < 0 || range.length < 0 || range.end() > textLength()) {
        const QVariantMap info{{QStringLiteral("Lexer"), lexer},
                               {QStringLiteral("Length"), textLength()},
                               {QStringLiteral("MovedRange"), rangeText(range)}};
        zdLog(ZDLogLevel::Error, ZDLogDomain::Editor,
              QStringLiteral("length out of range. userInfo=%1").arg(mapText(info)));
        return;
    }
    if (lexer == kTextLexer || !m_highlighter) {
        setClassForRange(range.location, range.length, kForeground);
        finishColoring(range);
        return;
    }

    bool phpPrefixed = false;
    const QString code = codeForRange(m_document->toPlainText(), range, &phpPrefixed);
    if (!async) {
        applyRules(m_highlighter->highlightCode(code, lexer), range, phpPrefixed);
        return;
    }
    m_highlighter->highlightCodeAtBackground(
        code, lexer, this, [this, range, code, phpPrefixed](const ZDHighlightRules &rules) {
            bool unused = false;
            if (!m_document || range.end() != textLength() ||
                codeForRange(m_document->toPlainText(), range, &unused) != code) {
                zdLog(ZDLogLevel::Debug, ZDLogDomain::Editor,
                      QStringLiteral("Async highlighting abort: code changed."));
                return;
            }
            applyRules(rules, range, phpPrefixed);
            zdLog(ZDLogLevel::Debug, ZDLogDomain::Editor, QStringLiteral("Async rules applied"));
        });
}

void ZDDocumentHighlighter::applyRules(const ZDHighlightRules &rules, ZDCharacterRange range, bool phpPrefixed)
{
    processRules(rules, range, phpPrefixed);
    finishColoring(range);
    Q_EMIT highlightApplied();
}

void ZDDocumentHighlighter::finishColoring(ZDCharacterRange range)
{
    if (m_showInvisibles)
        colorInvisibleCharactersInRange(range);
    if (m_detectLinks)
        detectLinksInRange(range);
    flushFormats();
}

void ZDDocumentHighlighter::updateHighlightAsync(std::optional<bool> async)
{
    const qsizetype length = textLength();
    const bool background = async.value_or(length > kAsyncWholeTextLength);
    if (background) {
        updateHighlightForRange({0, length}, true);
        didUpdateHighlightForEntireContent(0.0);
        return;
    }
    QElapsedTimer timer;
    timer.start();
    updateHighlightForRange({0, length}, false);
    didUpdateHighlightForEntireContent(std::max<double>(timer.nsecsElapsed() / 1e9, 1e-9));
}

void ZDDocumentHighlighter::didUpdateHighlightForEntireContent(double seconds)
{
    if (seconds == 0.0) {
        m_lastLexer.clear();
        return;
    }
    m_lastContentLength = textLength();
    m_lastInterval = seconds;
    m_lastLexer = currentLexer();
}

// Applying rules --------------------------------------------------------------------------------

void ZDDocumentHighlighter::processRules(const ZDHighlightRules &rules, ZDCharacterRange range, bool phpPrefixed)
{
    if (!m_document)
        return;
    if (range.location == 0 && range.length == textLength())
        std::fill(m_contextual.begin(), m_contextual.end(), 0);

    ZDHighlightRules work = rules;
    qsizetype shift = 0;
    if (phpPrefixed) {
        work.remove(0, std::min<qsizetype>(2, work.size()));
        shift = range.location - kPhpPrefix.size();
    } else {
        // The lexer drops the newlines a text starts with; its positions start after them.
        const QString text = m_document->toPlainText();
        qsizetype newlines = 0;
        while (range.location + newlines < text.size() &&
               text.at(range.location + newlines) == QLatin1Char('\n'))
            ++newlines;
        shift = range.location + newlines;
    }

    if (currentLexer() == kMarkdownLexer) {
        // Markdown's emphasis markers come out as keywords; they take the colour of what they mark.
        static const QStringList marked{
            QStringLiteral("Token.Comment.Multiline"), QStringLiteral("Token.Generic.Strong"),
            QStringLiteral("Token.Generic.Emph"), QStringLiteral("Token.Literal.String.Doc")};
        const QString keyword = QStringLiteral("Token.Keyword");
        for (qsizetype i = 0; i < work.size(); ++i) {
            for (const QString &tokenClass : marked) {
                if (work[i].tokenClass != tokenClass)
                    continue;
                for (qsizetype neighbour : {i - 1, i + 1}) {
                    if (neighbour >= 0 && neighbour < work.size() && work[neighbour].tokenClass == keyword)
                        work[neighbour].tokenClass = tokenClass;
                }
            }
        }
    }

    ZDHighlightRules kept;
    kept.reserve(work.size());
    for (ZDHighlightRule rule : std::as_const(work)) {
        rule.begin += shift;
        if (rule.begin < 0) {
            const QVariantMap info{{QStringLiteral("Lexer"), currentLexer()},
                                   {QStringLiteral("Range"), rangeText(range)},
                                   {QStringLiteral("Options"), phpPrefixed ? 1 : 0},
                                   {QStringLiteral("Shift"), shift}};
            zdLog(ZDLogLevel::Error, ZDLogDomain::Editor,
                  QStringLiteral("Rule With Negative Location. userInfo=%1").arg(mapText(info)));
            QVariantMap properties = info;
            properties.insert(QStringLiteral("Description"), QStringLiteral("Rule with negative location"));
            zdReportEvent(QStringLiteral("PygmentsErr"), properties);
            continue;
        }
        kept.append(rule);
    }
    highlightWithRules(kept);
}

void ZDDocumentHighlighter::highlightWithRules(const ZDHighlightRules &rules)
{
    const qsizetype length = textLength();
    for (const ZDHighlightRule &rule : rules) {
        if (!rule.valid || rule.begin < 0 || rule.length < 0)
            continue;
        qsizetype ruleLength = rule.length;
        // The lexer ends the text with a newline of its own.
        if (ruleLength > 1 && rule.begin + ruleLength == length + 1)
            ruleLength -= 1;
        if (rule.begin + ruleLength > length)
            continue;
        setClassForRange(rule.begin, ruleLength, classIdForType(rule.tokenClass));
        const char contextual = rule.tokenClass.contains(QStringLiteral("Comment")) ||
                                rule.tokenClass.contains(QStringLiteral("String"));
        std::fill_n(m_contextual.begin() + rule.begin, ruleLength, contextual);
    }
}

void ZDDocumentHighlighter::colorInvisibleCharactersInRange(ZDCharacterRange range)
{
    if (!m_document)
        return;
    const QString text = m_document->toPlainText();
    const qsizetype end = std::min(range.end(), qsizetype(text.size()));
    for (qsizetype i = std::max<qsizetype>(0, range.location); i < end; ++i) {
        const QChar c = text.at(i);
        if (c.isSpace() || c.category() == QChar::Other_Control)
            m_classes[size_t(i)] = kInvisible;
    }
    markDirty(range.location, range.length);
}

void ZDDocumentHighlighter::detectLinksInRange(ZDCharacterRange range)
{
    if (!m_document)
        return;
    static const QRegularExpression link(
        QStringLiteral("\\b(?:(?:https?|ftp|file)://|mailto:|www\\.)[^\\s<>\"'`]+"));
    const QString text = m_document->toPlainText();
    const qsizetype start =
        range.location > 0 ? text.lastIndexOf(QLatin1Char('\n'), range.location - 1) + 1 : 0;
    qsizetype end = text.indexOf(QLatin1Char('\n'), std::min(range.end(), qsizetype(text.size())));
    if (end < 0)
        end = text.size();
    std::fill(m_links.begin() + start, m_links.begin() + end, 0);
    for (auto match = link.globalMatch(QStringView(text).mid(start, end - start)); match.hasNext();) {
        const QRegularExpressionMatch found = match.next();
        qsizetype length = found.capturedLength();
        // Sentence punctuation after an address is not part of it.
        while (length > 0 &&
               QStringLiteral(".,;:!?)]}").contains(text.at(start + found.capturedStart() + length - 1)))
            --length;
        std::fill_n(m_links.begin() + start + found.capturedStart(), length, 1);
    }
    markDirty(start, end - start);
}

// The model -------------------------------------------------------------------------------------

void ZDDocumentHighlighter::setClassForRange(qsizetype location, qsizetype length, quint16 classId)
{
    location = std::clamp<qsizetype>(location, 0, textLength());
    length = std::clamp<qsizetype>(length, 0, textLength() - location);
    std::fill_n(m_classes.begin() + location, length, classId);
    markDirty(location, length);
}

quint16 ZDDocumentHighlighter::classIdForType(const QString &tokenClass)
{
    const auto found = m_classIds.constFind(tokenClass);
    if (found != m_classIds.constEnd())
        return found.value();
    const quint16 id = quint16(m_classNames.size());
    m_classNames.append(tokenClass);
    m_classColors.append(QColor());
    m_classIds.insert(tokenClass, id);
    return id;
}

QColor ZDDocumentHighlighter::colorForClassId(quint16 classId) const
{
    QColor &color = m_classColors[classId];
    if (!color.isValid()) {
        if (classId == kForeground)
            color = m_palette.foregroundColor;
        else if (classId == kInvisible)
            color = m_palette.invisibleCharacterColor;
        else
            color = m_palette.colorForType ? m_palette.colorForType(m_classNames.at(classId))
                                           : m_palette.foregroundColor;
    }
    return color;
}

QString ZDDocumentHighlighter::tokenClassAt(qsizetype index) const
{
    if (index < 0 || index >= textLength())
        return {};
    return m_classNames.at(m_classes[size_t(index)]);
}

QColor ZDDocumentHighlighter::colorAt(qsizetype index) const
{
    if (index < 0 || index >= textLength())
        return {};
    return colorForClassId(m_classes[size_t(index)]);
}

bool ZDDocumentHighlighter::isLinkIndex(qsizetype index) const
{
    return index >= 0 && index < textLength() && m_links[size_t(index)];
}

bool ZDDocumentHighlighter::isContextualIndex(qsizetype index) const
{
    return index >= 0 && index < textLength() && m_contextual[size_t(index)];
}

qsizetype ZDDocumentHighlighter::contextualIndexCount() const
{
    return std::count(m_contextual.begin(), m_contextual.end(), 1);
}

// Colours on the document -----------------------------------------------------------------------

void ZDDocumentHighlighter::markDirty(qsizetype location, qsizetype length)
{
    const qsizetype end = location + std::max<qsizetype>(0, length);
    m_dirtyStart = m_dirtyStart < 0 ? location : std::min(m_dirtyStart, location);
    m_dirtyEnd = std::max(m_dirtyEnd, end);
}

void ZDDocumentHighlighter::flushFormats()
{
    if (!m_document || m_dirtyStart < 0)
        return;
    const qsizetype start = m_dirtyStart;
    const qsizetype end = std::min(m_dirtyEnd, textLength());
    m_dirtyStart = m_dirtyEnd = -1;

    QTextBlock block = m_document->findBlock(int(start));
    const int firstPosition = block.position();
    int lastEnd = firstPosition;
    QTextCharFormat format;
    for (; block.isValid() && block.position() <= end; block = block.next()) {
        const qsizetype blockStart = block.position();
        const qsizetype blockEnd = std::min<qsizetype>(blockStart + block.length() - 1, textLength());
        QList<QTextLayout::FormatRange> ranges;
        qsizetype runStart = blockStart;
        while (runStart < blockEnd) {
            const quint16 id = m_classes[size_t(runStart)];
            const char isLink = m_links[size_t(runStart)];
            qsizetype runEnd = runStart + 1;
            while (runEnd < blockEnd && m_classes[size_t(runEnd)] == id && m_links[size_t(runEnd)] == isLink)
                ++runEnd;
            format.setForeground(isLink ? m_palette.linkTextColor : colorForClassId(id));
            format.setFontUnderline(isLink);
            format.setAnchor(isLink);
            ranges.append({int(runStart - blockStart), int(runEnd - runStart), format});
            runStart = runEnd;
        }
        block.layout()->setFormats(ranges);
        lastEnd = block.position() + block.length();
    }
    // Redraws without touching the text: no undo step, no modification.
    m_applyingFormats = true;
    m_document->markContentsDirty(firstPosition, lastEnd - firstPosition);
    m_applyingFormats = false;
}
