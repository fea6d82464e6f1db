// Client companies and HMOs: codes, the client screen's checks and writes, the refusal to
// delete a payer that patients hold, the receivable account, the account picker, the scheme
// rows and the residential areas.
#include "support/expect.h"

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
using namespace Qt::StringLiterals;
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
    // How many client rows and scheme rows a code has, as "clients|schemes".
    QString held(const char* retainID)
    {
        return u"%1|%2"_s
            .arg(count(u"SELECT count(*) FROM hRetainership WHERE retainID = ?"_s, {retainID}))
            .arg(count(u"SELECT count(*) FROM hRetainershipScheme WHERE retainID = ?"_s,
                       {retainID}));
    }
    void addPatientOf(const QString& retainID)
    {
        ws->exec(
            u"INSERT INTO hPatients (PNo, psurname, pfirstName, CoyName) "
            "VALUES (?, ?, ?, ?)"_s,
            {u"001/000000001"_s, u"ADEBAYO"_s, u"KEMI"_s, retainID});
    }
    ClientFields fields(const QString& name)
    {
        ClientFields f;
        f.name = name;
        f.clientType = u"COMPANY"_s;
        f.address = u"2 BROAD STREET, LAGOS"_s;
        f.active = u"YES"_s;
        return f;
    }
};

// --- codes ----------------------------------------------------------------------------------

TEST_P(Clients, CodesCountOnFromTheHighestFourDigitEnding)
{
    start();
    Retainership clients(desk->ctx);
    // The demo's billing codes ("PVT", "DANG", "O'DEX") take no part; 0015 is the highest.
    EXPECT_EQ(clients.genIDNoMain(), u"0016"_s);

    desk->ctx.session().defaults.Coy_Code = u"LONG"_s;
    desk->ctx.session().hospID = u"001"_s;
    const QString longCode = clients.genIDNoMain();
    EXPECT_EQ(longCode, u"0010016"_s);
    EXPECT_EQ(longCode.size(), 7);  // the longest the registration screen takes

    // Long and short codes share one count.
    ws->exec(
        u"INSERT INTO hRetainership (retainID, retainCode, retainName) "
        "VALUES (?, ?, ?)"_s,
        {longCode, longCode, u"LONG CODE LTD"_s});
    desk->ctx.session().defaults.Coy_Code = u"SHORT"_s;
    EXPECT_EQ(clients.genIDNoMain(), u"0017"_s);
}

TEST_P(Clients, AnEmptyClientTableStartsAt0001)
{
    start();
    ws->exec(u"DELETE FROM hRetainership"_s);
    EXPECT_EQ(Retainership(desk->ctx).genIDNoMain(), u"0001"_s);
}

// --- the client screen -----------------------------------------------------------------------

