// Choosing a clinic on the registration screen: the room check, the doctors in both modes,
// the least-loaded doctor, the locks and the private card; the doctors' queue; deleting a
// patient.
#include "registrationfixture.h"

#include "clinical/doctorallocation.h"

#include <QApplication>
#include <QTimer>

using namespace tolmar;
using namespace tolmar::test;

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
        ws->exec(QStringLiteral("INSERT INTO hConRoomAssign (schdDate, ConRoomNo, docNo, isOff) "
                                "VALUES (?, ?, ?, ?)"),
                 {day, room, doctor, off});
    }
    const PatientSeed kCompany{QStringLiteral("001/000000010"), QStringLiteral("ABIODUN")};
};

}  // namespace

TEST_P(ClinicChoice, WithoutRoomsEveryDoctorOfTheClinicIsInRoomXXX)
{
    frmPatientsNew& s = editing(kCompany);
    pick(&s, "cboClin", QStringLiteral("GENERAL"));
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
    addPatient({QStringLiteral("001/000000011"), QStringLiteral("X")});
    addVisit(QStringLiteral("001/000000011"), kToday, QStringLiteral("DOC001"));
    addVisit(QStringLiteral("001/000000011"), kToday, QStringLiteral("DOC001"));
    addVisit(QStringLiteral("001/000000011"), kToday, QStringLiteral("DOC002"));
    // Visits of another day, or sent to no doctor, do not count today.
    addVisit(QStringLiteral("001/000000011"), kToday.addDays(-1), QStringLiteral("DOC003"));
    addVisit(QStringLiteral("001/000000011"), kToday.addDays(-1), QStringLiteral("DOC003"));
    addVisit(QStringLiteral("001/000000011"), kToday, QString());
    frmPatientsNew& s = editing(kCompany);
    pick(&s, "cboClin", QStringLiteral("GENERAL"));
    EXPECT_EQ(combo(&s, "cboDoc")->currentText(),
              QStringLiteral("DR IBRAHIM MUSA @ RM XXX [DOC003]"));

    addVisit(QStringLiteral("001/000000011"), kToday, QStringLiteral("DOC003"));
    addVisit(QStringLiteral("001/000000011"), kToday, QStringLiteral("DOC003"));
    pick(&s, "cboClin", QStringLiteral("EYE CLINIC"));
    pick(&s, "cboClin", QStringLiteral("GENERAL"));
    EXPECT_EQ(combo(&s, "cboDoc")->currentText(),
              QStringLiteral("DR FOLAKE BAKARE @ RM XXX [DOC002]"));

    // The view counts each doctor once a day, with nobody yet counted as 0.
    const auto rows = ws->connect()->query(
        QStringLiteral("SELECT EmpID, NumOfPat FROM vwDocMinNumOfPat WHERE \"Date\" = ? AND "
                       "ClinicID = 'GEN' ORDER BY EmpID"),
        {kToday});
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows.rows[0].toInt(u"NumOfPat"), 2);
    EXPECT_EQ(rows.rows[1].toInt(u"NumOfPat"), 1);
    EXPECT_EQ(rows.rows[2].toInt(u"NumOfPat"), 2);
}

TEST_P(ClinicChoice, WithRoomsOnlyDoctorsSittingInARoomAndNotSignedOffAreListed)
{
    ws->setDefault(QStringLiteral("Assign_Doctors_to_Consulting_Rooms"), QStringLiteral("YES"));
    assignRoom(kToday.addDays(-1), QStringLiteral("RM 1"), QStringLiteral("DOC003"));
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
    EXPECT_EQ(combo(&s, "cboDoc")->currentText(),
              QStringLiteral("DR IBRAHIM MUSA @ RM 3 [DOC003]"));
}

TEST_P(ClinicChoice, AClinicWithNoDoctorLeavesTheDoctorBoxEmpty)
{
    ws->exec(QStringLiteral("INSERT INTO clinicTypes (ClinicID, clinicName) "
                            "VALUES ('DENTAL', 'DENTAL')"));
    frmPatientsNew& s = editing(kCompany);
    pick(&s, "cboClin", QStringLiteral("DENTAL"));
    EXPECT_EQ(combo(&s, "cboClin")->currentText(), QStringLiteral("DENTAL"));
    EXPECT_EQ(combo(&s, "cboDoc")->count(), 0);
    EXPECT_TRUE(desk->prompter.messages().empty());
    EXPECT_TRUE(screen->gatherForm().doctorEmpID.isEmpty());
}

