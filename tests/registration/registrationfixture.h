#pragma once
// A desk that has started up, with its registration screen open offscreen, and a few
// helpers that put patients and visits in place the way the other desks would have.

#include "support/screenkit.h"
#include "support/workspace.h"

#include "core/ui/formbuilder.h"
#include "patients/frmpatientsnew.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTest>

#include <memory>

namespace tolmar::test {

// 23/11/2026, the fixed server date of every desk in the tests.
inline const QDate kToday(2026, 11, 23);

struct PatientSeed {
    QString pno;
    QString surname;
    QString firstName = QStringLiteral("ADA");
    QString coyName = QStringLiteral("0002");
    QString category = QStringLiteral("CORPORATE");
    QVariant expiry;  // NULL unless given
    QString sex = QStringLiteral("FEMALE");
    QDate regDate = kToday;
};

// Adds a new private patient on the registration screen, every required field filled,
// attendance at GENERAL for a consultation.
inline void fillNewPrivate(QWidget* s, const QString& surname = QStringLiteral("OKAFOR"))
{
    click(s, "cmdAdd");
    pick(s, "cboNew", QStringLiteral("NEW"));
    pick(s, "cboTitle", QStringLiteral("MRS"));
    edit(s, "txtsurNAme")->setText(surname);
    edit(s, "txtfirstNAme")->setText(QStringLiteral("[NGOZI] "));
    pick(s, "cboArea", QStringLiteral("IKEJA"));
    edit(s, "txtPhone")->setText(QStringLiteral(" 08031234567 "));
    pick(s, "txtSex", QStringLiteral("FEMALE"));
    pick(s, "cboMat", QStringLiteral("ADULT"));
    pick(s, "cboPat", QStringLiteral("(PRIVATE)"));
    edit(s, "txtKin")->setText(QStringLiteral("EMEKA OKAFOR"));
    edit(s, "txtNOKPhone")->setText(QStringLiteral("08035550000"));
    pick(s, "cboClin", QStringLiteral("GENERAL"));
    pick(s, "cboPurpose", QStringLiteral("CONSULTATION"));
}

// Makes the database refuse every new row of `table`, so that a command fails at that write
// after what came before it; `on` false lifts the refusal. DDL goes through execScript: the
// statements path prepares, and PostgreSQL prepares no CREATE.
inline void refuseRows(const Workspace& ws, const QString& table, bool on)
{
    const bool lite = ws.backend() == db::Backend::Sqlite;
    const QString t = QStringLiteral("refuse_") + table.toLower();
    ws.connect()->execScript(
        (on ? (lite ? QStringLiteral("CREATE TRIGGER %1 BEFORE INSERT ON %2 BEGIN SELECT "
                                     "RAISE(ABORT, '%2 refused'); END;")
                    : QStringLiteral("CREATE FUNCTION %1() RETURNS trigger AS $$ BEGIN RAISE "
                                     "EXCEPTION '%2 refused'; END $$ LANGUAGE plpgsql; CREATE "
                                     "TRIGGER %1 BEFORE INSERT ON %2 FOR EACH ROW EXECUTE "
                                     "FUNCTION %1();"))
            : (lite ? QStringLiteral("DROP TRIGGER %1;")
                    : QStringLiteral("DROP TRIGGER %1 ON %2; DROP FUNCTION %1();")))
            .arg(t, table));
}

// The visit's timeline row, the last write of a save: a save fails after everything else
// of it was written.
inline void refuseTimelineRows(const Workspace& ws, bool on)
{
    refuseRows(ws, QStringLiteral("hPatientsTimeline"), on);
}

class RegistrationTest : public BackendTest {
protected:
    // Starts the desk and opens the screen; defaults set before this call take effect.
    frmPatientsNew& open()
    {
        desk->startUp();
        screen = std::make_unique<frmPatientsNew>(desk->ctx);
        screen->show();
        return *screen;
    }
    void addPatient(const PatientSeed& p)
    {
        ws->exec(QStringLiteral(
                     "INSERT INTO hPatients (PNo, oldPno, psurname, pfirstName, CoyName, "
                     "clientCatID, expirydate, sex, regDate, NewReg, pCatID, Principal, "
                     "fileduration, CardType) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, 'YES', "
                     "'PRINCIPAL', ?, 'ONE YEAR', 'SINGLE')"),
                 {p.pno, QStringLiteral("001/26/") + p.pno.right(6), p.surname, p.firstName,
                  p.coyName, p.category, p.expiry, p.sex, p.regDate, p.pno});
    }
    void addVisit(const QString& pno, const QDate& date, const QString& doctor,
                  const QString& clinic = QStringLiteral("GENERAL"))
    {
        ws->exec(QStringLiteral("INSERT INTO hRecords (recDate, htime, PNo, consultID, "
                                "clinicType, Remarks, DocAssigned, PatVal, CoyName) "
                                "VALUES (?, '9:00 AM', ?, ?, ?, 'CONSULTATION', ?, ?, '0002')"),
                 {date, pno, QStringLiteral("001%1").arg(++m_visits, 9, 10, QLatin1Char('0')),
                  clinic, doctor.isEmpty() ? QVariant() : QVariant(doctor),
                  doctor.isEmpty() ? 0 : 1});
    }
    // Loads a patient as a double click on the list would, then starts editing.
    void editPatient(const QString& pno)
    {
        screen->editVal(pno);
        click(screen.get(), "cmdEdit");
    }
    std::unique_ptr<frmPatientsNew> screen;

private:
    int m_visits = 0;
};

}  // namespace tolmar::test

