// The registration screen driven by control name: its lists and states, and what a payer, a
// category, a card duration, an age, a purpose and a debt bring with them.
#include "registrationfixture.h"
#include "support/expect.h"

#include "patients/registrationform.h"

#include <QApplication>
#include <QTabWidget>
#include <QTimer>

#include <functional>

using namespace tolmar;
using namespace tolmar::test;
using namespace Qt::StringLiterals;

namespace {

class RegistrationScreen : public RegistrationTest {};

}  // namespace

TEST_P(RegistrationScreen, OpensLockedWithItsListsFilled)
{
    frmPatientsNew& s = open();
    EXPECT_EQ(s.windowTitle(), u"Patient Attendance / Registration"_s);
    EXPECT_EQ(s.mode(), frmPatientsNew::Mode::View);

    const QStringList payers = items(combo(&s, "cboPat"));
    ASSERT_GE(payers.size(), 8);
    EXPECT_EQ(payers.first(), u"(PRIVATE) [0001]"_s);
    EXPECT_EQ(payers.at(1), u"AXEL MANDRELL HEALTH [0005]"_s);  // by name
    EXPECT_TRUE(payers.contains(u"O'DEX & SONS (NIG) LTD [0007]"_s));

    const QStringList clinics = items(combo(&s, "cboClin"));
    EXPECT_EQ(clinics, (QStringList{"ANTE-NATAL", "EYE CLINIC", "GENERAL", "PAEDIATRICS"}));
    EXPECT_EQ(combo(&s, "cboArea")->itemText(0), QString());  // a blank first entry
    EXPECT_TRUE(items(combo(&s, "cboIntro")).contains(u"O'NEILL GRACE [EMP010]"_s));
    EXPECT_EQ(combo(&s, "cboPat")->currentIndex(), -1);
    EXPECT_EQ(ui::dateOf(dateBox(&s, "dtExpDate")), kToday);
    EXPECT_TRUE(ui::isBlank(dateBox(&s, "dtDate")));

    for (const char* b : {"cmdAdd", "cmdEdit", "cmdDel"})
        EXPECT_TRUE(child<QPushButton>(&s, b)->isEnabled()) << b;
    for (const char* b : {"OKButton", "cmdCancel"})
        EXPECT_FALSE(child<QPushButton>(&s, b)->isEnabled()) << b;
    EXPECT_TRUE(edit(&s, "txtsurNAme")->isReadOnly());
    EXPECT_FALSE(combo(&s, "cboPat")->isEnabled());
    EXPECT_FALSE(edit(&s, "txtName")->isReadOnly());  // the lookup stays free
}

TEST_P(RegistrationScreen, AddFreesTheFieldsWithTheirStartingValues)
{
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    EXPECT_EQ(s.mode(), frmPatientsNew::Mode::Add);
    EXPECT_TRUE(child<QPushButton>(&s, "OKButton")->isEnabled());
    EXPECT_FALSE(child<QPushButton>(&s, "cmdAdd")->isEnabled());
    EXPECT_FALSE(edit(&s, "txtsurNAme")->isReadOnly());
    // Limits are kept: the desk fills the admission limit in.
    expectControls(&s, {"cboRefHmo=NO", "txtOLD=001/26/", "txtAdmitLimit=", "chkReg=1", "dtDate=",
                        "dtRegDate=2026-11-23", "lblDebtCap=Carry Over Debt", "lblDebt=0.00"});
    EXPECT_EQ(s.focusWidget(), combo(&s, "cboNew"));

    // Reached by its caption's shortcut the payer list drops down, and the desk picks by
    // typing the first letters in any case.
    QComboBox* payer = combo(&s, "cboPat");
    s.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&s));
    payer->setFocus(Qt::ShortcutFocusReason);
    for (int i = 0; i < 100 && !payer->view()->isVisible(); ++i)
        QTest::qWait(10);
    EXPECT_TRUE(payer->view()->isVisible());
    QTest::keyClicks(payer->view(), u"dan"_s);
    QTest::keyClick(payer->view(), Qt::Key_Return);
    EXPECT_TRUE(payer->currentText().startsWith(u"DANBURY"_s))
        << payer->currentText().toStdString();

    click(&s, "cmdCancel");
    EXPECT_EQ(s.mode(), frmPatientsNew::Mode::View);
    EXPECT_TRUE(edit(&s, "txtOLD")->text().isEmpty());
}

