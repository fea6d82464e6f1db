// Client companies and HMOs: codes, the client screen's checks and writes, the refusal to
// delete a payer that patients hold, the receivable account, the account picker, the scheme
// rows and the residential areas.
#include "support/screenkit.h"
#include "support/workspace.h"

#include "billing/frmrevacctselect.h"
#include "core/command.h"
#include "core/financialperiod.h"
#include "core/sheetexport.h"
#include "payers/frmareas.h"
#include "payers/frmretainership.h"
#include "payers/frmretainershipupddb.h"
#include "payers/retainership.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QProcess>

using namespace tolmar;
using namespace tolmar::test;
using db::Database;

namespace {

class Clients : public BackendTest {
protected:
    void start()
    {
        desk->startUp();
        desk->prompter.clear();
    }
    QString text(const QString& sql, const db::Params& p = {}, Database which = Database::Hospital)
    {
        return ws->scalar(sql, p, which).toString();
    }
    int count(const QString& sql, const db::Params& p = {}, Database which = Database::Hospital)
    {
        return ws->scalar(sql, p, which).toInt();
    }
    void addPatientOf(const QString& retainID)
    {
        ws->exec(QStringLiteral("INSERT INTO hPatients (PNo, psurname, pfirstName, CoyName) "
                                "VALUES (?, ?, ?, ?)"),
                 {QStringLiteral("001/000000001"), QStringLiteral("ADEBAYO"),
                  QStringLiteral("KEMI"), retainID});
    }
    ClientFields fields(const QString& name)
    {
        ClientFields f;
        f.name = name;
        f.clientType = QStringLiteral("COMPANY");
        f.address = QStringLiteral("2 BROAD STREET, LAGOS");
        f.active = QStringLiteral("YES");
        return f;
    }
};

// --- codes ----------------------------------------------------------------------------------

TEST_P(Clients, CodesCountOnFromTheHighestFourDigitEnding)
{
    start();
    Retainership clients(desk->ctx);
    // The demo's billing codes ("PVT", "DANG", "O'DEX") take no part; 0015 is the highest.
    EXPECT_EQ(clients.genIDNoMain(), QStringLiteral("0016"));

    desk->ctx.session().defaults.Coy_Code = QStringLiteral("LONG");
    desk->ctx.session().hospID = QStringLiteral("001");
    const QString longCode = clients.genIDNoMain();
    EXPECT_EQ(longCode, QStringLiteral("0010016"));
    EXPECT_EQ(longCode.size(), 7);  // the longest the registration screen takes

    // Long and short codes share one count.
    ws->exec(QStringLiteral("INSERT INTO hRetainership (retainID, retainCode, retainName) "
                            "VALUES (?, ?, ?)"),
             {longCode, longCode, QStringLiteral("LONG CODE LTD")});
    desk->ctx.session().defaults.Coy_Code = QStringLiteral("SHORT");
    EXPECT_EQ(clients.genIDNoMain(), QStringLiteral("0017"));
}

TEST_P(Clients, AnEmptyClientTableStartsAt0001)
{
    start();
    ws->exec(QStringLiteral("DELETE FROM hRetainership"));
    EXPECT_EQ(Retainership(desk->ctx).genIDNoMain(), QStringLiteral("0001"));
}

// --- the client screen -----------------------------------------------------------------------

TEST_P(Clients, SaveChecksInOrderThenAddsWithTheNextCode)
{
    start();
    frmRetainership screen(desk->ctx);
    screen.show();
    click(&screen, "cmdAdd");
    EXPECT_EQ(child<QLineEdit>(&screen, "txtCon")->text(), QStringLiteral("0"));
    struct Step {
        const char* message;
        const char* focus;
        std::function<void()> fix;
    };
    const Step steps[] = {
        {"Company Name cannot be empty", "txtName",
         [&] {
             QTest::keyClicks(child<QLineEdit>(&screen, "txtName"), "ACME [NIG] O'NEIL & SONS");
         }},
        {"Client Type cannot be empty", "cboClient",
         [&] { child<QComboBox>(&screen, "cboClient")->setCurrentText(QStringLiteral("HMO")); }},
        {"Company Address cannot be empty", "txtAddress",
         [&] { QTest::keyClicks(child<QLineEdit>(&screen, "txtAddress"), "  9 AWOLOWO RD  "); }},
        {"Is Client Active? Please Specify", "cboYes",
         [&] { child<QComboBox>(&screen, "cboYes")->setCurrentText(QStringLiteral("YES")); }},
    };
    for (const Step& s : steps) {
        desk->prompter.clear();
        click(&screen, "OKButton");
        EXPECT_EQ(desk->prompter.lastText(), QString::fromLatin1(s.message));
        EXPECT_EQ(screen.focusWidget()->objectName(), QString::fromLatin1(s.focus));
        s.fix();
    }
    desk->prompter.clear();
    child<QLineEdit>(&screen, "txtReg")->setText(QStringLiteral("2500"));
    click(&screen, "OKButton");
    EXPECT_EQ(desk->prompter.informs(), QStringList{QStringLiteral("Record Succesfully saved")});
    EXPECT_EQ(screen.mode(), frmRetainership::Mode::View);
    EXPECT_TRUE(child<QLineEdit>(&screen, "txtName")->text().isEmpty());

    auto conn = ws->connect();
    const auto row =
        conn->queryOne(QStringLiteral("SELECT * FROM hRetainership WHERE retainID = ?"),
                       {QStringLiteral("0016")});
    ASSERT_TRUE(row);
    // Brackets would cut the name short in "{name} [{code}]" lists: they become blanks.
    EXPECT_EQ(row->text(u"retainName"), QStringLiteral("ACME  NIG  O'NEIL & SONS"));
    EXPECT_EQ(row->text(u"retainCode"), QStringLiteral("0016"));
    EXPECT_EQ(row->text(u"clientCatID"), QStringLiteral("HMO"));
    EXPECT_EQ(row->text(u"Address"), QStringLiteral("9 AWOLOWO RD"));
    EXPECT_EQ(row->text(u"BillEndDate"), QStringLiteral("31"));  // blank month ending
    EXPECT_EQ(row->toDouble(u"RegAmount"), 2500);
    EXPECT_EQ(row->toDouble(u"ConAmount"), 0);
    EXPECT_EQ(row->date(u"RetainDate"), QDate(2026, 11, 23));
    EXPECT_TRUE(row->text(u"AcctID").isEmpty());  // posting is off
    EXPECT_EQ(count(QStringLiteral("SELECT count(*) FROM AuditTrail WHERE userAction = ? "
                                   "AND TranCode = ?"),
                    {QStringLiteral("Add Client Info: ACME  NIG  O'NEIL & SONS"),
                     QStringLiteral("0016")}),
              1);
    // The new client is on the list, and the live filter finds it by any part of its name.
    auto* grid = child<QTableView>(&screen, "grdData");
    EXPECT_GE(findRow(grid, QStringLiteral("retainID"), QStringLiteral("0016")), 0);
    QTest::keyClicks(child<QLineEdit>(&screen, "txtSearch"), "o'neil &");
    ASSERT_EQ(rowCount(grid), 1);
    EXPECT_EQ(cellText(grid, 0, QStringLiteral("retainID")), QStringLiteral("0016"));
    // "%" is a character like any other, not a wildcard.
    child<QLineEdit>(&screen, "txtSearch")->setText(QStringLiteral("%"));
    EXPECT_EQ(rowCount(grid), 0);
    child<QLineEdit>(&screen, "txtSearch")->clear();
    EXPECT_EQ(rowCount(grid), count(QStringLiteral("SELECT count(*) FROM hRetainership")));
}

TEST_P(Clients, EditAndDeleteWithNothingPickedSayWhatToPick)
{
    start();
    frmRetainership clients(desk->ctx);
    frmAreas areas(desk->ctx);
    // One client left on the list, none picked: the buttons still say what to do first.
    QTest::keyClicks(child<QLineEdit>(&clients, "txtSearch"), "hylova");
    ASSERT_EQ(rowCount(child<QTableView>(&clients, "grdData")), 1);
    const int payers = count(QStringLiteral("SELECT count(*) FROM hRetainership"));
    const int areasBefore = count(QStringLiteral("SELECT count(*) FROM hPatientArea"));
    struct Case {
        QWidget* screen;
        const char* button;
        const char* message;
        const char* focus;
    };
    const Case cases[] = {
        {&clients, "cmdEdit", "No Company to Edit. Select a Company in the list first", "grdData"},
        {&clients, "cmdDel", "No Company to Delete. Select a Company in the list first",
         "grdData"},
        {&areas, "cmdEdit", "No Area to Edit. Select an Area in the list first", "lstAreas"},
        {&areas, "cmdDel", "No Area to Delete. Select an Area in the list first", "lstAreas"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.button);
        c.screen->show();
        desk->prompter.clear();
        click(c.screen, c.button);
        EXPECT_EQ(desk->prompter.informs(), QStringList{QString::fromLatin1(c.message)});
        EXPECT_EQ(c.screen->focusWidget()->objectName(), QString::fromLatin1(c.focus));
        EXPECT_TRUE(child<QPushButton>(c.screen, "cmdAdd")->isEnabled());  // still browsing
    }
    EXPECT_EQ(count(QStringLiteral("SELECT count(*) FROM hRetainership")), payers);
    EXPECT_EQ(count(QStringLiteral("SELECT count(*) FROM hPatientArea")), areasBefore);
}

TEST_P(Clients, ACompanyNameAlreadyOnTheListIsSavedAgainOnlyOnYes)
{
    start();
    Retainership(desk->ctx).add(fields(QStringLiteral("ACME [NIG] LTD")));  // 0016
    frmRetainership screen(desk->ctx);
    screen.show();
    const QString question =
        QStringLiteral("A company with this name already exists (code 0016). Save another?");
    // No keeps the form as typed and writes nothing; Yes saves a second client.
    for (const bool yes : {false, true}) {
        SCOPED_TRACE(yes);
        if (screen.mode() == frmRetainership::Mode::View) {
            click(&screen, "cmdAdd");
            QTest::keyClicks(child<QLineEdit>(&screen, "txtName"), "acme  nig  ltd");
            child<QComboBox>(&screen, "cboClient")->setCurrentText(QStringLiteral("COMPANY"));
            QTest::keyClicks(child<QLineEdit>(&screen, "txtAddress"), "1 MARINA");
            child<QComboBox>(&screen, "cboYes")->setCurrentText(QStringLiteral("YES"));
        }
        desk->prompter.clear();
        yes ? desk->prompter.answerYes() : desk->prompter.answerNo();
        click(&screen, "OKButton");
        ASSERT_FALSE(desk->prompter.messages().empty());
        EXPECT_EQ(desk->prompter.messages().front().text, question);
        EXPECT_EQ(count(QStringLiteral("SELECT count(*) FROM hRetainership WHERE "
                                       "upper(retainName) = ?"),
                        {QStringLiteral("ACME  NIG  LTD")}),
                  yes ? 2 : 1);
        EXPECT_EQ(screen.mode(),
                  yes ? frmRetainership::Mode::View : frmRetainership::Mode::Add);
    }
    EXPECT_EQ(text(QStringLiteral("SELECT max(retainID) FROM hRetainership WHERE "
                                  "retainName = ?"),
                   {QStringLiteral("acme  nig  ltd")}),
              QStringLiteral("0017"));
}

TEST_P(Clients, ACodeAnotherDeskTookMeanwhileIsRefusedInWords)
{
    start();
    // Another desk saves under the same code between this desk's count and its insert.
    struct OtherDesk : db::StatementObserver {
        const Workspace* ws = nullptr;
        bool done = false;
        void statement(const db::Connection&, const QString& sql, const db::Params& p) override
        {
            if (done || !sql.startsWith(QLatin1String("INSERT INTO hRetainership")))
                return;
            done = true;
            ws->exec(QStringLiteral("INSERT INTO hRetainership (retainID, retainCode, "
                                    "retainName) VALUES (?, ?, ?)"),
                     {p.at(1), p.at(0), QStringLiteral("OTHER DESK")});
        }
    } other;
    other.ws = ws.get();
    db::observeStatements(&other);
    std::optional<QString> refusal;
    try {
        Retainership(desk->ctx).add(fields(QStringLiteral("NEW CLIENT")));
    } catch (const CheckFailed& refused) {
        refusal = refused.message();
    }
    db::observeStatements(nullptr);
    EXPECT_EQ(refusal, QStringLiteral("Another desk has just saved a company under code 0016. "
                                      "Press Save again to take the next code."));
    EXPECT_EQ(text(QStringLiteral("SELECT retainName FROM hRetainership WHERE retainID = ?"),
                   {QStringLiteral("0016")}),
              QStringLiteral("OTHER DESK"));
}

TEST_P(Clients, EditWritesTheFieldsButNeitherCodeNorAccount)
{
    start();
    frmRetainership screen(desk->ctx);
    auto* grid = child<QTableView>(&screen, "grdData");
    const int row = findRow(grid, QStringLiteral("retainID"), QStringLiteral("0009"));
    ASSERT_GE(row, 0);
    grid->selectRow(row);
    click(&screen, "cmdEdit");
    EXPECT_EQ(child<QLineEdit>(&screen, "txtName")->text(), QStringLiteral("LEAMORE HEALTH"));
    EXPECT_EQ(child<QComboBox>(&screen, "cboNum")->currentText(), QStringLiteral("31"));
    EXPECT_TRUE(child<QLineEdit>(&screen, "txtAcctNo")->isReadOnly());
    child<QLineEdit>(&screen, "txtName")->setText(QStringLiteral("LEAMORE HEALTH [HMO] LTD"));
    child<QComboBox>(&screen, "cboNum")->setCurrentText(QStringLiteral("25"));
    child<QLineEdit>(&screen, "txtCon")->setText(QStringLiteral("4000.50"));
    click(&screen, "OKButton");
    EXPECT_EQ(desk->prompter.informs(), QStringList{QStringLiteral("Record Succesfully Updated")});
    auto conn = ws->connect();
    const auto r = conn->queryOne(QStringLiteral("SELECT * FROM hRetainership WHERE retainID = ?"),
                                  {QStringLiteral("0009")});
    EXPECT_EQ(r->text(u"retainName"), QStringLiteral("LEAMORE HEALTH  HMO  LTD"));
    EXPECT_EQ(r->text(u"BillEndDate"), QStringLiteral("25"));
    EXPECT_DOUBLE_EQ(r->toDouble(u"ConAmount"), 4000.5);
    EXPECT_EQ(r->text(u"AcctID"), QStringLiteral("12000004"));
    EXPECT_EQ(count(QStringLiteral("SELECT count(*) FROM AuditTrail WHERE userAction = ?"),
                    {QStringLiteral("Edit Client Info: LEAMORE HEALTH  HMO  LTD")}),
              1);
}

TEST_P(Clients, APayerThatPatientsHoldCannotBeDeleted)
{
    start();
    addPatientOf(QStringLiteral("0009"));  // CoyName holds the code, not the name
    frmRetainership screen(desk->ctx);
    auto* grid = child<QTableView>(&screen, "grdData");
    grid->selectRow(findRow(grid, QStringLiteral("retainID"), QStringLiteral("0009")));
    desk->prompter.answerYes();
    click(&screen, "cmdDel");
    EXPECT_EQ(desk->prompter.messages().front().text,
              QStringLiteral("Are you sure to Delete Record"));
    EXPECT_EQ(desk->prompter.messages().front().title, QStringLiteral("Delete"));
    EXPECT_EQ(desk->prompter.lastText(),
              QStringLiteral("Client Cannot be Deleted!!! Has Patient Information"));
    EXPECT_EQ(count(QStringLiteral("SELECT count(*) FROM hRetainership WHERE retainID = '0009'")),
              1);
    EXPECT_EQ(count(QStringLiteral("SELECT count(*) FROM hRetainershipScheme "
                                   "WHERE retainID = '0009'")),
              3);

    // No is no; Yes on a payer without patients removes it with its scheme rows.
    grid = child<QTableView>(&screen, "grdData");
    grid->selectRow(findRow(grid, QStringLiteral("retainID"), QStringLiteral("0015")));
    desk->prompter.answerNo();
    click(&screen, "cmdDel");
    EXPECT_EQ(count(QStringLiteral("SELECT count(*) FROM hRetainership WHERE retainID = '0015'")),
              1);
    desk->prompter.answerYes();
    click(&screen, "cmdDel");
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral(" Record successfully deleted "));
    EXPECT_EQ(count(QStringLiteral("SELECT count(*) FROM hRetainership WHERE retainID = '0015'")),
              0);
    EXPECT_EQ(count(QStringLiteral("SELECT count(*) FROM hRetainershipScheme "
                                   "WHERE retainID = '0015'")),
              0);
    EXPECT_EQ(findRow(child<QTableView>(&screen, "grdData"), QStringLiteral("retainID"),
                      QStringLiteral("0015")),
              -1);
}

