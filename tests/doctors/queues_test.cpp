// The least-loaded doctor and the doctors' queues: the view's count (doctors with nobody
// yet, only assigned visits, only the day asked, signed-off doctors gone), two desks that
// choose a clinic at once, the rooms screen, and one doctor's waiting list opened from the
// registration screen's queue.
#include "doctorsfixture.h"

#include "clinical/doctorallocation.h"
#include "core/screenhost.h"
#include "core/ui/gridcells.h"
#include "patients/frmpatientsnew.h"
#include "patients/registrationdesk.h"

#include <QApplication>
#include <QTimer>

using namespace tolmar;
using namespace tolmar::test;

namespace {

class Queues : public DoctorsTest {
protected:
    QDate day() const { return desk->ctx.session().serverDate; }
    // "EmpID=count" of the clinic's rows of the view for the day, by EmpID.
    QStringList counts(const QString& clinic)
    {
        QStringList out;
        const auto rows = ws->connect()->query(
            QStringLiteral("SELECT EmpID, NumOfPat FROM vwDocMinNumOfPat WHERE \"Date\" = ? "
                           "AND ClinicID = ? AND IsOff = 0 ORDER BY EmpID"),
            {day(), clinic});
        for (const auto& r : rows.rows)
            out << r.text(u"EmpID") + QLatin1Char('=') + r.text(u"NumOfPat");
        return out;
    }
    QString preselected(AppContext& ctx)
    {
        patients::ClinicRequest req{QStringLiteral("GEN"), QString(), QStringLiteral("0002"), {}};
        patients::ClinicChoice choice;
        patients::chooseClinic(ctx, req, choice);
        return choice.preselected < 0 ? QString() : choice.doctors[choice.preselected].empID;
    }
};

struct Visit {
    const char* doctor;
    int patVal;
    int daysAgo;
};
struct Room {
    const char* doctor;
    int off;
};
struct CountCase {
    const char* name;
    std::vector<Visit> visits;
    std::vector<Room> rooms;  // none: the clinic's doctors without rooms
    QStringList counts;       // the view's rows for GEN today, signed-off doctors left out
    QString preselected;
};

}  // namespace

TEST_P(Queues, TheViewCountsTheDayAskedAndThePreselectionFollowsIt)
{
    const std::vector<CountCase> cases = {
        {"a doctor with nobody yet is there with 0",
         {{"DOC001", 1, 0}, {"DOC001", 1, 0}, {"DOC002", 1, 0}},
         {},
         {"DOC001=2", "DOC002=1", "DOC003=0"},
         "DOC003"},
        {"only visits sent to the doctor count, and only today's",
         {{"DOC003", 0, 0}, {"DOC003", 0, 0}, {"DOC001", 1, 0}, {"DOC002", 1, 0},
          {"DOC003", 1, 1}, {"DOC003", 1, 1}},
         {},
         {"DOC001=1", "DOC002=1", "DOC003=0"},
         "DOC003"},
        {"a signed-off doctor drops out of the list and the choice at once",
         {{"DOC001", 1, 0}, {"DOC003", 1, 0}, {"DOC003", 1, 0}},
         {{"DOC001", 0}, {"DOC002", 1}, {"DOC003", 0}},
         {"DOC001=1", "DOC003=2"},
         "DOC001"},
    };
    for (const CountCase& c : cases) {
        SCOPED_TRACE(c.name);
        ws->exec(QStringLiteral("DELETE FROM hRecords"));
        ws->exec(QStringLiteral("DELETE FROM hConRoomAssign"));
        ws->exec(QStringLiteral("DELETE FROM hPatients"));
        desk->ctx.session().defaults.Assign_Doctors_to_Consulting_Rooms =
            c.rooms.empty() ? QStringLiteral("NO") : QStringLiteral("YES");
        for (const Visit& v : c.visits)
            addVisit(day().addDays(-v.daysAgo), QString::fromLatin1(v.doctor), v.patVal);
        int n = 0;
        for (const Room& r : c.rooms)
            assignRoom(day(), QStringLiteral("RM %1").arg(++n), QString::fromLatin1(r.doctor),
                       r.off);
        EXPECT_EQ(counts(QStringLiteral("GEN")), c.counts);
        EXPECT_EQ(preselected(desk->ctx), c.preselected);
        if (!c.rooms.empty()) {
            QStringList listed;
            for (const auto& d : clinical::DoctorAllocation(desk->ctx.db(), day(), true)
                                     .doctorsFor(QStringLiteral("GEN")))
                listed << d.empID;
            EXPECT_FALSE(listed.contains(QStringLiteral("DOC002")));
        }
    }
}