TEST_P(RegistrationScreen, AdmissionLimitStartsAtZeroWhenLimitsAreNotKept)
{
    ws->setDefault(u"Admission_Limit_Exists"_s, u"NO"_s);
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    EXPECT_EQ(edit(&s, "txtAdmitLimit")->text(), u"0"_s);
}

TEST_P(RegistrationScreen, PrivateThenAnotherPayerLeavesNoExpiryAndBlankCardFields)
{
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    pick(&s, "cboPat", u"(PRIVATE)"_s);
    EXPECT_EQ(s.selectedRetainID(), u"0001"_s);
    // A private card runs one year on.
    expectControls(&s, {"cboFile=ONE YEAR", "cboClient=PRIVATE", "txtEmp=NIL", "txtPolicy=NIL",
                        "cboRef=YES", "cboRefHmo=NO", "cboCard=SINGLE", "dtExpDate=2027-11-23"});

    pick(&s, "cboPat", u"DANBURY"_s);
    EXPECT_EQ(s.selectedRetainID(), u"0002"_s);
    for (const char* box : {"cboFile", "cboClient", "cboRef", "cboRefHmo", "cboCard"})
        EXPECT_EQ(combo(&s, box)->currentIndex(), -1) << box;
    expectControls(&s, {"dtExpDate=", "txtEmp="});
    EXPECT_EQ(combo(&s, "txtPolicy")->count(), 0);
    // The categories now offered are the company's own.
    EXPECT_EQ(items(combo(&s, "cboClient")), (QStringList{"CORPORATE", "RETAINER"}));
}

TEST_P(RegistrationScreen, InsuranceCategoriesOpenThePayersPlans)
{
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    pick(&s, "cboPat", u"HYLOVA"_s);
    EXPECT_EQ(items(combo(&s, "cboClient")), (QStringList{"HMO", "PHIS"}));
    pick(&s, "cboClient", u"HMO"_s);
    EXPECT_EQ(s.selectedClientCat(), u"HMO"_s);
    EXPECT_EQ(s.selectedClientType(), u"HMO"_s);
    EXPECT_EQ(items(combo(&s, "txtPolicy")), (QStringList{"BRONZE [P0001]", "GOLD [P0002]"}));
    EXPECT_EQ(combo(&s, "txtPolicy")->currentIndex(), -1);  // the desk must pick one

    // An HMO referral is fee for service too, for HMO clients.
    pick(&s, "cboRefHmo", u"YES"_s);
    EXPECT_EQ(combo(&s, "cboRef")->currentText(), u"YES"_s);

    // "Show All" offers every category; an insurance category with no plan offers NIL.
    pick(&s, "cboPat", u"DANBURY"_s);
    child<QCheckBox>(&s, "chkAll")->setChecked(true);
    EXPECT_EQ(combo(&s, "cboClient")->count(), 6);
    pick(&s, "cboClient", u"NHIS"_s);
    EXPECT_EQ(items(combo(&s, "txtPolicy")), QStringList{u"NIL"_s});
    EXPECT_EQ(combo(&s, "txtPolicy")->currentText(), u"NIL"_s);
}

TEST_P(RegistrationScreen, CompanyReferralLeavesFeeForServiceAlone)
{
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    pick(&s, "cboPat", u"DANBURY"_s);
    pick(&s, "cboClient", u"CORPORATE"_s);
    EXPECT_EQ(s.selectedClientType(), u"COMPANY"_s);
    pick(&s, "cboRefHmo", u"YES"_s);
    EXPECT_EQ(combo(&s, "cboRef")->currentIndex(), -1);
}