TEST_P(Clients, ExportWritesNameCodeTypePhoneAndContactByName)
{
    start();
    const db::Result rows = Retainership(desk->ctx).exportRows();
    ASSERT_EQ(rows.columns->names(),
              (QStringList{QStringLiteral("ClientName"), QStringLiteral("ClientCode"),
                           QStringLiteral("ClientType"), QStringLiteral("PhoneNo"),
                           QStringLiteral("Contact")}));
    ASSERT_EQ(int(rows.size()), count(QStringLiteral("SELECT count(*) FROM hRetainership")));
    for (size_t i = 1; i < rows.size(); ++i)
        EXPECT_LE(rows.rows[i - 1].text(u"ClientName"), rows.rows[i].text(u"ClientName"));
    const QString file = exportToSheet(desk->ctx, rows, ws->homePath(QStringLiteral("c.xlsx")));
    QProcess unzip;
    unzip.start(QStringLiteral("unzip"),
                {QStringLiteral("-p"), file, QStringLiteral("xl/sharedStrings.xml")});
    ASSERT_TRUE(unzip.waitForFinished(30000));
    const QString strings = QString::fromUtf8(unzip.readAllStandardOutput());
    EXPECT_TRUE(strings.contains(QStringLiteral("ClientCode")));
    EXPECT_TRUE(strings.contains(QStringLiteral("O&apos;DEX &amp; SONS (NIG) LTD")) ||
                strings.contains(QStringLiteral("O'DEX &amp; SONS (NIG) LTD")));
}

