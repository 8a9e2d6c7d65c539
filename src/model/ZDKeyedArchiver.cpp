#include "ZDKeyedArchive.h"

#include <QDateTime>
#include <QHash>

#include <plist/plist.h>

#include <cstdlib>
#include <vector>

namespace {

// Seconds between 1970-01-01 and the archive's reference date, 2001-01-01 00:00:00 UTC.
constexpr qint64 kReferenceDateOffsetMSecs = 978307200000LL;

class Archiver
{
public:
    Archiver() { append(plist_new_string("$null")); }

    QByteArray finish(const QVariant &root)
    {
        const uint64_t rootUID = encode(root);
        plist_t top = plist_new_dict();
        plist_dict_set_item(top, "root", plist_new_uid(rootUID));
        plist_t archive = plist_new_dict();
        plist_dict_set_item(archive, "$version", plist_new_uint(100000));
        plist_dict_set_item(archive, "$archiver", plist_new_string("NSKeyedArchiver"));
        plist_dict_set_item(archive, "$top", top);
        plist_t objects = plist_new_array();
        for (plist_t node : m_nodes)
            plist_array_append_item(objects, node);
        plist_dict_set_item(archive, "$objects", objects);
        char *bytes = nullptr;
        uint32_t length = 0;
        plist_to_bin(archive, &bytes, &length);
        QByteArray result(bytes, qsizetype(length));
        std::free(bytes);
        plist_free(archive);
        return result;
    }

private:
    // The table is built here and handed to libplist at the end: libplist reaches an array
    // member by walking the array.
    uint64_t append(plist_t node)
    {
        m_nodes.push_back(node);
        return m_nodes.size() - 1;
    }

    // Reserves a slot so that a container comes before its contents, as the platform writes it.
    uint64_t reserve() { return append(nullptr); }
    void fill(uint64_t uid, plist_t node) { m_nodes[uid] = node; }

    uint64_t classUID(const QString &name, const QStringList &chain)
    {
        auto found = m_classes.constFind(name);
        if (found != m_classes.constEnd())
            return *found;
        plist_t classes = plist_new_array();
        for (const QString &member : chain)
            plist_array_append_item(classes, plist_new_string(member.toUtf8().constData()));
        plist_t record = plist_new_dict();
        plist_dict_set_item(record, "$classes", classes);
        plist_dict_set_item(record, "$classname", plist_new_string(name.toUtf8().constData()));
        const uint64_t uid = append(record);
        m_classes.insert(name, uid);
        return uid;
    }

    uint64_t encodeString(const QString &string)
    {
        auto found = m_strings.constFind(string);
        if (found != m_strings.constEnd())
            return *found;
        const uint64_t uid = append(plist_new_string(string.toUtf8().constData()));
        m_strings.insert(string, uid);
        return uid;
    }

    uint64_t encodeList(const QVariantList &list)
    {
        const uint64_t uid = reserve();
        plist_t objects = plist_new_array();
        for (const QVariant &item : list)
            plist_array_append_item(objects, plist_new_uid(encode(item)));
        plist_t record = plist_new_dict();
        plist_dict_set_item(record, "NS.objects", objects);
        plist_dict_set_item(record, "$class", plist_new_uid(classUID(QStringLiteral("NSArray"),
                                                                     {QStringLiteral("NSArray"), QStringLiteral("NSObject")})));
        fill(uid, record);
        return uid;
    }

    uint64_t encodeMap(const QVariantMap &map)
    {
        const uint64_t uid = reserve();
        plist_t keys = plist_new_array();
        plist_t objects = plist_new_array();
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            plist_array_append_item(keys, plist_new_uid(encodeString(it.key())));
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            plist_array_append_item(objects, plist_new_uid(encode(it.value())));
        plist_t record = plist_new_dict();
        plist_dict_set_item(record, "NS.keys", keys);
        plist_dict_set_item(record, "NS.objects", objects);
        plist_dict_set_item(record, "$class",
                            plist_new_uid(classUID(QStringLiteral("NSDictionary"),
                                                   {QStringLiteral("NSDictionary"), QStringLiteral("NSObject")})));
        fill(uid, record);
        return uid;
    }

