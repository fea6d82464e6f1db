// The registration screen driven by control name: its lists and states, and what a payer, a
// category, a card duration, an age, a purpose and a debt bring with them.
#include "registrationfixture.h"

#include "patients/registrationform.h"

#include <QApplication>
#include <QTabWidget>
#include <QTimer>

#include <functional>

using namespace tolmar;
using namespace tolmar::test;

namespace {

class RegistrationScreen : public RegistrationTest {};

}  // namespace

TEST_P(RegistrationScreen, OpensLockedWithItsListsFilled)
{
    frmPatientsNew& s = open();
    EXPECT_EQ(s.windowTitle(), QStringLiteral("Patient Attendance / Registration"));
    EXPECT_EQ(s.mode(), frmPatientsNew::Mode::View);

    const QStringList payers = items(combo(&s, "cboPat"));
    ASSERT_GE(payers.size(), 8);
    EXPECT_EQ(payers.first(), QStringLiteral("(PRIVATE) [0001]"));
    EXPECT_EQ(payers.at(1), QStringLiteral("AXEL MANDRELL HEALTH [0005]"));  // by name
    EXPECT_TRUE(payers.contains(QStringLiteral("O'DEX & SONS (NIG) LTD [0007]")));

    const QStringList clinics = items(combo(&s, "cboClin"));
    EXPECT_EQ(clinics, (QStringList{"ANTE-NATAL", "EYE CLINIC", "GENERAL", "PAEDIATRICS"}));
    EXPECT_EQ(combo(&s, "cboArea")->itemText(0), QString());  // a blank first entry
    EXPECT_TRUE(items(combo(&s, "cboIntro")).contains(QStringLiteral("O'NEILL GRACE [EMP010]")));
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
    EXPECT_EQ(combo(&s, "cboRefHmo")->currentText(), QStringLiteral("NO"));
    EXPECT_EQ(edit(&s, "txtOLD")->text(), QStringLiteral("001/26/"));
    EXPECT_TRUE(edit(&s, "txtAdmitLimit")->text().isEmpty());  // limits are kept: fill it
    EXPECT_TRUE(child<QCheckBox>(&s, "chkReg")->isChecked());
    EXPECT_TRUE(ui::isBlank(dateBox(&s, "dtDate")));
    EXPECT_EQ(dateBox(&s, "dtRegDate")->date(), kToday);
    EXPECT_EQ(child<QLabel>(&s, "lblDebtCap")->text(), QStringLiteral("Carry Over Debt"));
    EXPECT_EQ(child<QLabel>(&s, "lblDebt")->text(), QStringLiteral("0.00"));
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
    QTest::keyClicks(payer->view(), QStringLiteral("dan"));
    QTest::keyClick(payer->view(), Qt::Key_Return);
    EXPECT_TRUE(payer->currentText().startsWith(QStringLiteral("DANBURY")))
        << payer->currentText().toStdString();

    click(&s, "cmdCancel");
    EXPECT_EQ(s.mode(), frmPatientsNew::Mode::View);
    EXPECT_TRUE(edit(&s, "txtOLD")->text().isEmpty());
}

TEST_P(RegistrationScreen, AdmissionLimitStartsAtZeroWhenLimitsAreNotKept)
{
    ws->setDefault(QStringLiteral("Admission_Limit_Exists"), QStringLiteral("NO"));
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    EXPECT_EQ(edit(&s, "txtAdmitLimit")->text(), QStringLiteral("0"));
}

