#pragma once

#include "ZDLanguageRegistry.h"
#include "ZDRecordDirectory.h"
#include "ZDTag.h"
#include "ZDTestSupport.h"

#include <QDateTime>
#include <QHash>

#include <gtest/gtest.h>

/// A library stand-in: a tag list and folder titles and languages set by the test.
class FakeDirectory : public ZDRecordDirectory
{
public:
    ZDTagList tags;
    QHash<QString, QString> folderTitles;
    QHash<QString, QString> folderLanguages;
    mutable QStringList requesters;

    ZDTagList allTags() const override { return tags; }
    QString titleForShortcutNodeWithUUID(const QString &UUID, const QString &requester) const override
    {
        requesters.append(requester);
        return folderTitles.value(UUID);
    }
    QString defaultLanguageIdentifierForFolderUUID(const QString &UUID) const override
    {
        return folderLanguages.value(UUID);
    }
};

/// Installs the real language table, a fake library and a clock the test moves by hand.
class ModelTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ZDLanguageRegistry::install(&registry);
        ZDRecordDirectory::install(&directory);
        ZDRecordDirectory::setClock([this] { return now; });
    }
    void TearDown() override
    {
        ZDRecordDirectory::setClock({});
        ZDRecordDirectory::install(nullptr);
        ZDLanguageRegistry::install(nullptr);
    }
    void advance(qint64 msecs) { now = now.addMSecs(msecs); }

    ZDLanguageRegistry registry{ZDTestSupport::sourceResourcesDirectory() + QStringLiteral("/Languages.json")};
    FakeDirectory directory;
    QDateTime now = QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9, 123), Qt::UTC);
};
