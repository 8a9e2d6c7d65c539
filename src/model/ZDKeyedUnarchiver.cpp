#include "ZDKeyedArchive.h"

#include "ZDBinaryPlistCheck.h"

#include <QDateTime>
#include <QHash>

#include <plist/plist.h>

#include <cmath>
#include <cstdlib>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

constexpr qint64 kReferenceDateOffsetMSecs = 978307200000LL;
// Limits that keep hostile archives from exhausting the stack or memory. Real records nest a
// handful of levels (a folder tree a few dozen) and hold far fewer values.
constexpr int kMaximumDepth = 512;
constexpr qint64 kMaximumValues = 1'000'000;

struct PlistDeleter
{
    void operator()(plist_t node) const { plist_free(node); }
};
using PlistHolder = std::unique_ptr<void, PlistDeleter>;

QString stringValue(plist_t node)
{
    if (!node || plist_get_node_type(node) != PLIST_STRING)
        return {};
    uint64_t length = 0;
    const char *chars = plist_get_string_ptr(node, &length);
    return chars ? QString::fromUtf8(chars, qsizetype(length)) : QString();
}

// Field names repeat in every record, so each is made a QString once per thread and shared.
// The cache is bounded, since an archive may name as many fields as it likes.
QString fieldName(char *chars)
{
    thread_local std::unordered_map<std::string, QString> names;
    if (!chars)
        return {};
    const std::string key(chars);
    std::free(chars);
    auto found = names.find(key);
    if (found != names.end())
        return found->second;
    if (names.size() >= 512)
        names.clear();
    QString name = QString::fromUtf8(key.data(), qsizetype(key.size()));
    names.emplace(key, name);
    return name;
}

bool uidValue(plist_t node, uint64_t *uid)
{
    if (!node || plist_get_node_type(node) != PLIST_UID)
        return false;
    plist_get_uid_val(node, uid);
    return true;
}

std::optional<QDateTime> dateFromReferenceSeconds(double seconds)
{
    // About ±31,000 years: anything beyond is not a date a record can hold.
    if (!std::isfinite(seconds) || std::fabs(seconds) > 1e12)
        return std::nullopt;
    const qint64 msecs = qint64(std::llround(seconds * 1000.0)) + kReferenceDateOffsetMSecs;
    return QDateTime::fromMSecsSinceEpoch(msecs, Qt::UTC);
}

class Unarchiver
{
public:
    // libplist finds an array member by walking the array, so the table is indexed once here.
    explicit Unarchiver(plist_t objects)
    {
        plist_array_iter iterator = nullptr;
        plist_array_new_iter(objects, &iterator);
        while (iterator) {
            plist_t item = nullptr;
            plist_array_next_item(objects, iterator, &item);
            if (!item)
                break;
            m_table.push_back(item);
        }
        std::free(iterator);
        m_count = m_table.size();
        m_decoded.resize(m_table.size());
        m_state.resize(m_table.size(), Unvisited);
    }

    bool decodeReference(uint64_t uid, QVariant *out, int depth)
    {
        qint64 size = 0;
        return resolve(uid, out, &size, depth);
    }

    QString failure;

private:
    struct Decoded
    {
        QVariant value;
        qint64 size = 0;
    };
    enum State : uint8_t { Unvisited, InProgress, Done };

    // What an object's class record says, worked out once per class record.
    enum class Kind : uint8_t { List, Dictionary, String, Data, Date, Custom };
    struct ClassInfo
    {
        Kind kind = Kind::Custom;
        QString name;
        QStringList classes;
    };

    bool fail(const QString &reason)
    {
        if (failure.isEmpty())
            failure = reason;
        return false;
    }

    bool charge(qint64 size)
    {
        m_total += size;
        return m_total <= kMaximumValues || fail(QStringLiteral("archive holds too many values"));
    }

