// The identifiers of the patient record: what a patient number may be, the card number
// made from it, and names with brackets.
#include "patients/patientrecord.h"

#include <gtest/gtest.h>

using namespace tolmar::patients;

TEST(PatientRecord, NumbersCardsAndNames)
{
    for (const auto& [pno, valid] : std::initializer_list<std::pair<const char*, bool>>{
             {"001/000000123", true}, {"ABCD9", true}, {"001/", false}, {"001", false},
             {"001/00012A", false}, {"001/-12", false}, {"001/ 12", false},
             {"001/１２", false}})  // full-width digits are not digits here
        EXPECT_EQ(isPnoValid(QString::fromUtf8(pno)), valid) << pno;

    const QDate d(2026, 11, 23);
    const QString pno = QStringLiteral("001/000123456");
    EXPECT_EQ(cardNumber(QStringLiteral("YES"), QStringLiteral("001"), d, pno, "typed"),
              QStringLiteral("001/26/123456"));
    EXPECT_EQ(cardNumberPreview(d, pno), QStringLiteral("26/23456"));
    // Anything but "YES" keeps what was typed, trimmed.
    EXPECT_EQ(cardNumber(QStringLiteral("Yes"), QStringLiteral("001"), d, pno, "  LAG/77 "),
              QStringLiteral("LAG/77"));
    EXPECT_EQ(cardNumber(QStringLiteral("YES"), QString(), QDate(2009, 1, 1),
                         QStringLiteral("001/000000001"), QString()),
              QStringLiteral("/09/000001"));

    for (const auto& [typed, kept] : std::initializer_list<std::pair<const char*, const char*>>{
             {"  [OKAFOR] ", "OKAFOR"}, {"O'NEIL [JR]", "O'NEIL JR"},
             {"ÀDÉBÁYỌ̀", "ÀDÉBÁYỌ̀"}, {"[]", ""}})
        EXPECT_EQ(cleanName(QString::fromUtf8(typed)), QString::fromUtf8(kept)) << typed;
}
