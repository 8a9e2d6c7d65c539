#include "ZDSmartGroupEditor.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QStackedWidget>
#include <QToolButton>

using namespace ZDSmartGroupRows;

ZDSmartGroupEditor::ZDSmartGroupEditor(const QString &title, const QString &predicateString, QWidget *parent)
    : QDialog(parent)
{
    setWindowTitle(tr("Smart Group"));
    setMinimumWidth(620);
    auto *layout = new QVBoxLayout(this);
    auto *form = new QFormLayout;
    m_title = new QLineEdit(title);
    form->addRow(tr("Name:"), m_title);
    layout->addLayout(form);

    const std::optional<Query> query = queryForPredicateString(predicateString);
    if (query) {
        auto *matchLine = new QHBoxLayout;
        matchLine->addWidget(new QLabel(tr("Snippets that match")));
        m_match = new QComboBox;
        m_match->addItems({tr("all"), tr("any")});
        m_match->setCurrentIndex(query->matchAll ? 0 : 1);
        matchLine->addWidget(m_match);
        matchLine->addWidget(new QLabel(tr("of these conditions:")));
        matchLine->addStretch();
        auto *add = new QToolButton;
        add->setText(QStringLiteral("+"));
        add->setToolTip(tr("Add a condition"));
        connect(add, &QToolButton::clicked, this, [this] { addRow(Row{}); });
        matchLine->addWidget(add);
        layout->addLayout(matchLine);
        m_rows = new QVBoxLayout;
        layout->addLayout(m_rows);
        for (const Row &row : query->rows)
            addRow(row);
        if (query->rows.isEmpty())
            addRow(Row{});
    } else {
        layout->addWidget(new QLabel(tr("This query can only be edited as text:")));
        m_raw = new QPlainTextEdit(predicateString);
        layout->addWidget(m_raw);
    }
    layout->addStretch();
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
}

void ZDSmartGroupEditor::addRow(const Row &row)
{
    auto *line = new QWidget;
    auto *h = new QHBoxLayout(line);
    h->setContentsMargins(0, 0, 0, 0);
    auto *key = new QComboBox;
    for (const Key &k : keys())
        key->addItem(k.label, k.keyPath);
    auto *op = new QComboBox;
    auto *values = new QStackedWidget;
    auto *text = new QLineEdit(row.text);
    auto *number = new QSpinBox;
    number->setRange(0, 1000000);
    number->setValue(int(row.number));
    auto *date = new QWidget;
    auto *dateLayout = new QHBoxLayout(date);
    dateLayout->setContentsMargins(0, 0, 0, 0);
    auto *count = new QSpinBox;
    count->setRange(1, 10000);
    count->setValue(std::max<int>(1, int(row.number)));
    auto *unit = new QComboBox;
    unit->addItems({tr("minutes"), tr("hours"), tr("days"), tr("weeks"), tr("months"), tr("years")});
    unit->setCurrentIndex(int(row.unit));
    dateLayout->addWidget(count);
    dateLayout->addWidget(unit);
    auto *yesNo = new QComboBox;
    yesNo->addItems({QStringLiteral("Yes"), QStringLiteral("No")});
    yesNo->setCurrentIndex(row.text == QLatin1String("No") ? 1 : 0);
    values->addWidget(text);   // KeyKind::Text
    values->addWidget(number); // KeyKind::Number
    values->addWidget(date);   // KeyKind::Date
    values->addWidget(yesNo);  // KeyKind::YesNo
    auto *remove = new QToolButton;
    remove->setText(QStringLiteral("−"));
    remove->setToolTip(tr("Remove this condition"));
    h->addWidget(key);
    h->addWidget(op);
    h->addWidget(values, 1);
    h->addWidget(remove);

    auto kindOf = [key] { return keyWithPath(key->currentData().toString()).value_or(keys().first()).kind; };
    auto fillOperators = [=](ZDPredicate::Operator selected) {
        op->clear();
        for (ZDPredicate::Operator o : operatorsForKind(kindOf()))
            op->addItem(operatorLabel(kindOf(), o), int(o));
        const int index = op->findData(int(selected));
        op->setCurrentIndex(index >= 0 ? index : 0);
        values->setCurrentIndex(int(kindOf()));
    };
    key->setCurrentIndex(std::max(0, key->findData(row.keyPath)));
    fillOperators(row.op);
    connect(key, &QComboBox::currentIndexChanged, this, [=] { fillOperators(ZDPredicate::Operator(op->currentData().toInt())); });

    auto reader = [=]() -> Row {
        Row result;
        result.keyPath = key->currentData().toString();
        result.op = ZDPredicate::Operator(op->currentData().toInt());
        switch (kindOf()) {
        case KeyKind::Text: result.text = text->text(); break;
        case KeyKind::Number: result.number = number->value(); break;
        case KeyKind::Date:
            result.number = count->value();
            result.unit = ZDDateRelativeRowTemplate::Unit(unit->currentIndex());
            break;
        case KeyKind::YesNo: result.text = yesNo->currentText(); break;
        }
        return result;
    };
    const int index = int(m_readers.size());
    m_readers << reader;
    connect(remove, &QToolButton::clicked, this, [this, line, index] {
        m_readers[index] = nullptr;
        line->deleteLater();
    });
    m_rows->addWidget(line);
}

QString ZDSmartGroupEditor::title() const
{
    return m_title->text().trimmed();
}

QString ZDSmartGroupEditor::predicateString() const
{
    if (m_raw)
        return m_raw->toPlainText().trimmed();
    Query query;
    query.matchAll = m_match->currentIndex() == 0;
    for (const auto &reader : m_readers) {
        if (reader)
            query.rows << reader();
    }
    return predicateStringForQuery(query);
}
