#pragma once
// Finding and working the controls of a screen by name, as the person at the desk would.

#include <QAbstractItemModel>
#include <QComboBox>
#include <QCoreApplication>
#include <QDateEdit>
#include <QLineEdit>
#include <QPixmap>
#include <QPushButton>
#include <QString>
#include <QStringList>
#include <QTableView>
#include <QTest>
#include <QWidget>

#include <gtest/gtest.h>

namespace tolmar::test {

// The client area of a maximised main window on a 1366 x 768 display, under its title bar
// and above the task bar: what a front desk's laptop gives the program.
inline const QSize kDeskLaptop(1366, 698);

// With TOLMAR_SCREENSHOTS naming a folder, saves the window as a person would see it now
// (name.png), so a run of the tests leaves the pictures to look at.
inline void saveScreenshot(QWidget* window, const QString& name)
{
    const QString folder = qEnvironmentVariable("TOLMAR_SCREENSHOTS");
    if (folder.isEmpty())
        return;
    QCoreApplication::processEvents();  // the layouts settle as they would before a person looks
    window->grab().save(QStringLiteral("%1/%2.png").arg(folder, name));
}

template <typename T>
T* child(QWidget* w, const char* name)
{
    T* c = w->findChild<T*>(QString::fromLatin1(name));
    if (!c)
        ADD_FAILURE() << "no control " << name;
    return c;
}

inline QComboBox* combo(QWidget* w, const char* name) { return child<QComboBox>(w, name); }
inline QLineEdit* edit(QWidget* w, const char* name) { return child<QLineEdit>(w, name); }
inline QDateEdit* dateBox(QWidget* w, const char* name) { return child<QDateEdit>(w, name); }

inline void click(QWidget* w, const char* name)
{
    QTest::mouseClick(child<QPushButton>(w, name), Qt::LeftButton);
}

// Chooses the entry of a list box whose text begins with `text`, as a person picking it.
inline void pick(QWidget* w, const char* name, const QString& text)
{
    QComboBox* box = combo(w, name);
    for (int i = 0; i < box->count(); ++i)
        if (box->itemText(i).startsWith(text)) {
            box->setCurrentIndex(i);
            return;
        }
    ADD_FAILURE() << name << " has no entry " << text.toStdString();
}

// A double click on a row of a grid, as the mouse gives it.
inline void doubleClickRow(QTableView* grid, int row)
{
    int column = 0;  // the first column shown: a hidden one has nowhere to click
    while (column + 1 < grid->model()->columnCount() && grid->isColumnHidden(column))
        ++column;
    const QPoint at = grid->visualRect(grid->model()->index(row, column)).center();
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, at);
    QTest::mouseDClick(grid->viewport(), Qt::LeftButton, {}, at);
}

inline QStringList items(QComboBox* box)
{
    QStringList out;
    for (int i = 0; i < box->count(); ++i)
        out << box->itemText(i);
    return out;
}

// The text of a grid cell under a column caption (any case); fetches lazily loaded rows.
inline QString cellText(QTableView* grid, int row, const QString& caption)
{
    QAbstractItemModel* m = grid->model();
    while (row >= m->rowCount() && m->canFetchMore({}))
        m->fetchMore({});
    for (int c = 0; c < m->columnCount(); ++c)
        if (m->headerData(c, Qt::Horizontal).toString().compare(caption, Qt::CaseInsensitive) ==
            0)
            return m->index(row, c).data(Qt::EditRole).toString();
    ADD_FAILURE() << "no column " << caption.toStdString();
    return {};
}

inline int rowCount(QTableView* grid)
{
    QAbstractItemModel* m = grid->model();
    while (m->canFetchMore({}))
        m->fetchMore({});
    return m->rowCount();
}

// The first row whose cell under the caption holds the text; -1 when none does.
inline int findRow(QTableView* grid, const QString& caption, const QString& text)
{
    const int n = rowCount(grid);
    for (int r = 0; r < n; ++r)
        if (cellText(grid, r, caption) == text)
            return r;
    return -1;
}

}  // namespace tolmar::test