TEST_P(Queues, TwoDesksChoosingAtOncePreselectTheSameDoctorAndTheCountCatchesUp)
{
    Desk other(*ws);
    other.startUp();
    addVisit(day(), QStringLiteral("DOC001"));
    addVisit(day(), QStringLiteral("DOC002"));
    // Nothing is reserved between the choice and the save.
    const QString first = preselected(desk->ctx);
    EXPECT_EQ(first, QStringLiteral("DOC003"));
    EXPECT_EQ(preselected(other.ctx), first);
    addVisit(day(), first);
    addVisit(day(), first);
    EXPECT_EQ(counts(QStringLiteral("GEN")),
              (QStringList{"DOC001=1", "DOC002=1", "DOC003=2"}));
    EXPECT_NE(preselected(other.ctx), first);
}

TEST_P(Queues, TheRoomsScreenSavesEditsSignsOffAndDeletesAndPurgesPastDays)
{
    assignRoom(day().addDays(-1), QStringLiteral("RM 1"), QStringLiteral("DOC001"));
    QWidget* s = open("frmSchedDoctor");
    auto* grid = child<QTableView>(s, "grdData");
    EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM hConRoomAssign")), 0);

    // The checks, in order; nothing is asked before they pass.
    click(s, "OKButton");
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Please specify Consulting Room"));
    pick(s, "cboVehNo", QStringLiteral("RM 2"));
    click(s, "OKButton");
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Please specify Name of Doctor"));
    pick(s, "cboReason", QStringLiteral("DR IBRAHIM MUSA"));
    desk->prompter.answerYes();
    click(s, "OKButton");
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Record Succesfully saved"));
    ASSERT_EQ(rowCount(grid), 1);
    EXPECT_TRUE(grid->isColumnHidden(grid::columnOf(grid->model(), QStringLiteral("empID"))));

    editByDoubleClick(grid, 0);
    EXPECT_EQ(combo(s, "cboReason")->currentText(), QStringLiteral("DR IBRAHIM MUSA [DOC003]"));
    pick(s, "cboVehNo", QStringLiteral("RM 4"));
    desk->prompter.answerYes();
    click(s, "OKButton");
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Record Succesfully Updated"));
    EXPECT_EQ(cellText(grid, 0, QStringLiteral("RoomNo")), QStringLiteral("RM 4"));
    EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM hConRoomAssign")), 1);

    grid->selectRow(0);
    desk->prompter.answerYes();
    click(s, "cmdOff");
    EXPECT_EQ(desk->prompter.messages().at(desk->prompter.messages().size() - 2).text,
              QStringLiteral("Are you sure Dr DR IBRAHIM MUSA has Closed for the Day"));
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral(" Record successfully Updated "));
    EXPECT_TRUE(clinical::DoctorAllocation(desk->ctx.db(), day(), true)
                    .doctorsFor(QStringLiteral("GEN"))
                    .empty());

    // Another desk removes the row meanwhile: the edit is refused and writes nothing.
    editByDoubleClick(grid, 0);
    ws->exec(QStringLiteral("DELETE FROM hConRoomAssign"));
    desk->prompter.answerYes();
    click(s, "OKButton");
    EXPECT_TRUE(desk->prompter.lastText().contains(QStringLiteral("no longer on file")));
    EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM hConRoomAssign")), 0);

    assignRoom(day(), QStringLiteral("RM 3"), QStringLiteral("DOC002"));
    QMetaObject::invokeMethod(s, "fillGrid");
    grid->selectRow(0);
    desk->prompter.answerYes();
    click(s, "cmdDel");
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral(" Record successfully deleted "));
    EXPECT_EQ(rowCount(grid), 0);
    close(s);
}

TEST_P(Queues, ADoubleClickOnTheQueueShowsThatDoctorsWaitingPatients)
{
    addVisit(day(), QStringLiteral("DOC002"));
    addVisit(day(), QStringLiteral("DOC002"));
    addVisit(day(), QStringLiteral("DOC002"), 1, QStringLiteral("PAEDIATRICS"));
    addVisit(day(), QStringLiteral("DOC001"));
    frmPatientsNew registration(desk->ctx);
    registration.show();
    auto* queue = child<QTableView>(&registration, "grdDoc");
    QStringList shown;
    QTimer::singleShot(0, [&] {
        QWidget* w = QApplication::activeModalWidget();
        ASSERT_NE(w, nullptr);
        EXPECT_EQ(w->windowTitle(), QStringLiteral("Waiting List Details"));
        auto* list = child<QTableView>(w, "dGexp");
        for (int r = 0; r < rowCount(list); ++r)
            shown << cellText(list, r, QStringLiteral("Doctor")) + QLatin1Char('/') +
                         cellText(list, r, QStringLiteral("Patient"));
        w->close();
    });
    // The only row with two waiting: Dr Bakare at GENERAL (her PAEDIATRICS row has one).
    const int bakare = findRow(queue, QStringLiteral("NumOfPat"), QStringLiteral("2"));
    ASSERT_GE(bakare, 0);
    doubleClickRow(queue, bakare);
    EXPECT_EQ(shown, (QStringList{"DR FOLAKE BAKARE/O'KAFOR 1 ADA",
                                  "DR FOLAKE BAKARE/O'KAFOR 2 ADA"}));
}

TOLMAR_INSTANTIATE_BACKENDS(Queues);
