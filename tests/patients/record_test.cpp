// Identifiers and the category rules of the patient record.
#include "patients/patientrecord.h"

#include <gtest/gtest.h>

using namespace tolmar::patients;

TEST(PatientNumber, TailFromTheFifthCharacterMustBeDigits)
{
    EXPECT_TRUE(isPnoValid(QStringLiteral("001/000000123")));
    EXPECT_TRUE(isPnoValid(QStringLiteral("ABCD9")));
    EXPECT_FALSE(isPnoValid(QStringLiteral("001/")));         // nothing after the prefix
    EXPECT_FALSE(isPnoValid(QStringLiteral("001")));
    EXPECT_FALSE(isPnoValid(QStringLiteral("001/00012A")));
    EXPECT_FALSE(isPnoValid(QStringLiteral("001/-12")));
    EXPECT_FALSE(isPnoValid(QStringLiteral("001/ 12")));
    EXPECT_FALSE(isPnoValid(QStringLiteral("001/１２")));     // full-width digits are not digits here
}

TEST(PatientNumber, LexicalOrderFollowsIssueOrder)
{
    // The repair takes the highest PNo by text: fixed width makes text order numeric order.
    EXPECT_LT(QStringLiteral("001/000000009"), QStringLiteral("001/000000010"));
    EXPECT_EQ(QStringLiteral("001/000000009").size(), 13);
}

TEST(CardNumber, AutomaticNumberCarriesHospitalYearAndTheTailOfPno)
{
    const QDate d(2026, 11, 23);
    EXPECT_EQ(cardNumber(QStringLiteral("YES"), QStringLiteral("001"), d,
                         QStringLiteral("001/000123456"), QStringLiteral("typed")),
              QStringLiteral("001/26/123456"));
    EXPECT_EQ(cardNumberPreview(d, QStringLiteral("001/000123456")), QStringLiteral("26/23456"));
    // Anything but "YES" keeps what was typed, trimmed.
    EXPECT_EQ(cardNumber(QStringLiteral("Yes"), QStringLiteral("001"), d,
                         QStringLiteral("001/000123456"), QStringLiteral("  LAG/77 ")),
              QStringLiteral("LAG/77"));
    EXPECT_EQ(cardNumber(QStringLiteral("YES"), QString(), QDate(2009, 1, 1),
                         QStringLiteral("001/000000001"), QString()),
              QStringLiteral("/09/000001"));
}

TEST(Names, BracketsAreStrippedAndTheRestKept)
{
    EXPECT_EQ(cleanName(QStringLiteral("  [OKAFOR] ")), QStringLiteral("OKAFOR"));
    EXPECT_EQ(cleanName(QStringLiteral("O'NEIL [JR]")), QStringLiteral("O'NEIL JR"));
    EXPECT_EQ(cleanName(QStringLiteral("ÀDÉBÁYỌ̀")), QStringLiteral("ÀDÉBÁYỌ̀"));
    EXPECT_EQ(cleanName(QStringLiteral("[]")), QString());
}

TEST(Payer, PrivateClientPresetsTheCardAndOthersBlankIt)
{
    const auto p = payerPreset(QStringLiteral("0001"), QStringLiteral("0001"));
    EXPECT_EQ(p.cardDuration, QStringLiteral("ONE YEAR"));
    EXPECT_EQ(p.billingCategory, QStringLiteral("PRIVATE"));
    EXPECT_EQ(p.enrolleeNo, QStringLiteral("NIL"));
    EXPECT_EQ(p.plan, QStringLiteral("NIL"));
    EXPECT_EQ(p.feeForService, QStringLiteral("YES"));
    EXPECT_EQ(p.hmoReferral, QStringLiteral("NO"));
    EXPECT_EQ(p.cardType, QStringLiteral("SINGLE"));
    EXPECT_FALSE(p.clearsExpiry);

    const auto other = payerPreset(QStringLiteral("0004"), QStringLiteral("0001"));
    EXPECT_TRUE(other.cardDuration.isEmpty());
    EXPECT_TRUE(other.billingCategory.isEmpty());
    EXPECT_TRUE(other.enrolleeNo.isEmpty());
    EXPECT_TRUE(other.clearsExpiry);
    // No PRIVATE default configured: no payer is taken for the private client.
    EXPECT_FALSE(isPrivatePayer(QString(), QString()));
}

TEST(Category, InsuranceCategoriesHaveTheirOwnRules)
{
    for (const char* c : {"HMO", "NHIS", "PHIS"}) {
        const QString cat = QString::fromLatin1(c);
        EXPECT_TRUE(needsEnrolleeNo(cat)) << c;
        EXPECT_TRUE(opensPlanList(cat)) << c;
        EXPECT_TRUE(needsAdmissionLimit(cat, QStringLiteral("YES"))) << c;
        EXPECT_FALSE(needsAdmissionLimit(cat, QStringLiteral("NO"))) << c;
        EXPECT_FALSE(storesExpiryDate(cat)) << c;
    }
    for (const char* c : {"PRIVATE", "CORPORATE", "hmo", ""}) {
        const QString cat = QString::fromLatin1(c);
        EXPECT_FALSE(needsEnrolleeNo(cat)) << c;
        EXPECT_FALSE(needsAdmissionLimit(cat, QStringLiteral("YES"))) << c;
    }
    EXPECT_TRUE(storesExpiryDate(QStringLiteral("PRIVATE")));
    EXPECT_EQ(coyTypeOf(QString()), QStringLiteral("COMPANY"));
    EXPECT_EQ(coyTypeOf(QStringLiteral("HMO")), QStringLiteral("HMO"));
}

TEST(Membership, DependantsCannotHaveDependants)
{
    EXPECT_TRUE(mayHaveDependants(kPrincipal));
    EXPECT_FALSE(mayHaveDependants(kDependant));
}