TEST_P(Clients, SaveChecksInOrderThenAddsWithTheNextCode)
{
    start();
    frmRetainership screen(desk->ctx);
    screen.show();
    click(&screen, "cmdAdd");
    EXPECT_EQ(edit(&screen, "txtCon")->text(), u"0"_s);
    struct Step {
        const char* message;
        const char* focus;
        std::function<void()> fix;
    };
    const Step steps[] = {
        {"Company Name cannot be empty", "txtName",
         [&] { QTest::keyClicks(edit(&screen, "txtName"), "ACME [NIG] O'NEIL & SONS"); }},
        {"Client Type cannot be empty", "cboClient",
         [&] { combo(&screen, "cboClient")->setCurrentText(u"HMO"_s); }},
        {"Company Address cannot be empty", "txtAddress",
         [&] { QTest::keyClicks(edit(&screen, "txtAddress"), "  9 AWOLOWO RD  "); }},
        {"Is Client Active? Please Specify", "cboYes",
         [&] { combo(&screen, "cboYes")->setCurrentText(u"YES"_s); }},
    };
    for (const Step& s : steps) {
        desk->prompter.clear();
        click(&screen, "OKButton");
        EXPECT_EQ(desk->prompter.lastText(), QString::fromLatin1(s.message));
        EXPECT_EQ(screen.focusWidget()->objectName(), QString::fromLatin1(s.focus));
        s.fix();
    }
    desk->prompter.clear();
    edit(&screen, "txtReg")->setText(u"2500"_s);
    click(&screen, "OKButton");
    EXPECT_EQ(desk->prompter.informs(), QStringList{u"Record Succesfully saved"_s});
    EXPECT_EQ(screen.mode(), frmRetainership::Mode::View);
    EXPECT_TRUE(edit(&screen, "txtName")->text().isEmpty());

    // Brackets would cut the name short in "{name} [{code}]" lists: they become blanks. A
    // blank month ending is the 31st; with posting off there is no account.
    expectColumns(ws->connect()->queryOne(u"SELECT * FROM hRetainership WHERE retainID = '0016'"_s),
                  {"retainName=ACME  NIG  O'NEIL & SONS", "retainCode=0016", "clientCatID=HMO",
                   "Address=9 AWOLOWO RD", "BillEndDate=31", "RegAmount=2500", "ConAmount=0",
                   "RetainDate=2026-11-23", "AcctID="});
    EXPECT_EQ(count(u"SELECT count(*) FROM AuditTrail WHERE userAction = ? "
                    "AND TranCode = ?"_s,
                    {u"Add Client Info: ACME  NIG  O'NEIL & SONS"_s, u"0016"_s}),
              1);
    // The new client is on the list, and the live filter finds it by any part of its name.
    auto* grid = child<QTableView>(&screen, "grdData");
    EXPECT_GE(findRow(grid, u"retainID"_s, u"0016"_s), 0);
    QTest::keyClicks(edit(&screen, "txtSearch"), "o'neil &");
    ASSERT_EQ(rowCount(grid), 1);
    EXPECT_EQ(cellText(grid, 0, u"retainID"_s), u"0016"_s);
    // "%" is a character like any other, not a wildcard.
    edit(&screen, "txtSearch")->setText(u"%"_s);
    EXPECT_EQ(rowCount(grid), 0);
    edit(&screen, "txtSearch")->clear();
    EXPECT_EQ(rowCount(grid), count(u"SELECT count(*) FROM hRetainership"_s));
}

TEST_P(Clients, EditAndDeleteWithNothingPickedSayWhatToPick)
{
    start();
    frmRetainership clients(desk->ctx);
    frmAreas areas(desk->ctx);
    // One client left on the list, none picked: the buttons still say what to do first.
    QTest::keyClicks(edit(&clients, "txtSearch"), "hylova");
    ASSERT_EQ(rowCount(child<QTableView>(&clients, "grdData")), 1);
    const int payers = count(u"SELECT count(*) FROM hRetainership"_s);
    const int areasBefore = count(u"SELECT count(*) FROM hPatientArea"_s);
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
    EXPECT_EQ(count(u"SELECT count(*) FROM hRetainership"_s), payers);
    EXPECT_EQ(count(u"SELECT count(*) FROM hPatientArea"_s), areasBefore);
}

