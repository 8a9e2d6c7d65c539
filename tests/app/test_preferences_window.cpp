// The preferences window: controls write their preferences and show changes made elsewhere;
// the languages pane filters and edits the active languages.
#include "ZDCoreServices.h"
#include "ZDEditorTheme.h"
#include "ZDLanguageRegistry.h"
#include "ZDLanguagesPane.h"
#include "ZDPreferencesWindow.h"
#include "ZDTestPlatform.h"
#include "ZDUserDefaults.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFontComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QSettings>
#include <QSpinBox>
#include <QTabWidget>
#include <QTest>

class TestPreferencesWindow : public QObject
{
    Q_OBJECT

    ZDTestPlatform m_platform;
    std::unique_ptr<ZDCoreServices> m_services;
    std::unique_ptr<ZDPreferencesWindow> m_window;

    ZDUserDefaults &defaults() { return m_services->defaults(); }
    template <typename T> T *control(const char *name)
    {
        T *found = m_window->findChild<T *>(QString::fromLatin1(name));
        if (!found)
            qFatal("no control %s", name);
        return found;
    }
    QStringList shownIdentifiers(ZDLanguagesPane *pane)
    {
        QStringList identifiers;
        for (int row = 0; row < pane->filterModel()->rowCount(); ++row)
            identifiers.append(
                pane->filterModel()->index(row, ZDLanguageTableModel::IdentifierColumn).data().toString());
        return identifiers;
    }

private Q_SLOTS:
    void init()
    {
        m_platform.launches = false;
        m_platform.autostartFailure = ZDError();
        ZDPlatform::install(&m_platform);
        m_services = std::make_unique<ZDCoreServices>();
        ZDEditorTheme::registerWithDefaults(defaults());
        m_window = std::make_unique<ZDPreferencesWindow>(&defaults());
    }

    void cleanup()
    {
        m_window.reset();
        defaults().userDefaults()->clear();
        m_services.reset();
    }

    void controlsWriteThroughTheAccessors()
    {
        control<QCheckBox>("invisiblesBox")->click();
        QVERIFY(defaults().showInvisibles());
        control<QCheckBox>("relevanceBox")->click();
        QVERIFY(!defaults().searchArrangeByRelevance());

        auto *indent = control<QComboBox>("indentMethodBox");
        indent->setCurrentIndex(indent->findData(QStringLiteral("Tabs")));
        Q_EMIT indent->activated(indent->currentIndex());
        QCOMPARE(defaults().indentMethod(), QStringLiteral("Tabs"));

        auto *themes = control<QListWidget>("themeList");
        QCOMPARE(themes->count(), ZDEditorTheme::availableThemes().size());
        QCOMPARE(themes->currentItem()->text(), QStringLiteral("Material Light")); // the default
        themes->setCurrentItem(themes->findItems(QStringLiteral("One Dark"), Qt::MatchExactly).constFirst());
        QCOMPARE(defaults().editorTheme(), QStringLiteral("One Dark"));
        QVERIFY(!themes->currentItem()->icon().isNull());

        control<QDoubleSpinBox>("fontSizeBox")->setValue(15);
        QCOMPARE(defaults().editorFont().pointSize, 15.0);
        QCOMPARE(defaults().editorFont().family,
                 control<QFontComboBox>("fontFamilyBox")->currentFont().family());
    }

    void controlsShowChangesMadeElsewhere()
    {
        defaults().setTabSize(-8); // stored as 8
        QCOMPARE(control<QSpinBox>("tabSizeBox")->value(), 8);
        defaults().setUseSoftWrap(false);
        QVERIFY(!control<QCheckBox>("softWrapBox")->isChecked());
        defaults().setMaximumBackupFiles(40); // not an offered count: reads as 30
        QCOMPARE(control<QComboBox>("maximumBackupsBox")->currentData().toInt(), 30);
        defaults().setMaximumBackupFiles(100);
        QCOMPARE(control<QComboBox>("maximumBackupsBox")->currentData().toInt(), 100);
        defaults().setEditorTheme(QStringLiteral("Dusk"));
        QCOMPARE(control<QListWidget>("themeList")->currentItem()->text(), QStringLiteral("Dusk"));
        QCOMPARE(defaults().editorTheme(), QStringLiteral("Dusk")); // showing it wrote nothing back
    }