TEST_P(RegistrationScreen, CardDurationSetsTheExpiryOnAddAndTodayOnEdit)
{
    addPatient({u"001/000000007"_s, u"ADEBAYO"_s});
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    dateBox(&s, "dtRegDate")->setDate(QDate(2026, 3, 10));
    for (const auto& [duration, expiry] : {std::pair{"TILL END OF YEAR", "2026-12-31"},
                                           {"ONE YEAR", "2027-03-10"},
                                           {"WHILE STILL IN SERVICE", ""}}) {
        pick(&s, "cboFile", QString::fromLatin1(duration));
        expectControls(&s, {u"dtExpDate="_s + QLatin1String(expiry)});
    }
    click(&s, "cmdCancel");

    editPatient(u"001/000000007"_s);
    EXPECT_TRUE(ui::isBlank(dateBox(&s, "dtExpDate")));  // loading the row sets no date
    pick(&s, "cboFile", u"TILL END OF YEAR"_s);
    EXPECT_EQ(dateBox(&s, "dtExpDate")->date(), kToday);
}

TEST_P(RegistrationScreen, TypedAgeSetsTheDateOfBirthAndTheDateShowsTheAge)
{
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    QTest::keyClicks(edit(&s, "txtAge"), u"30"_s);
    EXPECT_EQ(dateBox(&s, "dtDate")->date(), QDate(1996, 11, 23));
    EXPECT_EQ(edit(&s, "txtAge")->text(), u"30"_s);  // what was typed stays

    edit(&s, "txtAge")->clear();
    QTest::keyClicks(edit(&s, "txtAge"), u"thirty"_s);
    EXPECT_EQ(dateBox(&s, "dtDate")->date(), QDate(1996, 11, 23));

    dateBox(&s, "dtDate")->setDate(QDate(2024, 9, 12));
    EXPECT_EQ(edit(&s, "txtAge")->text(), u"2 yrs, 2 mths and 11 days"_s);
}

TEST_P(RegistrationScreen, PhoneTakesDigitsOnly)
{
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    QTest::keyClicks(edit(&s, "txtPhone"), u"0803.123-4567a"_s);
    EXPECT_EQ(edit(&s, "txtPhone")->text(), u"08031234567"_s);
}

TEST_P(RegistrationScreen, NeonateCannotShowTheAdmissionClinicAndOtherMaturitiesClearIt)
{
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    pick(&s, "cboPat", u"DANBURY"_s);
    pick(&s, "cboClin", u"EYE CLINIC"_s);
    ASSERT_EQ(combo(&s, "cboClin")->currentText(), u"EYE CLINIC"_s);
    pick(&s, "cboMat", u"NEONATE"_s);
    // "(IN-PATIENT)" is not on the list, so the setting cannot take effect.
    EXPECT_NE(combo(&s, "cboClin")->currentText(), u"(IN-PATIENT)"_s);
    EXPECT_EQ(combo(&s, "cboClin")->currentText(), u"EYE CLINIC"_s);
    pick(&s, "cboMat", u"ADULT"_s);
    EXPECT_EQ(combo(&s, "cboClin")->currentIndex(), -1);
    EXPECT_EQ(combo(&s, "cboDoc")->count(), 0);
}

TEST_P(RegistrationScreen, PurposeShowsTheScreeningOrConsultationFee)
{
    ws->exec(
        u"INSERT INTO hClinicPurpose (Purpose) VALUES ('EXEC-SCREENING'), "
        "('(CONSULTATION)')"_s);
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    pick(&s, "cboPat", u"DANBURY"_s);
    pick(&s, "cboPurpose", u"EXEC-SCREENING"_s);
    EXPECT_EQ(s.selectedPurpose(), u"SCREENING"_s);
    EXPECT_DOUBLE_EQ(s.screeningAmount(), 15000);
    EXPECT_EQ(child<QLabel>(&s, "lblAmount")->text(), u"Screening Fee: 15,000.00"_s);

    pick(&s, "cboPurpose", u"(CONSULTATION)"_s);
    EXPECT_EQ(s.selectedPurpose(), u"(CONSULTATION)"_s);
    EXPECT_DOUBLE_EQ(s.screeningAmount(), 0);
    EXPECT_DOUBLE_EQ(s.consultationAmount(), 2500);

    pick(&s, "cboPat", u"AXEL"_s);  // no screening fee on file: 0
    pick(&s, "cboPurpose", u"SCREENING"_s);
    EXPECT_DOUBLE_EQ(s.screeningAmount(), 0);
    EXPECT_TRUE(desk->prompter.messages().empty());
}