TEST_P(ClinicChoice, APatientOnAdmissionIsRefusedWhileTheLockIsOn)
{
    ws->exec(QStringLiteral("INSERT INTO hAdmission (AdmDate, PNo, isDischarged) "
                            "VALUES (?, ?, 0)"),
             {kToday.addDays(-2), kCompany.pno});
    frmPatientsNew& s = editing(kCompany);
    pick(&s, "cboClin", QStringLiteral("GENERAL"));
    ASSERT_NE(desk->prompter.last(), nullptr);
    EXPECT_EQ(desk->prompter.last()->text,
              QStringLiteral("This Patient is Still On Admission!! Discharge Patient Before "
                             "Attendance can be Taken"));
    EXPECT_EQ(desk->prompter.last()->title, QStringLiteral("LockAttendanceForInPatients"));
    EXPECT_EQ(combo(&s, "cboClin")->currentIndex(), -1);
    EXPECT_EQ(combo(&s, "cboDoc")->count(), 0);
}

TEST_P(ClinicChoice, TheAdmissionLockCanBeLifted)
{
    ws->setDefault(QStringLiteral("LockAttendanceForInPatients"), QStringLiteral("NO"));
    ws->exec(QStringLiteral("INSERT INTO hAdmission (AdmDate, PNo, isDischarged) "
                            "VALUES (?, ?, 0)"),
             {kToday, kCompany.pno});
    frmPatientsNew& s = editing(kCompany);
    pick(&s, "cboClin", QStringLiteral("GENERAL"));
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
    pick(&s, "cboClin", QStringLiteral("GENERAL"));
    ASSERT_NE(desk->prompter.last(), nullptr);
    EXPECT_EQ(desk->prompter.last()->text,
              QStringLiteral("Patient Attendance already Taken! Duplicate not allowed!! "
                             "Proceed to see Nurse/Doctor"));
    EXPECT_EQ(desk->prompter.last()->title, QStringLiteral("LockMultipleAttendnace"));
    EXPECT_EQ(combo(&s, "cboClin")->currentIndex(), -1);
}

TEST_P(ClinicChoice, APrivatePatientWithoutExpiryIsSentToTheExpiryDate)
{
    PatientSeed p{QStringLiteral("001/000000012"), QStringLiteral("ADEWALE")};
    p.coyName = QStringLiteral("0001");
    p.category = QStringLiteral("PRIVATE");
    frmPatientsNew& s = editing(p);
    pick(&s, "cboClin", QStringLiteral("GENERAL"));
    EXPECT_EQ(desk->prompter.lastText(),
              QStringLiteral(" Please Specify Expiration Date for this Private Patient"));
    EXPECT_EQ(s.focusWidget(), dateBox(&s, "dtExpDate"));
    EXPECT_EQ(combo(&s, "cboClin")->currentIndex(), -1);
}

TEST_P(ClinicChoice, AnExpiredPrivateCardIsMarkedAtOnceEvenWithoutASave)
{
    PatientSeed p{QStringLiteral("001/000000013"), QStringLiteral("EKANEM")};
    p.coyName = QStringLiteral("0001");
    p.category = QStringLiteral("PRIVATE");
    p.expiry = kToday;  // expiring today is expired
    frmPatientsNew& s = editing(p);
    pick(&s, "cboClin", QStringLiteral("GENERAL"));
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Patient's Card has Expired"));
    EXPECT_EQ(combo(&s, "cboClin")->currentIndex(), -1);
    EXPECT_TRUE(child<QPushButton>(&s, "cmdRenew")->isEnabled());
    click(&s, "cmdCancel");
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT expired FROM hPatients WHERE PNo = ?"),
                         {p.pno}).toInt(),
              1);
}

