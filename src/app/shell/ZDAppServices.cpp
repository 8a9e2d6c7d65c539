#include "ZDAppServices.h"

#include "ZDError.h"
#include "ZDLanguageRegistry.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QThread>

namespace {
template<typename F>
auto onMainThread(F work)
{
    using Result = decltype(work());
    if (QThread::currentThread() == qApp->thread())
        return work();
    Result result{};
    QMetaObject::invokeMethod(qApp, [&] { result = work(); }, Qt::BlockingQueuedConnection);
    return result;
}

QWidget *alertParent()
{
    return QApplication::activeWindow();
}
} // namespace

bool ZDAlertOutdatedVersionResponder::continueWithNewerLibrary(const QString &packageVersion, const QString &applicationVersion)
{
    return onMainThread([&] {
        QMessageBox box(QMessageBox::Warning, title, message(packageVersion, applicationVersion), QMessageBox::NoButton,
                        alertParent());
        QPushButton *close = box.addButton(closeButton, QMessageBox::RejectRole);
        QPushButton *go = box.addButton(continueButton, QMessageBox::DestructiveRole);
        box.setDefaultButton(close);
        box.exec();
        const bool goOn = box.clickedButton() == go;
        m_closeRequested = !goOn;
        return goOn;
    });
}

namespace ZDAppServices {

void presentError(const ZDError &error)
{
    QMetaObject::invokeMethod(qApp, [error] {
        QMessageBox box(QMessageBox::Critical, error.description(), error.description(), QMessageBox::Ok, alertParent());
        box.setInformativeText(error.recoverySuggestion());
        box.setDetailedText(error.toString());
        box.exec();
    }, Qt::QueuedConnection);
}

void installLanguageAlerts(ZDLanguageRegistry &languages)
{
    languages.setErrorPresenter([](const ZDError &error) {
        QMessageBox box(QMessageBox::Critical, QStringLiteral("Zandrio"), error.description());
        box.setInformativeText(error.recoverySuggestion());
        box.setDetailedText(error.toString());
        box.exec();
    });
}

} // namespace ZDAppServices
