// Choosing a clinic on the registration screen: the room check, the doctors in both modes,
// the least-loaded doctor, the locks and the private card; the doctors' queue; deleting a
// patient.
#include "registrationfixture.h"
#include "support/expect.h"

#include "clinical/doctorallocation.h"

#include <QApplication>
#include <QTimer>

using namespace tolmar;
using namespace tolmar::test;
using namespace Qt::StringLiterals;

namespace {

class ClinicChoice : public RegistrationTest {
protected:
    // A company patient opened for editing, so the clinic box is free.
    frmPatientsNew& editing(const PatientSeed& p)
    {
        addPatient(p);
        frmPatientsNew& s = open();
        editPatient(p.pno);
        return s;
    }
    void assignRoom(const QDate& day, const QString& room, const QString& doctor, int off = 0)
    {
        ws->exec(
            u"INSERT INTO hConRoomAssign (schdDate, ConRoomNo, docNo, isOff) "
            "VALUES (?, ?, ?, ?)"_s,
            {day, room, doctor, off});
    }
    const PatientSeed kCompany{u"001/000000010"_s, u"ABIODUN"_s};
};

}  // namespace

TEST_P(ClinicChoice, WithoutRoomsEveryDoctorOfTheClinicIsInRoomXXX)
{
    frmPatientsNew& s = editing(kCompany);
    pick(&s, "cboClin", u"GENERAL"_s);
    EXPECT_EQ(items(combo(&s, "cboDoc")),
              (QStringList{"DR CHIDI EZE @ RM XXX [DOC001]", "DR FOLAKE BAKARE @ RM XXX [DOC002]",
                           "DR IBRAHIM MUSA @ RM XXX [DOC003]"}));
    // Nobody has a patient yet: the first is taken.
    EXPECT_EQ(combo(&s, "cboDoc")->currentIndex(), 0);
    EXPECT_TRUE(desk->prompter.messages().empty());
    EXPECT_FALSE(child<QPushButton>(&s, "cmdRenew")->isEnabled());
}

TEST_P(ClinicChoice, TheLeastLoadedDoctorIsPreselectedAndEachVisitCounts)
{
    addPatient({u"001/000000011"_s, u"X"_s});
    addVisit(u"001/000000011"_s, kToday, u"DOC001"_s);
    addVisit(u"001/000000011"_s, kToday, u"DOC001"_s);
    addVisit(u"001/000000011"_s, kToday, u"DOC002"_s);
    // Visits of another day, or sent to no doctor, do not count today.
    addVisit(u"001/000000011"_s, kToday.addDays(-1), u"DOC003"_s);
    addVisit(u"001/000000011"_s, kToday.addDays(-1), u"DOC003"_s);
    addVisit(u"001/000000011"_s, kToday, QString());
    frmPatientsNew& s = editing(kCompany);
    pick(&s, "cboClin", u"GENERAL"_s);
    EXPECT_EQ(combo(&s, "cboDoc")->currentText(), u"DR IBRAHIM MUSA @ RM XXX [DOC003]"_s);

    addVisit(u"001/000000011"_s, kToday, u"DOC003"_s);
    addVisit(u"001/000000011"_s, kToday, u"DOC003"_s);
    pick(&s, "cboClin", u"EYE CLINIC"_s);
    pick(&s, "cboClin", u"GENERAL"_s);
    EXPECT_EQ(combo(&s, "cboDoc")->currentText(), u"DR FOLAKE BAKARE @ RM XXX [DOC002]"_s);

    // The view counts each doctor once a day, with nobody yet counted as 0.
    const auto rows = ws->connect()->query(
        u"SELECT EmpID, NumOfPat FROM vwDocMinNumOfPat WHERE \"Date\" = ? AND "
        "ClinicID = 'GEN' ORDER BY EmpID"_s,
        {kToday});
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows.rows[0].toInt(u"NumOfPat"), 2);
    EXPECT_EQ(rows.rows[1].toInt(u"NumOfPat"), 1);
    EXPECT_EQ(rows.rows[2].toInt(u"NumOfPat"), 2);
}

