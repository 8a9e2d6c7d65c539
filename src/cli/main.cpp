#include "ZDCli.h"
#include "ZDCoreServices.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Zandrio"));
    ZDCoreServices services;
    QTextStream out(stdout);
    QTextStream err(stderr);
    ZDCli cli(services.defaults(), services.languages());
    return cli.run(app.arguments().mid(1), out, err);
}
