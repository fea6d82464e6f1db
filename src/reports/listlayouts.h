#pragma once
// The list report layouts, one per source, by the name the menus and panels use
// (rptAttendance, rptNewReg, ...). A layout says which fields it prints, under which
// captions, how wide and in what form; the rows come from the caller's statement. A layout
// without fields prints every column of the statement as it comes.

#include "platform/db.h"
#include "platform/report.h"

#include <QString>

#include <vector>

namespace tolmar::reports {

enum class FieldKind { Text, Date, Time, DateTime, Money, Number };

struct LayoutField {
    QString name;     // the column of the statement, any case
    QString caption;  // the column caption on paper
    double weight = 1.0;
    FieldKind kind = FieldKind::Text;
};

struct ListLayout {
    QString name;   // "rptAttendance"
    QString title;  // printed over the caption; the window's caption when the caller has none
    bool landscape = false;
    std::vector<LayoutField> fields;  // empty: every column of the statement
    QString totalField;               // a money field summed under the rows, if any
};

// The layout of that name; nullptr for a name no layout has.
const ListLayout* findListLayout(const QString& name);
// Every layout's name, in the order they are declared.
QStringList listLayoutNames();

// What is printed on the day, ready for the report seam.
struct PrintContext {
    QString hospitalName;
    QDate printedOn;
};

// Puts the rows into the layout: fields the statement does not give are left out, values
// take their printed form (short dates, money with two decimals, NULL as blank).
report::ListDocument buildListDocument(const ListLayout& layout, const db::Result& rows,
                                       const QString& caption, const PrintContext& context);

}  // namespace tolmar::reports
