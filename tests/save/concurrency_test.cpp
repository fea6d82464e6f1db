// Several desks saving new patients with a visit at the same moment: the server's getIDNo
// is all that keeps them apart, so every number must come out once and every patient must
// carry exactly its own visit, bill lines and timeline row.
#include "support/workspace.h"

#include "core/appcontext.h"
#include "patients/registrationsave.h"

using namespace tolmar;
using namespace tolmar::test;
using namespace Qt::StringLiterals;

namespace {

class ConcurrentSaves : public BackendTest {};

patients::RegistrationForm privatePatient(int desk, int n)
{
    patients::RegistrationForm f;
    f.newReg = u"NEW"_s;
    f.title = u"MR"_s;
    f.company = u"(PRIVATE) [0001]"_s;
    f.selectedRetainID = u"0001"_s;
    f.selectedCoyName = u"(PRIVATE)"_s;
    f.selectedRetainCode = u"PVT"_s;
    f.selectedClientType = u"PRIVATE"_s;
    f.selectedClientCat = u"PRIVATE"_s;
    f.cardDuration = u"ONE YEAR"_s;
    f.cardType = u"SINGLE"_s;
    f.regDate = QDate(2026, 11, 23);
    f.expiryDate = QDate(2027, 11, 23);
    f.maturity = u"ADULT"_s;
    f.feeForService = u"YES"_s;
    f.hmoReferral = u"NO"_s;
    f.enrolleeNo = u"NIL"_s;
    f.plan = u"NIL"_s;
    f.area = u"IKEJA"_s;
    f.surname = u"DESK%1"_s.arg(desk);
    f.firstName = u"PATIENT%1"_s.arg(n);
    f.phone = u"08031234567"_s;
    f.nextOfKin = u"KIN"_s;
    f.nokPhone = u"08030000000"_s;
    f.clinicName = u"GENERAL"_s;
    f.purpose = u"CONSULTATION"_s;
    f.selectedPurpose = u"CONSULTATION"_s;
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
    EXPECT_EQ(number(u"SELECT COUNT(DISTINCT PNo) FROM hPatients "
                     "WHERE psurname LIKE 'DESK%'"_s),
              total);
    EXPECT_EQ(number(u"SELECT COUNT(DISTINCT r.consultID) FROM hRecords r JOIN "
                     "hPatients p ON p.PNo = r.PNo WHERE p.psurname LIKE 'DESK%'"_s),
              total);
    // A patient with anything but one visit, two bill lines and one timeline row.
    EXPECT_EQ(number(u"SELECT COUNT(*) FROM hPatients p WHERE p.psurname LIKE 'DESK%' AND ("
                     "(SELECT COUNT(*) FROM hRecords r WHERE r.PNo = p.PNo) <> 1 OR "
                     "(SELECT COUNT(*) FROM billAccum b WHERE b.PNo = p.PNo "
                     " AND b.consultID = p.LastConsultID) <> 2 OR "
                     "(SELECT COUNT(*) FROM hPatientsTimeline t WHERE t.PNo = p.PNo "
                     " AND t.consultID = p.LastConsultID) <> 1)"_s),
              0);
    // Nothing hangs on a patient that is not there.
    for (const char* table : {"hRecords", "billAccum", "hPatientsTimeline"})
        EXPECT_EQ(number(u"SELECT COUNT(*) FROM %1 x WHERE NOT EXISTS (SELECT 1 "
                         "FROM hPatients p WHERE p.PNo = x.PNo)"_s.arg(QLatin1String(table))),
                  0)
            << table;
}

}  // namespace

TOLMAR_INSTANTIATE_BACKENDS(ConcurrentSaves);