TEST_P(RegistrationScreen, AppointmentNeedsAClinicThatHasDays)
{
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    pick(&s, "cboPat", u"DANBURY"_s);
    pick(&s, "cboPurpose", u"APPOINTMENT"_s);
    EXPECT_EQ(desk->prompter.lastText(), u"Specify Clinic"_s);
    EXPECT_EQ(s.focusWidget(), combo(&s, "cboClin"));

    desk->prompter.clear();
    pick(&s, "cboPurpose", u"CONSULTATION"_s);
    pick(&s, "cboClin", u"GENERAL"_s);  // runs on no particular days
    pick(&s, "cboPurpose", u"APPOINTMENT"_s);
    EXPECT_EQ(desk->prompter.informs(), QStringList{u"Specify Clinic"_s});

    desk->prompter.clear();
    pick(&s, "cboPurpose", u"CONSULTATION"_s);
    pick(&s, "cboClin", u"PAEDIATRICS"_s);
    pick(&s, "cboPurpose", u"APPOINTMENT"_s);
    EXPECT_TRUE(desk->prompter.informs().isEmpty());
}

TEST_P(RegistrationScreen, CarryOverDebtIsAskedOnDoubleClickButNotInEdit)
{
    addPatient({u"001/000000003"_s, u"OBI"_s});
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    auto* debt = child<QLabel>(&s, "lblDebt");
    desk->prompter.answerInput(u"1250.5"_s);
    QTest::mouseDClick(debt, Qt::LeftButton);
    EXPECT_EQ(lastBox(desk->prompter), u"Carry Over Debt|Debt"_s);
    EXPECT_EQ(debt->text(), u"1,250.50"_s);
    EXPECT_DOUBLE_EQ(s.carryOverDebt(), 1250.5);

    desk->prompter.answerInput(u"a lot"_s);
    QTest::mouseDClick(debt, Qt::LeftButton);
    EXPECT_EQ(debt->text(), u"0.00"_s);
    click(&s, "cmdCancel");

    editPatient(u"001/000000003"_s);
    QTest::mouseDClick(debt, Qt::LeftButton);
    EXPECT_EQ(desk->prompter.lastText(),
              u"Debt Information Cannot be Edited "
              "Here! Only Carry Over Debt can be "
              "Entered"_s);
    EXPECT_FALSE(desk->prompter.answersLeft());
}

TEST_P(RegistrationScreen, MatchingSurnameWarnsAndBlocksNothing)
{
    addPatient({u"001/000000004"_s, u"D'SOUZA"_s});
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    QTest::keyClicks(edit(&s, "txtsurNAme"), u"D'SOUZ"_s);
    QTest::keyClick(edit(&s, "txtsurNAme"), Qt::Key_Return);
    EXPECT_TRUE(desk->prompter.informs().isEmpty());
    QTest::keyClicks(edit(&s, "txtsurNAme"), u"A"_s);
    // The matches come up in a modal list; read it and close it as the officer would.
    QStringList shown;
    bool closed = false;
    std::function<void()> closeList = [&] {
        QWidget* list = QApplication::activeModalWidget();
        if (!list || list->objectName() != QLatin1String("frmVerify")) {
            QTimer::singleShot(10, closeList);
            return;
        }
        EXPECT_EQ(list->windowTitle(), u"Verify a Record"_s);
        const auto* m = list->findChild<QTableView*>(u"grdData"_s)->model();
        for (int r = 0; r < m->rowCount(); ++r)
            shown << m->index(r, 0).data().toString() + QLatin1Char('|') +
                         m->index(r, 2).data().toString();
        QTest::mouseClick(list->findChild<QPushButton*>(u"CancelButton"_s), Qt::LeftButton);
        closed = true;
    };
    QTimer::singleShot(0, closeList);
    QTest::keyClick(edit(&s, "txtsurNAme"), Qt::Key_Return);
    EXPECT_TRUE(closed);
    EXPECT_EQ(shown, QStringList{u"D'SOUZA|001/000000004"_s});
    EXPECT_EQ(desk->prompter.informs(),
              QStringList{u"One or more Surnames match !!! Please Confirm for "
                          "Duplicates"_s});
    EXPECT_EQ(edit(&s, "txtsurNAme")->text(), u"D'SOUZA"_s);
    EXPECT_EQ(s.mode(), frmPatientsNew::Mode::Add);
}

