// Feeds arbitrary text to the predicate parser. Whatever parses must print to a string that
// parses to an equal predicate, and must evaluate without crashing.
#include "ZDPredicate.h"

#include <QDateTime>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size > 4096)
        return 0;
    const QString format = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    const ZDPredicate predicate = ZDPredicate::fromFormat(format, nullptr, {QStringLiteral("title"), 1});
    if (!predicate.isValid())
        return 0;
    const ZDPredicate again = ZDPredicate::fromFormat(predicate.predicateFormat());
    if (!(again == predicate))
        std::abort(); // printing lost or changed something
    predicate.evaluate([](const QString &keyPath) -> QVariant {
        if (keyPath.startsWith(QLatin1String("parts")))
            return QVariantList{QStringLiteral("a.py"), QStringLiteral("Ünïcode"), QVariant()};
        if (keyPath.startsWith(QLatin1String("date")))
            return QDateTime::fromMSecsSinceEpoch(0, Qt::UTC);
        return keyPath.size() % 2 ? QVariant(QStringLiteral("x")) : QVariant(keyPath.size());
    });
    return 0;
}