TEST_P(ClinicChoice, WithRoomsOnlyDoctorsSittingInARoomAndNotSignedOffAreListed)
{
    ws->setDefault(u"Assign_Doctors_to_Consulting_Rooms"_s, u"YES"_s);
    assignRoom(kToday.addDays(-1), u"RM 1"_s, u"DOC003"_s);
    frmPatientsNew& s = editing(kCompany);
    // The rooms screen comes up over the desk, which puts a doctor in a room there.
    QString cameUp;
    QTimer::singleShot(0, [&] {
        QWidget* rooms = QApplication::activeModalWidget();
        ASSERT_NE(rooms, nullptr);
        cameUp = rooms->windowTitle();
        pick(rooms, "cboVehNo", QStringLiteral("RM 2"));
        pick(rooms, "cboReason", QStringLiteral("DR FOLAKE BAKARE"));
        desk->prompter.answerYes();
        click(rooms, "OKButton");
        rooms->close();
    });
    pick(&s, "cboClin", QStringLiteral("GENERAL"));
    EXPECT_EQ(cameUp, QStringLiteral("Assign Doctors"));
    EXPECT_TRUE(desk->prompter.saw(QStringLiteral("Please Assign Doctors to Consulting Rooms "
                                                  "before Attendance can be Taken")));
    EXPECT_EQ(desk->prompter.messages().front().title, QStringLiteral("OK"));
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Record Succesfully saved"));
    EXPECT_EQ(combo(&s, "cboClin")->currentIndex(), -1);
    EXPECT_EQ(combo(&s, "cboDoc")->count(), 0);

    desk->prompter.clear();
    assignRoom(kToday, QStringLiteral("RM 1"), QStringLiteral("DOC001"), 1);  // signed off
    assignRoom(kToday, QStringLiteral("RM 3"), QStringLiteral("DOC003"));
    addPatient({QStringLiteral("001/000000015"), QStringLiteral("Y")});
    addVisit(QStringLiteral("001/000000015"), kToday, QStringLiteral("DOC002"));
    pick(&s, "cboClin", QStringLiteral("GENERAL"));
    EXPECT_EQ(items(combo(&s, "cboDoc")), (QStringList{"DR FOLAKE BAKARE @ RM 2 [DOC002]",
                                                        "DR IBRAHIM MUSA @ RM 3 [DOC003]"}));
    EXPECT_EQ(combo(&s, "cboDoc")->currentText(), u"DR IBRAHIM MUSA @ RM 3 [DOC003]"_s);
}

TEST_P(ClinicChoice, AClinicWithNoDoctorLeavesTheDoctorBoxEmpty)
{
    ws->exec(
        u"INSERT INTO clinicTypes (ClinicID, clinicName) "
        "VALUES ('DENTAL', 'DENTAL')"_s);
    frmPatientsNew& s = editing(kCompany);
    pick(&s, "cboClin", u"DENTAL"_s);
    EXPECT_EQ(combo(&s, "cboClin")->currentText(), u"DENTAL"_s);
    EXPECT_EQ(combo(&s, "cboDoc")->count(), 0);
    EXPECT_TRUE(desk->prompter.messages().empty());
    EXPECT_TRUE(screen->gatherForm().doctorEmpID.isEmpty());
}

TEST_P(ClinicChoice, APatientOnAdmissionIsRefusedWhileTheLockIsOn)
{
    ws->exec(
        u"INSERT INTO hAdmission (AdmDate, PNo, isDischarged) "
        "VALUES (?, ?, 0)"_s,
        {kToday.addDays(-2), kCompany.pno});
    frmPatientsNew& s = editing(kCompany);
    pick(&s, "cboClin", u"GENERAL"_s);
    ASSERT_NE(desk->prompter.last(), nullptr);
    EXPECT_EQ(desk->prompter.last()->text,
              u"This Patient is Still On Admission!! Discharge Patient Before "
              "Attendance can be Taken"_s);
    EXPECT_EQ(desk->prompter.last()->title, u"LockAttendanceForInPatients"_s);
    EXPECT_EQ(combo(&s, "cboClin")->currentIndex(), -1);
    EXPECT_EQ(combo(&s, "cboDoc")->count(), 0);
}

