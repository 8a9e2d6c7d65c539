// Drives the real program the way a person would: in the "create" phase it makes a folder, a
// snippet with a Python part and a Markdown part, tags it by dragging it onto a tag, finds it
// with an "in:" token and quits; in the "verify" phase (a new start on the same library) it
// checks that all of it is there. Exits non-zero at the first step that does not hold.

#include "ZDApplication.h"
#include "ZDCategoryNode.h"
#include "ZDCoreIndex.h"
#include "ZDDataCenter.h"
#include "ZDLanguageRegistry.h"
#include "ZDLibraryActions.h"
#include "ZDMainWindow.h"
#include "ZDMulticastDelegateHandler.h"
#include "ZDSearchView.h"
#include "ZDSidebarModel.h"
#include "ZDSidebarView.h"
#include "ZDSnippet.h"
#include "ZDSnippetEditorView.h"
#include "ZDSnippetListModel.h"
#include "ZDSnippetListView.h"
#include "ZDTag.h"
#include "ZDTestSupport.h"
#include "ZDUserDefaults.h"
#include "ZDWriteTimer.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QMimeData>
#include <QProcess>
#include <QTest>

#include <cstdio>

namespace {
const QString kFolderTitle = QStringLiteral("Scripted Run");
const QString kSnippetTitle = QStringLiteral("Scripted snippet");
const QString kTagTitle = QStringLiteral("scripted-demo");
const QString kPython = QStringLiteral("def greet(name):\n    \"\"\"Say hello.\"\"\"\n    return f\"Hello, {name}!\"\n\nprint(greet(\"Zandrio\"))\n");
const QString kMarkdown = QStringLiteral("# Greeting\n\nCall `greet` with a *name*:\n\n- returns a string\n- prints nothing\n");

[[noreturn]] void fail(const QString &step)
{
    std::fprintf(stderr, "scripted run: FAILED: %s\n", qPrintable(step));
    std::fflush(stderr);
    std::_Exit(1);
}

void check(bool condition, const QString &step)
{
    if (!condition)
        fail(step);
    std::printf("  ok  %s\n", qPrintable(step));
    std::fflush(stdout);
}

void screenshot(const QCommandLineParser &parser, const QString &name)
{
    const QString folder = parser.value(QStringLiteral("screenshots"));
    if (folder.isEmpty())
        return;
    ZDTestSupport::waitFor([] { return false; }, 600); // let the window settle and paint
    QProcess::execute(QStringLiteral("import"), {QStringLiteral("-window"), QStringLiteral("root"), folder + QLatin1Char('/') + name});
}

ZDCategoryNodePtr folderNamed(ZDDataCenter &center, const QString &title)
{
    for (const ZDCategoryNodePtr &folder : center.rootFolderNodes()) {
        if (folder->title() == title)
            return folder;
    }
    return nullptr;
}

ZDSnippetPtr snippetNamed(ZDDataCenter &center, const QString &title)
{
    for (const ZDSnippetPtr &snippet : center.snippets()) {
        if (snippet->title() == title)
            return snippet;
    }
    return nullptr;
}

void create(const QCommandLineParser &parser, ZDMainWindow &window, ZDDataCenter &center)
{
    const qsizetype before = center.snippets().size();
    std::printf("library: %lld snippets\n", static_cast<long long>(before));

    const ZDCategoryNodePtr folder = window.newFolder(kFolderTitle);
    check(folder && window.sidebar()->selectedNode() == folder, "a new folder is made and selected");

    // Without a window manager nobody activates the window; keyboard shortcuts need that.
    window.activateWindow();
    if (!QTest::qWaitForWindowActive(&window, 2000))
        QApplication::setActiveWindow(&window);
    window.snippetList()->setFocus();
    QTest::keyClick(&window, Qt::Key_N, Qt::ControlModifier);
    check(ZDTestSupport::waitFor([&] { return center.snippets().size() == before + 1; }), "Ctrl+N makes a snippet");
    const ZDSnippetPtr snippet = center.snippets().last();
    check(snippet->folderUUID() == folder->UUID(), "the new snippet is in the selected folder");
    check(ZDTestSupport::waitFor([&] { return window.snippetList()->selectedSnippets() == ZDSnippetList{snippet}; }),
          "the new snippet is selected in the list");

    // What the editor does with the user's typing: title, a second part, languages, texts.
    ZDLanguageRegistry *languages = ZDLanguageRegistry::shared();
    const QString UUID = snippet->UUID();
    const QString python = snippet->parts().first()->UUID();
    center.setSnippetTitle(UUID, kSnippetTitle, &window);
    center.setPartTitle(UUID, python, QStringLiteral("greet.py"), &window);
    center.setPartLanguage(UUID, python, languages->languageWithIdentifier(QStringLiteral("PythonLexer")),
                           &window);
    center.setPartText(UUID, python, kPython, QString(), &window);
    const ZDSnippetPartPtr markdown =
        center.addPart(UUID, 1, QStringLiteral("README.md"),
                       languages->languageWithIdentifier(QStringLiteral("MarkdownLexer")), &window);
    check(bool(markdown), "a second part is added");
    center.setPartText(UUID, markdown->UUID(), kMarkdown, QString(), &window);

    // Tag it the way a person does: drag the row onto the tag in the sidebar.
    const ZDTagPtr tag = window.actions()->tagNamed(kTagTitle);
    check(bool(tag), "a tag is made"); // its notice reloads the sidebar
    ZDSidebarModel *sidebar = window.sidebar()->sidebarModel();
    check(ZDTestSupport::waitFor([&] { return sidebar->indexOfNode(ZDCategoryNode::Tag, tag->UUID()).isValid(); }),
          "the tag shows in the sidebar");
    ZDSnippetListModel *list = window.snippetList()->listModel();
    std::unique_ptr<QMimeData> dragged(list->mimeData({list->index(list->rowOfSnippet(snippet->UUID()))}));
    const QModelIndex tagIndex = sidebar->indexOfNode(ZDCategoryNode::Tag, tag->UUID());
    check(sidebar->canDropMimeData(dragged.get(), Qt::MoveAction, -1, 0, tagIndex), "the tag accepts the dragged snippet");
    sidebar->dropMimeData(dragged.get(), Qt::MoveAction, -1, 0, tagIndex);
    check(ZDTestSupport::waitFor([&] { return snippet->tagUUIDs() == QStringList{tag->UUID()}; }), "the snippet is tagged");
    screenshot(parser, QStringLiteral("1-created.png"));

    // The counting index takes up a new tag at its next tick (at most ten seconds).
    check(ZDTestSupport::waitFor([&] {
              const QList<ZDIndexResult> tags = ZDCoreIndex::sharedIndex()->tags();
              return std::any_of(tags.begin(), tags.end(), [&](const ZDIndexResult &r) { return r.ubiquitousName == tag->UUID() && r.count == 1; });
          }, 15000),
          "the counting index counts the tag");

    // Find it: "in:" + part of the tag's name, choose the tag, then a word of the Python part.
    ZDSearchView *search = window.searchField();
    window.focusSearch();
    QTest::keyClicks(search, QStringLiteral("in:scripted-d"));
    check(ZDTestSupport::waitFor([&] { return search->isCompletionVisible(); }), "typing in: opens the completion list");
    QList<ZDSearchConstraint> proposals = search->listedProposals();
    check(proposals.size() == 1 && proposals.first().constraintUnderlyingValue() == tag->UUID(),
          "the tag is the one proposal");
    screenshot(parser, QStringLiteral("2-completion.png"));
    QTest::keyClick(search, Qt::Key_Return);
    check(search->searchConstraints().size() == 1 && !search->isCompletionVisible(), "Return puts the tag's token in the field");
    QTest::keyClicks(search, QStringLiteral(" greet"));
    check(ZDTestSupport::waitFor([&] { return list->snippets() == ZDSnippetList{snippet}; }, 8000),
          "the search finds exactly the snippet");
    screenshot(parser, QStringLiteral("3-search.png"));
    std::printf("scripted run: created\n");
    QApplication::quit(); // the program writes what is pending before it exits
}

void verify(const QCommandLineParser &parser, ZDMainWindow &window, ZDDataCenter &center)
{
    const ZDCategoryNodePtr folder = folderNamed(center, kFolderTitle);
    check(bool(folder), "the folder is still there");
    const ZDSnippetPtr snippet = snippetNamed(center, kSnippetTitle);
    check(snippet && snippet->folderUUID() == folder->UUID(), "the snippet is still in it");
    check(snippet->partsCount() == 2 && snippet->parts().at(0)->language().identifier() == QStringLiteral("PythonLexer") &&
              snippet->parts().at(1)->language().identifier() == QStringLiteral("MarkdownLexer"),
          "its two parts keep their languages");
    check(snippet->parts().at(0)->content() == kPython && snippet->parts().at(1)->content() == kMarkdown,
          "its two parts keep their texts");
    check(snippet->tagNames() == QStringList{kTagTitle}, "it keeps its tag");
    window.sidebar()->selectNode(ZDCategoryNode::Folder, folder->UUID());
    check(ZDTestSupport::waitFor([&] { return window.snippetList()->listModel()->rowOfSnippet(snippet->UUID()) == 0; }),
          "the folder lists it");
    window.snippetList()->selectSnippet(snippet->UUID());
    screenshot(parser, QStringLiteral("4-relaunched-python.png"));
    if (auto *editor = window.findChild<ZDSnippetEditorView *>()) {
        check(ZDTestSupport::waitFor([&] { return editor->snippet() == snippet; }), "the editor shows the snippet");
        editor->selectPart(1);
        screenshot(parser, QStringLiteral("5-relaunched-markdown.png"));
    }
    std::printf("scripted run: verified\n");
    QApplication::quit();
}
} // namespace