// --- the receivable account -----------------------------------------------------------------

class Posting : public Clients {
protected:
    void SetUp() override
    {
        Clients::SetUp();
        ws->setDefault(QStringLiteral("AcctPostOn"), QStringLiteral("True"));
    }
};

TEST_P(Posting, ANewClientGetsItsReceivableAccount)
{
    start();
    const ClientAdded added = Retainership(desk->ctx).add(fields(QStringLiteral("ZENITH PLC")));
    EXPECT_TRUE(added.accountError.isEmpty()) << added.accountError.toStdString();
    EXPECT_EQ(added.accountID, QStringLiteral("12000006"));  // after the demo's 12000005
    EXPECT_EQ(text(QStringLiteral("SELECT AcctID FROM hRetainership WHERE retainID = ?"),
                   {added.retainID}),
              QStringLiteral("12000006"));
    auto acc = ws->connect(Database::Accounting);
    const auto a =
        acc->queryOne(QStringLiteral("SELECT * FROM ChartOfAccounts WHERE AccountID = ?"),
                      {QStringLiteral("12000006")});
    ASSERT_TRUE(a);
    EXPECT_EQ(a->text(u"AccountName"), QStringLiteral("ZENITH PLC"));
    EXPECT_EQ(a->text(u"groupID"), QStringLiteral("1200"));
    EXPECT_EQ(a->text(u"AccountCat"), QStringLiteral("COMPANY"));
    EXPECT_EQ(a->text(u"AccountDesc"), QStringLiteral("CLIENT"));
    EXPECT_EQ(a->text(u"AccountAddress"), QStringLiteral("2 BROAD STREET, LAGOS"));
    EXPECT_EQ(a->text(u"Period"), QStringLiteral("NOV 2026"));
    EXPECT_EQ(a->text(u"ExtID"), added.retainID);
    EXPECT_EQ(a->text(u"ExtIDType"), QStringLiteral("RECEIVABLE"));
    EXPECT_EQ(a->text(u"UserName"), QStringLiteral("demo"));
    EXPECT_EQ(acc->scalar(QStringLiteral("SELECT AccountID FROM ChartOfAccountMaster "
                                         "ORDER BY SNo DESC LIMIT 1"))
                  .toString(),
              QStringLiteral("12000006"));
}

