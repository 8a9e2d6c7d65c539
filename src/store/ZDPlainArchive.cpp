#include "ZDPlainArchive.h"

#include <QStringList>

#include <cstdlib>
#include <plist/plist.h>

namespace {

// Owns a plist node for the length of a scope.
struct PlistHolder
{
    plist_t node = nullptr;
    ~PlistHolder()
    {
        if (node)
            plist_free(node);
    }
};

plist_t makeClass(const char *name, const char *base)
{
    plist_t entry = plist_new_dict();
    plist_dict_set_item(entry, "$classname", plist_new_string(name));
    plist_t classes = plist_new_array();
    plist_array_append_item(classes, plist_new_string(name));
    if (base)
        plist_array_append_item(classes, plist_new_string(base));
    plist_array_append_item(classes, plist_new_string("NSObject"));
    plist_dict_set_item(entry, "$classes", classes);
    return entry;
}

class Encoder
{
public:
    Encoder() : m_objects(plist_new_array())
    {
        plist_array_append_item(m_objects, plist_new_string("$null"));
    }

    uint64_t encode(const QVariant &value)
    {
        const uint64_t index = plist_array_get_size(m_objects);
        switch (value.typeId()) {
        case QMetaType::QByteArray: {
            const QByteArray bytes = value.toByteArray();
            plist_array_append_item(m_objects, plist_new_data(bytes.constData(), uint64_t(bytes.size())));
            return index;
        }
        case QMetaType::QVariantList:
        case QMetaType::QStringList: {
            plist_t object = plist_new_dict();
            plist_array_append_item(m_objects, object);
            plist_t references = plist_new_array();
            for (const QVariant &element : value.toList())
                plist_array_append_item(references, plist_new_uid(encode(element)));
            plist_dict_set_item(object, "NS.objects", references);
            plist_dict_set_item(object, "$class", plist_new_uid(classIndex("NSArray", nullptr)));
            return index;
        }
        case QMetaType::QVariantMap: {
            plist_t object = plist_new_dict();
            plist_array_append_item(m_objects, object);
            plist_t keys = plist_new_array();
            plist_t values = plist_new_array();
            const QVariantMap map = value.toMap();
            for (auto it = map.cbegin(); it != map.cend(); ++it) {
                plist_array_append_item(keys, plist_new_uid(encode(it.key())));
                plist_array_append_item(values, plist_new_uid(encode(it.value())));
            }
            plist_dict_set_item(object, "NS.keys", keys);
            plist_dict_set_item(object, "NS.objects", values);
            plist_dict_set_item(object, "$class", plist_new_uid(classIndex("NSDictionary", nullptr)));
            return index;
        }
        default:
            plist_array_append_item(m_objects, plist_new_string(value.toString().toUtf8().constData()));
            return index;
        }
    }

    QByteArray finish(uint64_t root)
    {
        PlistHolder archive{plist_new_dict()};
        plist_dict_set_item(archive.node, "$archiver", plist_new_string("NSKeyedArchiver"));
        plist_dict_set_item(archive.node, "$version", plist_new_uint(100000));
        plist_t top = plist_new_dict();
        plist_dict_set_item(top, "root", plist_new_uid(root));
        plist_dict_set_item(archive.node, "$top", top);
        plist_dict_set_item(archive.node, "$objects", m_objects);
        char *bytes = nullptr;
        uint32_t length = 0;
        plist_to_bin(archive.node, &bytes, &length);
        QByteArray result(bytes, qsizetype(length));
        plist_to_bin_free(bytes);
        return result;
    }

private:
    uint64_t classIndex(const char *name, const char *base)
    {
        const QString key = QString::fromLatin1(name);
        if (!m_classes.contains(key)) {
            m_classes.insert(key, plist_array_get_size(m_objects));
            plist_array_append_item(m_objects, makeClass(name, base));
        }
        return m_classes.value(key);
    }

    plist_t m_objects;
    QHash<QString, uint64_t> m_classes;
};

class Decoder
{
public:
    explicit Decoder(plist_t objects) : m_objects(objects) {}

    QVariant decodeReference(plist_t reference, int depth)
    {
        if (!reference || plist_get_node_type(reference) != PLIST_UID || depth > 64)
            return {};
        uint64_t index = 0;
        plist_get_uid_val(reference, &index);
        if (index == 0 || index >= plist_array_get_size(m_objects)) // 0 is "$null"
            return {};
        return decodeObject(plist_array_get_item(m_objects, uint32_t(index)), depth + 1);
    }

private:
    static QString stringValue(plist_t node)
    {
        char *value = nullptr;
        plist_get_string_val(node, &value);
        const QString result = QString::fromUtf8(value);
        std::free(value);
        return result;
    }

