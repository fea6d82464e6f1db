// The patient read model on both backends, the category lists, and the generator that
// fills demo and benchmark databases.
#include "support/expect.h"

#include "patients/patientgenerator.h"
#include "patients/patientrecord.h"
#include "patients/patientrepo.h"

using namespace tolmar;
using namespace tolmar::test;
using namespace Qt::StringLiterals;

class PatientView : public BackendTest {};

TEST_P(PatientView, DeliversEveryColumnUnderItsName)
{
    const QStringList columns{
        "FullName", "fullname", "AdmissionDaysLimit", "title", "pno", "oldPno", "regDate",
        "Surname", "Firstname", "homeAddress", "Area", "OfficeAddress", "PhoneNo", "DOB",
        "coyname", "Client", "client", "email", "Sex", "BillingCat", "patcat", "empNo",
        "introducedBy", "CardType", "Marital", "bloodGroup", "genotype", "occupation",
        "religion", "nextOfKin", "nokPhone", "relationToKin", "kinAddress", "fileDuration",
        "Maturity", "ref", "HmoRef", "ExpiryDate", "newReg", "policyType", "LastAttndDate",
        "coyType", "expired", "billingCat", "oldpNo", "policytype", "expirydate"};
    ws->exec(u"INSERT INTO hPatients (PNo) VALUES (?)"_s, {u"001/000000001"_s});
    auto c = ws->connect();
    const auto row = patients::readPatient(*c, u"001/000000001"_s);
    ASSERT_TRUE(row);
    for (const QString& col : columns)
        EXPECT_TRUE(row->has(col)) << col.toStdString();
    EXPECT_FALSE(patients::readPatient(*c, u"001/000000002"_s).has_value());
}

TEST_P(PatientView, ShowsTheStoredRecord)
{
    ws->exec(
        u"INSERT INTO hPatients (PNo, oldPno, Title, psurname, pfirstName, CoyName, "
        "clientCatID, pCatID, MStatus, expirydate, expired, regDate, AdmissionDaysLimit) "
        "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"_s,
        {u"001/000000005"_s, u"001/26/000005"_s, u"MRS"_s, u"ÒKÉ"_s, u"Ngozi [Ada]"_s, u"0004"_s,
         u"HMO"_s, u"PRINCIPAL"_s, u"MARRIED"_s, QVariant(), 0, QDate(2026, 11, 23), 48});
    auto c = ws->connect();
    const auto row = patients::readPatient(*c, u"001/000000005"_s);
    // Non-private: no expiry, never swept.
    expectColumns(row, {"FullName=ÒKÉ Ngozi [Ada]", "Client=HYLOVA HMO", "BillingCat=HMO",
                        "patcat=PRINCIPAL", "Marital=MARRIED", "regDate=2026-11-23",
                        "ExpiryDate=", "AdmissionDaysLimit=48", "expired=0"});
}

TEST_P(PatientView, CategoryListFollowsTheClientTypeOrShowsAll)
{
    auto c = ws->connect();
    EXPECT_EQ(patients::billingCategories(*c, u"HMO"_s, false), (QStringList{u"HMO"_s, u"PHIS"_s}));
    const QStringList all = patients::billingCategories(*c, u"HMO"_s, true);
    EXPECT_EQ(all.size(), 6);
    EXPECT_EQ(patients::billingCategories(*c, u"NO SUCH TYPE"_s, false), all);
    EXPECT_EQ(patients::clientTypeOfCategory(*c, u"PHIS"_s), u"HMO"_s);
    EXPECT_EQ(patients::clientTypeOfCategory(*c, u"UNKNOWN"_s), u"COMPANY"_s);
}

TEST_P(PatientView, GeneratorAppendsAfterTheHighestNumberAndMovesTheCounter)
{
    patients::GeneratorOptions o;
    o.count = 450;
    o.rowsPerStatement = 100;
    o.today = QDate(2026, 11, 23);
    EXPECT_EQ(patients::generatePatients(ws->server(), o), 450);
    o.count = 30;
    EXPECT_EQ(patients::generatePatients(ws->server(), o), 30);
    auto c = ws->connect();
    EXPECT_EQ(c->scalar(u"SELECT count(*) FROM hPatients"_s).toInt(), 480);
    EXPECT_EQ(c->scalar(u"SELECT MAX(PNo) FROM hPatients"_s).toString(), u"001/000000480"_s);
    EXPECT_EQ(c->scalar(u"SELECT id FROM idgen WHERE destName = ?"_s, {u"PATIENT2"_s}).toInt(),
              480);
    // Every row is a valid, joinable record: valid numbers, known payers, private cards dated.
    const auto bad = c->scalar(
        u"SELECT count(*) FROM vwhpatients WHERE Client IS NULL OR length(pno) <> 13 "
        "OR (BillingCat = ? AND ExpiryDate IS NULL) "
        "OR (BillingCat <> ? AND ExpiryDate IS NOT NULL)"_s,
        {u"PRIVATE"_s, u"PRIVATE"_s});
    EXPECT_EQ(bad.toInt(), 0);
    for (const auto& r : c->query(u"SELECT pno FROM vwhpatients"_s).rows)
        ASSERT_TRUE(patients::isPnoValid(r.text(u"pno")));
}

TOLMAR_INSTANTIATE_BACKENDS(PatientView);
