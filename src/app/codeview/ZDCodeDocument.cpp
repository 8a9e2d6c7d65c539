#include "ZDCodeDocument.h"

#include "ZDCodeDocumentLayout.h"
#include "ZDDocumentHighlighter.h"
#include "ZDEditorTheme.h"

namespace {
const auto DefaultStepName = QStringLiteral("Typing");
const auto PlainTextLexer = QStringLiteral("TextLexer");
} // namespace

ZDCodeDocument::ZDCodeDocument(ZDHighlighter *highlighter, QObject *parent)
    : QTextDocument(parent), m_layout(new ZDCodeDocumentLayout(this)), m_highlighter(highlighter)
{
    setDocumentLayout(m_layout);
    m_lastRevision = revision();
    // Colouring reaches contentsChange as well, without a new revision.
    connect(this, &QTextDocument::contentsChange, this, [this](int position, int removed, int added) {
        if (revision() == m_lastRevision)
            return;
        m_lastRevision = revision();
        Q_EMIT textEdited(position, removed, added);
    });
    connect(this, &QTextDocument::undoCommandAdded, this, &ZDCodeDocument::recordUndoStep);
    m_documentHighlighter = new ZDDocumentHighlighter(this, highlighter, this);
}

ZDCodeDocument::~ZDCodeDocument() = default;

void ZDCodeDocument::setHighlighter(ZDHighlighter *highlighter)
{
    if (highlighter == m_highlighter)
        return;
    m_highlighter = highlighter;
    const QString lexer = m_documentHighlighter->currentLexer();
    delete m_documentHighlighter;
    m_documentHighlighter = new ZDDocumentHighlighter(this, highlighter, this);
    m_documentHighlighter->setCurrentLexer(lexer);
    m_documentHighlighter->setShowInvisibles(m_showInvisibles);
    m_documentHighlighter->setAutomaticLinkDetection(m_detectLinks);
    if (m_theme)
        m_documentHighlighter->setPalette(zdHighlightPaletteOfTheme(m_theme));
    m_documentHighlighter->updateHighlightAsync();
}

void ZDCodeDocument::setTheme(std::shared_ptr<const ZDEditorTheme> theme)
{
    if (!theme || theme == m_theme)
        return;
    m_theme = std::move(theme);
    m_documentHighlighter->setPalette(zdHighlightPaletteOfTheme(m_theme));
}

void ZDCodeDocument::setColoringOptions(bool showInvisibles, bool detectLinks)
{
    if (showInvisibles == m_showInvisibles && detectLinks == m_detectLinks)
        return;
    m_showInvisibles = showInvisibles;
    m_detectLinks = detectLinks;
    m_documentHighlighter->setShowInvisibles(showInvisibles);
    m_documentHighlighter->setAutomaticLinkDetection(detectLinks);
    m_documentHighlighter->updateHighlightAsync();
}

void ZDCodeDocument::setLexer(const QString &lexer)
{
    if ((lexer.isEmpty() ? PlainTextLexer : lexer) == m_documentHighlighter->currentLexer())
        return;
    m_documentHighlighter->setCurrentLexer(lexer);
    m_documentHighlighter->updateHighlightAsync();
}

QString ZDCodeDocument::lexer() const
{
    return m_documentHighlighter->currentLexer();
}

void ZDCodeDocument::showText(const QString &text, const QString &lexer)
{
    // The text goes in as plain text first, so that only one highlighting pass runs.
    m_documentHighlighter->setCurrentLexer(QString());
    setPlainText(text);
    m_undoSteps.clear();
    m_documentHighlighter->setCurrentLexer(lexer);
    m_documentHighlighter->updateHighlightAsync();
}

// The document counts undo commands, several to a step; each step is remembered with the
// command count at its end, so the step at hand is the last one at or below the current count.
void ZDCodeDocument::recordUndoStep()
{
    const int commands = availableUndoSteps();
    m_undoSteps.removeIf([&](const UndoStep &step) { return step.commandCount >= commands; });
    m_undoSteps.append({commands, m_pendingStepName.isEmpty() ? DefaultStepName : m_pendingStepName});
}

QString ZDCodeDocument::undoStepName() const
{
    const int commands = availableUndoSteps();
    for (auto it = m_undoSteps.crbegin(); it != m_undoSteps.crend(); ++it)
        if (it->commandCount <= commands)
            return commands > 0 ? it->name : QString();
    return commands > 0 ? DefaultStepName : QString();
}

QString ZDCodeDocument::redoStepName() const
{
    if (!isRedoAvailable())
        return QString();
    const int commands = availableUndoSteps();
    for (const UndoStep &step : m_undoSteps)
        if (step.commandCount > commands)
            return step.name;
    return DefaultStepName;
}
