#pragma once

#include "ZDHighlightRule.h"

#include <QColor>
#include <QHash>
#include <QObject>
#include <QPointer>
#include <QTextDocument>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class ZDHighlighter;

/// A range of a text in UTF-16 units.
struct ZDCharacterRange
{
    qsizetype location = 0;
    qsizetype length = 0;
    qsizetype end() const { return location + length; }
    bool operator==(const ZDCharacterRange &other) const = default;
};

/// The colours a document is highlighted with; the editor builds it from its theme.
struct ZDHighlightPalette
{
    /// Colour of a full token type ("Token.Keyword"), resolved through the theme's inheritance.
    std::function<QColor(const QString &tokenClass)> colorForType;
    QColor foregroundColor;
    QColor invisibleCharacterColor;
    QColor linkTextColor;
};

/// The palette of an editor theme (any type with the editor theme's colour accessors).
template <typename Theme> ZDHighlightPalette zdHighlightPaletteOfTheme(std::shared_ptr<const Theme> theme)
{
    return {[theme](const QString &tokenClass) { return theme->colorForType(tokenClass); },
            theme->foregroundColor(), theme->invisibleCharacterColor(), theme->linkTextColor()};
}

/// Keeps a QTextDocument highlighted through the highlighter bridge, without a widget.
///
/// The highlight state is model data: the token type of every character and the set of
/// "contextual" indexes (inside comments and strings). It is mapped to the palette's colours as
/// per-block layout formats, so colouring never enters the undo stack nor marks the document
/// modified. Edits of the document are followed automatically: the edited part is highlighted
/// again at once (in part or in whole, depending on the text's size and the last measured cost),
/// and the whole text again in the background half a second after the last edit.
///
/// To show a part: set the document's text, then the lexer and palette, then call
/// `updateHighlightAsync()` (text set while the lexer is plain text costs no interpreter call).
class ZDDocumentHighlighter : public QObject
{
    Q_OBJECT
public:
    enum class UpdateMode
    {
        Full,
        Partial
    };

    static constexpr qsizetype kAsyncWholeTextLength = 15000; ///< longer whole texts go to the background
    static constexpr qsizetype kPartialModeMinimumLength = 1000;
    static constexpr double kPartialModeMinimumInterval = 0.020; ///< seconds
    static constexpr int kDelayedWholeTextPassMs = 500;

    /// `highlighter` may be null: then nothing but plain text is coloured.
    ZDDocumentHighlighter(QTextDocument *document, ZDHighlighter *highlighter, QObject *parent = nullptr);
    ~ZDDocumentHighlighter() override;

    QTextDocument *document() const { return m_document; }

    /// Sets the colours and re-colours the whole text from the model.
    void setPalette(const ZDHighlightPalette &palette);
    /// The Pygments lexer class name; empty means plain text ("TextLexer"). Does not re-highlight.
    void setCurrentLexer(const QString &lexer) { m_lexer = lexer; }
    QString currentLexer() const;
    void setShowInvisibles(bool show) { m_showInvisibles = show; }
    bool showInvisibles() const { return m_showInvisibles; }
    /// Marks web and mail addresses as links (underlined, in the link colour) when colouring.
    void setAutomaticLinkDetection(bool detect) { m_detectLinks = detect; }
    bool automaticLinkDetection() const { return m_detectLinks; }

    // Requesting highlighting.
    void updateHighlightForRange(ZDCharacterRange range, bool async);
    /// The whole text; without an argument, in the background exactly when it is long.
    void updateHighlightAsync(std::optional<bool> async = std::nullopt);
    /// Turns rules of the code sent for `range` into text positions and applies them.
    void processRules(const ZDHighlightRules &rules, ZDCharacterRange range, bool phpPrefixed);
    /// Applies rules given in text positions.
    void highlightWithRules(const ZDHighlightRules &rules);
    void colorInvisibleCharactersInRange(ZDCharacterRange range);
    /// Finds the links of the lines the range touches.
    void detectLinksInRange(ZDCharacterRange range);

    // Following edits (called by the document's change signal).
    void textDidChangeInRange(ZDCharacterRange editedRange, qsizetype originalStringLength,
                              qsizetype replacementStringLength);
    UpdateMode updateModeOnTextEditedByUser() const;
    /// The range a partial re-highlight covers after an edit (already applied to the text);
    /// none when there is nothing to highlight.
    std::optional<ZDCharacterRange> partialRangeForEdit(ZDCharacterRange editedRange, qsizetype originalStringLength,
                                                   qsizetype replacementStringLength) const;
    ZDCharacterRange extendedRangeOfRange(ZDCharacterRange range, qsizetype maxIndex) const;
    void didUpdateHighlightForEntireContent(double seconds);
    bool hasPendingWholeTextPass() const { return m_delayedPass.isActive(); }

    // The model.
    /// Token type of the character ("" when it has none of its own).
    QString tokenClassAt(qsizetype index) const;
    QColor colorAt(qsizetype index) const;
    bool isContextualIndex(qsizetype index) const;
    bool isLinkIndex(qsizetype index) const;
    qsizetype contextualIndexCount() const;
    QString lastLexer() const { return m_lastLexer; }
    qsizetype lastContentLength() const { return m_lastContentLength; }
    double lastInterval() const { return m_lastInterval; }

Q_SIGNALS:
    /// Rules were applied to the text (at once or when a background result arrived).
    void highlightApplied();

private:
    static constexpr quint16 kForeground = 0; // class ids of the model
    static constexpr quint16 kInvisible = 1;

    qsizetype textLength() const { return qsizetype(m_classes.size()); }
    QString codeForRange(const QString &text, ZDCharacterRange range, bool *phpPrefixed) const;
    void applyRules(const ZDHighlightRules &rules, ZDCharacterRange range, bool phpPrefixed);
    void finishColoring(ZDCharacterRange range);
    void setClassForRange(qsizetype location, qsizetype length, quint16 classId);
    quint16 classIdForType(const QString &tokenClass);
    QColor colorForClassId(quint16 classId) const;
    ZDCharacterRange extendedRange(ZDCharacterRange range, qsizetype maxIndex, const QString &text) const;
    ZDCharacterRange cssRange(ZDCharacterRange range, qsizetype maxIndex, const QString &text) const;

    void onContentsChange(int position, int charsRemoved, int charsAdded);
    void markDirty(qsizetype location, qsizetype length);
    void flushFormats();

    QPointer<QTextDocument> m_document;
    ZDHighlighter *m_highlighter;
    ZDHighlightPalette m_palette;
    QString m_lexer;
    bool m_showInvisibles = false;
    bool m_detectLinks = false;

    std::vector<quint16> m_classes; // token type of each character
    std::vector<char> m_contextual; // inside a comment or a string
    std::vector<char> m_links;      // part of a detected link
    QStringList m_classNames;       // by class id
    QHash<QString, quint16> m_classIds;
    mutable QList<QColor> m_classColors; // by class id, resolved on first use

    qsizetype m_dirtyStart = -1;
    qsizetype m_dirtyEnd = -1;
    bool m_applyingFormats = false;

    QString m_lastLexer;
    qsizetype m_lastContentLength = 0;
    double m_lastInterval = 0.0;
    QTimer m_delayedPass;
};
