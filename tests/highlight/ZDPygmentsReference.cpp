#include "ZDPygmentsReference.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

QList<QPair<QString, QString>> zdPygmentsReferenceTokens(const QString &code, const QString &lexer,
                                                         const QVariantMap &lexerOptions)
{
    static const char script[] = R"(
import json, sys, pygments.lexers
request = json.loads(sys.stdin.buffer.read().decode('utf-8'))
lexer = getattr(pygments.lexers, request['lexer'])(**request['options'])
print(json.dumps([[value, str(kind)] for kind, value in lexer.get_tokens(request['code'])]))
)";
    QProcess python;
    python.start(QStringLiteral("/usr/bin/python3"), {QStringLiteral("-B"), QStringLiteral("-I"),
                                                      QStringLiteral("-c"), QString::fromUtf8(script)});
    const QJsonObject request{{QStringLiteral("code"), code},
                              {QStringLiteral("lexer"), lexer},
                              {QStringLiteral("options"), QJsonObject::fromVariantMap(lexerOptions)}};
    python.write(QJsonDocument(request).toJson(QJsonDocument::Compact));
    python.closeWriteChannel();
    python.waitForFinished(30000);
    QList<QPair<QString, QString>> tokens;
    const QJsonArray array = QJsonDocument::fromJson(python.readAllStandardOutput()).array();
    for (const QJsonValue &entry : array)
        tokens.append({entry.toArray().at(0).toString(), entry.toArray().at(1).toString()});
    return tokens;
}
