#pragma once

#include <QString>

/// Answers the warning shown when a library was written by a newer version of the program.
/// The window layer shows the modal alert; the command line answers from its options.
class ZDOutdatedVersionResponder
{
public:
    static inline const QString title = QStringLiteral("Warning: Outdated Version");
    static inline const QString closeButton = QStringLiteral("Close Zandrio");
    static inline const QString continueButton = QStringLiteral("Continue Anyway");

    virtual ~ZDOutdatedVersionResponder() = default;

    /// The alert's text for a package of `packageVersion` opened by `applicationVersion`.
    static QString message(const QString &packageVersion, const QString &applicationVersion);

    /// True to go on with the library ("Continue Anyway"); false to close the program at once
    /// without saving ("Close Zandrio").
    virtual bool continueWithNewerLibrary(const QString &packageVersion,
                                          const QString &applicationVersion) = 0;
};

/// A fixed answer, for the command line: refuse unless "--continue-anyway" was given.
class ZDFixedOutdatedVersionResponder : public ZDOutdatedVersionResponder
{
public:
    explicit ZDFixedOutdatedVersionResponder(bool continueAnyway) : m_continue(continueAnyway) {}
    bool continueWithNewerLibrary(const QString &, const QString &) override { return m_continue; }

private:
    bool m_continue;
};
