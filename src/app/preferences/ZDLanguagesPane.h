#pragma once

#include "ZDLanguage.h"

#include <QAbstractTableModel>
#include <QSortFilterProxyModel>
#include <QWidget>

class QCheckBox;
class QLineEdit;
class QTableView;
class ZDLanguageRegistry;
class ZDUserDefaults;

/// Every language but plain text, with its display name, identifier, aliases and an active
/// check box that edits "User ActiveLanguages".
class ZDLanguageTableModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column
    {
        ActiveColumn,
        NameColumn,
        IdentifierColumn,
        AliasesColumn,
        ColumnCount
    };

    ZDLanguageTableModel(ZDLanguageRegistry *registry, ZDUserDefaults *defaults, QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    ZDLanguage languageAt(int row) const { return m_languages.value(row); }
    bool isActive(int row) const;

private:
    void activeLanguagesChanged();

    ZDLanguageRegistry *m_registry;
    ZDUserDefaults *m_defaults;
    QList<ZDLanguage> m_languages;
    QStringList m_active;
};

/// Filters the language table by typed text (display name or any alias containing it, ignoring
/// case and diacritics) and, when asked, to the active languages.
class ZDLanguageFilterModel : public QSortFilterProxyModel
{
    Q_OBJECT
public:
    using QSortFilterProxyModel::QSortFilterProxyModel;
    void setSearchText(const QString &text);
    void setActiveOnly(bool activeOnly);

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const override;

private:
    QString m_foldedSearch;
    bool m_activeOnly = false;
};

/// The Languages pane of the preferences.
class ZDLanguagesPane : public QWidget
{
    Q_OBJECT
public:
    ZDLanguagesPane(ZDLanguageRegistry *registry, ZDUserDefaults *defaults, QWidget *parent = nullptr);

    QLineEdit *searchField() const { return m_search; }
    QCheckBox *activeOnlyBox() const { return m_activeOnly; }
    ZDLanguageFilterModel *filterModel() const { return m_filter; }
    ZDLanguageTableModel *tableModel() const { return m_model; }

private:
    ZDLanguageTableModel *m_model;
    ZDLanguageFilterModel *m_filter;
    QLineEdit *m_search;
    QCheckBox *m_activeOnly;
    QTableView *m_table;
};