    static QByteArray dataValue(plist_t node)
    {
        char *value = nullptr;
        uint64_t length = 0;
        plist_get_data_val(node, &value, &length);
        const QByteArray result(value, qsizetype(length));
        std::free(value);
        return result;
    }

    QString className(plist_t object)
    {
        plist_t reference = plist_dict_get_item(object, "$class");
        if (!reference || plist_get_node_type(reference) != PLIST_UID)
            return {};
        uint64_t index = 0;
        plist_get_uid_val(reference, &index);
        plist_t entry = index < plist_array_get_size(m_objects)
                            ? plist_array_get_item(m_objects, uint32_t(index))
                            : nullptr;
        plist_t name = entry && plist_get_node_type(entry) == PLIST_DICT
                           ? plist_dict_get_item(entry, "$classname")
                           : nullptr;
        return name && plist_get_node_type(name) == PLIST_STRING ? stringValue(name) : QString();
    }

    QVariantList decodeReferences(plist_t array, int depth, bool *ok)
    {
        QVariantList values;
        *ok = array && plist_get_node_type(array) == PLIST_ARRAY;
        for (uint32_t i = 0; *ok && i < plist_array_get_size(array); ++i) {
            const QVariant element = decodeReference(plist_array_get_item(array, i), depth);
            *ok = element.isValid();
            values << element;
        }
        return values;
    }

    QVariant decodeObject(plist_t object, int depth)
    {
        switch (plist_get_node_type(object)) {
        case PLIST_STRING:
            return stringValue(object);
        case PLIST_DATA:
            return dataValue(object);
        case PLIST_DICT:
            break;
        default:
            return {};
        }
        const QString name = className(object);
        bool ok = false;
        if (name == QLatin1String("NSArray") || name == QLatin1String("NSMutableArray")) {
            QVariantList values = decodeReferences(plist_dict_get_item(object, "NS.objects"), depth, &ok);
            return ok ? QVariant(values) : QVariant();
        }
        if (name == QLatin1String("NSDictionary") || name == QLatin1String("NSMutableDictionary")) {
            const QVariantList keys = decodeReferences(plist_dict_get_item(object, "NS.keys"), depth, &ok);
            bool valuesOk = false;
            const QVariantList values =
                decodeReferences(plist_dict_get_item(object, "NS.objects"), depth, &valuesOk);
            if (!ok || !valuesOk || keys.size() != values.size())
                return {};
            QVariantMap map;
            for (qsizetype i = 0; i < keys.size(); ++i)
                map.insert(keys[i].toString(), values[i]);
            return map;
        }
        if (name == QLatin1String("NSMutableString")) {
            plist_t text = plist_dict_get_item(object, "NS.string");
            return text && plist_get_node_type(text) == PLIST_STRING ? QVariant(stringValue(text))
                                                                     : QVariant();
        }
        if (name == QLatin1String("NSMutableData")) {
            plist_t data = plist_dict_get_item(object, "NS.data");
            return data && plist_get_node_type(data) == PLIST_DATA ? QVariant(dataValue(data)) : QVariant();
        }
        return {};
    }

    plist_t m_objects;
};

} // namespace

QByteArray ZDPlainArchive::archive(const QVariant &value)
{
    Encoder encoder;
    const uint64_t root = encoder.encode(value);
    return encoder.finish(root);
}

QVariant ZDPlainArchive::unarchive(const QByteArray &bytes)
{
    if (bytes.size() < 8 || !bytes.startsWith("bplist00"))
        return {};
    PlistHolder archive;
    plist_from_bin(bytes.constData(), uint32_t(bytes.size()), &archive.node);
    if (!archive.node || plist_get_node_type(archive.node) != PLIST_DICT)
        return {};
    plist_t objects = plist_dict_get_item(archive.node, "$objects");
    plist_t top = plist_dict_get_item(archive.node, "$top");
    if (!objects || plist_get_node_type(objects) != PLIST_ARRAY || !top ||
        plist_get_node_type(top) != PLIST_DICT)
        return {};
    return Decoder(objects).decodeReference(plist_dict_get_item(top, "root"), 0);
}