TEST_P(ClinicChoice, TheAdmissionLockCanBeLifted)
{
    ws->setDefault(u"LockAttendanceForInPatients"_s, u"NO"_s);
    ws->exec(
        u"INSERT INTO hAdmission (AdmDate, PNo, isDischarged) "
        "VALUES (?, ?, 0)"_s,
        {kToday, kCompany.pno});
    frmPatientsNew& s = editing(kCompany);
    pick(&s, "cboClin", u"GENERAL"_s);
    EXPECT_TRUE(desk->prompter.messages().empty());
    EXPECT_EQ(combo(&s, "cboDoc")->count(), 3);
}

TEST_P(ClinicChoice, ASecondAttendanceTodayIsRefused)
{
    // Today's visits are those of the database's own date.
    addPatient(kCompany);
    addVisit(kCompany.pno, QDate::currentDate(), QString());
    frmPatientsNew& s = open();
    editPatient(kCompany.pno);
    pick(&s, "cboClin", u"GENERAL"_s);
    ASSERT_NE(desk->prompter.last(), nullptr);
    EXPECT_EQ(desk->prompter.last()->text,
              u"Patient Attendance already Taken! Duplicate not allowed!! "
              "Proceed to see Nurse/Doctor"_s);
    EXPECT_EQ(desk->prompter.last()->title, u"LockMultipleAttendnace"_s);
    EXPECT_EQ(combo(&s, "cboClin")->currentIndex(), -1);
}

TEST_P(ClinicChoice, APrivatePatientWithoutExpiryIsSentToTheExpiryDate)
{
    PatientSeed p{u"001/000000012"_s, u"ADEWALE"_s};
    p.coyName = u"0001"_s;
    p.category = u"PRIVATE"_s;
    frmPatientsNew& s = editing(p);
    pick(&s, "cboClin", u"GENERAL"_s);
    EXPECT_EQ(desk->prompter.lastText(),
              u" Please Specify Expiration Date for this Private Patient"_s);
    EXPECT_EQ(s.focusWidget(), dateBox(&s, "dtExpDate"));
    EXPECT_EQ(combo(&s, "cboClin")->currentIndex(), -1);
}

TEST_P(ClinicChoice, AnExpiredPrivateCardIsMarkedAtOnceEvenWithoutASave)
{
    PatientSeed p{u"001/000000013"_s, u"EKANEM"_s};
    p.coyName = u"0001"_s;
    p.category = u"PRIVATE"_s;
    p.expiry = kToday;  // expiring today is expired
    frmPatientsNew& s = editing(p);
    pick(&s, "cboClin", u"GENERAL"_s);
    EXPECT_EQ(desk->prompter.lastText(), u"Patient's Card has Expired"_s);
    EXPECT_EQ(combo(&s, "cboClin")->currentIndex(), -1);
    EXPECT_TRUE(child<QPushButton>(&s, "cmdRenew")->isEnabled());
    click(&s, "cmdCancel");
    EXPECT_EQ(ws->scalar(u"SELECT expired FROM hPatients WHERE PNo = ?"_s, {p.pno}).toInt(), 1);
}

TEST_P(ClinicChoice, AValidPrivateCardPassesAndRenewalStaysOff)
{
    PatientSeed p{u"001/000000014"_s, u"UDOH"_s};
    p.coyName = u"0001"_s;
    p.category = u"PRIVATE"_s;
    p.expiry = kToday.addDays(1);
    frmPatientsNew& s = editing(p);
    pick(&s, "cboClin", u"PAEDIATRICS"_s);
    EXPECT_TRUE(desk->prompter.messages().empty());
    EXPECT_EQ(items(combo(&s, "cboDoc")), QStringList{u"DR FOLAKE BAKARE @ RM XXX [DOC002]"_s});
    EXPECT_FALSE(child<QPushButton>(&s, "cmdRenew")->isEnabled());
    EXPECT_EQ(ws->scalar(u"SELECT expired FROM hPatients WHERE PNo = ?"_s, {p.pno}).toInt(), 0);
}

