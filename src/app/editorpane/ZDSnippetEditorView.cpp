#include "ZDSnippetEditorView.h"

#include "ZDDataCenter.h"
#include "ZDLanguageChooser.h"
#include "ZDLanguageRegistry.h"
#include "ZDMulticastDelegateHandler.h"
#include "ZDSnippet.h"
#include "ZDSnippetPart.h"
#include "ZDSyntaxHighlightedTextView.h"
#include "ZDTag.h"
#include "ZDTagTokenField.h"
#include "ZDUserDefaults.h"

#include <QAction>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QStackedWidget>
#include <QTabBar>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

namespace {
// A detached copy, so that the record can later be compared with what the pane showed.
ZDSnippetPtr snapshotOf(const ZDSnippet &snippet)
{
    QList<ZDSnippetPartPtr> parts;
    for (const ZDSnippetPartPtr &part : snippet.parts())
        parts.append(std::make_shared<ZDSnippetPart>(part->title(), part->UUID(), part->language(),
                                                     part->noteText(), part->contentText(), part->dateCreated(),
                                                     part->dateModified(), part->snippetUUID()));
    return std::make_shared<ZDSnippet>(snippet.title(), snippet.UUID(), snippet.folderUUID(),
                                       snippet.tagUUIDs(), snippet.gistIdentifier(), snippet.githubUsername(),
                                       snippet.githubHTMLURL(), parts, snippet.dateCreated(),
                                       snippet.dateModified());
}

bool listContains(const ZDSnippetList &snippets, const ZDSnippetPtr &snippet)
{
    return snippet && std::any_of(snippets.cbegin(), snippets.cend(),
                                  [&](const ZDSnippetPtr &s) { return s && s->isEqual(snippet.get()); });
}
} // namespace

ZDSnippetEditorView::ZDSnippetEditorView(ZDDataCenter *dataCenter, ZDHighlighter *highlighter,
                                         QWidget *parent)
    : QWidget(parent), m_center(dataCenter), m_highlighter(highlighter),
      m_defaults(ZDUserDefaults::standardUserDefaults()), m_editing(dataCenter, this)
{
    buildWidgets();
    createActions();
    m_commitTimer = new QTimer(this);
    m_commitTimer->setSingleShot(true);
    m_commitTimer->setInterval(TextCommitDelayMs);
    connect(m_commitTimer, &QTimer::timeout, this, &ZDSnippetEditorView::commitPendingText);
    if (m_defaults)
        connect(m_defaults, &ZDUserDefaults::valueChanged, this, [this](const QString &key) {
            if (key == ZDPreferenceKeys::ShowNotes)
                updateNotesVisibility();
        });
    updateNotesVisibility();
    ZDMulticastDelegateHandler::globalHandler().addDelegate(this);
    setSnippet(nullptr);
}

ZDSnippetEditorView::~ZDSnippetEditorView()
{
    commitPendingText();
    // The bridge may be destroyed before the pane's children are.
    m_code->setHighlighter(nullptr);
}