TEST_P(RegistrationScreen, EditNeedsAPatientAndLoadsTheRowByItsRules)
{
    PatientSeed p{u"001/000000005"_s, u"NWOSU"_s};
    p.firstName = u"[ADA] EZINNE"_s;
    addPatient(p);
    ws->exec(
        u"UPDATE hPatients SET ref = NULL, HmoRef = '', DOB = ?, "
        "introducedby = 'EMP010' WHERE PNo = ?"_s,
        {QDate(1990, 1, 15), p.pno});
    frmPatientsNew& s = open();

    click(&s, "cmdEdit");
    EXPECT_EQ(desk->prompter.lastText(), u"Specify Patient Info to Edit by Searching"_s);
    EXPECT_EQ(s.focusWidget(), edit(&s, "txtName"));
    EXPECT_EQ(s.mode(), frmPatientsNew::Mode::View);

    // Today's registrations are listed; a double click loads the row.
    auto* grid = child<QTableView>(&s, "grdData");
    ASSERT_EQ(grid->model()->rowCount(), 1);
    child<QTabWidget>(&s, "SSTab1")->setCurrentIndex(1);
    doubleClickRow(grid, 0);
    expectControls(&s, {"txtSupp=" + p.pno, "cboPat=DANBURY FLOUR MILLS [0002]",
                        "cboClient=CORPORATE", "cboRef=NO", "cboRefHmo=NO", "cboNew=NEW",
                        "cboIntro=O'NEILL GRACE [EMP010]", "dtDate=1990-01-15"});
    EXPECT_TRUE(child<QPushButton>(&s, "cmdANC")->isEnabled());

    click(&s, "cmdEdit");
    EXPECT_TRUE(s.isEdit());
    EXPECT_EQ(s.mode(), frmPatientsNew::Mode::Edit);
    EXPECT_TRUE(child<QCheckBox>(&s, "chkReg")->isChecked());
    EXPECT_EQ(edit(&s, "txtfirstNAme")->text(), u"[ADA] EZINNE"_s);
}

TEST_P(RegistrationScreen, CardLookupFindsThePatientAndAttendanceHistoryFollows)
{
    addPatient({u"001/000000006"_s,
                u"OKORO"_s,
                u"JOY"_s,
                u"0002"_s,
                u"CORPORATE"_s,
                {},
                u"MALE"_s,
                QDate(2025, 5, 1)});
    addVisit(u"001/000000006"_s, QDate(2025, 5, 1), QString());
    addVisit(u"001/000000006"_s, QDate(2026, 2, 3), QString());
    frmPatientsNew& s = open();
    auto* grid = child<QTableView>(&s, "grdData");
    EXPECT_EQ(grid->model()->rowCount(), 0);  // not registered today

    click(&s, "cmdCard");
    EXPECT_EQ(desk->prompter.lastText(),
              u"To locate a patient, Enter Card No and click 'Card No' Button"_s);
    click(&s, "cmdAttend");
    EXPECT_EQ(desk->prompter.lastText(), u"No Patient! Please select a Patient"_s);

    QTest::keyClicks(edit(&s, "txtName"), u"001/26/000006"_s);
    QTest::keyClick(edit(&s, "txtName"), Qt::Key_Return);
    ASSERT_EQ(grid->model()->rowCount(), 1);
    s.editVal(u"001/000000006"_s);
    EXPECT_FALSE(child<QPushButton>(&s, "cmdANC")->isEnabled());  // not a woman
    click(&s, "cmdAttend");
    auto* history = child<QTableView>(&s, "grdAttend");
    ASSERT_EQ(history->model()->rowCount(), 2);
    EXPECT_EQ(history->model()->headerData(1, Qt::Horizontal).toString(), u"AttendTime"_s);
    EXPECT_EQ(history->model()->index(0, 0).data().toString(), u"03/02/2026"_s);
}

