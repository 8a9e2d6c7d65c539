#pragma once

#include "ZDLanguage.h"

#include <QFrame>
#include <QToolButton>

class QLineEdit;
class QListWidget;
class ZDLanguageRegistry;

/// The pop-up list of the language chooser: a search field over the languages, the active ones
/// first under their own heading, then the others. Return picks the current row; the arrow keys
/// move through the list while the search field keeps the focus.
class ZDLanguagePopup : public QFrame
{
    Q_OBJECT
public:
    ZDLanguagePopup(ZDLanguageRegistry *registry, const ZDLanguage &current, QWidget *parent);

    QLineEdit *searchField() const { return m_search; }
    QListWidget *list() const { return m_list; }
    /// The languages the list shows, in order.
    QList<ZDLanguage> shownLanguages() const;

Q_SIGNALS:
    void languageChosen(const ZDLanguage &language);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void fill(const QString &filter);
    void choose(int row);

    ZDLanguageRegistry *m_registry;
    ZDLanguage m_current;
    QLineEdit *m_search;
    QListWidget *m_list;
};

/// A button naming a part's language; it opens a ZDLanguagePopup and announces the choice.
class ZDLanguageChooser : public QToolButton
{
    Q_OBJECT
public:
    explicit ZDLanguageChooser(QWidget *parent = nullptr);

    /// The registry languages come from (the shared one by default).
    void setLanguageRegistry(ZDLanguageRegistry *registry) { m_registry = registry; }
    void setLanguage(const ZDLanguage &language);
    ZDLanguage language() const { return m_language; }

    /// The languages offered for a filter text (matched against display names and aliases,
    /// ignoring case): the active languages first, then the others, each group by display name.
    /// `activeCount` receives the size of the first group.
    static QList<ZDLanguage> offeredLanguages(ZDLanguageRegistry &registry, const QString &filter,
                                              int *activeCount = nullptr);

    /// Opens the list under the button; returns it (it deletes itself when closed).
    ZDLanguagePopup *showPopup();

Q_SIGNALS:
    void languageChosen(const ZDLanguage &language);

private:
    ZDLanguageRegistry *m_registry = nullptr;
    ZDLanguage m_language;
};