TEST_P(Clients, ACompanyNameAlreadyOnTheListIsSavedAgainOnlyOnYes)
{
    start();
    Retainership(desk->ctx).add(fields(u"ACME [NIG] LTD"_s));  // 0016
    frmRetainership screen(desk->ctx);
    screen.show();
    const QString question =
        u"A company with this name already exists (code 0016). Save another?"_s;
    // No keeps the form as typed and writes nothing; Yes saves a second client.
    for (const bool yes : {false, true}) {
        SCOPED_TRACE(yes);
        if (screen.mode() == frmRetainership::Mode::View) {
            click(&screen, "cmdAdd");
            QTest::keyClicks(edit(&screen, "txtName"), "acme  nig  ltd");
            combo(&screen, "cboClient")->setCurrentText(u"COMPANY"_s);
            QTest::keyClicks(edit(&screen, "txtAddress"), "1 MARINA");
            combo(&screen, "cboYes")->setCurrentText(u"YES"_s);
        }
        desk->prompter.clear();
        yes ? desk->prompter.answerYes() : desk->prompter.answerNo();
        click(&screen, "OKButton");
        ASSERT_FALSE(desk->prompter.messages().empty());
        EXPECT_EQ(desk->prompter.messages().front().text, question);
        EXPECT_EQ(count(u"SELECT count(*) FROM hRetainership WHERE "
                        "upper(retainName) = ?"_s,
                        {u"ACME  NIG  LTD"_s}),
                  yes ? 2 : 1);
        EXPECT_EQ(screen.mode(),
                  yes ? frmRetainership::Mode::View : frmRetainership::Mode::Add);
    }
    EXPECT_EQ(text(u"SELECT max(retainID) FROM hRetainership WHERE "
                   "retainName = ?"_s,
                   {u"acme  nig  ltd"_s}),
              u"0017"_s);
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
            ws->exec(
                u"INSERT INTO hRetainership (retainID, retainCode, "
                "retainName) VALUES (?, ?, ?)"_s,
                {p.at(1), p.at(0), u"OTHER DESK"_s});
        }
    } other;
    other.ws = ws.get();
    db::observeStatements(&other);
    std::optional<QString> refusal;
    try {
        Retainership(desk->ctx).add(fields(u"NEW CLIENT"_s));
    } catch (const CheckFailed& refused) {
        refusal = refused.message();
    }
    db::observeStatements(nullptr);
    EXPECT_EQ(refusal,
              u"Another desk has just saved a company under code 0016. "
              "Press Save again to take the next code."_s);
    EXPECT_EQ(text(u"SELECT retainName FROM hRetainership WHERE retainID = ?"_s, {u"0016"_s}),
              u"OTHER DESK"_s);
}

TEST_P(Clients, EditWritesTheFieldsButNeitherCodeNorAccount)
{
    start();
    frmRetainership screen(desk->ctx);
    auto* grid = child<QTableView>(&screen, "grdData");
    const int row = findRow(grid, u"retainID"_s, u"0009"_s);
    ASSERT_GE(row, 0);
    grid->selectRow(row);
    click(&screen, "cmdEdit");
    expectControls(&screen, {"txtName=LEAMORE HEALTH", "cboNum=31"});
    EXPECT_TRUE(edit(&screen, "txtAcctNo")->isReadOnly());
    fillIn(&screen, {"txtName=LEAMORE HEALTH [HMO] LTD", "cboNum=25", "txtCon=4000.50"});
    click(&screen, "OKButton");
    EXPECT_EQ(desk->prompter.informs(), QStringList{u"Record Succesfully Updated"_s});
    expectColumns(ws->connect()->queryOne(u"SELECT * FROM hRetainership WHERE retainID = '0009'"_s),
                  {"retainName=LEAMORE HEALTH  HMO  LTD", "BillEndDate=25", "ConAmount=4000.5",
                   "AcctID=12000004"});
    EXPECT_EQ(count(u"SELECT count(*) FROM AuditTrail WHERE userAction = ?"_s,
                    {u"Edit Client Info: LEAMORE HEALTH  HMO  LTD"_s}),
              1);
}

