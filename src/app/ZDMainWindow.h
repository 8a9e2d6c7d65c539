#pragma once

#include <QMainWindow>

/// The main window. For now it only tells that the library is not shown yet.
class ZDMainWindow : public QMainWindow
{
    Q_OBJECT
public:
    explicit ZDMainWindow(QWidget *parent = nullptr);
};