int main(int argc, char *argv[])
{
    ZDApplicationHooks hooks;
    hooks.separateInstance = true;
    hooks.extraOptions = {QCommandLineOption(QStringLiteral("phase"), QStringLiteral("create or verify"), QStringLiteral("phase")),
                          QCommandLineOption(QStringLiteral("seed"), QStringLiteral("Make a library of <n> snippets first when none exists."),
                                             QStringLiteral("n")),
                          QCommandLineOption(QStringLiteral("theme"), QStringLiteral("Use the editor theme <name>."), QStringLiteral("name")),
                          QCommandLineOption(QStringLiteral("screenshots"), QStringLiteral("Save screenshots (ImageMagick's import) in <folder>."),
                                             QStringLiteral("folder"))};
    hooks.beforeLoading = [](const QCommandLineParser &parser) {
        if (parser.isSet(QStringLiteral("theme")))
            ZDUserDefaults::standardUserDefaults()->setEditorTheme(parser.value(QStringLiteral("theme")));
        const int count = parser.value(QStringLiteral("seed")).toInt();
        const QString path = parser.value(QStringLiteral("library"));
        if (count <= 0 || path.isEmpty() || QFileInfo::exists(path))
            return;
        ZDDataCenter::Options options;
        options.packagePath = path;
        options.watchForExternalChanges = false;
        ZDDataCenter center(std::move(options));
        ZDSnippetList snippets;
        for (int i = 0; i < count; ++i) {
            ZDSnippetPtr snippet = ZDSnippet::create(QStringLiteral("Seed snippet %1").arg(i));
            snippet->parts().first()->setContent(QStringLiteral("seed text number %1\n").arg(i));
            snippets << snippet;
        }
        center.addSnippetsFromArray(snippets);
        center.save();
    };
    hooks.libraryReady = [](const QCommandLineParser &parser, ZDMainWindow &window, ZDDataCenter &center) {
        if (parser.value(QStringLiteral("phase")) == QStringLiteral("verify"))
            verify(parser, window, center);
        else
            create(parser, window, center);
    };
    return zdApplicationMain(argc, argv, hooks);
}
