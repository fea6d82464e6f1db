// Several desks saving new patients with a visit at the same moment: the server's getIDNo
// is all that keeps them apart, so every number must come out once and every patient must
// carry exactly its own visit, bill lines and timeline row.
#include "support/workspace.h"

#include "core/appcontext.h"
#include "patients/registrationsave.h"

using namespace tolmar;
using namespace tolmar::test;

namespace {

class ConcurrentSaves : public BackendTest {};

patients::RegistrationForm privatePatient(int desk, int n)
{
    patients::RegistrationForm f;
    f.newReg = QStringLiteral("NEW");
    f.title = QStringLiteral("MR");
    f.company = QStringLiteral("(PRIVATE) [0001]");
    f.selectedRetainID = QStringLiteral("0001");
    f.selectedCoyName = QStringLiteral("(PRIVATE)");
    f.selectedRetainCode = QStringLiteral("PVT");
    f.selectedClientType = QStringLiteral("PRIVATE");
    f.selectedClientCat = QStringLiteral("PRIVATE");
    f.cardDuration = QStringLiteral("ONE YEAR");
    f.cardType = QStringLiteral("SINGLE");
    f.regDate = QDate(2026, 11, 23);
    f.expiryDate = QDate(2027, 11, 23);
    f.maturity = QStringLiteral("ADULT");
    f.feeForService = QStringLiteral("YES");
    f.hmoReferral = QStringLiteral("NO");
    f.enrolleeNo = QStringLiteral("NIL");
    f.plan = QStringLiteral("NIL");
    f.area = QStringLiteral("IKEJA");
    f.surname = QStringLiteral("DESK%1").arg(desk);
    f.firstName = QStringLiteral("PATIENT%1").arg(n);
    f.phone = QStringLiteral("08031234567");
    f.nextOfKin = QStringLiteral("KIN");
    f.nokPhone = QStringLiteral("08030000000");
    f.clinicName = QStringLiteral("GENERAL");
    f.purpose = QStringLiteral("CONSULTATION");
    f.selectedPurpose = QStringLiteral("CONSULTATION");
    return f;
}

TEST_P(ConcurrentSaves, EveryNumberOnceAndEveryPatientWithExactlyItsOwnVisit)
{
    // PostgreSQL takes the full load; on SQLite the desks queue on the file's write lock
    // (kSqliteBusyTimeoutMs), so a smaller run shows the same thing.
    const bool pg = ws->backend() == db::Backend::Postgres;
    const int desks = pg ? 8 : 4;
    const int saves = pg ? 100 : 25;
    EXPECT_EQ(atManyDesks(*ws, desks, saves,
                          [](Desk& desk, int d, int n) {
                              desk.prompter.answerYes();
                              return !patients::saveRegistration(desk.ctx, privatePatient(d, n))
                                          .isEmpty();
                          }),
              0);

    const int total = desks * saves;
    auto c = ws->connect();
    auto number = [&](const QString& sql) { return c->scalar(sql).toInt(); };
    EXPECT_EQ(number(QStringLiteral("SELECT COUNT(DISTINCT PNo) FROM hPatients "
                                    "WHERE psurname LIKE 'DESK%'")),
              total);
    EXPECT_EQ(number(QStringLiteral("SELECT COUNT(DISTINCT r.consultID) FROM hRecords r JOIN "
                                    "hPatients p ON p.PNo = r.PNo WHERE p.psurname LIKE 'DESK%'")),
              total);
    // A patient with anything but one visit, two bill lines and one timeline row.
    EXPECT_EQ(number(QStringLiteral(
                  "SELECT COUNT(*) FROM hPatients p WHERE p.psurname LIKE 'DESK%' AND ("
                  "(SELECT COUNT(*) FROM hRecords r WHERE r.PNo = p.PNo) <> 1 OR "
                  "(SELECT COUNT(*) FROM billAccum b WHERE b.PNo = p.PNo "
                  " AND b.consultID = p.LastConsultID) <> 2 OR "
                  "(SELECT COUNT(*) FROM hPatientsTimeline t WHERE t.PNo = p.PNo "
                  " AND t.consultID = p.LastConsultID) <> 1)")),
              0);
    // Nothing hangs on a patient that is not there.
    for (const char* table : {"hRecords", "billAccum", "hPatientsTimeline"})
        EXPECT_EQ(number(QStringLiteral("SELECT COUNT(*) FROM %1 x WHERE NOT EXISTS (SELECT 1 "
                                        "FROM hPatients p WHERE p.PNo = x.PNo)")
                             .arg(QLatin1String(table))),
                  0)
            << table;
}

}  // namespace

TOLMAR_INSTANTIATE_BACKENDS(ConcurrentSaves);
