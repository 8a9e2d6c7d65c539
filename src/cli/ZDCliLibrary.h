#pragma once

#include "ZDCliCommand.h"
#include "ZDDataCenter.h"
#include "ZDOutdatedVersionResponder.h"

#include <memory>

class ZDCliArguments;
class ZDLanguageRegistry;

/// A library opened for one command: the store over the package given with --library (else the
/// one the application uses), without a file watcher, installed as the records' directory for
/// the command's lifetime.
///
/// A library written by a newer version is refused unless the command was given
/// --continue-anyway. A library that could not be read is never written. A command that changes
/// the library saves before it returns.
class ZDCliLibrary
{
public:
    /// The package the command works on: --library, else the application's choice, else the
    /// default location.
    static QString resolvePath(const ZDCliContext &context, ZDError *error = nullptr);

    /// The library of the command whose arguments these are; --continue-anyway as they say.
    explicit ZDCliLibrary(const ZDCliArguments &arguments, bool repairOnLoad = true);
    ~ZDCliLibrary();

    /// False (with the error printed) when the library could not be opened.
    bool open(int *status);
    ZDDataCenter &center() { return *m_center; }
    ZDDataCenter *operator->() { return m_center.get(); }

    /// Writes the changes and waits; prints the error and returns false when that fails.
    bool save(int *status);

    /// The folder (at any depth) titled `nameOrUUID` or with that UUID, or the predefined
    /// Uncategorized folder by its UUID or title; empty when there is none.
    QString folderUUIDNamed(const QString &nameOrUUID) const;

private:
    ZDCliContext &m_context;
    ZDFixedOutdatedVersionResponder m_responder;
    bool m_repairOnLoad;
    std::unique_ptr<ZDDataCenter> m_center;
    ZDLanguageRegistry *m_previousLanguages = nullptr;
};

/// Prints a load error with what lies under it ("Couldn’t load the library: ... (code 104)").
int zdFailLoad(const ZDCliContext &context, const ZDError &error);