void ZDSnippetEditorView::buildWidgets()
{
    m_stack = new QStackedWidget(this);
    auto *outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(m_stack);

    m_emptyLabel = new QLabel(tr("No Snippet Selected"), m_stack);
    m_emptyLabel->setAlignment(Qt::AlignCenter);
    m_emptyLabel->setEnabled(false);
    QFont emptyFont = m_emptyLabel->font();
    emptyFont.setPointSizeF(emptyFont.pointSizeF() * 1.4);
    m_emptyLabel->setFont(emptyFont);
    m_stack->addWidget(m_emptyLabel);

    auto *page = new QWidget(m_stack);
    auto *layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    m_stack->addWidget(page);

    auto *header = new QWidget(page);
    auto *headerLayout = new QVBoxLayout(header);
    headerLayout->setContentsMargins(12, 10, 12, 6);
    headerLayout->setSpacing(6);
    m_title = new QLineEdit(header);
    m_title->setObjectName(QStringLiteral("snippetTitleField"));
    m_title->setFrame(false);
    m_title->setPlaceholderText(tr("Title"));
    QFont titleFont = m_title->font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.45);
    titleFont.setWeight(QFont::DemiBold);
    m_title->setFont(titleFont);
    m_title->setAutoFillBackground(false);
    m_title->setStyleSheet(QStringLiteral("QLineEdit { background: transparent; }"));
    headerLayout->addWidget(m_title);
    m_tags = new ZDTagTokenField(header);
    headerLayout->addWidget(m_tags);
    layout->addWidget(header);

    auto *bar = new QWidget(page);
    auto *barLayout = new QHBoxLayout(bar);
    barLayout->setContentsMargins(8, 0, 8, 0);
    barLayout->setSpacing(4);
    m_parts = new QTabBar(bar);
    m_parts->setObjectName(QStringLiteral("partBar"));
    m_parts->setMovable(true);
    m_parts->setDocumentMode(true);
    m_parts->setExpanding(false);
    m_parts->setElideMode(Qt::ElideNone);
    m_parts->setUsesScrollButtons(true);
    m_parts->setFocusPolicy(Qt::StrongFocus);
    m_parts->setContextMenuPolicy(Qt::CustomContextMenu);
    // The bar is built empty; without a floor the layout keeps the height of that moment.
    m_parts->setMinimumHeight(m_parts->fontMetrics().height() + 14);
    barLayout->addWidget(m_parts);
    m_addPart = new QToolButton(bar);
    m_addPart->setText(QStringLiteral("+"));
    m_addPart->setToolTip(tr("Add a fragment"));
    m_addPart->setAutoRaise(true);
    barLayout->addWidget(m_addPart);
    barLayout->addStretch(1);
    m_language = new ZDLanguageChooser(bar);
    m_language->setAutoRaise(true);
    barLayout->addWidget(m_language);
    m_notesToggle = new QToolButton(bar);
    m_notesToggle->setText(tr("Notes"));
    m_notesToggle->setCheckable(true);
    m_notesToggle->setAutoRaise(true);
    m_notesToggle->setToolTip(tr("Show or hide the fragment's notes"));
    barLayout->addWidget(m_notesToggle);
    layout->addWidget(bar);

    m_splitter = new QSplitter(Qt::Vertical, page);
    m_splitter->setChildrenCollapsible(false);
    m_code = new ZDSyntaxHighlightedTextView(m_splitter);
    m_code->setObjectName(QStringLiteral("codeView"));
    m_code->setFrameShape(QFrame::NoFrame);
    m_code->setHighlighter(m_highlighter);
    m_notes = new QPlainTextEdit(m_splitter);
    m_notes->setObjectName(QStringLiteral("notesView"));
    m_notes->setPlaceholderText(tr("Notes"));
    m_notes->setTabChangesFocus(true);
    m_splitter->addWidget(m_code);
    m_splitter->addWidget(m_notes);
    m_splitter->setStretchFactor(0, 4);
    m_splitter->setStretchFactor(1, 1);
    layout->addWidget(m_splitter, 1);

    setTabOrder(m_title, m_tags);
    setTabOrder(m_tags, m_parts);
    setTabOrder(m_parts, m_addPart);
    setTabOrder(m_addPart, m_language);
    setTabOrder(m_language, m_code);
    setTabOrder(m_code, m_notes);

    connect(m_title, &QLineEdit::textEdited, this, [this] {
        m_titleDirty = true;
        scheduleCommit();
    });
    connect(m_title, &QLineEdit::editingFinished, this, &ZDSnippetEditorView::commitPendingText);
    connect(m_tags, &ZDTagTokenField::tagNamesEdited, this, [this](const QStringList &names) {
        if (m_editing.setTagNames(m_snippet, names))
            rememberShownState();
        refreshTags();
    });
    connect(m_parts, &QTabBar::currentChanged, this, [this](int index) {
        if (!m_loading)
            showPart(index);
    });
    connect(m_parts, &QTabBar::tabMoved, this, [this](int from, int to) {
        if (!m_loading && m_editing.movePart(m_snippet, from, to))
            rememberShownState();
    });
    connect(m_parts, &QTabBar::tabBarDoubleClicked, this, [this](int index) {
        if (index >= 0) {
            selectPart(index);
            renameCurrentPartInteractively();
        } else {
            addPart();
        }
    });
    connect(m_parts, &QWidget::customContextMenuRequested, this, [this](const QPoint &point) {
        const int index = m_parts->tabAt(point);
        if (index < 0)
            return;
        selectPart(index);
        QMenu menu(this);
        menu.addAction(partAction(QStringLiteral("renamePart")));
        menu.addAction(partAction(QStringLiteral("removePart")));
        menu.addSeparator();
        menu.addAction(partAction(QStringLiteral("addPart")));
        menu.exec(m_parts->mapToGlobal(point));
    });
    connect(m_addPart, &QToolButton::clicked, this, &ZDSnippetEditorView::addPart);
    connect(m_language, &ZDLanguageChooser::languageChosen, this, [this](const ZDLanguage &language) {
        if (m_editing.setLanguage(m_snippet, currentPart(), language))
            rememberShownState();
        m_code->setCurrentLexer(language.identifier());
    });
    connect(m_notesToggle, &QToolButton::toggled, this, [this](bool shown) {
        if (m_defaults && m_defaults->showNotes() != shown)
            m_defaults->setShowNotes(shown);
        else
            updateNotesVisibility();
    });
    connect(m_code, &ZDSyntaxHighlightedTextView::textDidChange, this, [this] {
        if (m_loading || !currentPart())
            return;
        m_editing.setContent(currentPart(), m_code->toPlainText());
        m_textDirty = true;
        rememberShownState();
        scheduleCommit();
    });
    connect(m_notes, &QPlainTextEdit::textChanged, this, [this] {
        if (m_loading || !currentPart() || currentPart()->note() == m_notes->toPlainText())
            return;
        m_editing.setNote(currentPart(), m_notes->toPlainText());
        m_textDirty = true;
        rememberShownState();
        scheduleCommit();
    });
}