TEST_P(RegistrationScreen, PrivateThenAnotherPayerLeavesNoExpiryAndBlankCardFields)
{
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    pick(&s, "cboPat", QStringLiteral("(PRIVATE)"));
    EXPECT_EQ(s.selectedRetainID(), QStringLiteral("0001"));
    EXPECT_EQ(combo(&s, "cboFile")->currentText(), QStringLiteral("ONE YEAR"));
    EXPECT_EQ(combo(&s, "cboClient")->currentText(), QStringLiteral("PRIVATE"));
    EXPECT_EQ(edit(&s, "txtEmp")->text(), QStringLiteral("NIL"));
    EXPECT_EQ(combo(&s, "txtPolicy")->currentText(), QStringLiteral("NIL"));
    EXPECT_EQ(combo(&s, "cboRef")->currentText(), QStringLiteral("YES"));
    EXPECT_EQ(combo(&s, "cboRefHmo")->currentText(), QStringLiteral("NO"));
    EXPECT_EQ(combo(&s, "cboCard")->currentText(), QStringLiteral("SINGLE"));
    EXPECT_EQ(dateBox(&s, "dtExpDate")->date(), QDate(2027, 11, 23));  // one year on

    pick(&s, "cboPat", QStringLiteral("DANBURY"));
    EXPECT_EQ(s.selectedRetainID(), QStringLiteral("0002"));
    EXPECT_TRUE(ui::isBlank(dateBox(&s, "dtExpDate")));
    for (const char* box : {"cboFile", "cboClient", "cboRef", "cboRefHmo", "cboCard"})
        EXPECT_EQ(combo(&s, box)->currentIndex(), -1) << box;
    EXPECT_TRUE(edit(&s, "txtEmp")->text().isEmpty());
    EXPECT_EQ(combo(&s, "txtPolicy")->count(), 0);
    // The categories now offered are the company's own.
    EXPECT_EQ(items(combo(&s, "cboClient")), (QStringList{"CORPORATE", "RETAINER"}));
}

TEST_P(RegistrationScreen, InsuranceCategoriesOpenThePayersPlans)
{
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    pick(&s, "cboPat", QStringLiteral("HYLOVA"));
    EXPECT_EQ(items(combo(&s, "cboClient")), (QStringList{"HMO", "PHIS"}));
    pick(&s, "cboClient", QStringLiteral("HMO"));
    EXPECT_EQ(s.selectedClientCat(), QStringLiteral("HMO"));
    EXPECT_EQ(s.selectedClientType(), QStringLiteral("HMO"));
    EXPECT_EQ(items(combo(&s, "txtPolicy")), (QStringList{"BRONZE [P0001]", "GOLD [P0002]"}));
    EXPECT_EQ(combo(&s, "txtPolicy")->currentIndex(), -1);  // the desk must pick one

    // An HMO referral is fee for service too, for HMO clients.
    pick(&s, "cboRefHmo", QStringLiteral("YES"));
    EXPECT_EQ(combo(&s, "cboRef")->currentText(), QStringLiteral("YES"));

    // "Show All" offers every category; an insurance category with no plan offers NIL.
    pick(&s, "cboPat", QStringLiteral("DANBURY"));
    child<QCheckBox>(&s, "chkAll")->setChecked(true);
    EXPECT_EQ(combo(&s, "cboClient")->count(), 6);
    pick(&s, "cboClient", QStringLiteral("NHIS"));
    EXPECT_EQ(items(combo(&s, "txtPolicy")), QStringList{QStringLiteral("NIL")});
    EXPECT_EQ(combo(&s, "txtPolicy")->currentText(), QStringLiteral("NIL"));
}

TEST_P(RegistrationScreen, CompanyReferralLeavesFeeForServiceAlone)
{
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    pick(&s, "cboPat", QStringLiteral("DANBURY"));
    pick(&s, "cboClient", QStringLiteral("CORPORATE"));
    EXPECT_EQ(s.selectedClientType(), QStringLiteral("COMPANY"));
    pick(&s, "cboRefHmo", QStringLiteral("YES"));
    EXPECT_EQ(combo(&s, "cboRef")->currentIndex(), -1);
}

TEST_P(RegistrationScreen, CardDurationSetsTheExpiryOnAddAndTodayOnEdit)
{
    addPatient({QStringLiteral("001/000000007"), QStringLiteral("ADEBAYO")});
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    dateBox(&s, "dtRegDate")->setDate(QDate(2026, 3, 10));
    pick(&s, "cboFile", QStringLiteral("TILL END OF YEAR"));
    EXPECT_EQ(dateBox(&s, "dtExpDate")->date(), QDate(2026, 12, 31));
    pick(&s, "cboFile", QStringLiteral("ONE YEAR"));
    EXPECT_EQ(dateBox(&s, "dtExpDate")->date(), QDate(2027, 3, 10));
    pick(&s, "cboFile", QStringLiteral("WHILE STILL IN SERVICE"));
    EXPECT_TRUE(ui::isBlank(dateBox(&s, "dtExpDate")));
    click(&s, "cmdCancel");

    editPatient(QStringLiteral("001/000000007"));
    EXPECT_TRUE(ui::isBlank(dateBox(&s, "dtExpDate")));  // loading the row sets no date
    pick(&s, "cboFile", QStringLiteral("TILL END OF YEAR"));
    EXPECT_EQ(dateBox(&s, "dtExpDate")->date(), kToday);
}

