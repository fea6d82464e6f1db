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

using namespace Qt::StringLiterals;

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
                    const QString& coy = u"0001"_s, const QVariant& expiry = QVariant(),
                    int expired = 0, const QVariant& regDate = QVariant()) const
    {
        ws->exec(
            u"INSERT INTO hPatients (PNo, oldPno, psurname, pfirstName, "
            "CoyName, clientCatID, expirydate, expired, regDate, sex, "
            "pPhoneNo, empno) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"_s,
            {pno, u"C-"_s + pno.right(3), surname, first, coy,
             coy == QLatin1String("0001") ? u"PRIVATE"_s : u"HMO"_s, expiry, expired,
             regDate.isValid() ? regDate : QVariant(QDate(2020, 1, 6)), u"FEMALE"_s,
             u"08030000"_s + pno.right(3), u"EN-"_s + pno.right(3)});
    }
    void addVisit(const QString& pno, const QString& consultID, const QDate& date,
                  const QString& time, const QString& clinic = u"GOPD"_s,
                  const QString& coy = u"0001"_s) const
    {
        ws->exec(
            u"INSERT INTO hRecords (recDate, htime, PNo, consultID, empID, "
            "clinicType, Remarks, clientCat, CoyName) "
            "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"_s,
            {date, time, pno, consultID, u"EMP001"_s, clinic, u"CONSULTATION"_s, u"PRIVATE"_s,
             coy});
    }
    void addReferral(const QString& pno, const QString& consultID, const QDate& refDate,
                     const QDate& apptDate, int attendedToByRec = 0,
                     const QString& to = u"EYE CLINIC"_s) const
    {
        ws->exec(
            u"INSERT INTO hreferal (consultID, clientCat, referto, ApptDate, "
            "ApptTime, refReason, PNo, refDate, refTime, attendedto, "
            "attendedToByRec) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, 0, ?)"_s,
            {consultID, u"PRIVATE"_s, to, apptDate, u"10:00"_s, u"REVIEW"_s, pno, refDate,
             u"09:00"_s, attendedToByRec});
    }
    void addAdmission(const QString& pno, const QString& consultID, const QString& clientCat,
                      const QVariant& limit, int discharged = 0) const
    {
        ws->exec(
            u"INSERT INTO hAdmission (AdmDate, aTime, PNo, wardID, Reason, "
            "consultID, clientCat, isDischarged, ExtendAdmissionLimitTo) "
            "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"_s,
            {QDate(2026, 11, 20), u"14:10"_s, pno, u"XX"_s, u"OBSERVATION"_s, consultID, clientCat,
             discharged, limit});
    }

    std::unique_ptr<MdiTolmar> window;
};

}  // namespace tolmar::test