void ZDSnippetEditorView::createActions()
{
    const auto add = [this](const char *identifier, const QString &title, const QKeySequence &shortcut,
                            std::function<void()> handler) {
        auto *action = new QAction(title, this);
        action->setObjectName(QString::fromLatin1(identifier));
        action->setShortcut(shortcut);
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        connect(action, &QAction::triggered, this, std::move(handler));
        addAction(action);
        m_actions.insert(QString::fromLatin1(identifier), action);
    };
    add("addPart", tr("New Fragment"), QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_N), [this] { addPart(); });
    add("removePart", tr("Remove Fragment"), {}, [this] { removeCurrentPart(); });
    add("renamePart", tr("Rename Fragment…"), QKeySequence(Qt::Key_F2),
        [this] { renameCurrentPartInteractively(); });
    add("nextPart", tr("Next Fragment"), QKeySequence(Qt::CTRL | Qt::Key_PageDown),
        [this] { selectPart((currentPartIndex() + 1) % std::max(1, int(m_parts->count()))); });
    add("previousPart", tr("Previous Fragment"), QKeySequence(Qt::CTRL | Qt::Key_PageUp), [this] {
        const int count = std::max(1, int(m_parts->count()));
        selectPart((currentPartIndex() + count - 1) % count);
    });
}

void ZDSnippetEditorView::updateActions()
{
    const bool hasSnippet = bool(m_snippet);
    for (QAction *action : std::as_const(m_actions))
        action->setEnabled(hasSnippet);
    m_actions.value(QStringLiteral("removePart"))->setEnabled(hasSnippet && m_snippet->partsCount() > 1);
}

// Showing a snippet -----------------------------------------------------------------------------

void ZDSnippetEditorView::setSnippet(ZDSnippetPtr snippet)
{
    // Selecting the shown snippet again (a list reloading its rows) keeps the editing state.
    if (snippet && m_snippet && snippet->isEqual(m_snippet.get())) {
        reconsider(snippet);
        return;
    }
    commitPendingText();
    m_snippet = std::move(snippet);
    m_shownPartUUID.clear();
    clearCode(); // a new snippet starts without the old text and its history
    reload();
}

void ZDSnippetEditorView::clearCode()
{
    m_loading = true;
    m_code->showText(QString(), QString());
    m_loading = false;
}

ZDSnippetPartPtr ZDSnippetEditorView::currentPart() const
{
    const int index = currentPartIndex();
    if (!m_snippet || index < 0 || index >= m_snippet->partsCount())
        return nullptr;
    return m_snippet->parts().at(index);
}

int ZDSnippetEditorView::currentPartIndex() const
{
    return m_parts->currentIndex();
}

void ZDSnippetEditorView::selectPart(int index)
{
    if (index >= 0 && index < m_parts->count())
        m_parts->setCurrentIndex(index);
}

bool ZDSnippetEditorView::selectPartWithUUID(const QString &UUID)
{
    if (!m_snippet)
        return false;
    const QList<ZDSnippetPartPtr> parts = m_snippet->parts();
    for (int i = 0; i < parts.size(); ++i) {
        if (parts.at(i)->UUID() == UUID) {
            selectPart(i);
            return true;
        }
    }
    return false;
}