TEST_P(RegistrationScreen, TypedAgeSetsTheDateOfBirthAndTheDateShowsTheAge)
{
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    QTest::keyClicks(edit(&s, "txtAge"), QStringLiteral("30"));
    EXPECT_EQ(dateBox(&s, "dtDate")->date(), QDate(1996, 11, 23));
    EXPECT_EQ(edit(&s, "txtAge")->text(), QStringLiteral("30"));  // what was typed stays

    edit(&s, "txtAge")->clear();
    QTest::keyClicks(edit(&s, "txtAge"), QStringLiteral("thirty"));
    EXPECT_EQ(dateBox(&s, "dtDate")->date(), QDate(1996, 11, 23));

    dateBox(&s, "dtDate")->setDate(QDate(2024, 9, 12));
    EXPECT_EQ(edit(&s, "txtAge")->text(), QStringLiteral("2 yrs, 2 mths and 11 days"));
}

TEST_P(RegistrationScreen, PhoneTakesDigitsOnly)
{
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    QTest::keyClicks(edit(&s, "txtPhone"), QStringLiteral("0803.123-4567a"));
    EXPECT_EQ(edit(&s, "txtPhone")->text(), QStringLiteral("08031234567"));
}

TEST_P(RegistrationScreen, NeonateCannotShowTheAdmissionClinicAndOtherMaturitiesClearIt)
{
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    pick(&s, "cboPat", QStringLiteral("DANBURY"));
    pick(&s, "cboClin", QStringLiteral("EYE CLINIC"));
    ASSERT_EQ(combo(&s, "cboClin")->currentText(), QStringLiteral("EYE CLINIC"));
    pick(&s, "cboMat", QStringLiteral("NEONATE"));
    // "(IN-PATIENT)" is not on the list, so the setting cannot take effect.
    EXPECT_NE(combo(&s, "cboClin")->currentText(), QStringLiteral("(IN-PATIENT)"));
    EXPECT_EQ(combo(&s, "cboClin")->currentText(), QStringLiteral("EYE CLINIC"));
    pick(&s, "cboMat", QStringLiteral("ADULT"));
    EXPECT_EQ(combo(&s, "cboClin")->currentIndex(), -1);
    EXPECT_EQ(combo(&s, "cboDoc")->count(), 0);
}

TEST_P(RegistrationScreen, PurposeShowsTheScreeningOrConsultationFee)
{
    ws->exec(QStringLiteral("INSERT INTO hClinicPurpose (Purpose) VALUES ('EXEC-SCREENING'), "
                            "('(CONSULTATION)')"));
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    pick(&s, "cboPat", QStringLiteral("DANBURY"));
    pick(&s, "cboPurpose", QStringLiteral("EXEC-SCREENING"));
    EXPECT_EQ(s.selectedPurpose(), QStringLiteral("SCREENING"));
    EXPECT_DOUBLE_EQ(s.screeningAmount(), 15000);
    EXPECT_EQ(child<QLabel>(&s, "lblAmount")->text(), QStringLiteral("Screening Fee: 15,000.00"));

    pick(&s, "cboPurpose", QStringLiteral("(CONSULTATION)"));
    EXPECT_EQ(s.selectedPurpose(), QStringLiteral("(CONSULTATION)"));
    EXPECT_DOUBLE_EQ(s.screeningAmount(), 0);
    EXPECT_DOUBLE_EQ(s.consultationAmount(), 2500);

    pick(&s, "cboPat", QStringLiteral("AXEL"));  // no screening fee on file: 0
    pick(&s, "cboPurpose", QStringLiteral("SCREENING"));
    EXPECT_DOUBLE_EQ(s.screeningAmount(), 0);
    EXPECT_TRUE(desk->prompter.messages().empty());
}

