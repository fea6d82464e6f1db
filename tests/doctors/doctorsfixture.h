#pragma once
// A desk that has started up on the demo clinics and doctors, with helpers that put
// visits, room assignments and consultations in place the way other desks would have.

#include "support/screenkit.h"
#include "support/workspace.h"

#include "core/screenhost.h"

#include <QListWidget>

namespace tolmar::test {

// Ticks exactly the entries with these texts.
inline void tick(QListWidget* list, const QStringList& texts)
{
    for (int i = 0; i < list->count(); ++i)
        list->item(i)->setCheckState(texts.contains(list->item(i)->text()) ? Qt::Checked
                                                                           : Qt::Unchecked);
}

class DoctorsTest : public BackendTest {
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        desk->startUp();
    }
    // The visits' and consultations' lists go by the database's own date.
    static QDate today() { return QDate::currentDate(); }
    // A visit sent to `doctor` (none: "") as the desk's save writes it; returns its ConsultID.
    QString addVisit(const QDate& day, const QString& doctor, int patVal = 1,
                     const QString& clinic = QStringLiteral("GENERAL"))
    {
        const QString id = QStringLiteral("001%1").arg(++m_visits, 9, 10, QLatin1Char('0'));
        const QString pno = QStringLiteral("001/%1").arg(m_visits, 9, 10, QLatin1Char('0'));
        ws->exec(QStringLiteral("INSERT INTO hPatients (PNo, psurname, pfirstName, CoyName) "
                                "VALUES (?, ?, 'ADA', '0002')"),
                 {pno, QStringLiteral("O'KAFOR %1").arg(m_visits)});
        ws->exec(QStringLiteral("INSERT INTO hRecords (recDate, htime, PNo, consultID, "
                                "clinicType, DocAssigned, PatVal, CoyName, clientCat) "
                                "VALUES (?, '9:00 AM', ?, ?, ?, ?, ?, '0002', 'CORPORATE')"),
                 {day, pno, id, clinic, doctor.isEmpty() ? QVariant() : QVariant(doctor),
                  patVal});
        return id;
    }
    void assignRoom(const QDate& day, const QString& room, const QString& doctor, int off = 0)
    {
        ws->exec(QStringLiteral("INSERT INTO hConRoomAssign (schdDate, ConRoomNo, docNo, isOff) "
                                "VALUES (?, ?, ?, ?)"),
                 {day, room, doctor, off});
    }
    // Opens a screen by name, as its menu entry does, and waits until it is on screen.
    QWidget* open(const char* name)
    {
        QWidget* s = desk->ctx.screens().open(QString::fromLatin1(name));
        EXPECT_TRUE(s && QTest::qWaitForWindowExposed(s));
        return s;
    }
    // Closes it with its window, so that the next open makes it anew.
    static void close(QWidget* s)
    {
        s->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    // A double click on a grid row, on its first column in sight (the key before it is
    // hidden).
    static void editByDoubleClick(QTableView* grid, int row)
    {
        int column = 0;
        while (grid->isColumnHidden(column))
            ++column;
        const QPoint at = grid->visualRect(grid->model()->index(row, column)).center();
        QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, at);
        QTest::mouseDClick(grid->viewport(), Qt::LeftButton, {}, at);
    }
    int count(const QString& sql, const db::Params& p = {})
    {
        return ws->scalar(sql, p).toInt();
    }

private:
    int m_visits = 0;
};

}  // namespace tolmar::test
