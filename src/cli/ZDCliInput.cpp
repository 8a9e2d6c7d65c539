#include "ZDCliInput.h"

#include <QFile>

#include <cstdio>

QString ZDCliInput::readStandardInput(ZDCliContext &context)
{
    if (context.in)
        return context.in->readAll();
    QTextStream standardInput(stdin);
    return standardInput.readAll();
}

bool ZDCliInput::readFileOrStandardInput(ZDCliContext &context, const QStringList &positional, QString *text,
                                         int *status)
{
    if (positional.size() > 1) {
        *status = context.usage(QStringLiteral("give at most one file"));
        return false;
    }
    QFile file;
    const bool fromStdin = positional.isEmpty();
    const bool opened = fromStdin ? file.open(stdin, QIODevice::ReadOnly)
                                  : (file.setFileName(positional.first()), file.open(QIODevice::ReadOnly));
    if (!opened) {
        const QString path = fromStdin ? QStringLiteral("-") : positional.first();
        *status = context.fail(ZDError(0, QStringLiteral("Cannot read %1").arg(path), {}, file.errorString(),
                                       {{QStringLiteral("Path"), path}}));
        return false;
    }
    *text = QString::fromUtf8(file.readAll());
    return true;
}