TEST_P(RegistrationScreen, UntickingAttendanceHidesAndClearsTheVisitFields)
{
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    fillIn(&s, {"cboPat=DANBURY", "cboClin=GENERAL", "cboPurpose=REVIEW", "chkReg=0"});
    EXPECT_FALSE(child<QWidget>(&s, "fraAttd")->isVisible());
    EXPECT_EQ(combo(&s, "cboClin")->currentIndex(), -1);
    EXPECT_EQ(combo(&s, "cboPurpose")->currentIndex(), -1);
    EXPECT_EQ(combo(&s, "cboDoc")->count(), 0);
}

TEST_P(RegistrationScreen, SaveHandsTheWholeFormToTheSave)
{
    patients::RegistrationForm seen;
    int saves = 0;
    patients::setRegistrationSave([&](AppContext&, const patients::RegistrationForm& f) {
        seen = f;
        ++saves;
        return u"001/000000042"_s;
    });
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    pick(&s, "cboNew", u"NEW"_s);
    QTest::keyClicks(edit(&s, "txtsurNAme"), u"ÒKÉ"_s);
    QTest::keyClicks(edit(&s, "txtfirstNAme"), u"MARY ANN"_s);
    fillIn(&s, {"txtSex=FEMALE", "cboPat=(PRIVATE)", "cboClin=GENERAL", "cboPurpose=CONSULTATION"});
    desk->prompter.answerInput(u"500"_s);
    QTest::mouseDClick(child<QLabel>(&s, "lblDebt"), Qt::LeftButton);
    click(&s, "OKButton");
    patients::setRegistrationSave(nullptr);

    ASSERT_EQ(saves, 1);
    EXPECT_FALSE(seen.isEdit);
    EXPECT_EQ(seen.newReg, u"NEW"_s);
    EXPECT_EQ(seen.surname, u"ÒKÉ"_s);
    EXPECT_EQ(seen.selectedRetainID, u"0001"_s);
    EXPECT_EQ(seen.selectedClientCat, u"PRIVATE"_s);
    EXPECT_EQ(seen.selectedClientType, u"PRIVATE"_s);
    EXPECT_EQ(seen.expiryDate, QDate(2027, 11, 23));
    EXPECT_EQ(seen.cardNo, u"001/26/"_s);
    EXPECT_EQ(seen.clinicID, u"GEN"_s);
    EXPECT_EQ(seen.doctorEmpID, u"DOC001"_s);  // first of three, all idle
    EXPECT_EQ(seen.selectedPurpose, u"CONSULTATION"_s);
    EXPECT_DOUBLE_EQ(seen.consultationAmount, 3000);
    EXPECT_DOUBLE_EQ(seen.carryOverDebt, 500);
    EXPECT_TRUE(seen.takeAttendance);
    EXPECT_FALSE(seen.dob.isValid());
    EXPECT_EQ(s.mode(), frmPatientsNew::Mode::View);
    // A saved patient leaves the screen empty for the next one.
    expectControls(&s, {"txtSupp=", "txtsurNAme="});
}

TOLMAR_INSTANTIATE_BACKENDS(RegistrationScreen);
