#pragma once

#include "ZDOutdatedVersionResponder.h"

#include <atomic>

class ZDError;
class ZDLanguageRegistry;
class QWidget;

/// The desktop's answers to the core: the newer-version warning and user-facing errors as
/// modal alerts. Both may be asked from the loader's thread; the alert always runs on the main
/// thread (the loader waits for the warning's answer).
class ZDAlertOutdatedVersionResponder : public ZDOutdatedVersionResponder
{
public:
    bool continueWithNewerLibrary(const QString &packageVersion, const QString &applicationVersion) override;
    /// The user chose "Close Zandrio": the program ends without saving anything.
    bool closeRequested() const { return m_closeRequested; }

private:
    std::atomic<bool> m_closeRequested{false};
};

namespace ZDAppServices {
/// Shows `error` as a modal alert on the main thread: its description as the title, its
/// recovery suggestion as the text, the code and reason as details.
void presentError(const ZDError &error);
/// Shows the errors `languages` reports (a language table that cannot be read) as modal alerts.
void installLanguageAlerts(ZDLanguageRegistry &languages);
} // namespace ZDAppServices
