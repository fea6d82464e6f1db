// The View menu's lists: every record of a kind with the deletion of a row, and the
// patients' phone book over a span of days.
#include "support/screenkit.h"
#include "support/workspace.h"

#include "core/screenhost.h"
#include "core/ui/gridcells.h"

#include <QLabel>

using namespace tolmar;
using namespace tolmar::test;

namespace {

// A key with a quote in it: data, bound, never joined into the statement.
const QString kOddPno = QStringLiteral("001/0000'0001");

class Lists : public BackendTest {
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        desk->startUp();
    }
    // Two patients with a visit each (the second later in the day), an operation, a bill.
    void seed()
    {
        for (const char* table : {"hPatients", "hpatientsArchive", "hRecords", "hSurgery"})
            ws->exec(QStringLiteral("DELETE FROM ") + QLatin1String(table));
        const QDate t = desk->ctx.session().serverDate;
        ws->exec(QStringLiteral("INSERT INTO hPatients (PNo, psurname, pfirstName, CoyName, DOB, "
                                "oldPno) VALUES (?, 'NWOSU', 'ADA', '0001', ?, 'C/0''1'), "
                                "(?, 'ABEL', 'ÒKÉ', '0004', ?, 'C/02')"),
                 {kOddPno, t.addYears(-30).addDays(1), QStringLiteral("001/000000002"),
                  t.addYears(-41)});
        ws->exec(QStringLiteral("INSERT INTO hRecords (recDate, htime, PNo, clinicType) VALUES "
                                "(?, '08:15', ?, 'GOPD'), (?, '11:40', '001/000000002', 'GOPD')"),
                 {t, kOddPno, t});
        ws->exec(QStringLiteral("INSERT INTO hSurgery (sDate, PNo) VALUES (?, ?)"), {t, kOddPno});
        ws->exec(QStringLiteral("INSERT INTO hBilling (billNo, PNo) VALUES ('B-1', ?)"), {kOddPno});
    }
    int count(const QString& sql, const db::Params& p = {})
    {
        return ws->scalar(QStringLiteral("SELECT COUNT(*) FROM ") + sql, p).toInt();
    }
};

TEST_P(Lists, ViewRecordsDeletesTheChosenRowByItsKeyOnlyAfterYes)
{
    struct Case {
        const char* item;
        bool refresh;
        QString table, key;  // the table on show and its key
        QString first;       // the first row's key as the list orders it
        bool yes;
    };
    const std::vector<Case> cases{
        {"PATIENT", false, "hPatients", "PNo", "001/000000002", false},
        {"PATIENT", false, "hPatients", "PNo", "001/000000002", true},
        {"PATIENT", true, "hPatients", "PNo", "", true},
        {"OPERATION NOTES", false, "hSurgery", "ID", "", true},
        {"ATTENDANCE", false, "hRecords", "recID", "", true},
        {"ATTENDANCE", true, "hBilling", "ID", "", true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.item) + (c.refresh ? " refreshed" : "") + (c.yes ? "" : " No"));
        seed();
        QWidget* s = desk->ctx.screens().open(QStringLiteral("frmSearch"));
        pick(s, "cboItem", QString::fromLatin1(c.item));
        if (c.refresh)
            click(s, "cmdRefresh");
        EXPECT_EQ(child<QLabel>(s, "lblDisplay")->text(), c.item + QStringLiteral(" Records"));
        auto* grid = child<QTableView>(s, "grdData");
        const bool attendance = c.table == QLatin1String("hRecords");
        EXPECT_EQ(grid->isColumnHidden(grid::columnOf(grid->model(), c.key)), attendance);
        if (attendance)  // newest time first
            EXPECT_EQ(cellText(grid, 0, QStringLiteral("htime")), QStringLiteral("11:40"));
        if (!c.first.isEmpty())
            EXPECT_EQ(cellText(grid, 0, c.key), c.first);
        const int row = c.table == QLatin1String("hPatients") ? findRow(grid, c.key, kOddPno) : 0;
        const QString key = cellText(grid, row, c.key);
        const int before = rowCount(grid);
        grid->selectRow(row);
        desk->prompter.clear();
        c.yes ? desk->prompter.answerYes() : desk->prompter.answerNo();
        click(s, "cmdEdit");  // these two do nothing; the Delete key on the grid asks
        click(s, "cmdDel");
        QTest::keyClick(grid, Qt::Key_Delete);
        ASSERT_FALSE(desk->prompter.messages().empty());
        const auto& asked = desk->prompter.messages().front();
        EXPECT_EQ(asked.title + "|" + asked.text,
                  QStringLiteral("Delete is Irreversible|Are you sure to dalete"));
        EXPECT_EQ(desk->prompter.informs(),
                  c.yes ? QStringList{QStringLiteral(" Record Deleted")} : QStringList{});
        EXPECT_EQ(count(c.table + QStringLiteral(" WHERE %1 = ?").arg(c.key), {key}), !c.yes);
        EXPECT_EQ(rowCount(grid), before - c.yes) << "the list is read again";
        if (c.table == QLatin1String("hPatients"))
            EXPECT_EQ(count(QStringLiteral("hpatientsArchive WHERE PNo = ? AND psurname = "
                                           "'NWOSU'"),
                            {kOddPno}),
                      c.yes);
        click(s, "cmdClose");
    }
}

