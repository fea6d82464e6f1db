// The clinics' set-up screens: each save's checks in order with the focus where the desk
// must type, a name already on the list refused in plain words, and renames that carry
// what hangs on the old name along.
#include "doctorsfixture.h"

#include "clinical/clinicsetup.h"
#include "core/screenhost.h"

#include <QApplication>

using namespace tolmar;
using namespace tolmar::test;

namespace {

class ClinicSetup : public DoctorsTest {
protected:
    // Picks the list row whose cell under `caption` reads `text`, and starts editing it.
    void editRow(QWidget* s, const QString& caption, const QString& text)
    {
        auto* grid = child<QTableView>(s, "grdData");
        const int r = findRow(grid, caption, text);
        ASSERT_GE(r, 0) << text.toStdString();
        grid->selectRow(r);
        click(s, "cmdEdit");
    }
};

// A field as the desk fills it: a text box, a list box (entry starting with the value) or
// the ticked days.
struct Field {
    const char* control;
    QString value;
};
void fill(QWidget* s, const std::vector<Field>& fields)
{
    for (const Field& f : fields) {
        QWidget* w = s->findChild<QWidget*>(QString::fromLatin1(f.control));
        if (auto* e = qobject_cast<QLineEdit*>(w)) {
            e->clear();
            QTest::keyClicks(e, f.value);
        } else if (qobject_cast<QComboBox*>(w)) {
            pick(s, f.control, f.value);
        } else if (auto* l = qobject_cast<QListWidget*>(w)) {
            tick(l, f.value.split(QLatin1Char(',')));
        } else {
            ADD_FAILURE() << "no control " << f.control;
        }
    }
}

struct CheckCase {
    const char* screen;
    std::vector<Field> fields;
    QString message;
    const char* focus;
};

}  // namespace

TEST_P(ClinicSetup, EachSaveChecksInOrderAndRefusesANameAlreadyOnTheList)
{
    const std::vector<CheckCase> cases = {
        {"frmConRoom", {}, "Specify  Room Name", "txtID"},
        {"frmConRoom", {{"txtID", "rm 9"}}, "Specify  Room Location", "txtLocation"},
        {"frmConRoom",
         {{"txtID", "rm 1"}, {"txtLocation", "grd flr"}},
         "A Consulting Room named RM 1 already exists",
         "txtID"},
        {"frmClinicTypes", {}, "Clinic Name field cannot be empty", "txtName"},
        {"frmClinicTypes",
         {{"txtName", "dental"}, {"txtConFee", "free"}},
         "Consultation Fee field cannot be empty! Specify zero if Fee is not charged",
         "txtConFee"},
        {"frmClinicTypes",
         {{"txtName", "dental"}, {"txtConFee", "0"}},
         "Registration Fee field cannot be empty! Specify zero if Fee is not charged",
         "txtRegFee"},
        {"frmClinicTypes",
         {{"txtName", "dental"}, {"txtConFee", "0"}, {"txtRegFee", "1,500"}},
         " please specify Name of Consultant",
         "cboRef"},
        {"frmClinicTypes",
         {{"txtName", "eye clinic"}, {"txtConFee", "0"}, {"txtRegFee", "0"},
          {"cboRef", "DR KEMI"}},
         "A Clinic named EYE CLINIC already exists",
         "txtName"},
        {"frmClinicDays", {}, "Clinic Type field cannot be empty", "cboCon"},
        {"frmClinicDays", {{"cboCon", "PAEDIATRICS"}}, "No Day is selected", "lstDays"},
        {"frmClinicDays",
         {{"cboCon", "PAEDIATRICS"}, {"lstDays", "MONDAY"}, {"txtTime", "soon"}},
         "Specify Clinic Time",
         "txtTime"},
        {"frmAttendItems", {}, "Specify Item ame", "txtName"},
        {"frmAttendItems", {{"txtName", "WALK-IN"}}, "An Item named WALK-IN already exists",
         "txtName"},
    };
    for (const CheckCase& c : cases) {
        SCOPED_TRACE(c.message.toStdString());
        QWidget* s = open(c.screen);
        fill(s, c.fields);
        desk->prompter.clear();
        click(s, "OKButton");
        ASSERT_EQ(desk->prompter.informs(), QStringList{c.message});
        ASSERT_NE(s->focusWidget(), nullptr);
        EXPECT_EQ(s->focusWidget()->objectName(), QString::fromLatin1(c.focus));
        close(s);
    }
    EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM hConsultingRooms")), 4);
    EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM clinicTypes")), 5);
    EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM hrecordsMonitor")), 3);
}

