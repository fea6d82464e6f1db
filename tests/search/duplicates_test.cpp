// Likely duplicates of a patient being registered: which pairs are listed and why, and
// that listing them never stops a save.
#include "registration/registrationfixture.h"

#include "patients/duplicatecheck.h"

#include <QGroupBox>
#include <QListWidget>

using namespace tolmar;
using namespace tolmar::test;

namespace {

class Duplicates : public RegistrationTest {
protected:
    void SetUp() override
    {
        RegistrationTest::SetUp();
        const struct {
            const char *pno, *surname, *first, *dob, *phone;
        } onFile[] = {
            {"001/000000021", "OKAFOR", "NGOZI", "1990-05-01", "08031234567"},
            {"001/000000022", "OKAFOR", "EMEKA", "1990-05-01", "08031234567"},  // her brother
            {"001/000000023", "ADÉBÁYỌ̀", "TUNDE", "1985-02-02", "2348059998888"},
        };
        for (const auto& p : onFile)
            ws->exec(QStringLiteral("INSERT INTO hPatients (PNo, psurname, pfirstName, DOB, "
                                    "pPhoneNo) VALUES (?, ?, ?, ?, ?)"),
                     {QString::fromUtf8(p.pno), QString::fromUtf8(p.surname),
                      QString::fromUtf8(p.first), QDate::fromString(p.dob, Qt::ISODate),
                      QString::fromUtf8(p.phone)});
    }
};

TEST_P(Duplicates, ListsTheSameBirthdayOrPhoneWithAMuchTheSameName)
{
    const QDate born(1990, 5, 1);
    const struct {
        const char *surname, *first;
        QDate dob;
        const char* phone;
        QStringList listed;  // "name|reason", most alike first
    } cases[] = {
        {"okafor", "ngozi", born, "", {"OKAFOR NGOZI|same DOB"}},
        {"Ngozi", "Okafor", born, "", {"OKAFOR NGOZI|same DOB"}},  // the names swapped
        {"Òkáfọ̀r", "[NGOZI]", {}, "08031234567", {"OKAFOR NGOZI|same phone"}},
        {"OKAFFOR", "NGOZI", born, "08031234567", {"OKAFOR NGOZI|same DOB, same phone"}},
        {"OKAFOR", "", born, "", {"OKAFOR EMEKA|same DOB", "OKAFOR NGOZI|same DOB"}},
        {"adebayo", "tunde", {}, "08059998888", {"ADÉBÁYỌ̀ TUNDE|same phone"}},  // 234...
        {"ADEBAYO", "TUNDE", born, "", {}},              // another birthday
        {"OKAFOR", "CHIOMA", born, "08031234567", {}},   // a sister is not a duplicate
        {"BELLO", "AISHA", born, "08031234567", {}},
        {"OKAFOR", "NGOZI", {}, "080312", {}},           // too short to be a number
        {"", "", born, "08031234567", {}},
    };
    auto c = ws->connect();
    for (const auto& k : cases) {
        QStringList got;
        for (const auto& d : patients::likelyDuplicates(
                 *c, {QString::fromUtf8(k.surname), QString::fromUtf8(k.first), k.dob,
                      QString::fromUtf8(k.phone)}))
            got << d.name + QLatin1Char('|') + d.reason;
        EXPECT_EQ(got, k.listed) << k.surname << ' ' << k.first << ' ' << k.phone;
    }
}

TEST_P(Duplicates, AreListedOnTheScreenAndSaveStillGoesThrough)
{
    frmPatientsNew& s = open();
    fillNewPrivate(&s, QStringLiteral("OKAFOR"));
    auto* list = child<QListWidget>(&s, "lstDuplicates");
    EXPECT_FALSE(child<QGroupBox>(&s, "fraDuplicates")->isVisible());
    edit(&s, "txtPhone")->setText(QStringLiteral("08031234567"));
    QTest::keyClick(edit(&s, "txtPhone"), Qt::Key_Return);
    EXPECT_TRUE(child<QGroupBox>(&s, "fraDuplicates")->isVisible());
    ASSERT_EQ(list->count(), 1);
    EXPECT_EQ(list->item(0)->text(), QStringLiteral("OKAFOR NGOZI (001/000000021): same phone"));
    EXPECT_TRUE(desk->prompter.messages().empty());

    desk->prompter.answerYes();
    click(&s, "OKButton");
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT count(*) FROM hPatients WHERE psurname = ?"),
                         {QStringLiteral("OKAFOR")})
                  .toInt(),
              3);
    EXPECT_FALSE(child<QGroupBox>(&s, "fraDuplicates")->isVisible());  // gone with the fields
}

TOLMAR_INSTANTIATE_BACKENDS(Duplicates);

}  // namespace
