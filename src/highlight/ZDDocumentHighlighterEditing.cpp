// How the highlighter follows edits: the model moves with the text, then the edited part (or
// the whole text) is highlighted again.
#include "ZDDocumentHighlighter.h"

#include "ZDLogger.h"

#include <QJsonDocument>
#include <QTextDocument>

namespace {
const QString kCssLexer = QStringLiteral("CssLexer");
} // namespace

void ZDDocumentHighlighter::onContentsChange(int position, int charsRemoved, int charsAdded)
{
    if (m_applyingFormats || !m_document)
        return;
    // The document counts its final paragraph separator in some reports (a whole-text
    // replacement, for one); bring the numbers back to the text's own length.
    const qsizetype oldLength = textLength();
    const qsizetype newLength = m_document->characterCount() - 1;
    qsizetype location = std::clamp<qsizetype>(position, 0, oldLength);
    qsizetype removed = std::clamp<qsizetype>(charsRemoved, 0, oldLength - location);
    qsizetype added = newLength - (oldLength - removed);
    if (added < 0 || added > charsAdded + 1) {
        location = 0;
        removed = oldLength;
        added = newLength;
    }
    if (removed == 0 && added == 0)
        return;
    textDidChangeInRange({location, removed}, oldLength, added);
}

void ZDDocumentHighlighter::textDidChangeInRange(ZDCharacterRange editedRange, qsizetype originalStringLength,
                                                 qsizetype replacementStringLength)
{
    // The model moves with the text: the replaced characters go, the new ones take the type of
    // the character before them until they are highlighted, and are not contextual.
    const auto location = size_t(editedRange.location);
    const quint16 inherited =
        location > 0 && location <= m_classes.size() ? m_classes[location - 1] : kForeground;
    m_classes.erase(m_classes.begin() + location, m_classes.begin() + location + size_t(editedRange.length));
    m_classes.insert(m_classes.begin() + location, size_t(replacementStringLength), inherited);
    m_contextual.erase(m_contextual.begin() + location,
                       m_contextual.begin() + location + size_t(editedRange.length));
    m_contextual.insert(m_contextual.begin() + location, size_t(replacementStringLength), 0);
    m_links.erase(m_links.begin() + location, m_links.begin() + location + size_t(editedRange.length));
    m_links.insert(m_links.begin() + location, size_t(replacementStringLength), 0);
    markDirty(editedRange.location, replacementStringLength);

    if (updateModeOnTextEditedByUser() == UpdateMode::Full) {
        updateHighlightAsync(false);
        flushFormats();
        return;
    }

    const std::optional<ZDCharacterRange> range =
        partialRangeForEdit(editedRange, originalStringLength, replacementStringLength);
    if (!range) {
        flushFormats();
        return;
    }
    updateHighlightForRange(*range, false);
    m_delayedPass.start();
}

std::optional<ZDCharacterRange> ZDDocumentHighlighter::partialRangeForEdit(ZDCharacterRange editedRange,
                                                                      qsizetype originalStringLength,
                                                                      qsizetype replacementStringLength) const
{
    const qsizetype maxIndex =
        std::min(originalStringLength - editedRange.length + replacementStringLength - 1, textLength() - 1);
    ZDCharacterRange range{editedRange.location, replacementStringLength};
    if (range.end() - 1 > maxIndex)
        range.length = maxIndex - range.location + 1;
    if (maxIndex < range.location || !m_document)
        return std::nullopt;

    const QString text = m_document->toPlainText();
    if (currentLexer() == kCssLexer) {
        range = cssRange(range, maxIndex, text);
    } else {
        for (ZDCharacterRange previous = range;; previous = range) {
            range = extendedRange(range, maxIndex, text);
            if (range == previous)
                break;
        }
    }
    if (range.length == 0)
        return std::nullopt;
    return range;
}

ZDDocumentHighlighter::UpdateMode ZDDocumentHighlighter::updateModeOnTextEditedByUser() const
{
    const qsizetype length = textLength();
    if (length < kPartialModeMinimumLength)
        return UpdateMode::Full;
    if (m_lastLexer.isNull())
        return UpdateMode::Partial;
    if (m_lastContentLength - length > kPartialModeMinimumLength)
        return UpdateMode::Full;
    return m_lastInterval > kPartialModeMinimumInterval ? UpdateMode::Partial : UpdateMode::Full;
}

ZDCharacterRange ZDDocumentHighlighter::extendedRangeOfRange(ZDCharacterRange range, qsizetype maxIndex) const
{
    return extendedRange(range, maxIndex, m_document ? m_document->toPlainText() : QString());
}

ZDCharacterRange ZDDocumentHighlighter::extendedRange(ZDCharacterRange range, qsizetype maxIndex,
                                                 const QString &text) const
{
    qsizetype start = range.location;
    while (start > 0 && isContextualIndex(start - 1))
        --start;
    qsizetype end = range.end();
    while (end <= maxIndex && isContextualIndex(end))
        ++end;

    if (start < 0 || end > text.size()) {
        const QVariantMap info{
            {QStringLiteral("Lexer"), currentLexer()},
            {QStringLiteral("Length"), text.size()},
            {QStringLiteral("MovedRange"), QStringLiteral("{%1, %2}").arg(start).arg(end - start)}};
        zdLog(ZDLogLevel::Error, ZDLogDomain::Editor,
              QStringLiteral("movedRange out of bounds. userInfo=%1")
                  .arg(QString::fromUtf8(QJsonDocument::fromVariant(info).toJson(QJsonDocument::Compact))));
        return range;
    }

    // Whole lines: from the start of the first line to the end of the last line's contents.
    const bool startsWithNewline = end > start && text.at(start) == QLatin1Char('\n');
    // (lastIndexOf from -1 would search the whole text.)
    const qsizetype lineStart =
        startsWithNewline || start == 0 ? start : text.lastIndexOf(QLatin1Char('\n'), start - 1) + 1;
    const qsizetype lastCharacter = end > start ? end - 1 : end;
    qsizetype contentsEnd = text.indexOf(QLatin1Char('\n'), lastCharacter);
    if (contentsEnd < 0)
        contentsEnd = text.size();
    return {lineStart, std::max<qsizetype>(0, contentsEnd - lineStart)};
}

ZDCharacterRange ZDDocumentHighlighter::cssRange(ZDCharacterRange range, qsizetype maxIndex, const QString &text) const
{
    // A rule of a style sheet is highlighted from its selector to its closing brace.
    qsizetype start = range.location;
    while (start > 0) {
        const QChar c = text.at(start - 1);
        if (c == QLatin1Char('}'))
            break;
        --start;
        if (c == QLatin1Char('{'))
            break;
    }
    qsizetype end = range.end();
    while (end < maxIndex) {
        const QChar c = text.at(end);
        if (c == QLatin1Char('{'))
            break;
        ++end;
        if (c == QLatin1Char('}'))
            break;
    }
    return {start, end - start};
}