    void launchAtLoginGoesThroughThePlatform()
    {
        auto *login = control<QCheckBox>("launchAtLoginBox");
        auto *problem = control<QLabel>("launchAtLoginProblem");
        login->click();
        QVERIFY(defaults().launchAtLogin());
        QVERIFY(m_platform.launches);
        login->click();
        QVERIFY(!defaults().launchAtLogin());
        QVERIFY(!m_platform.launches);
        QVERIFY(!problem->isVisibleTo(m_window.get()));

        // The desktop refuses: the preference stays, the box shows it, and the pane says why.
        m_platform.autostartFailure = ZDError(0, QStringLiteral("Cannot write the entry."));
        login->click();
        QVERIFY(!defaults().launchAtLogin());
        QVERIFY(!login->isChecked());
        QVERIFY(problem->isVisibleTo(m_window.get()));
        QVERIFY(problem->text().contains(QStringLiteral("Cannot write the entry.")));
        m_platform.autostartFailure = ZDError();
        login->click();
        QVERIFY(defaults().launchAtLogin());
        QVERIFY(!problem->isVisibleTo(m_window.get()));
    }

    void languagesPaneFiltersAndEditsTheActiveSet()
    {
        auto *pane = m_window->findChild<ZDLanguagesPane *>();
        QVERIFY(pane);
        QVERIFY(!shownIdentifiers(pane).contains(QStringLiteral("TextLexer")));
        QCOMPARE(shownIdentifiers(pane).size(),
                 ZDLanguageRegistry::shared()->availableLanguages().size() - 1);

        // Names and aliases match ignoring case and diacritics.
        pane->searchField()->setText(QStringLiteral("P\u00DDTHON"));
        QVERIFY(shownIdentifiers(pane).contains(QStringLiteral("PythonLexer")));
        pane->searchField()->setText(QStringLiteral("zsh")); // an alias of Bash
        QVERIFY(shownIdentifiers(pane).contains(QStringLiteral("BashLexer")));
        QVERIFY(!shownIdentifiers(pane).contains(QStringLiteral("PythonLexer")));
        pane->searchField()->clear();

        pane->activeOnlyBox()->setChecked(true);
        QStringList active = defaults().activeLanguageIdentifiers();
        active.removeAll(QStringLiteral("TextLexer"));
        const QStringList shown = shownIdentifiers(pane);
        QCOMPARE(QSet<QString>(shown.cbegin(), shown.cend()), QSet<QString>(active.cbegin(), active.cend()));

        const int pythonRow = int(shownIdentifiers(pane).indexOf(QStringLiteral("PythonLexer")));
        QVERIFY(pythonRow >= 0);
        pane->filterModel()->setData(
            pane->filterModel()->index(pythonRow, ZDLanguageTableModel::ActiveColumn), Qt::Unchecked,
            Qt::CheckStateRole);
        QVERIFY(!defaults().activeLanguageIdentifiers().contains(QStringLiteral("PythonLexer")));
        QVERIFY(!shownIdentifiers(pane).contains(QStringLiteral("PythonLexer")));
        const QList<ZDLanguage> registryActive = ZDLanguageRegistry::shared()->activeLanguages();
        QVERIFY(std::none_of(registryActive.cbegin(), registryActive.cend(), [](const ZDLanguage &language) {
            return language.identifier() == QStringLiteral("PythonLexer");
        }));
    }
};

QTEST_MAIN(TestPreferencesWindow)
#include "test_preferences_window.moc"