TEST_P(Posting, AClientWithAnAccountNumberGetsNoNewAccount)
{
    start();
    ClientFields f = fields(QStringLiteral("ZENITH PLC"));
    f.acctNo = QStringLiteral(" 11000002 ");
    const ClientAdded added = Retainership(desk->ctx).add(f);
    EXPECT_TRUE(added.accountID.isEmpty());
    EXPECT_EQ(text(QStringLiteral("SELECT AcctID FROM hRetainership WHERE retainID = ?"),
                   {added.retainID}),
              QStringLiteral("11000002"));
    EXPECT_EQ(
        count(QStringLiteral("SELECT count(*) FROM ChartOfAccounts"), {}, Database::Accounting),
        9);
}

TEST_P(Posting, ARefusedPeriodLeavesTheClientSavedWithoutAnAccount)
{
    ws->setDefault(QStringLiteral("AcctPostLastPeriodCloseDate"), QStringLiteral("2026-11-30"),
                   Database::Accounting);
    start();
    frmRetainership screen(desk->ctx);
    click(&screen, "cmdAdd");
    child<QLineEdit>(&screen, "txtName")->setText(QStringLiteral("ZENITH PLC"));
    child<QComboBox>(&screen, "cboClient")->setCurrentText(QStringLiteral("COMPANY"));
    child<QLineEdit>(&screen, "txtAddress")->setText(QStringLiteral("PLOT 84, VI"));
    child<QComboBox>(&screen, "cboYes")->setCurrentText(QStringLiteral("YES"));
    click(&screen, "OKButton");
    EXPECT_EQ(desk->prompter.informs(),
              (QStringList{kTranDateInClosedPeriod, QStringLiteral("Record Succesfully saved")}));
    EXPECT_EQ(count(QStringLiteral("SELECT count(*) FROM hRetainership WHERE retainName = ? "
                                   "AND (AcctID IS NULL OR AcctID = '')"),
                    {QStringLiteral("ZENITH PLC")}),
              1);
    EXPECT_EQ(count(QStringLiteral("SELECT count(*) FROM ChartOfAccountMaster"), {},
                    Database::Accounting),
              9);
    // The audit entry still records the client that was added.
    EXPECT_EQ(count(QStringLiteral("SELECT count(*) FROM AuditTrail WHERE userAction = ?"),
                    {QStringLiteral("Add Client Info: ZENITH PLC")}),
              1);
}

