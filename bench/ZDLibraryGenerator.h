#pragma once

#include "ZDError.h"
#include "ZDLibraryContents.h"

#include <QDateTime>
#include <QString>

#include <random>

class ZDLanguageRegistry;

/// Makes synthetic libraries for benchmarks and manual testing: `count` snippets of one to four
/// parts of plausible code in common languages, with notes, nested folders, tags and titles in
/// several scripts. The same seed always gives the same library (UUIDs and dates included).
class ZDLibraryGenerator
{
public:
    ZDLibraryGenerator(quint64 seed, ZDLanguageRegistry &languages);

    ZDLibraryContents generate(int count);

    /// Writes `contents` as a new package at `packagePath` (which must not exist yet).
    static bool writePackage(const ZDLibraryContents &contents, const QString &packagePath,
                             ZDError *error = nullptr);

private:
    QString uuid();
    int between(int low, int high);
    template<typename List>
    const auto &pick(const List &list)
    {
        return list.at(between(0, int(list.size()) - 1));
    }
    QDateTime date();
    QString identifierWord();
    QString title();
    QString code(const QString &language);
    QString note();

    std::mt19937_64 m_random;
    ZDLanguageRegistry &m_languages;
};
