#include "ZDMainWindow.h"

#include <QLabel>

ZDMainWindow::ZDMainWindow(QWidget *parent) : QMainWindow(parent)
{
    setWindowTitle(QStringLiteral("Zandrio"));
    auto *label = new QLabel(tr("The library is not shown yet."), this);
    label->setAlignment(Qt::AlignCenter);
    label->setObjectName(QStringLiteral("placeholderLabel"));
    setCentralWidget(label);
    resize(1100, 700);
}