TEST_P(ClinicChoice, AValidPrivateCardPassesAndRenewalStaysOff)
{
    PatientSeed p{QStringLiteral("001/000000014"), QStringLiteral("UDOH")};
    p.coyName = QStringLiteral("0001");
    p.category = QStringLiteral("PRIVATE");
    p.expiry = kToday.addDays(1);
    frmPatientsNew& s = editing(p);
    pick(&s, "cboClin", QStringLiteral("PAEDIATRICS"));
    EXPECT_TRUE(desk->prompter.messages().empty());
    EXPECT_EQ(items(combo(&s, "cboDoc")),
              QStringList{QStringLiteral("DR FOLAKE BAKARE @ RM XXX [DOC002]")});
    EXPECT_FALSE(child<QPushButton>(&s, "cmdRenew")->isEnabled());
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT expired FROM hPatients WHERE PNo = ?"),
                         {p.pno}).toInt(),
              0);
}

TEST_P(ClinicChoice, TheQueueShowsTodayAndPurgesPastAssignments)
{
    addPatient(kCompany);
    addVisit(kCompany.pno, kToday, QStringLiteral("DOC002"), QStringLiteral("PAEDIATRICS"));
    addVisit(kCompany.pno, kToday, QStringLiteral("DOC002"), QStringLiteral("PAEDIATRICS"));
    assignRoom(kToday.addDays(-1), QStringLiteral("RM 1"), QStringLiteral("DOC001"));
    assignRoom(kToday, QStringLiteral("RM 4"), QStringLiteral("DOC004"));
    frmPatientsNew& s = open();
    auto* grid = child<QTableView>(&s, "grdDoc");
    ASSERT_EQ(grid->model()->rowCount(), 2);
    // Ordered by doctor; the idle one sitting in a room shows 0.
    EXPECT_EQ(grid->model()->index(0, 3).data().toString(), QStringLiteral("DR FOLAKE BAKARE"));
    EXPECT_EQ(grid->model()->index(0, 4).data().toInt(), 2);
    EXPECT_EQ(grid->model()->index(1, 4).data().toInt(), 0);
    EXPECT_TRUE(grid->isColumnHidden(5));
    // The captions read the same on both backends.
    QStringList captions;
    for (int c = 0; c < 5; ++c)
        captions << grid->model()->headerData(c, Qt::Horizontal).toString();
    EXPECT_EQ(captions, (QStringList{"Date", "RoomNo", "ClinicID", "Doctor", "NumOfPat"}));
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT COUNT(*) FROM hConRoomAssign")).toInt(), 1);

    doubleClickRow(grid, 1);
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("This Doctor has No Patients on Queue"));
}

TEST_P(ClinicChoice, TheQueueKeysVisitsByTheClinicIDWhileVisitsKeepItsName)
{
    // A clinic whose ID is not its name: visits keep the name, the queue shows the ID.
    ws->exec(QStringLiteral("INSERT INTO clinicTypes (ClinicID, clinicName) VALUES (?, ?)"),
             {QStringLiteral("DEN"), QStringLiteral("DENTAL SURGERY")});
    ws->exec(QStringLiteral("INSERT INTO userRoleClinic (Username, ClinicID) VALUES (?, ?)"),
             {QStringLiteral("dr.eze"), QStringLiteral("DEN")});
    addPatient(kCompany);
    addVisit(kCompany.pno, kToday, QStringLiteral("DOC001"), QStringLiteral("DENTAL SURGERY"));
    addVisit(kCompany.pno, kToday, QStringLiteral("DOC001"), QStringLiteral("DENTAL SURGERY"));
    assignRoom(kToday, QStringLiteral("RM 2"), QStringLiteral("DOC001"));
    auto c = ws->connect();
    QStringList queue;
    for (const auto& r : c->query(clinical::DoctorAllocation::waitListSql(), {kToday}).rows)
        queue << r.text(u"ClinicID") + QLatin1Char('=') + r.text(u"NumOfPat");
    queue.sort();
    // No idle row beside the busy one; the doctor's other clinic is idle.
    EXPECT_EQ(queue, (QStringList{"DEN=2", "GEN=0"}));
    EXPECT_EQ(c->scalar(QStringLiteral("SELECT COUNT(*) FROM vwDocWaitingList WHERE "
                                       "\"Date\" = ? AND empID = ? AND ClinicID = ?"),
                        {kToday, QStringLiteral("DOC001"), QStringLiteral("DEN")})
                  .toInt(),
              2);
}

// Deleting a patient.

namespace {
class PatientDelete : public RegistrationTest {};
}  // namespace