void ZDSnippetEditorView::reload()
{
    m_titleDirty = false;
    updateActions();
    if (!m_snippet) {
        m_shown.reset();
        m_stack->setCurrentWidget(m_emptyLabel);
        return;
    }
    m_stack->setCurrentIndex(1);
    m_loading = true;
    if (m_title->text() != m_snippet->title())
        m_title->setText(m_snippet->title());
    m_title->setCursorPosition(0);
    refreshTags();

    const QList<ZDSnippetPartPtr> parts = m_snippet->parts();
    int selected = 0;
    for (int i = 0; i < parts.size(); ++i)
        if (parts.at(i)->UUID() == m_shownPartUUID)
            selected = i;
    while (m_parts->count() > parts.size())
        m_parts->removeTab(m_parts->count() - 1);
    for (int i = 0; i < parts.size(); ++i) {
        if (i < m_parts->count())
            m_parts->setTabText(i, parts.at(i)->title());
        else
            m_parts->addTab(parts.at(i)->title());
        m_parts->setTabToolTip(i, parts.at(i)->language().displayName());
    }
    m_parts->setCurrentIndex(selected);
    m_parts->updateGeometry();
    m_loading = false;
    showPart(selected);
    rememberShownState();
}

void ZDSnippetEditorView::showPart(int index)
{
    if (!m_snippet || index < 0 || index >= m_snippet->partsCount())
        return;
    const ZDSnippetPartPtr part = m_snippet->parts().at(index);
    m_loading = true;
    const QString lexer = part->language().identifier();
    // The same text again keeps the caret, the scroll position and the undo history.
    if (part->UUID() != m_shownPartUUID || m_code->toPlainText() != part->content())
        m_code->showText(part->content(), lexer);
    else
        m_code->setCurrentLexer(lexer);
    if (m_notes->toPlainText() != part->note())
        m_notes->setPlainText(part->note());
    m_language->setLanguage(part->language());
    m_shownPartUUID = part->UUID();
    m_loading = false;
}

void ZDSnippetEditorView::rememberShownState()
{
    m_shown = m_snippet ? snapshotOf(*m_snippet) : nullptr;
}

QStringList ZDSnippetEditorView::tagNamesOf(const ZDSnippet &snippet) const
{
    if (!m_center)
        return snippet.tagNames();
    QHash<QString, QString> titles;
    for (const ZDTagPtr &tag : m_center->tags())
        titles.insert(tag->UUID(), tag->title());
    QStringList names;
    for (const QString &UUID : snippet.tagUUIDs())
        if (titles.contains(UUID))
            names.append(titles.value(UUID));
    return names;
}

void ZDSnippetEditorView::refreshTags()
{
    if (m_center)
        m_tags->setCompletionNames(m_center->tagNames());
    m_tags->setTagNames(m_snippet ? tagNamesOf(*m_snippet) : QStringList());
}

void ZDSnippetEditorView::updateNotesVisibility()
{
    const bool shown = !m_defaults || m_defaults->showNotes();
    m_notes->setVisible(shown);
    const QSignalBlocker blocker(m_notesToggle);
    m_notesToggle->setChecked(shown);
}

// Editing ---------------------------------------------------------------------------------------

void ZDSnippetEditorView::scheduleCommit()
{
    m_commitTimer->start();
}

void ZDSnippetEditorView::commitPendingText()
{
    m_commitTimer->stop();
    if (!m_snippet) {
        m_titleDirty = m_textDirty = false;
        return;
    }
    if (m_titleDirty) {
        m_titleDirty = false;
        if (m_editing.setTitle(m_snippet, m_title->text()))
            rememberShownState();
    }
    if (m_textDirty) {
        m_textDirty = false;
        m_editing.commitText(m_snippet);
    }
}

void ZDSnippetEditorView::addPart()
{
    if (!m_snippet)
        return;
    const ZDSnippetPartPtr current = currentPart();
    ZDLanguage language = current ? current->language() : ZDLanguage();
    if (!language.isValid() && m_center) {
        if (ZDLanguageRegistry *registry = ZDLanguageRegistry::shared())
            language = registry->languageWithIdentifier(
                m_center->defaultLanguageIdentifierForFolderWithUUID(m_snippet->folderUUID()));
    }
    const ZDSnippetPartPtr part = m_editing.addPart(m_snippet, currentPartIndex() + 1, language);
    if (!part)
        return;
    m_shownPartUUID = part->UUID();
    reload();
    m_code->setFocus();
}