// --- picking an account ----------------------------------------------------------------------

TEST_P(Clients, ThePickerTakesOneAccountOfTheGroupBackToTheCaller)
{
    start();
    frmRetainership caller(desk->ctx);
    frmRevAcctSelect picker(
        desk->ctx, {{QStringLiteral("caller"), QStringLiteral("frmRetainership")},
                    {QStringLiteral("callerWidget"), QVariant::fromValue<QObject*>(&caller)},
                    {QStringLiteral("group"), QStringLiteral("1200")}});
    EXPECT_EQ(picker.windowTitle(), QStringLiteral("Select an Account"));
    auto* list = child<QListWidget>(&picker, "LstDate");
    ASSERT_EQ(list->count(), 5);  // the receivables only, by name
    EXPECT_EQ(list->item(0)->text(), QStringLiteral("DANBURY FLOUR MILLS [12000001]"));
    EXPECT_EQ(list->item(4)->text(), QStringLiteral("RELMONT HMO [12000003]"));
    list->item(3)->setCheckState(Qt::Checked);
    EXPECT_EQ(child<QLabel>(&picker, "lblShow")->text(), QStringLiteral("LEAMORE HEALTH"));
    list->item(1)->setCheckState(Qt::Checked);
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Only one Account at a time"));
    EXPECT_EQ(list->item(1)->checkState(), Qt::Unchecked);
    click(&picker, "cmdProcess");
    EXPECT_EQ(child<QLineEdit>(&caller, "txtAcctNo")->text(), QStringLiteral("12000004"));
    EXPECT_EQ(child<QLineEdit>(&caller, "txtName")->text(), QStringLiteral("LEAMORE HEALTH"));

    // Any other caller sees every account.
    frmRevAcctSelect all(desk->ctx, {{QStringLiteral("caller"), QStringLiteral("frmOther")}});
    EXPECT_EQ(child<QListWidget>(&all, "LstDate")->count(), 9);
}

