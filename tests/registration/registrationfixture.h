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