TEST_P(PatientDelete, NeedsManagementRights)
{
    ws->exec(QStringLiteral("DELETE FROM UserRoles WHERE RoleID = 2 AND Username = 'demo'"));
    addPatient({QStringLiteral("001/000000020"), QStringLiteral("OLU")});
    frmPatientsNew& s = open();
    s.editVal(QStringLiteral("001/000000020"));
    click(&s, "cmdDel");
    EXPECT_EQ(desk->prompter.informs(),
              QStringList{QStringLiteral("You dont have Permission to Reverse an Entry")});
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT COUNT(*) FROM hPatients")).toInt(), 1);
}

TEST_P(PatientDelete, RefusedForVitalsThenConsultationsAndNoKeepsTheRow)
{
    const QString pno = QStringLiteral("001/000000021");
    addPatient({pno, QStringLiteral("OLU")});
    ws->exec(QStringLiteral("INSERT INTO hPreConsult (PNo, consultID) VALUES (?, '001000000001')"),
             {pno});
    ws->exec(QStringLiteral("INSERT INTO hConsulting (PNo, consultID) VALUES (?, '001000000001')"),
             {pno});
    frmPatientsNew& s = open();
    s.editVal(pno);

    desk->prompter.answerNo();
    click(&s, "cmdDel");
    EXPECT_EQ(desk->prompter.last()->text, QStringLiteral("Are you sure to Delete Record"));
    EXPECT_EQ(desk->prompter.last()->title, QStringLiteral("Delete"));

    desk->prompter.answerYes();
    click(&s, "cmdDel");
    EXPECT_EQ(desk->prompter.lastText(),
              QStringLiteral("Patient Cannot be Deleted!!! Has Vital Signs Information"));
    ws->exec(QStringLiteral("DELETE FROM hPreConsult"));
    desk->prompter.answerYes();
    click(&s, "cmdDel");
    EXPECT_EQ(desk->prompter.lastText(),
              QStringLiteral("Patient Cannot be Deleted!!! Has Consultation Information"));
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT COUNT(*) FROM hPatients")).toInt(), 1);
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT COUNT(*) FROM hpatientsArchive")).toInt(), 0);
}

TEST_P(PatientDelete, ArchivesDeletesAndAuditsAndTheListKeepsTheSearch)
{
    const QString pno = QStringLiteral("001/000000022");
    addPatient({pno, QStringLiteral("O'BRIEN"), QStringLiteral("[TEE]")});
    // Another holder of the same card, and somebody registered today under another card.
    addPatient({QStringLiteral("002/000000022"), QStringLiteral("OBI"), QStringLiteral("ADA"),
                QStringLiteral("0002"), QStringLiteral("CORPORATE"), {},
                QStringLiteral("FEMALE"), QDate(2025, 1, 2)});
    addPatient({QStringLiteral("001/000000030"), QStringLiteral("TODAY")});
    ws->exec(QStringLiteral("UPDATE hPatients SET regDate = ? WHERE PNo = ?"),
             {QDate(2025, 1, 2), pno});
    frmPatientsNew& s = open();
    QTest::keyClicks(edit(&s, "txtName"), QStringLiteral("001/26/000022"));
    QTest::keyClick(edit(&s, "txtName"), Qt::Key_Return);
    auto* list = child<QTableView>(&s, "grdData");
    ASSERT_EQ(rowCount(list), 2);
    s.editVal(pno);
    desk->prompter.answerYes();
    click(&s, "cmdDel");
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral(" Record successfully deleted "));
    ASSERT_EQ(rowCount(list), 1);
    EXPECT_EQ(cellText(list, 0, QStringLiteral("Surname")), QStringLiteral("OBI"));
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT COUNT(*) FROM hPatients WHERE PNo = ?"), {pno})
                  .toInt(),
              0);
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT psurname FROM hpatientsArchive WHERE PNo = ?"),
                         {pno}).toString(),
              QStringLiteral("O'BRIEN"));
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT userAction FROM AuditTrail WHERE TranCode = ?"),
                         {pno}).toString(),
              QStringLiteral("Delete Patient: O'BRIEN [TEE] "));
    EXPECT_TRUE(edit(&s, "txtSupp")->text().isEmpty());
}

TOLMAR_INSTANTIATE_BACKENDS(ClinicChoice);
TOLMAR_INSTANTIATE_BACKENDS(PatientDelete);