// --- HMO schemes and areas -------------------------------------------------------------------

TEST_P(Clients, SchemeRowsAreThreePerHmoAndSavingTwiceDoesNotDoubleThem)
{
    start();
    ws->exec(
        QStringLiteral("UPDATE hRetainership SET ClientType = 'HMO' WHERE retainID = '0002'"));
    frmRetainershipUpdDB screen(desk->ctx);
    auto* grid = child<QTableView>(&screen, "grdData");
    const int hmos =
        count(QStringLiteral("SELECT count(*) FROM hRetainership WHERE ClientType = 'HMO'"));
    EXPECT_EQ(rowCount(grid), hmos);
    grid->setCurrentIndex(grid->model()->index(0, 0));
    auto* cats = child<QListWidget>(&screen, "LstDate");
    ASSERT_EQ(cats->count(), 2);
    EXPECT_EQ(cats->item(0)->text(), QStringLiteral("HEALTH MAINTENANCE ORGANISATIONS [HMO]"));
    for (int round = 0; round < 2; ++round) {
        click(&screen, "OKButton");
        EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Record Succesfully saved"));
        EXPECT_EQ(count(QStringLiteral("SELECT count(*) FROM hRetainershipScheme")), hmos * 3);
    }
    EXPECT_EQ(text(QStringLiteral("SELECT retainName FROM hRetainershipScheme WHERE retainID = "
                                  "'0002' AND clientCatID = 'FFS' AND ClientType = 'FFS'")),
              QStringLiteral("DANBURY FLOUR MILLS"));
}