void ZDSnippetEditorView::removePartAt(int index)
{
    if (!m_snippet || index < 0 || index >= m_snippet->partsCount())
        return;
    const ZDSnippetPartPtr part = m_snippet->parts().at(index);
    if (!m_editing.removePart(m_snippet, part))
        return;
    if (part->UUID() == m_shownPartUUID) {
        const QList<ZDSnippetPartPtr> parts = m_snippet->parts();
        m_shownPartUUID = parts.at(std::min<qsizetype>(index, parts.size() - 1))->UUID();
    }
    // A different part is shown now: its own text and history.
    clearCode();
    const QString keep = m_shownPartUUID;
    m_shownPartUUID.clear();
    reload();
    selectPartWithUUID(keep);
}

void ZDSnippetEditorView::removeCurrentPart()
{
    const ZDSnippetPartPtr part = currentPart();
    if (!part || m_snippet->partsCount() < 2)
        return;
    if (!part->contentText().isEmpty() || !part->noteText().isEmpty()) {
        QMessageBox box(QMessageBox::Warning, tr("Remove Fragment"),
                        tr("Remove the fragment “%1”?").arg(part->title()), QMessageBox::Cancel, this);
        box.setInformativeText(tr("Its text and notes are removed with it."));
        QPushButton *remove = box.addButton(tr("Remove"), QMessageBox::DestructiveRole);
        box.setDefaultButton(QMessageBox::Cancel);
        box.exec();
        if (box.clickedButton() != remove)
            return;
    }
    removePartAt(currentPartIndex());
}

void ZDSnippetEditorView::renamePart(int index, const QString &title)
{
    if (!m_snippet || index < 0 || index >= m_snippet->partsCount())
        return;
    if (m_editing.renamePart(m_snippet, m_snippet->parts().at(index), title)) {
        m_parts->setTabText(index, m_snippet->parts().at(index)->title());
        rememberShownState();
    }
}

void ZDSnippetEditorView::renameCurrentPartInteractively()
{
    const ZDSnippetPartPtr part = currentPart();
    if (!part)
        return;
    bool ok = false;
    const QString title = QInputDialog::getText(this, tr("Rename Fragment"), tr("Fragment name:"),
                                                QLineEdit::Normal, part->title(), &ok);
    if (ok)
        renamePart(currentPartIndex(), title);
}

// Notices ---------------------------------------------------------------------------------------

void ZDSnippetEditorView::reconsider(const ZDSnippetPtr &announced)
{
    if (!m_snippet || !announced || !announced->isEqual(m_snippet.get()))
        return;
    // The store may have put another object in place of the shown one; notices can arrive out
    // of order, so the store says which object is current.
    if (announced != m_snippet) {
        const ZDSnippetPtr current = m_center ? m_center->snippetWithUUID(announced->UUID()) : announced;
        if (current)
            m_snippet = current;
    }
    if (m_shown && m_snippet->isIdentical(m_shown.get()))
        return;
    m_titleDirty = m_textDirty = false;
    m_commitTimer->stop();
    reload();
}

void ZDSnippetEditorView::snippetContentDidChange(QObject *, const ZDSnippetPtr &snippet)
{
    reconsider(snippet);
}

void ZDSnippetEditorView::snippetTitleDidChange(QObject *, const ZDSnippetPtr &snippet)
{
    reconsider(snippet);
}

void ZDSnippetEditorView::snippetsTagsDidChange(QObject *, const ZDSnippetList &snippets)
{
    for (const ZDSnippetPtr &snippet : snippets)
        reconsider(snippet);
    refreshTags(); // new tags of other snippets complete here too
}

void ZDSnippetEditorView::snippetsLanguageDidChange(QObject *, const ZDSnippetList &snippets)
{
    for (const ZDSnippetPtr &snippet : snippets)
        reconsider(snippet);
}

void ZDSnippetEditorView::snippetsDidRemove(QObject *, const ZDSnippetList &snippets)
{
    if (listContains(snippets, m_snippet)) {
        m_titleDirty = m_textDirty = false;
        setSnippet(nullptr);
    }
}

void ZDSnippetEditorView::tagDidRename(QObject *, const ZDTagPtr &)
{
    refreshTags();
}

void ZDSnippetEditorView::tagsDidRemove(QObject *, const ZDTagList &)
{
    refreshTags();
}

void ZDSnippetEditorView::applicationLibraryDidChange(QObject *)
{
    if (!m_snippet)
        return;
    const ZDSnippetPtr current = m_center ? m_center->snippetWithUUID(m_snippet->UUID()) : m_snippet;
    if (!current) {
        m_titleDirty = m_textDirty = false;
        setSnippet(nullptr);
        return;
    }
    reconsider(current);
    refreshTags();
}
