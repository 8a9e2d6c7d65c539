// Shows the snippet editor pane (or the preferences window) on a sample snippet with a Python
// and a Markdown part, for looking at the highlighting in a theme. Not a test: run it by hand,
// e.g. under Xvfb to take screenshots.
//   editorpane_showcase THEME python|markdown|chooser|empty|preferences[0-3] [SECONDS [LINE-HEIGHT [WRAP-INDENT]]]
#include "ZDCoreServices.h"
#include "ZDDataCenter.h"
#include "ZDEditorTheme.h"
#include "ZDHighlighter.h"
#include "ZDLanguageChooser.h"
#include "ZDLanguageRegistry.h"
#include "ZDPreferencesWindow.h"
#include "ZDSnippet.h"
#include "ZDSnippetEditorView.h"
#include "ZDSnippetPart.h"
#include "ZDTag.h"
#include "ZDUserDefaults.h"
#include "ZDWriteTimer.h"

#include <QApplication>
#include <QDir>
#include <QLineEdit>
#include <QPalette>
#include <QStyleFactory>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTimer>

namespace {
const char *kPython = R"(import json
from pathlib import Path


class Settings:
    """Settings read from a JSON file, with defaults."""

    def __init__(self, path: Path, defaults=None):
        self.path = path
        self.values = dict(defaults or {})

    def load(self):
        # A missing file keeps the defaults; a file that cannot be parsed is reported with its path and the line of the error, and the values read so far are kept as they were.
        if self.path.exists():
            self.values.update(json.loads(self.path.read_text("utf-8")))
        return self

    def get(self, key, fallback=None):
        return self.values.get(key, fallback)


if __name__ == "__main__":
    settings = Settings(Path("~/.config/app.json").expanduser(), {"width": 80}).load()
    print(f"width = {settings.get('width')}", 0x1F, 3.14)
)";

const char *kMarkdown = R"(# Reading settings

The `Settings` class reads a **JSON** file and keeps *defaults* for missing keys.

## Usage

1. Create it with a path and the defaults.
2. Call `load()`; a missing file is not an error.

> Values in the file win over the defaults.

```python
settings = Settings(Path("app.json"), {"width": 80}).load()
```

See <https://docs.python.org/3/library/json.html> for the format.
)";

QPalette darkPalette()
{
    QPalette palette;
    const QColor window(0x2B, 0x2D, 0x31), base(0x23, 0x25, 0x29), text(0xE6, 0xE6, 0xE6);
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::Button, window);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::Highlight, QColor(0x3D, 0x7E, 0xD8));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::PlaceholderText, QColor(0x8A, 0x8D, 0x93));
    palette.setColor(QPalette::ToolTipBase, base);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::Disabled, QPalette::WindowText, QColor(0x80, 0x80, 0x80));
    palette.setColor(QPalette::Disabled, QPalette::Text, QColor(0x80, 0x80, 0x80));
    return palette;
}
} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Zandrio"));
    const QStringList args = app.arguments();
    const QString themeName = args.value(1, QStringLiteral("Xcode"));
    const QString show = args.value(2, QStringLiteral("python"));
    const int seconds = args.value(3, QStringLiteral("0")).toInt();

    ZDCoreServices services;
    ZDEditorTheme::registerWithDefaults(services.defaults());
    services.defaults().setEditorTheme(themeName);
    services.defaults().setShowNotes(true);
    services.defaults().setEditorLineHeightMultiple(args.value(4, QStringLiteral("1")).toDouble());
    services.defaults().setEnableWrapIndent(args.size() > 5);
    services.defaults().setWrapIndentSize(args.value(5, QStringLiteral("4")).toInt());
    const auto theme = ZDEditorTheme::currentTheme(services.defaults());
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    if (theme->isDark())
        QApplication::setPalette(darkPalette());

    QTemporaryDir dir;
    ZDDataCenter::Options options;
    options.packagePath = QDir(dir.path()).filePath(QStringLiteral("main.zandriolibrary"));
    options.watchForExternalChanges = false;
    ZDDataCenter center(std::move(options));
    ZDDataCenter::install(&center);
    ZDHighlighter highlighter;

    ZDLanguageRegistry &languages = services.languages();
    const auto python = ZDTag::create(QStringLiteral("python"));
    const auto config = ZDTag::create(QStringLiteral("config"));
    center.setTags({python, config, ZDTag::create(QStringLiteral("snippets"))});
    auto snippet = ZDSnippet::create(QStringLiteral("Settings from a JSON file"));
    auto code = snippet->parts().constFirst();
    code->setTitle(QStringLiteral("settings.py"));
    code->setLanguage(languages.languageWithIdentifier(QStringLiteral("PythonLexer")));
    code->setContent(QString::fromUtf8(kPython));
    code->setNote(QStringLiteral("Used by the command-line tools; keep the defaults in sync with the docs."));
    auto readme = ZDSnippetPart::create(QStringLiteral("README.md"), snippet->UUID());
    readme->setLanguage(languages.markdownLanguage());
    readme->setContent(QString::fromUtf8(kMarkdown));
    readme->setNote(QStringLiteral("Rendered on the project page."));
    snippet->setParts({code, readme});
    snippet->setTagUUIDs({python->UUID(), config->UUID()});
    center.addSnippet(snippet);

    std::unique_ptr<QWidget> window;
    if (show.startsWith(QLatin1String("preferences"))) {
        // "preferences" shows the Editor pane, "preferences0" to "preferences3" a pane by number.
        auto *preferences = new ZDPreferencesWindow(&services.defaults());
        const int pane = show.mid(11).isEmpty() ? int(ZDPreferencesWindow::EditorPane) : show.mid(11).toInt();
        preferences->showPane(ZDPreferencesWindow::Pane(pane));
        preferences->resize(660, 640);
        window.reset(preferences);
    } else {
        auto *editor = new ZDSnippetEditorView(&center, &highlighter);
        editor->setWindowTitle(QStringLiteral("Zandrio – snippet editor"));
        editor->setSnippet(show == QLatin1String("empty") ? nullptr : snippet);
        editor->selectPart(show == QLatin1String("markdown") ? 1 : 0);
        if (show == QLatin1String("chooser")) // the language chooser opened, "py" typed
            QTimer::singleShot(800, editor, [editor] {
                editor->languageChooser()->click();
                if (auto *popup = editor->languageChooser()->findChild<ZDLanguagePopup *>())
                    popup->searchField()->setText(QStringLiteral("py"));
            });
        editor->resize(900, 720);
        window.reset(editor);
    }
    window->move(20, 20);
    window->show();
    if (seconds > 0)
        QTimer::singleShot(seconds * 1000, &app, &QApplication::quit);
    const int result = app.exec();
    window.reset();
    ZDDataCenter::install(nullptr);
    return result;
}