TEST_P(ClinicSetup, ARenamedClinicTakesItsDoctorsAndDaysAlongWhileVisitsKeepTheName)
{
    const QString visit = addVisit(desk->ctx.session().serverDate, QStringLiteral("DOC001"));
    ws->exec(QStringLiteral("INSERT INTO clinicDays (ClinicDay, StartTime, ClinicID, NumOfPat) "
                            "VALUES ('MONDAY', '9:00 AM', 'GEN', 0)"));
    QWidget* s = open("frmClinicTypes");
    editRow(s, QStringLiteral("ClinicName"), QStringLiteral("GENERAL"));
    EXPECT_EQ(combo(s, "cboRef")->currentText(), QStringLiteral("DR CHIDI EZE [DOC001]"));
    fill(s, {{"txtName", "general opd"}});
    click(s, "OKButton");
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Record Succesfully saved"));
    EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM clinicTypes WHERE ClinicID = ? AND "
                                   "clinicName = ? AND ConFee = 3000"),
                    {QStringLiteral("GENERAL OPD"), QStringLiteral("GENERAL OPD")}),
              1);
    EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM userRoleClinic WHERE ClinicID = ?"),
                    {QStringLiteral("GENERAL OPD")}),
              3);
    EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM clinicDays WHERE ClinicID = ?"),
                    {QStringLiteral("GENERAL OPD")}),
              1);
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT clinicType FROM hRecords WHERE consultID = ?"),
                         {visit})
                  .toString(),
              QStringLiteral("GENERAL"));
    close(s);
}

TEST_P(ClinicSetup, ClinicDaysAddOneRowPerTickedDayEachAuditedAndEditOne)
{
    QWidget* s = open("frmClinicDays");
    fill(s, {{"cboCon", "EYE CLINIC"}, {"lstDays", "MONDAY,THURSDAY"}, {"txtTime", "10:30 am"}});
    // The box lets digits and one "." through; the fraction is cut to whole patients.
    QTest::keyClicks(edit(s, "txtCon"), QStringLiteral("12.7.x"));
    EXPECT_EQ(edit(s, "txtCon")->text(), QStringLiteral("012.7"));
    click(s, "OKButton");
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Record Succesfully saved"));
    QStringList rows;
    for (const auto& r : ws->connect()
                             ->query(QStringLiteral("SELECT ClinicDay, StartTime, NumOfPat FROM "
                                                    "clinicDays WHERE ClinicID = 'EYE' "
                                                    "ORDER BY SNo"))
                             .rows)
        rows << QStringList{r.text(u"ClinicDay"), r.text(u"StartTime"), r.text(u"NumOfPat")}.join(
            QLatin1Char('|'));
    EXPECT_EQ(rows, (QStringList{"FRIDAY|8:30 AM|20", "MONDAY|10:30 AM|12",
                                 "THURSDAY|10:30 AM|12"}));
    EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM AuditTrail WHERE userAction IN (?, ?)"),
                    {QStringLiteral("Add ClinicDay EYE (10:30 AM) MONDAY"),
                     QStringLiteral("Add ClinicDay EYE (10:30 AM) THURSDAY")}),
              2);
    // While adding, the clinic picked narrows the list to its days.
    EXPECT_EQ(rowCount(child<QTableView>(s, "grdData")), 3);

    editRow(s, QStringLiteral("ClinicDay"), QStringLiteral("THURSDAY"));
    fill(s, {{"lstDays", "TUESDAY"}, {"txtCon", "abc"}});
    click(s, "OKButton");
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Record Succesfully Updated"));
    EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM clinicDays WHERE ClinicID = 'EYE' AND "
                                   "ClinicDay = 'TUESDAY' AND NumOfPat = 0")),
              1);
    close(s);

    const std::vector<std::pair<QString, int>> limits = {
        {"", 0}, {".", 0}, {"0", 0}, {"30", 30}, {"12.7", 12}, {".9", 0}, {"1.2.3", 0},
        {"abc", 0}, {"99999999999", 0}};
    for (const auto& [typed, want] : limits)
        EXPECT_EQ(clinical::patientLimit(typed), want) << typed.toStdString();
}

TEST_P(ClinicSetup, ARenamedItemTakesItsCountsAlong)
{
    ws->exec(QStringLiteral("INSERT INTO hrecordsMonitorDetails (Description, consultID, "
                            "numCount) VALUES ('WALK-IN', '001000000001', 1)"));
    QWidget* s = open("frmAttendItems");
    editRow(s, QStringLiteral("ItemName"), QStringLiteral("WALK-IN"));
    fill(s, {{"txtName", "WALK IN [DESK]"}});
    click(s, "OKButton");
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Record Succesfully saved"));
    EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM hrecordsMonitorDetails WHERE "
                                   "Description = 'WALK IN DESK'")),
              1);
    desk->prompter.answerYes();
    editRow(s, QStringLiteral("ItemName"), QStringLiteral("EMERGENCY"));
    click(s, "cmdDel");
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral(" Record successfully deleted "));
    EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM hrecordsMonitor")), 2);
    close(s);
}

TOLMAR_INSTANTIATE_BACKENDS(ClinicSetup);
