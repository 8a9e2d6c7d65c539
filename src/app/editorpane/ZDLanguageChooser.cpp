#include "ZDLanguageChooser.h"

#include "ZDLanguageRegistry.h"

#include <QCollator>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QScreen>
#include <QVBoxLayout>

namespace {
constexpr int LanguageRole = Qt::UserRole + 1;

bool matches(const ZDLanguage &language, const QString &filter)
{
    if (filter.isEmpty())
        return true;
    if (language.displayName().contains(filter, Qt::CaseInsensitive))
        return true;
    for (const QString &alias : language.aliases())
        if (alias.contains(filter, Qt::CaseInsensitive))
            return true;
    return false;
}
} // namespace

QList<ZDLanguage> ZDLanguageChooser::offeredLanguages(ZDLanguageRegistry &registry, const QString &filter,
                                                      int *activeCount)
{
    const QStringList active = registry.activeLanguageIdentifiers();
    const QString trimmed = filter.trimmed();
    QList<ZDLanguage> first;
    QList<ZDLanguage> rest;
    for (const ZDLanguage &language : registry.availableLanguages()) {
        if (!matches(language, trimmed))
            continue;
        (active.contains(language.identifier()) ? first : rest).append(language);
    }
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    const auto byName = [&](const ZDLanguage &a, const ZDLanguage &b) {
        return collator.compare(a.displayName(), b.displayName()) < 0;
    };
    std::sort(first.begin(), first.end(), byName);
    std::sort(rest.begin(), rest.end(), byName);
    if (activeCount)
        *activeCount = int(first.size());
    return first + rest;
}

// The pop-up ------------------------------------------------------------------------------------

ZDLanguagePopup::ZDLanguagePopup(ZDLanguageRegistry *registry, const ZDLanguage &current, QWidget *parent)
    : QFrame(parent, Qt::Popup), m_registry(registry), m_current(current)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setFrameShape(QFrame::StyledPanel);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->setSpacing(4);
    m_search = new QLineEdit(this);
    m_search->setPlaceholderText(tr("Search languages"));
    m_search->setClearButtonEnabled(true);
    m_search->installEventFilter(this);
    m_list = new QListWidget(this);
    m_list->setUniformItemSizes(true);
    layout->addWidget(m_search);
    layout->addWidget(m_list);
    resize(260, 360);

    connect(m_search, &QLineEdit::textChanged, this, &ZDLanguagePopup::fill);
    connect(m_search, &QLineEdit::returnPressed, this, [this] { choose(m_list->currentRow()); });
    connect(m_list, &QListWidget::itemActivated, this,
            [this](QListWidgetItem *item) { choose(m_list->row(item)); });
    connect(m_list, &QListWidget::itemClicked, this,
            [this](QListWidgetItem *item) { choose(m_list->row(item)); });
    fill(QString());
    m_search->setFocus();
}

void ZDLanguagePopup::fill(const QString &filter)
{
    m_list->clear();
    if (!m_registry)
        return;
    int activeCount = 0;
    const QList<ZDLanguage> languages =
        ZDLanguageChooser::offeredLanguages(*m_registry, filter, &activeCount);
    const auto addHeading = [&](const QString &title) {
        auto *item = new QListWidgetItem(title, m_list);
        item->setFlags(Qt::NoItemFlags);
        QFont font = item->font();
        font.setBold(true);
        font.setPointSizeF(font.pointSizeF() * 0.9);
        item->setFont(font);
    };
    int currentRow = -1;
    for (int i = 0; i < languages.size(); ++i) {
        if (i == 0 && activeCount > 0)
            addHeading(tr("Active Languages"));
        if (i == activeCount)
            addHeading(tr("Other Languages"));
        auto *item = new QListWidgetItem(languages.at(i).displayName(), m_list);
        item->setData(LanguageRole, QVariant::fromValue(languages.at(i)));
        if (languages.at(i) == m_current)
            currentRow = m_list->row(item);
    }
    // While searching, Return picks the first match; otherwise the list starts at the current one.
    if (filter.isEmpty() && currentRow >= 0) {
        m_list->setCurrentRow(currentRow);
        m_list->scrollToItem(m_list->currentItem(), QAbstractItemView::PositionAtCenter);
    } else {
        for (int row = 0; row < m_list->count(); ++row) {
            if (m_list->item(row)->flags() & Qt::ItemIsEnabled) {
                m_list->setCurrentRow(row);
                break;
            }
        }
    }
}

QList<ZDLanguage> ZDLanguagePopup::shownLanguages() const
{
    QList<ZDLanguage> languages;
    for (int row = 0; row < m_list->count(); ++row) {
        const QVariant value = m_list->item(row)->data(LanguageRole);
        if (value.isValid())
            languages.append(value.value<ZDLanguage>());
    }
    return languages;
}

void ZDLanguagePopup::choose(int row)
{
    QListWidgetItem *item = row >= 0 ? m_list->item(row) : nullptr;
    if (!item || !item->data(LanguageRole).isValid())
        return;
    const ZDLanguage language = item->data(LanguageRole).value<ZDLanguage>();
    close();
    Q_EMIT languageChosen(language);
}

bool ZDLanguagePopup::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_search && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Up || key == Qt::Key_Down || key == Qt::Key_PageUp || key == Qt::Key_PageDown) {
            int row = m_list->currentRow();
            const int step = key == Qt::Key_Up       ? -1
                             : key == Qt::Key_Down   ? 1
                             : key == Qt::Key_PageUp ? -10
                                                     : 10;
            const int direction = step < 0 ? -1 : 1;
            int target = std::clamp(row + step, 0, m_list->count() - 1);
            while (target >= 0 && target < m_list->count() &&
                   !(m_list->item(target)->flags() & Qt::ItemIsEnabled))
                target += direction;
            if (target >= 0 && target < m_list->count())
                m_list->setCurrentRow(target);
            return true;
        }
    }
    return QFrame::eventFilter(watched, event);
}

// The button ------------------------------------------------------------------------------------

ZDLanguageChooser::ZDLanguageChooser(QWidget *parent) : QToolButton(parent)
{
    setToolButtonStyle(Qt::ToolButtonTextOnly);
    setToolTip(tr("Language of this fragment"));
    setFocusPolicy(Qt::StrongFocus);
    connect(this, &QToolButton::clicked, this, [this] { showPopup(); });
}

void ZDLanguageChooser::setLanguage(const ZDLanguage &language)
{
    m_language = language;
    setText(language.isValid() ? language.displayName() + QStringLiteral(" \u25BE") : tr("Language"));
}

ZDLanguagePopup *ZDLanguageChooser::showPopup()
{
    auto *popup =
        new ZDLanguagePopup(m_registry ? m_registry : ZDLanguageRegistry::shared(), m_language, this);
    connect(popup, &ZDLanguagePopup::languageChosen, this, [this](const ZDLanguage &language) {
        setLanguage(language);
        Q_EMIT languageChosen(language);
    });
    // Right-aligned under the button, which sits at the right end of the part bar.
    QPoint position = mapToGlobal(QPoint(width() - popup->width(), height()));
    if (const QScreen *screen = this->screen()) {
        const QRect area = screen->availableGeometry();
        position.setX(
            std::clamp(position.x(), area.left(), std::max(area.left(), area.right() - popup->width())));
        if (position.y() + popup->height() > area.bottom())
            position.setY(mapToGlobal(QPoint(0, 0)).y() - popup->height());
    }
    popup->move(position);
    popup->show();
    return popup;
}
