#include "ZDRecordArchive.h"

#include "ZDCategoryNode.h"
#include "ZDKeyedArchive.h"
#include "ZDLanguageRegistry.h"
#include "ZDSnippet.h"
#include "ZDTag.h"

#include <QStringDecoder>

namespace {

#define ZD_KEY(name) QStringLiteral("com.varnok.Zandrio.Key." name)

// Fields in the order the records have always been written.
struct OrderedFields
{
    QVariantMap fields;
    QStringList order;
    void insert(const QString &key, const QVariant &value)
    {
        fields.insert(key, value);
        order.append(key);
    }
    QVariant object(const QString &className) const
    {
        ZDArchivedObject archived = ZDArchivedObject::make(className, fields);
        archived.keyOrder = order;
        return QVariant::fromValue(archived);
    }
};

QVariant nullable(const QString &string)
{
    return string.isNull() ? QVariant() : QVariant(string);
}

QString stringField(const QVariantMap &fields, const QString &key)
{
    const QVariant value = fields.value(key);
    return value.typeId() == QMetaType::QString ? value.toString() : QString();
}

QDateTime dateField(const QVariantMap &fields, const QString &key)
{
    const QVariant value = fields.value(key);
    return value.typeId() == QMetaType::QDateTime ? value.toDateTime() : QDateTime();
}

// Note and content are stored as UTF-8 bytes; bytes that are absent or not UTF-8 read as "".
QString utf8Field(const QVariantMap &fields, const QString &key)
{
    const QVariant value = fields.value(key);
    if (value.typeId() != QMetaType::QByteArray)
        return QStringLiteral("");
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(value.toByteArray());
    return decoder.hasError() ? QStringLiteral("") : text;
}

// The object held in `value` (not a copy), or null when it is not an object of that class.
const ZDArchivedObject *objectOfClass(const QVariant &value, const char *className)
{
    if (value.typeId() != qMetaTypeId<ZDArchivedObject>())
        return nullptr;
    const auto *object = static_cast<const ZDArchivedObject *>(value.constData());
    return object->className == QLatin1String(className) ? object : nullptr;
}

ZDLanguage languageWithIdentifier(const QString &identifier)
{
    ZDLanguageRegistry *registry = ZDLanguageRegistry::shared();
    if (!registry)
        return {};
    // The registry answers plain text for identifiers it does not know.
    return identifier.isEmpty() ? registry->plainTextLanguage() : registry->languageWithIdentifier(identifier);
}

QVariant nodeObjectFromDictionary(const QVariantMap &dictionary)
{
    QVariantMap fields = dictionary;
    const QString childrenKey = QLatin1String(ZDCategoryNodeKey::Children);
    if (fields.contains(childrenKey)) {
        QVariantList children;
        for (const QVariant &child : fields.value(childrenKey).toList())
            children.append(nodeObjectFromDictionary(child.toMap()));
        fields.insert(childrenKey, children);
    }
    return QVariant::fromValue(ZDArchivedObject::make(QStringLiteral("ZDCategoryNode"), fields));
}

// The written form of an archived node: its fields, with archived children made dictionaries.
QVariantMap dictionaryFromNodeValue(const QVariant &value, bool *ok)
{
    QVariantMap fields;
    if (auto object = objectOfClass(value, "ZDCategoryNode"))
        fields = object->fields;
    else if (value.typeId() == QMetaType::QVariantMap)
        fields = value.toMap();
    else {
        *ok = false;
        return {};
    }
    const QString childrenKey = QLatin1String(ZDCategoryNodeKey::Children);
    if (fields.contains(childrenKey)) {
        QVariantList children;
        for (const QVariant &child : fields.value(childrenKey).toList()) {
            bool childOk = true;
            const QVariantMap childDictionary = dictionaryFromNodeValue(child, &childOk);
            if (childOk)
                children.append(childDictionary);
        }
        fields.insert(childrenKey, children);
    }
    return fields;
}

template<typename Record>
std::shared_ptr<Record> unarchiveWith(const QByteArray &data, ZDError *error,
                                      std::shared_ptr<Record> (*fromObject)(const QVariant &), const char *what)
{
    QVariant root;
    if (!ZDKeyedArchive::unarchive(data, &root, error))
        return nullptr;
    std::shared_ptr<Record> record = fromObject(root);
    if (!record)
        ZDError::fail(error, ZDError(ZDKeyedArchive::kCorruptArchiveErrorCode,
                                     QStringLiteral("The data couldn’t be read because it isn’t in the correct format."),
                                     {}, QStringLiteral("archive root is not a %1").arg(QLatin1String(what))));
    return record;
}

} // namespace

