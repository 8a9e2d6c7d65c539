#pragma once

#include "ZDError.h"
#include "ZDLanguage.h"

#include <QHash>
#include <QList>

#include <functional>
#include <mutex>
#include <optional>

class ZDUserDefaults;

/// The languages the program knows, loaded once from the "Languages.json" table, with lookups by
/// identifier (after the legacy renames), guessing from a name, file extension or type
/// identifier, and the user's active languages ("User ActiveLanguages").
///
/// Lookups are safe from any thread; the active-language list is for the main thread.
class ZDLanguageRegistry
{
public:
    /// `defaults` may be null: then no language is active.
    explicit ZDLanguageRegistry(QString tablePath, ZDUserDefaults *defaults = nullptr);

    static ZDLanguageRegistry *shared();
    static void install(ZDLanguageRegistry *registry);
    static QString defaultTablePath();

    /// Called with the load failure (codes 226 and 227) so that the window layer can show it.
    void setErrorPresenter(std::function<void(const ZDError &)> presenter) { m_errorPresenter = std::move(presenter); }

    QList<ZDLanguage> availableLanguages();
    /// The failure of the table load, if it failed.
    ZDError loadError();

    ZDLanguage languageWithIdentifier(const QString &identifier);
    ZDLanguage markdownLanguage();
    ZDLanguage plainTextLanguage();

    /// Candidate languages for an item with the given name, extension and type identifier (any
    /// may be empty), best first.
    QList<ZDLanguage> languagesFromLanguageName(const QString &name, const QString &fileExtension,
                                                const QString &UTIString);

    QStringList activeLanguageIdentifiers() const;
    QList<ZDLanguage> activeLanguages();
    void setActiveStateForLanguage(const ZDLanguage &language, bool active);

    /// Logs the whole list once per registry.
    void printListOfLanguages();

    static bool stringArrayCaseInsensitiveContainsString(const QStringList &array, const QString &string);
    /// Identifiers of lexers that were renamed: the old name maps to the current one.
    static QString currentIdentifier(const QString &identifier);

private:
    void ensureLoaded(); // with m_mutex held
    ZDLanguage fallbackPlainText() const;

    QString m_tablePath;
    ZDUserDefaults *m_defaults;
    std::function<void(const ZDError &)> m_errorPresenter;

    std::recursive_mutex m_mutex;
    bool m_loaded = false;
    ZDError m_loadError;
    QList<ZDLanguage> m_languages;
    QHash<QString, ZDLanguage> m_byIdentifier; // cache of lookups that found a language
    std::optional<QList<ZDLanguage>> m_internalActiveLanguages;
    bool m_printed = false;
};