TEST_P(ClinicChoice, TheQueueShowsTodayAndPurgesPastAssignments)
{
    addPatient(kCompany);
    addVisit(kCompany.pno, kToday, u"DOC002"_s, u"PAEDIATRICS"_s);
    addVisit(kCompany.pno, kToday, u"DOC002"_s, u"PAEDIATRICS"_s);
    assignRoom(kToday.addDays(-1), u"RM 1"_s, u"DOC001"_s);
    assignRoom(kToday, u"RM 4"_s, u"DOC004"_s);
    frmPatientsNew& s = open();
    auto* grid = child<QTableView>(&s, "grdDoc");
    ASSERT_EQ(grid->model()->rowCount(), 2);
    // Ordered by doctor; the idle one sitting in a room shows 0.
    EXPECT_EQ(grid->model()->index(0, 3).data().toString(), u"DR FOLAKE BAKARE"_s);
    EXPECT_EQ(grid->model()->index(0, 4).data().toInt(), 2);
    EXPECT_EQ(grid->model()->index(1, 4).data().toInt(), 0);
    EXPECT_TRUE(grid->isColumnHidden(5));
    // The captions read the same on both backends.
    QStringList captions;
    for (int c = 0; c < 5; ++c)
        captions << grid->model()->headerData(c, Qt::Horizontal).toString();
    EXPECT_EQ(captions, (QStringList{"Date", "RoomNo", "ClinicID", "Doctor", "NumOfPat"}));
    EXPECT_EQ(ws->scalar(u"SELECT COUNT(*) FROM hConRoomAssign"_s).toInt(), 1);

    doubleClickRow(grid, 1);
    EXPECT_EQ(desk->prompter.lastText(), u"This Doctor has No Patients on Queue"_s);
}

TEST_P(ClinicChoice, TheQueueKeysVisitsByTheClinicIDWhileVisitsKeepItsName)
{
    // A clinic whose ID is not its name: visits keep the name, the queue shows the ID.
    ws->exec(u"INSERT INTO clinicTypes (ClinicID, clinicName) VALUES (?, ?)"_s,
             {u"DEN"_s, u"DENTAL SURGERY"_s});
    ws->exec(u"INSERT INTO userRoleClinic (Username, ClinicID) VALUES (?, ?)"_s,
             {u"dr.eze"_s, u"DEN"_s});
    addPatient(kCompany);
    addVisit(kCompany.pno, kToday, u"DOC001"_s, u"DENTAL SURGERY"_s);
    addVisit(kCompany.pno, kToday, u"DOC001"_s, u"DENTAL SURGERY"_s);
    assignRoom(kToday, u"RM 2"_s, u"DOC001"_s);
    auto c = ws->connect();
    QStringList queue;
    for (const auto& r : c->query(clinical::DoctorAllocation::waitListSql(), {kToday}).rows)
        queue << r.text(u"ClinicID") + QLatin1Char('=') + r.text(u"NumOfPat");
    queue.sort();
    // No idle row beside the busy one; the doctor's other clinic is idle.
    EXPECT_EQ(queue, (QStringList{"DEN=2", "GEN=0"}));
    EXPECT_EQ(c->scalar(u"SELECT COUNT(*) FROM vwDocWaitingList WHERE "
                        "\"Date\" = ? AND empID = ? AND ClinicID = ?"_s,
                        {kToday, u"DOC001"_s, u"DEN"_s})
                  .toInt(),
              2);
}

// Deleting a patient.

namespace {
class PatientDelete : public RegistrationTest {};
}  // namespace

TEST_P(PatientDelete, NeedsManagementRights)
{
    ws->exec(u"DELETE FROM UserRoles WHERE RoleID = 2 AND Username = 'demo'"_s);
    addPatient({u"001/000000020"_s, u"OLU"_s});
    frmPatientsNew& s = open();
    s.editVal(u"001/000000020"_s);
    click(&s, "cmdDel");
    EXPECT_EQ(desk->prompter.informs(),
              QStringList{u"You dont have Permission to Reverse an Entry"_s});
    EXPECT_EQ(ws->scalar(u"SELECT COUNT(*) FROM hPatients"_s).toInt(), 1);
}