TEST_P(Clients, APayerThatPatientsHoldCannotBeDeleted)
{
    start();
    addPatientOf(u"0009"_s);  // CoyName holds the code, not the name
    frmRetainership screen(desk->ctx);
    auto* grid = child<QTableView>(&screen, "grdData");
    grid->selectRow(findRow(grid, u"retainID"_s, u"0009"_s));
    desk->prompter.answerYes();
    click(&screen, "cmdDel");
    EXPECT_EQ(
        desk->prompter.messages().front().text + u'|' + desk->prompter.messages().front().title,
        u"Are you sure to Delete Record|Delete"_s);
    EXPECT_EQ(desk->prompter.lastText(), u"Client Cannot be Deleted!!! Has Patient Information"_s);
    EXPECT_EQ(held("0009"), u"1|3"_s);

    // No is no; Yes on a payer without patients removes it with its scheme rows.
    grid = child<QTableView>(&screen, "grdData");
    grid->selectRow(findRow(grid, u"retainID"_s, u"0015"_s));
    desk->prompter.answerNo();
    click(&screen, "cmdDel");
    EXPECT_EQ(held("0015").left(1), u"1"_s);
    desk->prompter.answerYes();
    click(&screen, "cmdDel");
    EXPECT_EQ(desk->prompter.lastText(), u" Record successfully deleted "_s);
    EXPECT_EQ(held("0015"), u"0|0"_s);
    EXPECT_EQ(findRow(child<QTableView>(&screen, "grdData"), u"retainID"_s, u"0015"_s), -1);
}

TEST_P(Clients, ExportWritesNameCodeTypePhoneAndContactByName)
{
    start();
    const db::Result rows = Retainership(desk->ctx).exportRows();
    ASSERT_EQ(rows.columns->names(), (QStringList{u"ClientName"_s, u"ClientCode"_s, u"ClientType"_s,
                                                  u"PhoneNo"_s, u"Contact"_s}));
    ASSERT_EQ(int(rows.size()), count(u"SELECT count(*) FROM hRetainership"_s));
    for (size_t i = 1; i < rows.size(); ++i)
        EXPECT_LE(rows.rows[i - 1].text(u"ClientName"), rows.rows[i].text(u"ClientName"));
    const QString file = exportToSheet(desk->ctx, rows, ws->homePath(u"c.xlsx"_s));
    QProcess unzip;
    unzip.start(u"unzip"_s, {u"-p"_s, file, u"xl/sharedStrings.xml"_s});
    ASSERT_TRUE(unzip.waitForFinished(30000));
    const QString strings = QString::fromUtf8(unzip.readAllStandardOutput());
    EXPECT_TRUE(strings.contains(u"ClientCode"_s));
    EXPECT_TRUE(strings.contains(u"O&apos;DEX &amp; SONS (NIG) LTD"_s) ||
                strings.contains(u"O'DEX &amp; SONS (NIG) LTD"_s));
}

// --- the receivable account -----------------------------------------------------------------

class Posting : public Clients {
protected:
    void SetUp() override
    {
        Clients::SetUp();
        ws->setDefault(u"AcctPostOn"_s, u"True"_s);
    }
};

TEST_P(Posting, ANewClientGetsItsReceivableAccount)
{
    start();
    const ClientAdded added = Retainership(desk->ctx).add(fields(u"ZENITH PLC"_s));
    EXPECT_TRUE(added.accountError.isEmpty()) << added.accountError.toStdString();
    EXPECT_EQ(added.accountID, u"12000006"_s);  // after the demo's 12000005
    EXPECT_EQ(text(u"SELECT AcctID FROM hRetainership WHERE retainID = ?"_s, {added.retainID}),
              u"12000006"_s);
    auto acc = ws->connect(Database::Accounting);
    expectColumns(acc->queryOne(u"SELECT * FROM ChartOfAccounts WHERE AccountID = '12000006'"_s),
                  {"AccountName=ZENITH PLC", "groupID=1200", "AccountCat=COMPANY",
                   "AccountDesc=CLIENT", "AccountAddress=2 BROAD STREET, LAGOS", "Period=NOV 2026",
                   "ExtID=" + added.retainID, "ExtIDType=RECEIVABLE", "UserName=demo"});
    EXPECT_EQ(acc->scalar(u"SELECT AccountID FROM ChartOfAccountMaster "
                          "ORDER BY SNo DESC LIMIT 1"_s)
                  .toString(),
              u"12000006"_s);
}

