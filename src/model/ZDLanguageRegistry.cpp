#include "ZDLanguageRegistry.h"

#include "ZDLogger.h"
#include "ZDResources.h"
#include "ZDUserDefaults.h"

#include <QCollator>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <atomic>

namespace {
std::atomic<ZDLanguageRegistry *> s_shared{nullptr};

const QString kPlainText = QStringLiteral("TextLexer");
const QString kMarkdown = QStringLiteral("MarkdownLexer");

std::optional<QStringList> stringList(const QJsonValue &value)
{
    if (!value.isArray())
        return std::nullopt;
    QStringList list;
    for (const QJsonValue &element : value.toArray())
        list << element.toString();
    return list;
}
} // namespace

ZDLanguageRegistry::ZDLanguageRegistry(QString tablePath, ZDUserDefaults *defaults)
    : m_tablePath(std::move(tablePath)), m_defaults(defaults)
{
}

ZDLanguageRegistry *ZDLanguageRegistry::shared()
{
    return s_shared.load();
}

void ZDLanguageRegistry::install(ZDLanguageRegistry *registry)
{
    s_shared.store(registry);
}

QString ZDLanguageRegistry::defaultTablePath()
{
    return ZDResources::path(QStringLiteral("Languages.json"));
}

QString ZDLanguageRegistry::currentIdentifier(const QString &identifier)
{
    if (identifier == QLatin1String("JadeLexer"))
        return QStringLiteral("PugLexer");
    return identifier;
}

bool ZDLanguageRegistry::stringArrayCaseInsensitiveContainsString(const QStringList &array, const QString &string)
{
    if (string.isNull())
        return false;
    return std::any_of(array.cbegin(), array.cend(),
                       [&](const QString &element) { return element.compare(string, Qt::CaseInsensitive) == 0; });
}

void ZDLanguageRegistry::ensureLoaded()
{
    if (m_loaded)
        return;
    m_loaded = true;

    QFile file(m_tablePath);
    if (!file.open(QIODevice::ReadOnly)) {
        m_loadError = ZDError(227, QStringLiteral("Couldn’t load syntaxes data from application bundle"),
                              QStringLiteral("An error occurred when accessing required resources."),
                              file.errorString(), {{QStringLiteral("URL"), m_tablePath}});
    } else {
        const QByteArray data = file.readAll();
        QJsonParseError parseError;
        const QJsonDocument document = QJsonDocument::fromJson(data, &parseError);
        if (parseError.error != QJsonParseError::NoError || !document.isArray()) {
            const QString reason = parseError.error != QJsonParseError::NoError
                                       ? parseError.errorString()
                                       : QStringLiteral("The table is not a JSON array.");
            m_loadError = ZDError(226, QStringLiteral("Couldn’t load languages data"), {}, reason,
                                  {{QStringLiteral("URL"), m_tablePath},
                                   {QStringLiteral("JSON Length"), data.size()}});
        } else {
            for (const QJsonValue &row : document.array()) {
                const QJsonObject object = row.toObject();
                const QJsonValue identifier = object.value(QStringLiteral("identifier"));
                const QJsonValue displayName = object.value(QStringLiteral("displayName"));
                const auto aliases = stringList(object.value(QStringLiteral("aliases")));
                const auto mimeTypes = stringList(object.value(QStringLiteral("mimeTypes")));
                const auto utis = stringList(object.value(QStringLiteral("UTIStrings")));
                const auto extensions = stringList(object.value(QStringLiteral("fileExtensions")));
                if (!identifier.isString() || !displayName.isString() || !aliases || !mimeTypes || !utis
                    || !extensions)
                    continue;
                m_languages.append(ZDLanguage(identifier.toString(), displayName.toString(), *aliases,
                                              *mimeTypes, *utis, *extensions));
            }
        }
    }
    if (!m_loadError.isNull()) {
        zdLog(ZDLogLevel::Error, ZDLogDomain::Core, m_loadError.toString());
        if (m_errorPresenter)
            m_errorPresenter(m_loadError);
    }
}

QList<ZDLanguage> ZDLanguageRegistry::availableLanguages()
{
    std::lock_guard lock(m_mutex);
    ensureLoaded();
    return m_languages;
}

ZDError ZDLanguageRegistry::loadError()
{
    std::lock_guard lock(m_mutex);
    ensureLoaded();
    return m_loadError;
}

ZDLanguage ZDLanguageRegistry::fallbackPlainText() const
{
    // Used only when the table could not be read, so that every part still has a language.
    return ZDLanguage(kPlainText, QStringLiteral("Plain Text"), {QStringLiteral("text")},
                      {QStringLiteral("text/plain")}, {QStringLiteral("public.plain-text")}, {QStringLiteral("txt")});
}