    bool resolve(uint64_t uid, QVariant *out, qint64 *size, int depth)
    {
        if (uid >= m_count)
            return fail(QStringLiteral("reference %1 out of range").arg(uid));
        if (uid == 0) {
            *out = QVariant();
            *size = 1;
            return charge(1);
        }
        if (m_state[uid] == Done) {
            const Decoded &memo = m_decoded[uid];
            *out = memo.value;
            *size = memo.size;
            return charge(memo.size);
        }
        if (depth > kMaximumDepth)
            return fail(QStringLiteral("archive nested too deeply"));
        if (m_state[uid] == InProgress)
            return fail(QStringLiteral("reference cycle at %1").arg(uid));
        m_state[uid] = InProgress;
        qint64 ownSize = 1;
        const bool ok = decodeObject(m_table[uid], out, &ownSize, depth);
        m_state[uid] = Unvisited;
        if (!ok)
            return false;
        m_decoded[uid] = Decoded{*out, ownSize};
        m_state[uid] = Done;
        *size = ownSize;
        return true;
    }

    // A value stored in place (not through a reference).
    bool decodePrimitive(plist_t node, QVariant *out)
    {
        switch (plist_get_node_type(node)) {
        case PLIST_STRING:
            *out = stringValue(node);
            return true;
        case PLIST_BOOLEAN: {
            uint8_t value = 0;
            plist_get_bool_val(node, &value);
            *out = bool(value);
            return true;
        }
        case PLIST_UINT: {
            uint64_t value = 0;
            plist_get_uint_val(node, &value);
            *out = qlonglong(value);
            return true;
        }
        case PLIST_REAL: {
            double value = 0;
            plist_get_real_val(node, &value);
            *out = value;
            return true;
        }
        case PLIST_DATA: {
            uint64_t length = 0;
            const char *bytes = plist_get_data_ptr(node, &length);
            *out = bytes ? QByteArray(bytes, qsizetype(length)) : QByteArray("", 0);
            return true;
        }
        case PLIST_DATE: {
            int32_t seconds = 0;
            int32_t microseconds = 0;
            plist_get_date_val(node, &seconds, &microseconds);
            const auto date = dateFromReferenceSeconds(double(seconds) + double(microseconds) / 1e6);
            if (!date)
                return fail(QStringLiteral("invalid date"));
            *out = *date;
            return true;
        }
        default:
            return fail(QStringLiteral("unexpected value in object table"));
        }
    }

    bool decodeObject(plist_t node, QVariant *out, qint64 *size, int depth)
    {
        if (!node)
            return fail(QStringLiteral("missing object"));
        if (plist_get_node_type(node) != PLIST_DICT)
            return decodePrimitive(node, out) && charge(1);

        uint64_t classRef = 0;
        if (!uidValue(plist_dict_get_item(node, "$class"), &classRef))
            return fail(QStringLiteral("object without class"));
        if (classRef >= m_count)
            return fail(QStringLiteral("class reference out of range"));
        const ClassInfo *info = classInfo(classRef);
        if (!info)
            return false;
        switch (info->kind) {
        case Kind::List:
            return decodeList(node, out, size, depth);
        case Kind::Dictionary:
            return decodeDictionary(node, out, size, depth);
        case Kind::String: {
            plist_t string = plist_dict_get_item(node, "NS.string");
            if (!string || plist_get_node_type(string) != PLIST_STRING)
                return fail(QStringLiteral("string without text"));
            *out = stringValue(string);
            return charge(1);
        }
        case Kind::Data: {
            plist_t bytes = plist_dict_get_item(node, "NS.bytes");
            if (!bytes || plist_get_node_type(bytes) != PLIST_DATA)
                return fail(QStringLiteral("data without bytes"));
            return decodePrimitive(bytes, out) && charge(1);
        }
        case Kind::Date: {
            plist_t time = plist_dict_get_item(node, "NS.time");
            QVariant seconds;
            if (!time || !decodePrimitive(time, &seconds)
                || (seconds.typeId() != QMetaType::Double && seconds.typeId() != QMetaType::LongLong))
                return fail(QStringLiteral("date without time"));
            const auto date = dateFromReferenceSeconds(seconds.toDouble());
            if (!date)
                return fail(QStringLiteral("invalid date"));
            *out = *date;
            return charge(1);
        }
        case Kind::Custom:
            break;
        }
        return decodeCustomObject(node, *info, out, size, depth);
    }