TEST_P(RegistrationScreen, AppointmentNeedsAClinicThatHasDays)
{
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    pick(&s, "cboPat", QStringLiteral("DANBURY"));
    pick(&s, "cboPurpose", QStringLiteral("APPOINTMENT"));
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Specify Clinic"));
    EXPECT_EQ(s.focusWidget(), combo(&s, "cboClin"));

    desk->prompter.clear();
    pick(&s, "cboPurpose", QStringLiteral("CONSULTATION"));
    pick(&s, "cboClin", QStringLiteral("GENERAL"));  // runs on no particular days
    pick(&s, "cboPurpose", QStringLiteral("APPOINTMENT"));
    EXPECT_EQ(desk->prompter.informs(), QStringList{QStringLiteral("Specify Clinic")});

    desk->prompter.clear();
    pick(&s, "cboPurpose", QStringLiteral("CONSULTATION"));
    pick(&s, "cboClin", QStringLiteral("PAEDIATRICS"));
    pick(&s, "cboPurpose", QStringLiteral("APPOINTMENT"));
    EXPECT_TRUE(desk->prompter.informs().isEmpty());
}

TEST_P(RegistrationScreen, CarryOverDebtIsAskedOnDoubleClickButNotInEdit)
{
    addPatient({QStringLiteral("001/000000003"), QStringLiteral("OBI")});
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    auto* debt = child<QLabel>(&s, "lblDebt");
    desk->prompter.answerInput(QStringLiteral("1250.5"));
    QTest::mouseDClick(debt, Qt::LeftButton);
    ASSERT_NE(desk->prompter.last(), nullptr);
    EXPECT_EQ(desk->prompter.last()->text, QStringLiteral("Carry Over Debt"));
    EXPECT_EQ(desk->prompter.last()->title, QStringLiteral("Debt"));
    EXPECT_EQ(debt->text(), QStringLiteral("1,250.50"));
    EXPECT_DOUBLE_EQ(s.carryOverDebt(), 1250.5);

    desk->prompter.answerInput(QStringLiteral("a lot"));
    QTest::mouseDClick(debt, Qt::LeftButton);
    EXPECT_EQ(debt->text(), QStringLiteral("0.00"));
    click(&s, "cmdCancel");

    editPatient(QStringLiteral("001/000000003"));
    QTest::mouseDClick(debt, Qt::LeftButton);
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Debt Information Cannot be Edited "
                                                        "Here! Only Carry Over Debt can be "
                                                        "Entered"));
    EXPECT_FALSE(desk->prompter.answersLeft());
}

TEST_P(RegistrationScreen, MatchingSurnameWarnsAndBlocksNothing)
{
    addPatient({QStringLiteral("001/000000004"), QStringLiteral("D'SOUZA")});
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    QTest::keyClicks(edit(&s, "txtsurNAme"), QStringLiteral("D'SOUZ"));
    QTest::keyClick(edit(&s, "txtsurNAme"), Qt::Key_Return);
    EXPECT_TRUE(desk->prompter.informs().isEmpty());
    QTest::keyClicks(edit(&s, "txtsurNAme"), QStringLiteral("A"));
    // The matches come up in a modal list; read it and close it as the officer would.
    QStringList shown;
    bool closed = false;
    std::function<void()> closeList = [&] {
        QWidget* list = QApplication::activeModalWidget();
        if (!list || list->objectName() != QLatin1String("frmVerify")) {
            QTimer::singleShot(10, closeList);
            return;
        }
        EXPECT_EQ(list->windowTitle(), QStringLiteral("Verify a Record"));
        const auto* m = list->findChild<QTableView*>(QStringLiteral("grdData"))->model();
        for (int r = 0; r < m->rowCount(); ++r)
            shown << m->index(r, 0).data().toString() + QLatin1Char('|') +
                         m->index(r, 2).data().toString();
        QTest::mouseClick(list->findChild<QPushButton*>(QStringLiteral("CancelButton")),
                          Qt::LeftButton);
        closed = true;
    };
    QTimer::singleShot(0, closeList);
    QTest::keyClick(edit(&s, "txtsurNAme"), Qt::Key_Return);
    EXPECT_TRUE(closed);
    EXPECT_EQ(shown, QStringList{QStringLiteral("D'SOUZA|001/000000004")});
    EXPECT_EQ(desk->prompter.informs(),
              QStringList{QStringLiteral("One or more Surnames match !!! Please Confirm for "
                                         "Duplicates")});
    EXPECT_EQ(edit(&s, "txtsurNAme")->text(), QStringLiteral("D'SOUZA"));
    EXPECT_EQ(s.mode(), frmPatientsNew::Mode::Add);
}