namespace ZDRecordArchive {

QVariant partObject(const ZDSnippetPart &part)
{
    OrderedFields fields;
    fields.insert(ZD_KEY("SnippetPartTitle"), nullable(part.title()));
    fields.insert(ZD_KEY("SnippetPartUUID"), nullable(part.UUID()));
    fields.insert(ZD_KEY("SnippetPartSnippetUUID"), nullable(part.snippetUUID()));
    fields.insert(ZD_KEY("SnippetPartNote"), part.note().toUtf8());
    fields.insert(ZD_KEY("SnippetPartContent"), part.content().toUtf8());
    fields.insert(ZD_KEY("SnippetPartLanguage"), part.language().identifier());
    fields.insert(ZD_KEY("SnippetPartDateCreated"), part.dateCreated());
    fields.insert(ZD_KEY("SnippetPartDateModified"), part.dateModified());
    return fields.object(QStringLiteral("ZDSnippetPart"));
}

QVariant snippetObject(const ZDSnippet &snippet)
{
    QVariantList parts;
    for (const ZDSnippetPartPtr &part : snippet.parts())
        parts.append(partObject(*part));
    OrderedFields fields;
    fields.insert(ZD_KEY("SnippetTitle"), nullable(snippet.title()));
    fields.insert(ZD_KEY("SnippetUUID"), nullable(snippet.UUID()));
    fields.insert(ZD_KEY("SnippetFolderUUID"), nullable(snippet.folderUUID()));
    fields.insert(ZD_KEY("SnippetTagUUIDs"), snippet.tagUUIDs());
    fields.insert(ZD_KEY("SnippetParts"), parts);
    fields.insert(ZD_KEY("SnippetDateCreated"), snippet.dateCreated());
    fields.insert(ZD_KEY("SnippetDateModified"), snippet.dateModified());
    fields.insert(ZD_KEY("GistIdentifier"), nullable(snippet.gistIdentifier()));
    fields.insert(ZD_KEY("GitHubUsername"), nullable(snippet.githubUsername()));
    fields.insert(ZD_KEY("GitHubHTMLURL"), nullable(snippet.githubHTMLURL()));
    return fields.object(QStringLiteral("ZDSnippet"));
}

QVariant tagObject(const ZDTag &tag)
{
    OrderedFields fields;
    fields.insert(ZD_KEY("TagTitle"), nullable(tag.title()));
    fields.insert(ZD_KEY("TagUUID"), nullable(tag.UUID()));
    return fields.object(QStringLiteral("ZDTag"));
}

QVariant nodeObject(const ZDCategoryNode &node)
{
    return nodeObjectFromDictionary(node.dictionaryRepresentation());
}

ZDSnippetPartPtr partFromObject(const QVariant &value)
{
    const auto object = objectOfClass(value, "ZDSnippetPart");
    if (!object)
        return nullptr;
    const QVariantMap &f = object->fields;
    return std::make_shared<ZDSnippetPart>(
        stringField(f, ZD_KEY("SnippetPartTitle")), stringField(f, ZD_KEY("SnippetPartUUID")),
        languageWithIdentifier(stringField(f, ZD_KEY("SnippetPartLanguage"))),
        utf8Field(f, ZD_KEY("SnippetPartNote")), utf8Field(f, ZD_KEY("SnippetPartContent")),
        dateField(f, ZD_KEY("SnippetPartDateCreated")), dateField(f, ZD_KEY("SnippetPartDateModified")),
        stringField(f, ZD_KEY("SnippetPartSnippetUUID")));
}

ZDSnippetPtr snippetFromObject(const QVariant &value)
{
    const auto object = objectOfClass(value, "ZDSnippet");
    if (!object)
        return nullptr;
    const QVariantMap &f = object->fields;
    const QString UUID = stringField(f, ZD_KEY("SnippetUUID"));
    if (UUID.isEmpty())
        return nullptr; // a snippet is filed by its UUID; without one it cannot be kept
    QStringList tagUUIDs;
    for (const QVariant &tag : f.value(ZD_KEY("SnippetTagUUIDs")).toList()) {
        if (tag.typeId() == QMetaType::QString)
            tagUUIDs.append(tag.toString());
    }
    QList<ZDSnippetPartPtr> parts;
    for (const QVariant &partValue : f.value(ZD_KEY("SnippetParts")).toList()) {
        if (ZDSnippetPartPtr part = partFromObject(partValue))
            parts.append(part);
    }
    return std::make_shared<ZDSnippet>(
        stringField(f, ZD_KEY("SnippetTitle")), UUID, stringField(f, ZD_KEY("SnippetFolderUUID")), tagUUIDs,
        stringField(f, ZD_KEY("GistIdentifier")), stringField(f, ZD_KEY("GitHubUsername")),
        stringField(f, ZD_KEY("GitHubHTMLURL")), parts, dateField(f, ZD_KEY("SnippetDateCreated")),
        dateField(f, ZD_KEY("SnippetDateModified")));
}

ZDTagPtr tagFromObject(const QVariant &value)
{
    const auto object = objectOfClass(value, "ZDTag");
    if (!object)
        return nullptr;
    const QString UUID = stringField(object->fields, ZD_KEY("TagUUID"));
    if (UUID.isEmpty())
        return nullptr;
    return std::make_shared<ZDTag>(stringField(object->fields, ZD_KEY("TagTitle")), UUID);
}

ZDCategoryNodePtr nodeFromObject(const QVariant &value)
{
    bool ok = true;
    const QVariantMap dictionary = dictionaryFromNodeValue(value, &ok);
    return ok ? ZDCategoryNode::fromDictionaryRepresentation(dictionary) : nullptr;
}

QByteArray archivedSnippet(const ZDSnippet &snippet)
{
    return ZDKeyedArchive::archivedData(snippetObject(snippet));
}

QByteArray archivedTag(const ZDTag &tag)
{
    return ZDKeyedArchive::archivedData(tagObject(tag));
}

QByteArray archivedNode(const ZDCategoryNode &node)
{
    return ZDKeyedArchive::archivedData(nodeObject(node));
}

ZDSnippetPtr unarchiveSnippet(const QByteArray &data, ZDError *error)
{
    return unarchiveWith<ZDSnippet>(data, error, &snippetFromObject, "snippet");
}

ZDTagPtr unarchiveTag(const QByteArray &data, ZDError *error)
{
    return unarchiveWith<ZDTag>(data, error, &tagFromObject, "tag");
}

ZDCategoryNodePtr unarchiveNode(const QByteArray &data, ZDError *error)
{
    return unarchiveWith<ZDCategoryNode>(data, error, &nodeFromObject, "sidebar node");
}

QByteArray archivedList(const QList<QByteArray> &recordArchives)
{
    QVariantList members;
    for (const QByteArray &archive : recordArchives)
        members.append(archive);
    return ZDKeyedArchive::archivedData(members);
}

bool unarchiveList(const QByteArray &data, QList<QByteArray> *recordArchives, ZDError *error)
{
    recordArchives->clear();
    if (data.isEmpty())
        return true;
    QVariant root;
    if (!ZDKeyedArchive::unarchive(data, &root, error))
        return false;
    if (root.typeId() != QMetaType::QVariantList)
        return ZDError::fail(error, ZDError(ZDKeyedArchive::kCorruptArchiveErrorCode,
                                            QStringLiteral("The data couldn’t be read because it isn’t in the correct format."),
                                            {}, QStringLiteral("list file is not an array")));
    for (const QVariant &member : root.toList()) {
        if (member.typeId() == QMetaType::QByteArray)
            recordArchives->append(member.toByteArray());
    }
    return true;
}

} // namespace ZDRecordArchive
