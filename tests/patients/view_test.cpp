// The patient read model on both backends, the category lists, and the generator that
// fills demo and benchmark databases.
#include "support/workspace.h"

#include "patients/patientgenerator.h"
#include "patients/patientrecord.h"
#include "patients/patientrepo.h"

using namespace tolmar;
using namespace tolmar::test;

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
    ws->exec(QStringLiteral("INSERT INTO hPatients (PNo) VALUES (?)"),
             {QStringLiteral("001/000000001")});
    auto c = ws->connect();
    const auto row = patients::readPatient(*c, QStringLiteral("001/000000001"));
    ASSERT_TRUE(row);
    for (const QString& col : columns)
        EXPECT_TRUE(row->has(col)) << col.toStdString();
    EXPECT_FALSE(patients::readPatient(*c, QStringLiteral("001/000000002")).has_value());
}

TEST_P(PatientView, ShowsTheStoredRecord)
{
    ws->exec(QStringLiteral(
                 "INSERT INTO hPatients (PNo, oldPno, Title, psurname, pfirstName, CoyName, "
                 "clientCatID, pCatID, MStatus, expirydate, expired, regDate, AdmissionDaysLimit) "
                 "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
             {QStringLiteral("001/000000005"), QStringLiteral("001/26/000005"),
              QStringLiteral("MRS"), QStringLiteral("ÒKÉ"), QStringLiteral("Ngozi [Ada]"),
              QStringLiteral("0004"), QStringLiteral("HMO"), QStringLiteral("PRINCIPAL"),
              QStringLiteral("MARRIED"), QVariant(), 0, QDate(2026, 11, 23), 48});
    auto c = ws->connect();
    const auto row = patients::readPatient(*c, QStringLiteral("001/000000005"));
    ASSERT_TRUE(row);
    EXPECT_EQ(row->text(u"FullName"), QStringLiteral("ÒKÉ Ngozi [Ada]"));
    EXPECT_EQ(row->text(u"Client"), QStringLiteral("HYLOVA HMO"));
    EXPECT_EQ(row->text(u"BillingCat"), QStringLiteral("HMO"));
    EXPECT_EQ(row->text(u"patcat"), QStringLiteral("PRINCIPAL"));
    EXPECT_EQ(row->text(u"Marital"), QStringLiteral("MARRIED"));
    EXPECT_EQ(row->date(u"regDate"), QDate(2026, 11, 23));
    EXPECT_TRUE(row->isNull(u"ExpiryDate"));  // non-private: no expiry, never swept
    EXPECT_EQ(row->toInt(u"AdmissionDaysLimit"), 48);
    EXPECT_EQ(row->toInt(u"expired"), 0);
}

TEST_P(PatientView, CategoryListFollowsTheClientTypeOrShowsAll)
{
    auto c = ws->connect();
    EXPECT_EQ(patients::billingCategories(*c, QStringLiteral("HMO"), false),
              (QStringList{QStringLiteral("HMO"), QStringLiteral("PHIS")}));
    const QStringList all = patients::billingCategories(*c, QStringLiteral("HMO"), true);
    EXPECT_EQ(all.size(), 6);
    EXPECT_EQ(patients::billingCategories(*c, QStringLiteral("NO SUCH TYPE"), false), all);
    EXPECT_EQ(patients::clientTypeOfCategory(*c, QStringLiteral("PHIS")), QStringLiteral("HMO"));
    EXPECT_EQ(patients::clientTypeOfCategory(*c, QStringLiteral("UNKNOWN")),
              QStringLiteral("COMPANY"));
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
    EXPECT_EQ(c->scalar(QStringLiteral("SELECT count(*) FROM hPatients")).toInt(), 480);
    EXPECT_EQ(c->scalar(QStringLiteral("SELECT MAX(PNo) FROM hPatients")).toString(),
              QStringLiteral("001/000000480"));
    EXPECT_EQ(c->scalar(QStringLiteral("SELECT id FROM idgen WHERE destName = ?"),
                        {QStringLiteral("PATIENT2")})
                  .toInt(),
              480);
    // Every row is a valid, joinable record: valid numbers, known payers, private cards dated.
    const auto bad = c->scalar(QStringLiteral(
        "SELECT count(*) FROM vwhpatients WHERE Client IS NULL OR length(pno) <> 13 "
        "OR (BillingCat = ? AND ExpiryDate IS NULL) "
        "OR (BillingCat <> ? AND ExpiryDate IS NOT NULL)"),
        {QStringLiteral("PRIVATE"), QStringLiteral("PRIVATE")});
    EXPECT_EQ(bad.toInt(), 0);
    for (const auto& r : c->query(QStringLiteral("SELECT pno FROM vwhpatients")).rows)
        ASSERT_TRUE(patients::isPnoValid(r.text(u"pno")));
}

TOLMAR_INSTANTIATE_BACKENDS(PatientView);