TEST_P(RegistrationScreen, EditNeedsAPatientAndLoadsTheRowByItsRules)
{
    PatientSeed p{QStringLiteral("001/000000005"), QStringLiteral("NWOSU")};
    p.firstName = QStringLiteral("[ADA] EZINNE");
    addPatient(p);
    ws->exec(QStringLiteral("UPDATE hPatients SET ref = NULL, HmoRef = '', DOB = ?, "
                            "introducedby = 'EMP010' WHERE PNo = ?"),
             {QDate(1990, 1, 15), p.pno});
    frmPatientsNew& s = open();

    click(&s, "cmdEdit");
    EXPECT_EQ(desk->prompter.lastText(),
              QStringLiteral("Specify Patient Info to Edit by Searching"));
    EXPECT_EQ(s.focusWidget(), edit(&s, "txtName"));
    EXPECT_EQ(s.mode(), frmPatientsNew::Mode::View);

    // Today's registrations are listed; a double click loads the row.
    auto* grid = child<QTableView>(&s, "grdData");
    ASSERT_EQ(grid->model()->rowCount(), 1);
    child<QTabWidget>(&s, "SSTab1")->setCurrentIndex(1);
    doubleClickRow(grid, 0);
    EXPECT_EQ(edit(&s, "txtSupp")->text(), p.pno);
    EXPECT_EQ(combo(&s, "cboPat")->currentText(), QStringLiteral("DANBURY FLOUR MILLS [0002]"));
    EXPECT_EQ(combo(&s, "cboClient")->currentText(), QStringLiteral("CORPORATE"));
    EXPECT_EQ(combo(&s, "cboRef")->currentText(), QStringLiteral("NO"));
    EXPECT_EQ(combo(&s, "cboRefHmo")->currentText(), QStringLiteral("NO"));
    EXPECT_EQ(combo(&s, "cboNew")->currentText(), QStringLiteral("NEW"));
    EXPECT_EQ(combo(&s, "cboIntro")->currentText(), QStringLiteral("O'NEILL GRACE [EMP010]"));
    EXPECT_EQ(dateBox(&s, "dtDate")->date(), QDate(1990, 1, 15));
    EXPECT_TRUE(child<QPushButton>(&s, "cmdANC")->isEnabled());

    click(&s, "cmdEdit");
    EXPECT_TRUE(s.isEdit());
    EXPECT_EQ(s.mode(), frmPatientsNew::Mode::Edit);
    EXPECT_TRUE(child<QCheckBox>(&s, "chkReg")->isChecked());
    EXPECT_EQ(edit(&s, "txtfirstNAme")->text(), QStringLiteral("[ADA] EZINNE"));
}

