#include "ZDTagTokenField.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QPainterPath>
#include <QStringListModel>

namespace {
constexpr int ChipPadding = 7;
constexpr int RemoveMarkWidth = 14;

/// One tag drawn as a rounded chip; a click on its "×" asks for its removal.
class ZDTagChip : public QWidget
{
public:
    ZDTagChip(const QString &name, std::function<void()> remove, QWidget *parent)
        : QWidget(parent), m_name(name), m_remove(std::move(remove))
    {
        setToolTip(name);
        setCursor(Qt::ArrowCursor);
        setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    }

    QSize sizeHint() const override
    {
        return {fontMetrics().horizontalAdvance(m_name) + 2 * ChipPadding + RemoveMarkWidth,
                fontMetrics().height() + 6};
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF box = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
        QColor fill = palette().color(QPalette::Highlight);
        fill.setAlphaF(0.16f);
        QPainterPath path;
        path.addRoundedRect(box, box.height() / 2, box.height() / 2);
        painter.fillPath(path, fill);
        QColor border = palette().color(QPalette::Highlight);
        border.setAlphaF(0.55f);
        painter.setPen(border);
        painter.drawPath(path);
        painter.setPen(palette().color(QPalette::WindowText));
        const QRect text = rect().adjusted(ChipPadding, 0, -ChipPadding - RemoveMarkWidth + 4, 0);
        painter.drawText(text, Qt::AlignVCenter | Qt::AlignLeft, m_name);
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(removeArea(), Qt::AlignCenter, QStringLiteral("\u00D7"));
    }

    void mouseReleaseEvent(QMouseEvent *event) override
    {
        if (event->button() == Qt::LeftButton && removeArea().contains(event->position().toPoint()))
            m_remove();
    }

private:
    QRect removeArea() const
    {
        return {width() - ChipPadding - RemoveMarkWidth + 4, 0, RemoveMarkWidth, height()};
    }

    QString m_name;
    std::function<void()> m_remove;
};
} // namespace

ZDTagTokenField::ZDTagTokenField(QWidget *parent) : QWidget(parent)
{
    m_layout = new QHBoxLayout(this);
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setSpacing(4);
    m_edit = new QLineEdit(this);
    m_edit->setObjectName(QStringLiteral("tagsLineEdit"));
    m_edit->setPlaceholderText(tr("Add tags"));
    m_edit->setFrame(false);
    m_edit->installEventFilter(this);
    m_layout->addWidget(m_edit, 1);
    setFocusProxy(m_edit);

    m_completionModel = new QStringListModel(this);
    m_completer = new QCompleter(m_completionModel, this);
    m_completer->setCaseSensitivity(Qt::CaseInsensitive);
    m_completer->setFilterMode(Qt::MatchContains);
    m_completer->setCompletionMode(QCompleter::PopupCompletion);
    m_edit->setCompleter(m_completer);
    // The completer writes the chosen name into the field; it becomes a token once the
    // completer is done with the line edit.
    connect(m_completer, qOverload<const QString &>(&QCompleter::activated), this,
            [this](const QString &name) {
                QMetaObject::invokeMethod(
                    this,
                    [this, name] {
                        m_edit->clear();
                        addTagName(name);
                    },
                    Qt::QueuedConnection);
            });
    connect(m_edit, &QLineEdit::returnPressed, this, &ZDTagTokenField::commitTypedText);
}

void ZDTagTokenField::setTagNames(const QStringList &names)
{
    if (names == m_names)
        return;
    m_names = names;
    rebuildChips();
    updateCompletions();
}

void ZDTagTokenField::setCompletionNames(const QStringList &names)
{
    m_allCompletions = names;
    updateCompletions();
}

QStringList ZDTagTokenField::completionNames() const
{
    return m_completionModel->stringList();
}

void ZDTagTokenField::updateCompletions()
{
    QStringList offered;
    for (const QString &name : std::as_const(m_allCompletions))
        if (!m_names.contains(name, Qt::CaseInsensitive))
            offered.append(name);
    offered.sort(Qt::CaseInsensitive);
    m_completionModel->setStringList(offered);
}

void ZDTagTokenField::addTagName(const QString &rawName)
{
    addTagNames({rawName});
}

void ZDTagTokenField::addTagNames(const QStringList &rawNames)
{
    bool added = false;
    for (const QString &rawName : rawNames) {
        const QString name = rawName.simplified();
        if (name.isEmpty() || m_names.contains(name, Qt::CaseInsensitive))
            continue;
        m_names.append(name);
        added = true;
    }
    if (!added)
        return;
    rebuildChips();
    updateCompletions();
    Q_EMIT tagNamesEdited(m_names); // once, so that "a,b,c" is one edit of the snippet
}

void ZDTagTokenField::removeTagNameAt(int index)
{
    if (index < 0 || index >= m_names.size())
        return;
    m_names.removeAt(index);
    rebuildChips();
    updateCompletions();
    Q_EMIT tagNamesEdited(m_names);
}

void ZDTagTokenField::commitTypedText()
{
    const QString typed = m_edit->text();
    m_edit->clear();
    addTagNames(typed.split(QLatin1Char(',')));
}

void ZDTagTokenField::rebuildChips()
{
    qDeleteAll(m_chips);
    m_chips.clear();
    for (int i = 0; i < m_names.size(); ++i) {
        auto *chip = new ZDTagChip(
            m_names.at(i),
            [this, i] {
                // The chip goes away with the rebuild it causes.
                QMetaObject::invokeMethod(
                    this, [this, i] { removeTagNameAt(i); }, Qt::QueuedConnection);
            },
            this);
        m_layout->insertWidget(i, chip);
        m_chips.append(chip);
    }
}

bool ZDTagTokenField::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_edit && event->type() == QEvent::KeyPress) {
        auto *key = static_cast<QKeyEvent *>(event);
        const bool popupOpen = m_completer->popup() && m_completer->popup()->isVisible();
        if (key->text() == QStringLiteral(",") || (key->key() == Qt::Key_Tab && !m_edit->text().isEmpty())) {
            if (popupOpen)
                m_completer->popup()->hide();
            commitTypedText();
            return true;
        }
        if (key->key() == Qt::Key_Backspace && m_edit->text().isEmpty() && !m_names.isEmpty()) {
            removeTagNameAt(int(m_names.size()) - 1);
            return true;
        }
    } else if (watched == m_edit && event->type() == QEvent::FocusOut) {
        const bool popupOpen = m_completer->popup() && m_completer->popup()->isVisible();
        if (!popupOpen)
            commitTypedText();
    }
    return QWidget::eventFilter(watched, event);
}
