#include "ZDLanguagesPane.h"

#include "ZDLanguageRegistry.h"
#include "ZDTextFolding.h"
#include "ZDUserDefaults.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QTableView>
#include <QVBoxLayout>

ZDLanguageTableModel::ZDLanguageTableModel(ZDLanguageRegistry *registry, ZDUserDefaults *defaults,
                                           QObject *parent)
    : QAbstractTableModel(parent), m_registry(registry), m_defaults(defaults)
{
    if (m_registry) {
        const ZDLanguage plainText = m_registry->plainTextLanguage();
        for (const ZDLanguage &language : m_registry->availableLanguages())
            if (language != plainText)
                m_languages.append(language);
    }
    m_active = m_defaults ? m_defaults->activeLanguageIdentifiers() : QStringList();
    if (m_defaults)
        connect(m_defaults, &ZDUserDefaults::valueChanged, this, [this](const QString &key) {
            if (key == ZDPreferenceKeys::ActiveLanguages)
                activeLanguagesChanged();
        });
}

void ZDLanguageTableModel::activeLanguagesChanged()
{
    const QStringList active = m_defaults->activeLanguageIdentifiers();
    if (active == m_active)
        return;
    m_active = active;
    if (!m_languages.isEmpty())
        Q_EMIT dataChanged(index(0, ActiveColumn), index(rowCount() - 1, ActiveColumn), {Qt::CheckStateRole});
}

int ZDLanguageTableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_languages.size());
}

int ZDLanguageTableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

bool ZDLanguageTableModel::isActive(int row) const
{
    return m_active.contains(m_languages.value(row).identifier());
}

QVariant ZDLanguageTableModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_languages.size())
        return {};
    const ZDLanguage &language = m_languages.at(index.row());
    if (role == Qt::CheckStateRole && index.column() == ActiveColumn)
        return isActive(index.row()) ? Qt::Checked : Qt::Unchecked;
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
        return {};
    switch (index.column()) {
    case NameColumn:
        return language.displayName();
    case IdentifierColumn:
        return language.identifier();
    case AliasesColumn:
        return language.aliases().join(QStringLiteral(", "));
    default:
        return {};
    }
}

bool ZDLanguageTableModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (!index.isValid() || role != Qt::CheckStateRole || index.column() != ActiveColumn)
        return false;
    const ZDLanguage language = m_languages.value(index.row());
    const bool active = value.value<Qt::CheckState>() == Qt::Checked;
    if (m_registry)
        m_registry->setActiveStateForLanguage(language, active);
    // A registry over other preferences (or none) leaves these ones to be written here.
    if (m_defaults && m_defaults->activeLanguageIdentifiers().contains(language.identifier()) != active) {
        QStringList identifiers = m_defaults->activeLanguageIdentifiers();
        if (active)
            identifiers.append(language.identifier());
        else
            identifiers.removeAll(language.identifier());
        m_defaults->setActiveLanguageIdentifiers(identifiers);
    }
    activeLanguagesChanged();
    return true;
}

Qt::ItemFlags ZDLanguageTableModel::flags(const QModelIndex &index) const
{
    Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    if (index.column() == ActiveColumn)
        flags |= Qt::ItemIsUserCheckable;
    return flags;
}

QVariant ZDLanguageTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case ActiveColumn:
        return tr("Active");
    case NameColumn:
        return tr("Name");
    case IdentifierColumn:
        return tr("Identifier");
    case AliasesColumn:
        return tr("Aliases");
    default:
        return {};
    }
}

// Filtering -------------------------------------------------------------------------------------

void ZDLanguageFilterModel::setSearchText(const QString &text)
{
    m_foldedSearch = ZDTextFolding::folded(text.trimmed());
    invalidateFilter();
}

void ZDLanguageFilterModel::setActiveOnly(bool activeOnly)
{
    m_activeOnly = activeOnly;
    invalidateFilter();
}

bool ZDLanguageFilterModel::filterAcceptsRow(int sourceRow, const QModelIndex &) const
{
    const auto *model = qobject_cast<const ZDLanguageTableModel *>(sourceModel());
    if (!model)
        return true;
    if (m_activeOnly && !model->isActive(sourceRow))
        return false;
    if (m_foldedSearch.isEmpty())
        return true;
    const ZDLanguage language = model->languageAt(sourceRow);
    if (ZDTextFolding::folded(language.displayName()).contains(m_foldedSearch))
        return true;
    const QStringList aliases = language.aliases();
    return std::any_of(aliases.cbegin(), aliases.cend(), [&](const QString &alias) {
        return ZDTextFolding::folded(alias).contains(m_foldedSearch);
    });
}

// The pane --------------------------------------------------------------------------------------

ZDLanguagesPane::ZDLanguagesPane(ZDLanguageRegistry *registry, ZDUserDefaults *defaults, QWidget *parent)
    : QWidget(parent)
{
    m_model = new ZDLanguageTableModel(registry, defaults, this);
    m_filter = new ZDLanguageFilterModel(this);
    m_filter->setSourceModel(m_model);
    // Unchecking a language while only active ones are shown takes it out of the list.
    connect(m_model, &QAbstractItemModel::dataChanged, m_filter, [this] { m_filter->invalidate(); });

    auto *layout = new QVBoxLayout(this);
    auto *row = new QHBoxLayout;
    m_search = new QLineEdit(this);
    m_search->setPlaceholderText(tr("Filter languages"));
    m_search->setClearButtonEnabled(true);
    m_activeOnly = new QCheckBox(tr("Active languages only"), this);
    row->addWidget(m_search, 1);
    row->addWidget(m_activeOnly);
    layout->addLayout(row);

    m_table = new QTableView(this);
    m_table->setModel(m_filter);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->verticalHeader()->hide();
    m_table->setShowGrid(false);
    m_table->setAlternatingRowColors(true);
    m_table->horizontalHeader()->setSectionResizeMode(ZDLanguageTableModel::ActiveColumn,
                                                      QHeaderView::ResizeToContents);
    m_table->horizontalHeader()->setSectionResizeMode(ZDLanguageTableModel::NameColumn,
                                                      QHeaderView::Interactive);
    m_table->horizontalHeader()->setSectionResizeMode(ZDLanguageTableModel::IdentifierColumn,
                                                      QHeaderView::Interactive);
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->setColumnWidth(ZDLanguageTableModel::NameColumn, 170);
    m_table->setColumnWidth(ZDLanguageTableModel::IdentifierColumn, 170);
    m_table->verticalHeader()->setDefaultSectionSize(m_table->fontMetrics().height() + 8);
    layout->addWidget(m_table, 1);

    connect(m_search, &QLineEdit::textChanged, m_filter, &ZDLanguageFilterModel::setSearchText);
    connect(m_activeOnly, &QCheckBox::toggled, m_filter, &ZDLanguageFilterModel::setActiveOnly);
    // Space toggles the selected language's check box from the keyboard.
    connect(m_table, &QTableView::activated, this, [this](const QModelIndex &index) {
        const QModelIndex check = m_filter->index(index.row(), ZDLanguageTableModel::ActiveColumn);
        const bool checked = check.data(Qt::CheckStateRole).value<Qt::CheckState>() == Qt::Checked;
        m_filter->setData(check, checked ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
    });
}
