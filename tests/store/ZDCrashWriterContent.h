#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QRandomGenerator>
#include <QString>

// The files the crash-test writer puts in a package: each names its generation and length in a
// first line and is followed by bytes derived from both, so a torn or mixed file is detectable.
namespace ZDCrashWriterContent {

inline QByteArray make(quint64 generation, const QString &name, int length)
{
    QByteArray bytes = QStringLiteral("%1 %2 %3\n").arg(generation).arg(name).arg(length).toUtf8();
    QRandomGenerator generator(quint32(generation ^ qHash(name)));
    for (int i = 0; i < length; ++i)
        bytes += char('a' + generator.bounded(26));
    return bytes;
}

// Whether `bytes` is a complete file `make` could have produced for `name`.
inline bool isComplete(const QByteArray &bytes, const QString &name)
{
    const qsizetype newline = bytes.indexOf('\n');
    if (newline < 0)
        return false;
    const QList<QByteArray> fields = bytes.left(newline).split(' ');
    if (fields.size() != 3 || QString::fromUtf8(fields[1]) != name)
        return false;
    bool generationOk = false, lengthOk = false;
    const quint64 generation = fields[0].toULongLong(&generationOk);
    const int length = fields[2].toInt(&lengthOk);
    return generationOk && lengthOk && bytes == make(generation, name, length);
}

} // namespace ZDCrashWriterContent
