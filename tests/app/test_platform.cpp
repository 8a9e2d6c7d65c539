// The freedesktop platform: the autostart entry in the user's configuration folder, and the
// dark-appearance signal as the application's palette changes.

#include "ZDError.h"
#include "ZDFreedesktopPlatform.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QPalette>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTest>

class TestPlatform : public QObject
{
    Q_OBJECT

    static QString configFolder()
    {
        return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    }

private Q_SLOTS:
    void cleanup() { QDir(configFolder()).removeRecursively(); }

    void autostartEntryIsWrittenAndRemoved()
    {
        ZDFreedesktopPlatform platform;
        const QString path =
            QDir(configFolder()).filePath(QStringLiteral("autostart/com.varnok.Zandrio.desktop"));
        QCOMPARE(ZDFreedesktopPlatform::autostartEntryPath(), path);
        QVERIFY(!platform.launchesAtLogin());

        QVERIFY(platform.setLaunchesAtLogin(true));
        QVERIFY(platform.setLaunchesAtLogin(true)); // again: the entry is rewritten, not refused
        QVERIFY(platform.launchesAtLogin());
        QFile entry(path);
        QVERIFY(entry.open(QIODevice::ReadOnly));
        const QList<QByteArray> lines = entry.readAll().split('\n');
        QCOMPARE(lines.first(), QByteArray("[Desktop Entry]"));
        QVERIFY(lines.contains("Type=Application"));
        QVERIFY(lines.contains("Exec=zandrio"));
        entry.close();

        QVERIFY(platform.setLaunchesAtLogin(false));
        QVERIFY(!QFile::exists(path));
        QVERIFY(!platform.launchesAtLogin());
        QVERIFY(platform.setLaunchesAtLogin(false)); // nothing to remove is not a failure
    }

    void autostartThatCannotBeWrittenSaysWhy()
    {
        // A file where the autostart folder should be: the entry cannot be made, whoever runs.
        QVERIFY(QDir().mkpath(configFolder()));
        QFile blocker(QDir(configFolder()).filePath(QStringLiteral("autostart")));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();

        ZDFreedesktopPlatform platform;
        ZDError error;
        QVERIFY(!platform.setLaunchesAtLogin(true, &error));
        QVERIFY(!error.isNull());
        QVERIFY(!error.description().isEmpty());
        QCOMPARE(error.information().value(QStringLiteral("Path")).toString(),
                 ZDFreedesktopPlatform::autostartEntryPath());
        QVERIFY(!platform.launchesAtLogin());
    }

    void paletteTurningDarkOrLightIsSignalledOnce()
    {
        ZDFreedesktopPlatform platform;
        const QPalette original = QApplication::palette();
        QVERIFY(!platform.isDarkAppearance()); // the offscreen platform's palette is light
        QSignalSpy changed(&platform, &ZDPlatform::darkAppearanceChanged);

        QPalette dark = original;
        dark.setColor(QPalette::Window, QColor(0x20, 0x20, 0x20));
        dark.setColor(QPalette::WindowText, QColor(0xE0, 0xE0, 0xE0));
        QApplication::setPalette(dark);
        QVERIFY(platform.isDarkAppearance());
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.at(0).at(0).toBool(), true);

        dark.setColor(QPalette::Base, QColor(0x10, 0x10, 0x10)); // still dark: no signal
        QApplication::setPalette(dark);
        QCOMPARE(changed.count(), 1);

        QApplication::setPalette(original);
        QCOMPARE(changed.count(), 2);
        QCOMPARE(changed.at(1).at(0).toBool(), false);
    }
};

QTEST_MAIN(TestPlatform)
#include "test_platform.moc"
