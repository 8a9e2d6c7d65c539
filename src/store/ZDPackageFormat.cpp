#include "ZDPackageFormat.h"

#include "ZDKeyedArchive.h"
#include "ZDRecordArchive.h"

#include <QFile>
#include <QUuid>

#include <cstdlib>
#include <plist/plist.h>

namespace {
// The root object of a keyed archive; invalid when the bytes are none.
QVariant unarchived(const QByteArray &bytes)
{
    QVariant value;
    if (bytes.isEmpty() || !ZDKeyedArchive::unarchive(bytes, &value))
        return {};
    return value;
}
} // namespace

QString ZDPackageLayout::snippetFilePath(const QString &snippetUUID)
{
    return snippetsDirectory + QStringLiteral("/%1.data").arg(snippetUUID);
}

QString ZDDatabaseVersion::asString() const
{
    return QStringLiteral("%1.%2.%3").arg(major).arg(minor).arg(fix);
}

ZDDatabaseVersion ZDDatabaseVersion::current()
{
    return {1, 5, 0};
}

bool ZDDatabaseVersion::isNewerThanCurrent(const QString &packageVersion)
{
    return QString::compare(packageVersion, current().asString(), Qt::CaseSensitive) > 0;
}

QByteArray ZDPackageFormat::encodeVersion(const QString &version)
{
    return ZDKeyedArchive::archivedData(QVariantMap{{ZDPackageLayout::versionKey, version}});
}

bool ZDPackageFormat::decodeVersion(const QByteArray &bytes, QString *version, QVariant *dictionary)
{
    const QVariant value = unarchived(bytes);
    if (dictionary)
        *dictionary = value;
    if (value.typeId() != QMetaType::QVariantMap)
        return false;
    const QVariant entry = value.toMap().value(ZDPackageLayout::versionKey);
    if (entry.typeId() != QMetaType::QString)
        return false;
    *version = entry.toString();
    return true;
}

bool ZDPackageFormat::stampCurrentVersion(ZDPackageTree &tree)
{
    QString version;
    const QString current = ZDDatabaseVersion::current().asString();
    if (decodeVersion(tree.fileContents(ZDPackageLayout::versionFile), &version) && version == current)
        return false;
    tree.setFile(ZDPackageLayout::versionFile, encodeVersion(current));
    return true;
}

QString ZDPackageFormat::makeWriteStamp()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

QByteArray ZDPackageFormat::encodeWriteStamp(const QString &stamp)
{
    return ZDKeyedArchive::archivedData(stamp);
}

QString ZDPackageFormat::decodeWriteStamp(const QByteArray &bytes)
{
    const QVariant value = unarchived(bytes);
    return value.typeId() == QMetaType::QString ? value.toString() : QString();
}

QString ZDPackageFormat::readWriteStamp(const QString &packagePath)
{
    QFile file(packagePath + QLatin1Char('/') + ZDPackageLayout::identifierFile);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return decodeWriteStamp(file.readAll());
}

QByteArray ZDPackageFormat::encodeRecordList(const QList<QByteArray> &records)
{
    QVariantList blobs;
    blobs.reserve(records.size());
    for (const QByteArray &record : records)
        blobs << record;
    return ZDKeyedArchive::archivedData(blobs);
}

// A bare binary property-list array of data elements.
static bool decodePlainArray(const QByteArray &bytes, QList<QByteArray> *records)
{
    plist_t root = nullptr;
    plist_from_bin(bytes.constData(), uint32_t(bytes.size()), &root);
    if (!root)
        return false;
    const bool isArray = plist_get_node_type(root) == PLIST_ARRAY;
    for (uint32_t i = 0; isArray && i < plist_array_get_size(root); ++i) {
        plist_t item = plist_array_get_item(root, i);
        if (plist_get_node_type(item) != PLIST_DATA)
            continue;
        char *value = nullptr;
        uint64_t length = 0;
        plist_get_data_val(item, &value, &length);
        records->append(QByteArray(value, qsizetype(length)));
        std::free(value);
    }
    plist_free(root);
    return isArray;
}

bool ZDPackageFormat::decodeRecordList(const QByteArray &bytes, QList<QByteArray> *records)
{
    records->clear();
    if (bytes.isEmpty())
        return true;
    const QVariant value = unarchived(bytes);
    if (value.typeId() == QMetaType::QVariantList) {
        for (const QVariant &element : value.toList()) {
            if (element.typeId() == QMetaType::QByteArray)
                records->append(element.toByteArray());
        }
        return true;
    }
    return bytes.startsWith("bplist00") && decodePlainArray(bytes, records);
}

QByteArray ZDPackageFormat::encodeDeletionList(const QStringList &uuids)
{
    return ZDKeyedArchive::archivedData(QVariant(uuids).toList());
}

QStringList ZDPackageFormat::decodeDeletionList(const QByteArray &bytes)
{
    QStringList uuids;
    for (const QVariant &element : unarchived(bytes).toList()) {
        if (element.typeId() == QMetaType::QString)
            uuids << element.toString();
    }
    return uuids;
}

ZDPackageTree ZDPackageFormat::emptyPackage()
{
    using namespace ZDPackageLayout;
    ZDPackageTree tree;
    tree.makeDirectory(snippetsDirectory);
    for (const QString &path : {foldersFile, shortcutsFile, tagsFile, smartGroupsFile, deletionListWritePath})
        tree.setFile(path, QByteArray());
    tree.makeDirectory(attachmentsDirectory);
    tree.setFile(versionFile, encodeVersion());
    return tree;
}
