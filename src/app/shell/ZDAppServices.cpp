#include "ZDAppServices.h"

#include "ZDDesktopIntegration.h"
#include "ZDError.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusVariant>
#include <QMessageBox>
#include <QPalette>
#include <QPushButton>
#include <QStyleFactory>
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

/// 0 no preference, 1 dark, 2 light, as the desktop portal says; -1 when it cannot be asked.
int portalColorScheme()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return -1;
    QDBusMessage call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.portal.Desktop"),
                                                      QStringLiteral("/org/freedesktop/portal/desktop"),
                                                      QStringLiteral("org.freedesktop.portal.Settings"), QStringLiteral("Read"));
    call << QStringLiteral("org.freedesktop.appearance") << QStringLiteral("color-scheme");
    call.setAutoStartService(false); // never wait for a portal to start
    const QDBusReply<QVariant> reply = bus.call(call, QDBus::Block, 250);
    if (!reply.isValid())
        return -1;
    QVariant value = reply.value();
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value.toInt();
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

void applyDesktopColorScheme()
{
    const QString gtkTheme = qEnvironmentVariable("GTK_THEME");
    const int scheme = portalColorScheme();
    const bool wantsDark = scheme == 1 || (scheme <= 0 && gtkTheme.endsWith(QStringLiteral(":dark")));
    if (!wantsDark || ZDDesktopIntegration::isDarkPalette())
        return;
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QPalette dark;
    dark.setColor(QPalette::Window, QColor(0x2B, 0x2B, 0x2E));
    dark.setColor(QPalette::WindowText, QColor(0xE6, 0xE6, 0xE6));
    dark.setColor(QPalette::Base, QColor(0x1E, 0x1E, 0x21));
    dark.setColor(QPalette::AlternateBase, QColor(0x26, 0x26, 0x29));
    dark.setColor(QPalette::Text, QColor(0xE6, 0xE6, 0xE6));
    dark.setColor(QPalette::PlaceholderText, QColor(0x8A, 0x8A, 0x90));
    dark.setColor(QPalette::Button, QColor(0x35, 0x35, 0x39));
    dark.setColor(QPalette::ButtonText, QColor(0xE6, 0xE6, 0xE6));
    dark.setColor(QPalette::ToolTipBase, QColor(0x35, 0x35, 0x39));
    dark.setColor(QPalette::ToolTipText, QColor(0xE6, 0xE6, 0xE6));
    dark.setColor(QPalette::Highlight, QColor(0x2F, 0x6F, 0xD6));
    dark.setColor(QPalette::HighlightedText, Qt::white);
    dark.setColor(QPalette::Link, QColor(0x6C, 0xA8, 0xFF));
    dark.setColor(QPalette::Mid, QColor(0x44, 0x44, 0x48));
    dark.setColor(QPalette::Dark, QColor(0x18, 0x18, 0x1A));
    dark.setColor(QPalette::Disabled, QPalette::Text, QColor(0x70, 0x70, 0x75));
    dark.setColor(QPalette::Disabled, QPalette::WindowText, QColor(0x70, 0x70, 0x75));
    dark.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(0x70, 0x70, 0x75));
    QApplication::setPalette(dark);
}

} // namespace ZDAppServices