TEST_P(Clients, AreasAreAddedRenamedAndDeleted)
{
    start();
    frmAreas screen(desk->ctx);
    EXPECT_EQ(screen.windowTitle(), QStringLiteral("Address Locations/Areas"));
    auto* list = child<QListWidget>(&screen, "lstAreas");
    const int before = list->count();
    click(&screen, "cmdAdd");
    click(&screen, "OKButton");
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Specify Patient Residential Area"));
    QTest::keyClicks(child<QLineEdit>(&screen, "txtName"), "OJUELEGBA");
    click(&screen, "OKButton");
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Record Succesfully saved"));
    EXPECT_EQ(list->count(), before + 1);

    list->setCurrentItem(list->findItems(QStringLiteral("YABA"), Qt::MatchExactly).front());
    click(&screen, "cmdEdit");
    child<QLineEdit>(&screen, "txtName")->setText(QStringLiteral("YABA-SABO"));
    click(&screen, "OKButton");
    EXPECT_EQ(count(QStringLiteral("SELECT count(*) FROM hPatientArea WHERE AreaName IN "
                                   "('YABA', 'YABA-SABO')")),
              1);
    EXPECT_EQ(list->findItems(QStringLiteral("YABA-SABO"), Qt::MatchExactly).size(), 1);

    // A name already on the list, added or renamed to, is refused in words the desk can
    // act on; the name stays typed and nothing is written.
    for (const char* start : {"cmdAdd", "cmdEdit"}) {
        SCOPED_TRACE(start);
        list->setCurrentItem(list->findItems(QStringLiteral("OJUELEGBA"), Qt::MatchExactly)[0]);
        click(&screen, start);
        child<QLineEdit>(&screen, "txtName")->setText(QStringLiteral("IKEJA"));
        click(&screen, "OKButton");
        EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("That area already exists"));
        EXPECT_EQ(screen.focusWidget(), child<QLineEdit>(&screen, "txtName"));
        EXPECT_EQ(child<QLineEdit>(&screen, "txtName")->text(), QStringLiteral("IKEJA"));
        EXPECT_EQ(count(QStringLiteral("SELECT count(*) FROM hPatientArea")), before + 1);
        click(&screen, "cmdCancel");
    }

    list->setCurrentItem(list->findItems(QStringLiteral("OJUELEGBA"), Qt::MatchExactly).front());
    desk->prompter.answerYes();
    click(&screen, "cmdDel");
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral(" Record successfully deleted "));
    EXPECT_EQ(list->count(), before);
}

}  // namespace

TOLMAR_INSTANTIATE_BACKENDS(Clients);
TOLMAR_INSTANTIATE_BACKENDS(Posting);