    const ClassInfo *classInfo(uint64_t classRef)
    {
        auto known = m_classes.find(classRef);
        if (known != m_classes.end())
            return &known->second;
        plist_t classRecord = m_table[classRef];
        if (!classRecord || plist_get_node_type(classRecord) != PLIST_DICT) {
            fail(QStringLiteral("malformed class record"));
            return nullptr;
        }
        ClassInfo info;
        info.name = stringValue(plist_dict_get_item(classRecord, "$classname"));
        if (info.name.isEmpty()) {
            fail(QStringLiteral("class without name"));
            return nullptr;
        }
        static const QHash<QString, Kind> kinds = {
            {QStringLiteral("NSArray"), Kind::List}, {QStringLiteral("NSMutableArray"), Kind::List},
            {QStringLiteral("NSSet"), Kind::List}, {QStringLiteral("NSMutableSet"), Kind::List},
            {QStringLiteral("NSOrderedSet"), Kind::List}, {QStringLiteral("NSMutableOrderedSet"), Kind::List},
            {QStringLiteral("NSDictionary"), Kind::Dictionary}, {QStringLiteral("NSMutableDictionary"), Kind::Dictionary},
            {QStringLiteral("NSString"), Kind::String}, {QStringLiteral("NSMutableString"), Kind::String},
            {QStringLiteral("NSData"), Kind::Data}, {QStringLiteral("NSMutableData"), Kind::Data},
            {QStringLiteral("NSDate"), Kind::Date}};
        info.kind = kinds.value(info.name, Kind::Custom);
        if (info.kind == Kind::Custom) {
            plist_t chain = plist_dict_get_item(classRecord, "$classes");
            if (chain && plist_get_node_type(chain) == PLIST_ARRAY) {
                const uint32_t count = plist_array_get_size(chain);
                for (uint32_t i = 0; i < count && i < 64; ++i)
                    info.classes.append(stringValue(plist_array_get_item(chain, i)));
            }
        }
        return &m_classes.emplace(classRef, std::move(info)).first->second;
    }

    bool referencesIn(plist_t node, const char *key, QList<uint64_t> *uids)
    {
        plist_t array = plist_dict_get_item(node, key);
        if (!array || plist_get_node_type(array) != PLIST_ARRAY)
            return fail(QStringLiteral("collection without %1").arg(QLatin1String(key)));
        plist_array_iter iterator = nullptr;
        plist_array_new_iter(array, &iterator);
        bool ok = true;
        while (ok && iterator) {
            plist_t item = nullptr;
            plist_array_next_item(array, iterator, &item);
            if (!item)
                break;
            uint64_t uid = 0;
            ok = uidValue(item, &uid) || fail(QStringLiteral("collection member is not a reference"));
            uids->append(uid);
        }
        std::free(iterator);
        return ok && charge(uids->size());
    }

    bool decodeList(plist_t node, QVariant *out, qint64 *size, int depth)
    {
        QList<uint64_t> uids;
        if (!referencesIn(node, "NS.objects", &uids))
            return false;
        QVariantList list;
        list.reserve(uids.size());
        for (uint64_t uid : uids) {
            QVariant item;
            qint64 itemSize = 0;
            if (!resolve(uid, &item, &itemSize, depth + 1))
                return false;
            *size += itemSize;
            list.append(item);
        }
        *out = list;
        return true;
    }

    bool decodeDictionary(plist_t node, QVariant *out, qint64 *size, int depth)
    {
        QList<uint64_t> keys;
        QList<uint64_t> values;
        if (!referencesIn(node, "NS.keys", &keys) || !referencesIn(node, "NS.objects", &values))
            return false;
        if (keys.size() != values.size())
            return fail(QStringLiteral("dictionary keys and values differ in number"));
        QVariantMap map;
        for (qsizetype i = 0; i < keys.size(); ++i) {
            QVariant key;
            QVariant value;
            qint64 keySize = 0;
            qint64 valueSize = 0;
            if (!resolve(keys[i], &key, &keySize, depth + 1) || !resolve(values[i], &value, &valueSize, depth + 1))
                return false;
            if (key.typeId() != QMetaType::QString)
                return fail(QStringLiteral("dictionary key is not a string"));
            *size += keySize + valueSize;
            map.insert(key.toString(), value);
        }
        *out = map;
        return true;
    }

