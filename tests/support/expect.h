#pragma once
// Expectations written as tables of "name=value": the columns of a row, the controls of a
// screen, the messages a desk was shown. A failure lists every entry side by side, so one
// table stands for a run of single checks and says at once which of them differ.

#include "support/screenkit.h"
#include "support/workspace.h"

#include "core/ui/formbuilder.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QLabel>
#include <QLineEdit>
#include <QWidget>

namespace tolmar::test {

inline void expectColumns(const db::Row& row, const QStringList& want)
{
    expectColumns(std::optional<db::Row>(row), want);
}

// Puts rows in place the way the other desks would have: one statement per row, every value
// bound, the rows given as a table under the column names ("PNo, psurname, ...").
inline void insertRows(const Workspace& ws, const QString& table, const QString& columns,
                       const std::vector<db::Params>& rows,
                       db::Database which = db::Database::Hospital)
{
    const QString marks = QStringList(int(columns.count(QLatin1Char(',')) + 1),
                                      QStringLiteral("?"))
                              .join(QStringLiteral(", "));
    for (const db::Params& row : rows)
        ws.exec(QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)").arg(table, columns, marks), row,
                which);
}

// The rows of a result, each as the named columns joined by "|" in the order given.
inline QStringList rowsOf(const db::Result& result, const QStringList& columns)
{
    QStringList out;
    for (const db::Row& r : result.rows) {
        QStringList cells;
        for (const QString& c : columns)
            cells << r.text(c);
        out << cells.join(QLatin1Char('|'));
    }
    return out;
}

// What a person reads in a control: a line's or a label's text, a list box's current entry
// (blank when none is chosen), a date box's date in ISO form (blank when blank), a tick
// box's 1 or 0.
inline QString shownIn(const QWidget* w)
{
    if (const auto* e = qobject_cast<const QLineEdit*>(w))
        return e->text();
    if (const auto* l = qobject_cast<const QLabel*>(w))
        return l->text();
    if (const auto* c = qobject_cast<const QComboBox*>(w))
        return c->currentIndex() < 0 && !c->isEditable() ? QString() : c->currentText();
    if (const auto* d = qobject_cast<const QDateEdit*>(w))
        return ui::dateOf(d).toString(Qt::ISODate);
    if (const auto* b = qobject_cast<const QCheckBox*>(w))
        return b->isChecked() ? QStringLiteral("1") : QStringLiteral("0");
    return QStringLiteral("<%1>").arg(QString::fromLatin1(w->metaObject()->className()));
}

// The named controls of a screen, each expected as "name=what it shows".
inline void expectControls(const QWidget* screen, const QStringList& want)
{
    QStringList got;
    for (const QString& w : want) {
        const QString name = w.section(QLatin1Char('='), 0, 0);
        const auto* c = screen->findChild<QWidget*>(name);
        got << name + QLatin1Char('=') + (c ? shownIn(c) : QStringLiteral("<no control>"));
    }
    EXPECT_EQ(got, want);
}

// Fills a screen's controls as a person would, each entry "name=text": a list box takes its
// entry beginning with the text, a line or a date box (ISO) the text itself, a tick box "1"
// or "0".
inline void fillIn(QWidget* screen, const QStringList& entries)
{
    for (const QString& e : entries) {
        const QString name = e.section(QLatin1Char('='), 0, 0);
        const QString value = e.section(QLatin1Char('='), 1);
        QWidget* c = screen->findChild<QWidget*>(name);
        if (auto* box = qobject_cast<QComboBox*>(c))
            pick(screen, name.toLatin1().constData(), value);
        else if (auto* line = qobject_cast<QLineEdit*>(c))
            line->setText(value);
        else if (auto* date = qobject_cast<QDateEdit*>(c))
            date->setDate(QDate::fromString(value, Qt::ISODate));
        else if (auto* tick = qobject_cast<QCheckBox*>(c))
            tick->setChecked(value == QLatin1String("1"));
        else
            ADD_FAILURE() << "no control to fill: " << name.toStdString();
    }
}

// The last message box a desk was shown, as "text|title".
inline QString lastBox(const ScriptedPrompter& p)
{
    return p.last() ? p.last()->text + QLatin1Char('|') + p.last()->title : QString();
}

}  // namespace tolmar::test