ZDLanguage ZDLanguageRegistry::languageWithIdentifier(const QString &identifier)
{
    const QString current = currentIdentifier(identifier);
    std::lock_guard lock(m_mutex);
    ensureLoaded();
    if (auto cached = m_byIdentifier.constFind(current); cached != m_byIdentifier.constEnd())
        return cached.value();
    for (const ZDLanguage &language : std::as_const(m_languages)) {
        if (language.identifier() == current) {
            m_byIdentifier.insert(current, language);
            return language;
        }
    }
    zdLog(ZDLogLevel::Warning, ZDLogDomain::Core,
          QStringLiteral("Error: Valid language for identifier %1 not found. Falling back to plaintext").arg(identifier));
    if (current == kPlainText)
        return fallbackPlainText();
    return plainTextLanguage();
}

ZDLanguage ZDLanguageRegistry::plainTextLanguage()
{
    std::lock_guard lock(m_mutex);
    ensureLoaded();
    for (const ZDLanguage &language : std::as_const(m_languages)) {
        if (language.identifier() == kPlainText)
            return language;
    }
    return fallbackPlainText();
}

ZDLanguage ZDLanguageRegistry::markdownLanguage()
{
    return languageWithIdentifier(kMarkdown);
}

QList<ZDLanguage> ZDLanguageRegistry::languagesFromLanguageName(const QString &name, const QString &fileExtension,
                                                                const QString &UTIString)
{
    const QList<ZDLanguage> languages = availableLanguages();
    QHash<QString, int> scores;
    QList<QString> order; // identifiers in the order they first scored, for a stable result
    auto addScore = [&](const QString &identifier, int amount) {
        if (!scores.contains(identifier))
            order.append(identifier);
        scores[identifier] += amount;
    };
    for (const ZDLanguage &language : languages) {
        if (!UTIString.isEmpty() && stringArrayCaseInsensitiveContainsString(language.UTIStrings(), UTIString))
            return {language};
        if (!name.isEmpty()) {
            if (language.displayName().compare(name, Qt::CaseInsensitive) == 0)
                return {language};
            if (stringArrayCaseInsensitiveContainsString(language.aliases(), name))
                addScore(language.identifier(), 1);
        }
        if (!fileExtension.isEmpty()
            && stringArrayCaseInsensitiveContainsString(language.fileExtensions(), fileExtension))
            addScore(language.identifier(), 1);
    }
    const QStringList active = activeLanguageIdentifiers();
    for (const QString &identifier : std::as_const(order)) {
        if (active.contains(identifier))
            scores[identifier] += 1;
    }
    std::stable_sort(order.begin(), order.end(),
                     [&](const QString &a, const QString &b) { return scores.value(a) > scores.value(b); });
    QList<ZDLanguage> result;
    for (const QString &identifier : std::as_const(order))
        result.append(languageWithIdentifier(identifier));
    return result;
}

QStringList ZDLanguageRegistry::activeLanguageIdentifiers() const
{
    return m_defaults ? m_defaults->activeLanguageIdentifiers() : QStringList();
}

QList<ZDLanguage> ZDLanguageRegistry::activeLanguages()
{
    if (!m_internalActiveLanguages) {
        QList<ZDLanguage> active;
        const QList<ZDLanguage> languages = availableLanguages();
        for (const QString &identifier : activeLanguageIdentifiers()) {
            const QString current = currentIdentifier(identifier);
            auto found = std::find_if(languages.cbegin(), languages.cend(),
                                      [&](const ZDLanguage &language) { return language.identifier() == current; });
            if (found != languages.cend())
                active.append(*found);
        }
        m_internalActiveLanguages = active;
    }
    return *m_internalActiveLanguages;
}

void ZDLanguageRegistry::setActiveStateForLanguage(const ZDLanguage &language, bool active)
{
    if (!m_defaults || !language.isValid())
        return;
    QList<ZDLanguage> cached = activeLanguages();
    QStringList identifiers = activeLanguageIdentifiers();
    if (active) {
        if (!identifiers.contains(language.identifier())) {
            identifiers.append(language.identifier());
            cached.append(language);
        }
    } else {
        identifiers.removeAll(language.identifier());
        cached.removeAll(language);
    }
    m_internalActiveLanguages = cached;
    m_defaults->setActiveLanguageIdentifiers(identifiers);
}

void ZDLanguageRegistry::printListOfLanguages()
{
    {
        std::lock_guard lock(m_mutex);
        if (m_printed)
            return;
        m_printed = true;
    }
    const QList<ZDLanguage> languages = availableLanguages();
    QStringList names;
    for (const ZDLanguage &language : languages)
        names << language.displayName();
    QCollator collator;
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::sort(names.begin(), names.end(), collator);
    zdLog(ZDLogLevel::Info, ZDLogDomain::Core, QStringLiteral("---------- BEGIN LOADING ALL LANGUAGES ----------"));
    zdLog(ZDLogLevel::Info, ZDLogDomain::Core, QStringLiteral("%1 languages found.").arg(languages.size()));
    zdLog(ZDLogLevel::Info, ZDLogDomain::Core, names.join(QStringLiteral(", ")));
    zdLog(ZDLogLevel::Info, ZDLogDomain::Core, QStringLiteral("---------- END LOADING ALL LANGUAGES ----------"));
}