TEST_P(Posting, AClientWithAnAccountNumberGetsNoNewAccount)
{
    start();
    ClientFields f = fields(u"ZENITH PLC"_s);
    f.acctNo = u" 11000002 "_s;
    const ClientAdded added = Retainership(desk->ctx).add(f);
    EXPECT_TRUE(added.accountID.isEmpty());
    EXPECT_EQ(text(u"SELECT AcctID FROM hRetainership WHERE retainID = ?"_s, {added.retainID}),
              u"11000002"_s);
    EXPECT_EQ(count(u"SELECT count(*) FROM ChartOfAccounts"_s, {}, Database::Accounting), 9);
}

TEST_P(Posting, ARefusedPeriodLeavesTheClientSavedWithoutAnAccount)
{
    ws->setDefault(u"AcctPostLastPeriodCloseDate"_s, u"2026-11-30"_s, Database::Accounting);
    start();
    frmRetainership screen(desk->ctx);
    click(&screen, "cmdAdd");
    fillIn(&screen,
           {"txtName=ZENITH PLC", "cboClient=COMPANY", "txtAddress=PLOT 84, VI", "cboYes=YES"});
    click(&screen, "OKButton");
    EXPECT_EQ(desk->prompter.informs(),
              (QStringList{kTranDateInClosedPeriod, u"Record Succesfully saved"_s}));
    EXPECT_EQ(count(u"SELECT count(*) FROM hRetainership WHERE retainName = ? "
                    "AND (AcctID IS NULL OR AcctID = '')"_s,
                    {u"ZENITH PLC"_s}),
              1);
    EXPECT_EQ(count(u"SELECT count(*) FROM ChartOfAccountMaster"_s, {}, Database::Accounting), 9);
    // The audit entry still records the client that was added.
    EXPECT_EQ(count(u"SELECT count(*) FROM AuditTrail WHERE userAction = ?"_s,
                    {u"Add Client Info: ZENITH PLC"_s}),
              1);
}

// --- picking an account ----------------------------------------------------------------------

TEST_P(Clients, ThePickerTakesOneAccountOfTheGroupBackToTheCaller)
{
    start();
    frmRetainership caller(desk->ctx);
    frmRevAcctSelect picker(desk->ctx, {{u"caller"_s, u"frmRetainership"_s},
                                        {u"callerWidget"_s, QVariant::fromValue<QObject*>(&caller)},
                                        {u"group"_s, u"1200"_s}});
    EXPECT_EQ(picker.windowTitle(), u"Select an Account"_s);
    auto* list = child<QListWidget>(&picker, "LstDate");
    ASSERT_EQ(list->count(), 5);  // the receivables only, by name
    EXPECT_EQ(list->item(0)->text(), u"DANBURY FLOUR MILLS [12000001]"_s);
    EXPECT_EQ(list->item(4)->text(), u"RELMONT HMO [12000003]"_s);
    list->item(3)->setCheckState(Qt::Checked);
    EXPECT_EQ(child<QLabel>(&picker, "lblShow")->text(), u"LEAMORE HEALTH"_s);
    list->item(1)->setCheckState(Qt::Checked);
    EXPECT_EQ(desk->prompter.lastText(), u"Only one Account at a time"_s);
    EXPECT_EQ(list->item(1)->checkState(), Qt::Unchecked);
    click(&picker, "cmdProcess");
    EXPECT_EQ(edit(&caller, "txtAcctNo")->text(), u"12000004"_s);
    EXPECT_EQ(edit(&caller, "txtName")->text(), u"LEAMORE HEALTH"_s);

    // Any other caller sees every account.
    frmRevAcctSelect all(desk->ctx, {{u"caller"_s, u"frmOther"_s}});
    EXPECT_EQ(child<QListWidget>(&all, "LstDate")->count(), 9);
}

// --- HMO schemes and areas -------------------------------------------------------------------