    uint64_t encodeDate(const QDateTime &date)
    {
        const double seconds = double(date.toMSecsSinceEpoch() - kReferenceDateOffsetMSecs) / 1000.0;
        plist_t record = plist_new_dict();
        plist_dict_set_item(record, "NS.time", plist_new_real(seconds));
        const uint64_t uid = append(record);
        plist_dict_set_item(record, "$class",
                            plist_new_uid(classUID(QStringLiteral("NSDate"),
                                                   {QStringLiteral("NSDate"), QStringLiteral("NSObject")})));
        return uid;
    }

    uint64_t encodeObject(const ZDArchivedObject &object)
    {
        const uint64_t uid = reserve();
        plist_t record = plist_new_dict();
        QStringList keys = object.keyOrder;
        for (auto it = object.fields.cbegin(); it != object.fields.cend(); ++it) {
            if (!object.keyOrder.contains(it.key()))
                keys.append(it.key());
        }
        for (const QString &key : std::as_const(keys)) {
            const QVariant value = object.fields.value(key);
            // Absent values are left out, as the platform does for a nil object.
            if (!value.isValid())
                continue;
            plist_dict_set_item(record, key.toUtf8().constData(), plist_new_uid(encode(value)));
        }
        QStringList chain = object.classes;
        if (chain.isEmpty())
            chain = {object.className, QStringLiteral("NSObject")};
        plist_dict_set_item(record, "$class", plist_new_uid(classUID(object.className, chain)));
        fill(uid, record);
        return uid;
    }

    // A container that is shared in memory (one object reached twice, as a decoded archive's
    // shared objects are) is written once and referred to twice, as the platform does.
    template<typename Encode>
    uint64_t shared(const void *identity, const QVariant &holder, Encode encodeOnce)
    {
        if (!identity)
            return encodeOnce();
        auto found = m_shared.constFind(identity);
        if (found != m_shared.constEnd())
            return *found;
        m_pinned.append(holder); // keeps the identity from being reused by another value
        const uint64_t uid = encodeOnce();
        m_shared.insert(identity, uid);
        return uid;
    }

    uint64_t encode(const QVariant &value)
    {
        switch (value.typeId()) {
        case QMetaType::UnknownType:
        case QMetaType::Nullptr:
            return 0;
        case QMetaType::QString:
            return encodeString(value.toString());
        case QMetaType::QByteArray: {
            const QByteArray bytes = value.toByteArray();
            return append(plist_new_data(bytes.constData(), uint64_t(bytes.size())));
        }
        case QMetaType::Bool:
            return append(plist_new_bool(value.toBool() ? 1 : 0));
        case QMetaType::Double:
        case QMetaType::Float:
            return append(plist_new_real(value.toDouble()));
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::Long:
        case QMetaType::ULong:
        case QMetaType::LongLong:
        case QMetaType::Short:
        case QMetaType::UShort:
            return append(plist_new_uint(uint64_t(value.toLongLong())));
        case QMetaType::ULongLong:
            return append(plist_new_uint(value.toULongLong()));
        case QMetaType::QDateTime:
            return value.toDateTime().isValid() ? encodeDate(value.toDateTime()) : 0;
        case QMetaType::QStringList:
        case QMetaType::QVariantList: {
            const QVariantList list = value.toList();
            return shared(list.constData(), QVariant(list), [&] { return encodeList(list); });
        }
        case QMetaType::QVariantMap: {
            const QVariantMap map = value.toMap();
            const void *identity = map.isEmpty() ? nullptr : &*map.constBegin();
            return shared(identity, QVariant(map), [&] { return encodeMap(map); });
        }
        default:
            break;
        }
        if (value.typeId() == qMetaTypeId<ZDArchivedObject>())
            return shared(value.constData(), value, [&] { return encodeObject(value.value<ZDArchivedObject>()); });
        return encodeString(value.toString());
    }

    std::vector<plist_t> m_nodes;
    QHash<QString, uint64_t> m_strings;
    QHash<QString, uint64_t> m_classes;
    QHash<const void *, uint64_t> m_shared;
    QVariantList m_pinned;
};

} // namespace

ZDArchivedObject ZDArchivedObject::make(const QString &className, const QVariantMap &fields)
{
    return ZDArchivedObject{className, {className, QStringLiteral("NSObject")}, fields, {}};
}

QByteArray ZDKeyedArchive::archivedData(const QVariant &rootObject)
{
    Archiver archiver;
    return archiver.finish(rootObject);
}
