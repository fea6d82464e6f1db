#pragma once
// A desk that has started up and shows its main window, offscreen, on either backend;
// with helpers that put patients, visits, referrals and admissions in place.

#include "support/workspace.h"

#include "core/mditolmar.h"
#include "core/screenhost.h"
#include "core/startup.h"

#include <QAction>
#include <QApplication>
#include <QTimer>

#include <memory>

namespace tolmar::test {

class MainWindowTest : public BackendTest {
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        desk->startUp();
    }

    // Builds and loads the window as the program does after start-up.
    MdiTolmar& open()
    {
        window = std::make_unique<MdiTolmar>(desk->ctx);
        desk->ctx.rerunStartup = [this] {
            runStartup(desk->ctx);
            window->applySession();
        };
        window->load();
        window->show();
        return *window;
    }
    // Runs the start-up routine again with changed defaults.
    void restartWith(const QString& key, const QString& value)
    {
        ws->setDefault(key, value);
        desk->startUp();
    }

    template <typename T>
    T* child(const QString& name) const
    {
        T* w = window->findChild<T*>(name);
        EXPECT_NE(w, nullptr) << name.toStdString();
        return w;
    }
    QAction* action(const QString& name) const { return child<QAction>(name); }
    QTimer* timer(const QString& name) const { return child<QTimer>(name); }

    QDate today() const { return desk->ctx.session().serverDate; }

    void addPatient(const QString& pno, const QString& surname, const QString& first,
                    const QString& coy = QStringLiteral("0001"),
                    const QVariant& expiry = QVariant(), int expired = 0,
                    const QVariant& regDate = QVariant()) const
    {
        ws->exec(QStringLiteral("INSERT INTO hPatients (PNo, oldPno, psurname, pfirstName, "
                                "CoyName, clientCatID, expirydate, expired, regDate, sex, "
                                "pPhoneNo, empno) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
                 {pno, QStringLiteral("C-") + pno.right(3), surname, first, coy,
                  coy == QLatin1String("0001") ? QStringLiteral("PRIVATE") : QStringLiteral("HMO"),
                  expiry, expired, regDate.isValid() ? regDate : QVariant(QDate(2020, 1, 6)),
                  QStringLiteral("FEMALE"), QStringLiteral("08030000") + pno.right(3),
                  QStringLiteral("EN-") + pno.right(3)});
    }
    void addVisit(const QString& pno, const QString& consultID, const QDate& date,
                  const QString& time, const QString& clinic = QStringLiteral("GOPD"),
                  const QString& coy = QStringLiteral("0001")) const
    {
        ws->exec(QStringLiteral("INSERT INTO hRecords (recDate, htime, PNo, consultID, empID, "
                                "clinicType, Remarks, clientCat, CoyName) "
                                "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"),
                 {date, time, pno, consultID, QStringLiteral("EMP001"), clinic,
                  QStringLiteral("CONSULTATION"), QStringLiteral("PRIVATE"), coy});
    }
    void addReferral(const QString& pno, const QString& consultID, const QDate& refDate,
                     const QDate& apptDate, int attendedToByRec = 0,
                     const QString& to = QStringLiteral("EYE CLINIC")) const
    {
        ws->exec(QStringLiteral("INSERT INTO hreferal (consultID, clientCat, referto, ApptDate, "
                                "ApptTime, refReason, PNo, refDate, refTime, attendedto, "
                                "attendedToByRec) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, 0, ?)"),
                 {consultID, QStringLiteral("PRIVATE"), to, apptDate, QStringLiteral("10:00"),
                  QStringLiteral("REVIEW"), pno, refDate, QStringLiteral("09:00"),
                  attendedToByRec});
    }
    void addAdmission(const QString& pno, const QString& consultID, const QString& clientCat,
                      const QVariant& limit, int discharged = 0) const
    {
        ws->exec(QStringLiteral("INSERT INTO hAdmission (AdmDate, aTime, PNo, wardID, Reason, "
                                "consultID, clientCat, isDischarged, ExtendAdmissionLimitTo) "
                                "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"),
                 {QDate(2026, 11, 20), QStringLiteral("14:10"), pno, QStringLiteral("XX"),
                  QStringLiteral("OBSERVATION"), consultID, clientCat, discharged, limit});
    }

    std::unique_ptr<MdiTolmar> window;
};

}  // namespace tolmar::test