TEST_P(PatientDelete, RefusedForVitalsThenConsultationsAndNoKeepsTheRow)
{
    const QString pno = u"001/000000021"_s;
    addPatient({pno, u"OLU"_s});
    ws->exec(u"INSERT INTO hPreConsult (PNo, consultID) VALUES (?, '001000000001')"_s, {pno});
    ws->exec(u"INSERT INTO hConsulting (PNo, consultID) VALUES (?, '001000000001')"_s, {pno});
    frmPatientsNew& s = open();
    s.editVal(pno);

    desk->prompter.answerNo();
    click(&s, "cmdDel");
    EXPECT_EQ(lastBox(desk->prompter), u"Are you sure to Delete Record|Delete"_s);

    desk->prompter.answerYes();
    click(&s, "cmdDel");
    EXPECT_EQ(desk->prompter.lastText(),
              u"Patient Cannot be Deleted!!! Has Vital Signs Information"_s);
    ws->exec(u"DELETE FROM hPreConsult"_s);
    desk->prompter.answerYes();
    click(&s, "cmdDel");
    EXPECT_EQ(desk->prompter.lastText(),
              u"Patient Cannot be Deleted!!! Has Consultation Information"_s);
    EXPECT_EQ(ws->scalar(u"SELECT COUNT(*) FROM hPatients"_s).toInt(), 1);
    EXPECT_EQ(ws->scalar(u"SELECT COUNT(*) FROM hpatientsArchive"_s).toInt(), 0);
}

TEST_P(PatientDelete, ArchivesDeletesAndAuditsAndTheListKeepsTheSearch)
{
    const QString pno = u"001/000000022"_s;
    addPatient({pno, u"O'BRIEN"_s, u"[TEE]"_s});
    // Another holder of the same card, and somebody registered today under another card.
    addPatient({u"002/000000022"_s,
                u"OBI"_s,
                u"ADA"_s,
                u"0002"_s,
                u"CORPORATE"_s,
                {},
                u"FEMALE"_s,
                QDate(2025, 1, 2)});
    addPatient({u"001/000000030"_s, u"TODAY"_s});
    ws->exec(u"UPDATE hPatients SET regDate = ? WHERE PNo = ?"_s, {QDate(2025, 1, 2), pno});
    frmPatientsNew& s = open();
    QTest::keyClicks(edit(&s, "txtName"), u"001/26/000022"_s);
    QTest::keyClick(edit(&s, "txtName"), Qt::Key_Return);
    auto* list = child<QTableView>(&s, "grdData");
    ASSERT_EQ(rowCount(list), 2);
    s.editVal(pno);
    desk->prompter.answerYes();
    click(&s, "cmdDel");
    EXPECT_EQ(desk->prompter.lastText(), u" Record successfully deleted "_s);
    ASSERT_EQ(rowCount(list), 1);
    EXPECT_EQ(cellText(list, 0, u"Surname"_s), u"OBI"_s);
    EXPECT_EQ(ws->scalar(u"SELECT COUNT(*) FROM hPatients WHERE PNo = ?"_s, {pno}).toInt(), 0);
    EXPECT_EQ(
        ws->scalar(u"SELECT psurname FROM hpatientsArchive WHERE PNo = ?"_s, {pno}).toString(),
        u"O'BRIEN"_s);
    EXPECT_EQ(
        ws->scalar(u"SELECT userAction FROM AuditTrail WHERE TranCode = ?"_s, {pno}).toString(),
        u"Delete Patient: O'BRIEN [TEE] "_s);
    EXPECT_TRUE(edit(&s, "txtSupp")->text().isEmpty());
}

TOLMAR_INSTANTIATE_BACKENDS(ClinicChoice);
TOLMAR_INSTANTIATE_BACKENDS(PatientDelete);