    bool decodeCustomObject(plist_t node, const ClassInfo &info, QVariant *out, qint64 *size, int depth)
    {
        ZDArchivedObject object;
        object.className = info.name;
        object.classes = info.classes;

        plist_dict_iter iterator = nullptr;
        plist_dict_new_iter(node, &iterator);
        bool ok = true;
        while (ok && iterator) {
            char *rawKey = nullptr;
            plist_t item = nullptr;
            plist_dict_next_item(node, iterator, &rawKey, &item);
            if (!item) {
                std::free(rawKey);
                break;
            }
            const QString key = fieldName(rawKey);
            if (key == QLatin1String("$class"))
                continue;
            QVariant value;
            uint64_t uid = 0;
            if (uidValue(item, &uid)) {
                qint64 valueSize = 0;
                ok = resolve(uid, &value, &valueSize, depth + 1);
                *size += valueSize;
            } else if (plist_get_node_type(item) == PLIST_ARRAY || plist_get_node_type(item) == PLIST_DICT) {
                continue; // inline containers are not something an archiver writes
            } else {
                ok = decodePrimitive(item, &value) && charge(1);
            }
            if (ok)
            {
                object.fields.insert(key, value);
                object.keyOrder.append(key);
            }
        }
        std::free(iterator);
        if (!ok)
            return false;
        *out = QVariant::fromValue(object);
        return true;
    }

    std::vector<plist_t> m_table;
    uint64_t m_count = 0;
    qint64 m_total = 0;
    std::vector<Decoded> m_decoded;
    std::vector<State> m_state;
    std::unordered_map<uint64_t, ClassInfo> m_classes;
};

bool corrupt(ZDError *error, const QString &reason)
{
    return ZDError::fail(error, ZDError(ZDKeyedArchive::kCorruptArchiveErrorCode,
                                        QStringLiteral("The data couldn’t be read because it isn’t in the correct format."),
                                        {}, reason));
}

} // namespace

bool ZDKeyedArchive::unarchive(const QByteArray &data, QVariant *rootObject, ZDError *error)
{
    if (rootObject)
        *rootObject = QVariant();
    // Archives are binary property lists; other encodings are not read, which also keeps the
    // XML parser away from untrusted bytes.
    if (data.size() < 8 || !data.startsWith("bplist00") || data.size() > 0x7fffffff)
        return corrupt(error, QStringLiteral("not a binary property list"));
    QString unsafe;
    if (!ZDBinaryPlistCheck::isSafeToParse(data, &unsafe))
        return corrupt(error, unsafe);
    plist_t raw = nullptr;
    plist_from_bin(data.constData(), uint32_t(data.size()), &raw);
    PlistHolder archive(raw);
    if (!raw || plist_get_node_type(raw) != PLIST_DICT)
        return corrupt(error, QStringLiteral("not a keyed archive"));
    if (stringValue(plist_dict_get_item(raw, "$archiver")) != QLatin1String("NSKeyedArchiver"))
        return corrupt(error, QStringLiteral("unknown archiver"));
    plist_t objects = plist_dict_get_item(raw, "$objects");
    plist_t top = plist_dict_get_item(raw, "$top");
    if (!objects || plist_get_node_type(objects) != PLIST_ARRAY || !top || plist_get_node_type(top) != PLIST_DICT)
        return corrupt(error, QStringLiteral("archive without objects or top"));
    uint64_t rootUID = 0;
    if (!uidValue(plist_dict_get_item(top, "root"), &rootUID))
        return corrupt(error, QStringLiteral("archive without root"));

    Unarchiver unarchiver(objects);
    QVariant root;
    if (!unarchiver.decodeReference(rootUID, &root, 0))
        return corrupt(error, unarchiver.failure);
    if (rootObject)
        *rootObject = root;
    return true;
}