TEST_P(Lists, PhoneBookListsTheDaysVisitorsAndRefusesAnEmptyExport)
{
    seed();
    const QDate t = desk->ctx.session().serverDate;
    ws->exec(QStringLiteral("INSERT INTO hreferal (referto, PNo, refDate) VALUES ('EYE', ?, ?)"),
             {kOddPno, t});
    QWidget* s = desk->ctx.screens().open(QStringLiteral("frmPhoneBook"));
    EXPECT_EQ(dateBox(s, "dtStart")->date(), t);
    EXPECT_EQ(dateBox(s, "dtEnd")->date(), t);
    // Shown at load, by name; ages in whole years (a birthday tomorrow is not yet had).
    auto* grid = child<QTableView>(s, "grdData");
    QStringList shown;
    for (int r = 0; r < rowCount(grid); ++r)
        shown << cellText(grid, r, "FullName") + " " + cellText(grid, r, "Age") + " " +
                     cellText(grid, r, "Company");
    EXPECT_EQ(shown, (QStringList{"ABEL ÒKÉ 41 HYLOVA HMO", "NWOSU ADA 29 PRIVATE PATIENTS"}));

    struct Case {
        const char* what;
        int fromDays, toDays;
        const char* button;
        int rows;
        QString shows;
    };
    const QString book = QStringLiteral("Patients' Phone / Email Book");
    const QString referrals = QStringLiteral("Appointment/Referal Book");
    const std::vector<Case> cases{
        {"the referral book", 0, 0, "cmdExpected", 1, referrals},
        {"back to the phone book", 0, 0, "cmdReorder", 2, book},
        {"dates the wrong way round", 0, -1, "cmdReorder", 0, book},
        {"days nobody came", -3, -2, "cmdExpected", 0, referrals},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        desk->prompter.clear();
        dateBox(s, "dtStart")->setDate(t.addDays(c.fromDays));
        dateBox(s, "dtEnd")->setDate(t.addDays(c.toDays));
        click(s, c.button);
        EXPECT_TRUE(desk->prompter.messages().empty()) << desk->prompter.lastText().toStdString();
        EXPECT_EQ(rowCount(grid), c.rows);
        EXPECT_EQ(child<QLabel>(s, "lblShow")->text(), c.shows);
        for (const char* hidden : {"AttendedTo", "ID"})
            if (c.shows == referrals)
                EXPECT_TRUE(grid->isColumnHidden(grid::columnOf(grid->model(), hidden)));
    }
    // The span on show holds nobody: the export says so and writes nothing.
    click(s, "cmdExcel");
    EXPECT_EQ(desk->prompter.informs(),
              QStringList{QStringLiteral("No Records between specified Dates")});
}

TEST_P(Lists, FindARecordBySurnamePrefixOrCardShowsTheNumbers)
{
    seed();
    struct Case {
        const char* box;
        const char* button;
        QString typed;
        QStringList found;  // "surname SysNo"
    };
    const std::vector<Case> cases{
        {"txtName", "cmdName", "nwo", {"NWOSU " + kOddPno}},
        {"txtName", "cmdName", "wosu", {}},  // the first letters, not any part
        {"txtName", "cmdName", "ABEL ok", {"ABEL 001/000000002"}},
        {"TxtID", "cmdID", "C/0'1", {"NWOSU " + kOddPno}},
        {"TxtID", "cmdID", "c/02", {}},
        {"TxtID", "cmdID", " ", {}},
    };
    QWidget* s = desk->ctx.screens().open(QStringLiteral("frmFind"));
    auto* grid = child<QTableView>(s, "grdData");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.typed.toStdString());
        edit(s, c.box)->setText(c.typed);
        click(s, c.button);
        QStringList surnames, header;
        for (int r = 0; r < rowCount(grid); ++r)
            surnames << cellText(grid, r, "Surname") + " " + cellText(grid, r, "SysNo");
        EXPECT_EQ(surnames, c.found);
        for (int col = 0; col < grid->model()->columnCount(); ++col)
            header << grid->model()->headerData(col, Qt::Horizontal).toString();
        if (!c.found.isEmpty())
            EXPECT_EQ(header.join(','), "Surname,Firstname,SysNo,CardNo,homeAddress");
    }
    EXPECT_TRUE(desk->prompter.messages().empty());
}

TOLMAR_INSTANTIATE_BACKENDS(Lists);

}  // namespace