TEST_P(Clients, SchemeRowsAreThreePerHmoAndSavingTwiceDoesNotDoubleThem)
{
    start();
    ws->exec(u"UPDATE hRetainership SET ClientType = 'HMO' WHERE retainID = '0002'"_s);
    frmRetainershipUpdDB screen(desk->ctx);
    auto* grid = child<QTableView>(&screen, "grdData");
    const int hmos = count(u"SELECT count(*) FROM hRetainership WHERE ClientType = 'HMO'"_s);
    EXPECT_EQ(rowCount(grid), hmos);
    grid->setCurrentIndex(grid->model()->index(0, 0));
    auto* cats = child<QListWidget>(&screen, "LstDate");
    ASSERT_EQ(cats->count(), 2);
    EXPECT_EQ(cats->item(0)->text(), u"HEALTH MAINTENANCE ORGANISATIONS [HMO]"_s);
    for (int round = 0; round < 2; ++round) {
        click(&screen, "OKButton");
        EXPECT_EQ(desk->prompter.lastText(), u"Record Succesfully saved"_s);
        EXPECT_EQ(count(u"SELECT count(*) FROM hRetainershipScheme"_s), hmos * 3);
    }
    EXPECT_EQ(text(u"SELECT retainName FROM hRetainershipScheme WHERE retainID = "
                   "'0002' AND clientCatID = 'FFS' AND ClientType = 'FFS'"_s),
              u"DANBURY FLOUR MILLS"_s);
}

TEST_P(Clients, AreasAreAddedRenamedAndDeleted)
{
    start();
    frmAreas screen(desk->ctx);
    EXPECT_EQ(screen.windowTitle(), u"Address Locations/Areas"_s);
    auto* list = child<QListWidget>(&screen, "lstAreas");
    const int before = list->count();
    click(&screen, "cmdAdd");
    click(&screen, "OKButton");
    EXPECT_EQ(desk->prompter.lastText(), u"Specify Patient Residential Area"_s);
    QTest::keyClicks(edit(&screen, "txtName"), "OJUELEGBA");
    click(&screen, "OKButton");
    EXPECT_EQ(desk->prompter.lastText(), u"Record Succesfully saved"_s);
    EXPECT_EQ(list->count(), before + 1);

    list->setCurrentItem(list->findItems(u"YABA"_s, Qt::MatchExactly).front());
    click(&screen, "cmdEdit");
    edit(&screen, "txtName")->setText(u"YABA-SABO"_s);
    click(&screen, "OKButton");
    EXPECT_EQ(count(u"SELECT count(*) FROM hPatientArea WHERE AreaName IN "
                    "('YABA', 'YABA-SABO')"_s),
              1);
    EXPECT_EQ(list->findItems(u"YABA-SABO"_s, Qt::MatchExactly).size(), 1);

    // A name already on the list, added or renamed to, is refused in words the desk can
    // act on; the name stays typed and nothing is written.
    for (const char* start : {"cmdAdd", "cmdEdit"}) {
        SCOPED_TRACE(start);
        list->setCurrentItem(list->findItems(u"OJUELEGBA"_s, Qt::MatchExactly)[0]);
        click(&screen, start);
        edit(&screen, "txtName")->setText(u"IKEJA"_s);
        click(&screen, "OKButton");
        EXPECT_EQ(desk->prompter.lastText(), u"That area already exists"_s);
        EXPECT_EQ(screen.focusWidget(), edit(&screen, "txtName"));
        EXPECT_EQ(edit(&screen, "txtName")->text(), u"IKEJA"_s);
        EXPECT_EQ(count(u"SELECT count(*) FROM hPatientArea"_s), before + 1);
        click(&screen, "cmdCancel");
    }

    list->setCurrentItem(list->findItems(u"OJUELEGBA"_s, Qt::MatchExactly).front());
    desk->prompter.answerYes();
    click(&screen, "cmdDel");
    EXPECT_EQ(desk->prompter.lastText(), u" Record successfully deleted "_s);
    EXPECT_EQ(list->count(), before);
}

}  // namespace

TOLMAR_INSTANTIATE_BACKENDS(Clients);
TOLMAR_INSTANTIATE_BACKENDS(Posting);