TEST_P(RegistrationScreen, CardLookupFindsThePatientAndAttendanceHistoryFollows)
{
    addPatient({QStringLiteral("001/000000006"), QStringLiteral("OKORO"), QStringLiteral("JOY"),
                QStringLiteral("0002"), QStringLiteral("CORPORATE"), {}, QStringLiteral("MALE"),
                QDate(2025, 5, 1)});
    addVisit(QStringLiteral("001/000000006"), QDate(2025, 5, 1), QString());
    addVisit(QStringLiteral("001/000000006"), QDate(2026, 2, 3), QString());
    frmPatientsNew& s = open();
    auto* grid = child<QTableView>(&s, "grdData");
    EXPECT_EQ(grid->model()->rowCount(), 0);  // not registered today

    click(&s, "cmdCard");
    EXPECT_EQ(desk->prompter.lastText(),
              QStringLiteral("To locate a patient, Enter Card No and click 'Card No' Button"));
    click(&s, "cmdAttend");
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("No Patient! Please select a Patient"));

    QTest::keyClicks(edit(&s, "txtName"), QStringLiteral("001/26/000006"));
    QTest::keyClick(edit(&s, "txtName"), Qt::Key_Return);
    ASSERT_EQ(grid->model()->rowCount(), 1);
    s.editVal(QStringLiteral("001/000000006"));
    EXPECT_FALSE(child<QPushButton>(&s, "cmdANC")->isEnabled());  // not a woman
    click(&s, "cmdAttend");
    auto* history = child<QTableView>(&s, "grdAttend");
    ASSERT_EQ(history->model()->rowCount(), 2);
    EXPECT_EQ(history->model()->headerData(1, Qt::Horizontal).toString(),
              QStringLiteral("AttendTime"));
    EXPECT_EQ(history->model()->index(0, 0).data().toString(), QStringLiteral("03/02/2026"));
}

TEST_P(RegistrationScreen, UntickingAttendanceHidesAndClearsTheVisitFields)
{
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    pick(&s, "cboPat", QStringLiteral("DANBURY"));
    pick(&s, "cboClin", QStringLiteral("GENERAL"));
    pick(&s, "cboPurpose", QStringLiteral("REVIEW"));
    child<QCheckBox>(&s, "chkReg")->setChecked(false);
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
        return QStringLiteral("001/000000042");
    });
    frmPatientsNew& s = open();
    click(&s, "cmdAdd");
    pick(&s, "cboNew", QStringLiteral("NEW"));
    QTest::keyClicks(edit(&s, "txtsurNAme"), QStringLiteral("ÒKÉ"));
    QTest::keyClicks(edit(&s, "txtfirstNAme"), QStringLiteral("MARY ANN"));
    pick(&s, "txtSex", QStringLiteral("FEMALE"));
    pick(&s, "cboPat", QStringLiteral("(PRIVATE)"));
    pick(&s, "cboClin", QStringLiteral("GENERAL"));
    pick(&s, "cboPurpose", QStringLiteral("CONSULTATION"));
    desk->prompter.answerInput(QStringLiteral("500"));
    QTest::mouseDClick(child<QLabel>(&s, "lblDebt"), Qt::LeftButton);
    click(&s, "OKButton");
    patients::setRegistrationSave(nullptr);

    ASSERT_EQ(saves, 1);
    EXPECT_FALSE(seen.isEdit);
    EXPECT_EQ(seen.newReg, QStringLiteral("NEW"));
    EXPECT_EQ(seen.surname, QStringLiteral("ÒKÉ"));
    EXPECT_EQ(seen.selectedRetainID, QStringLiteral("0001"));
    EXPECT_EQ(seen.selectedClientCat, QStringLiteral("PRIVATE"));
    EXPECT_EQ(seen.selectedClientType, QStringLiteral("PRIVATE"));
    EXPECT_EQ(seen.expiryDate, QDate(2027, 11, 23));
    EXPECT_EQ(seen.cardNo, QStringLiteral("001/26/"));
    EXPECT_EQ(seen.clinicID, QStringLiteral("GEN"));
    EXPECT_EQ(seen.doctorEmpID, QStringLiteral("DOC001"));  // first of three, all idle
    EXPECT_EQ(seen.selectedPurpose, QStringLiteral("CONSULTATION"));
    EXPECT_DOUBLE_EQ(seen.consultationAmount, 3000);
    EXPECT_DOUBLE_EQ(seen.carryOverDebt, 500);
    EXPECT_TRUE(seen.takeAttendance);
    EXPECT_FALSE(seen.dob.isValid());
    EXPECT_EQ(s.mode(), frmPatientsNew::Mode::View);
    // A saved patient leaves the screen empty for the next one.
    EXPECT_TRUE(edit(&s, "txtSupp")->text().isEmpty());
    EXPECT_TRUE(edit(&s, "txtsurNAme")->text().isEmpty());
}

TOLMAR_INSTANTIATE_BACKENDS(RegistrationScreen);
