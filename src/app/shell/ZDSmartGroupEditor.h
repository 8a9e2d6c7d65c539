#pragma once

#include "ZDSmartGroupRows.h"

#include <QDialog>

class QComboBox;
class QLineEdit;
class QPlainTextEdit;
class QVBoxLayout;

/// Edits a smart group: its name and its query as rows of key, operator and value, joined by
/// "all" or "any". A saved query the rows cannot show is edited as text instead.
class ZDSmartGroupEditor : public QDialog
{
    Q_OBJECT
public:
    ZDSmartGroupEditor(const QString &title, const QString &predicateString, QWidget *parent = nullptr);

    QString title() const;
    QString predicateString() const;

private:
    void addRow(const ZDSmartGroupRows::Row &row);

    QLineEdit *m_title = nullptr;
    QComboBox *m_match = nullptr;
    QVBoxLayout *m_rows = nullptr;
    QPlainTextEdit *m_raw = nullptr; // only for queries the rows cannot show
    QList<std::function<ZDSmartGroupRows::Row()>> m_readers;
};
