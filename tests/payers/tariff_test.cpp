// The three price-list screens, driven through one body per case and run for each row of
// the table of the three lists, on each backend.
#include "support/screenkit.h"
#include "support/workspace.h"

#include "core/screenhost.h"
#include "payers/frmtariffprice.h"
#include "core/ui/gridcells.h"
#include "payers/tariff.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

using namespace tolmar;
using namespace tolmar::test;
using namespace Qt::StringLiterals;

namespace {

using Param = std::tuple<db::Backend, int>;

// Demo payers: 0004 HYLOVA HMO keeps a list of every kind; 0009 LEAMORE HEALTH and 0010
// CLEMBROOK HMO have none.
const QString kHylova = u"HYLOVA HMO [0004]"_s;
const QString kLeamore = u"LEAMORE HEALTH [0009]"_s;
const QString kClembrook = u"CLEMBROOK HMO [0010]"_s;

class Tariffs : public testing::TestWithParam<Param> {
protected:
    void SetUp() override
    {
        ws = std::make_unique<Workspace>(std::get<0>(GetParam()));
        desk = std::make_unique<Desk>(*ws);
        desk->startUp();
        desk->prompter.clear();
        screen.reset(desk->ctx.screens().open(kind().screen));
        ASSERT_TRUE(screen);
    }
    void TearDown() override
    {
        screen.reset();
        desk.reset();
        ws.reset();
    }
    const TariffKind& kind() const { return *TariffKind::all()[size_t(std::get<1>(GetParam()))]; }
    QString sql(const char* text) const { return QString::fromLatin1(text).arg(kind().table); }
    double number(const char* text, const db::Params& p = {})
    {
        return ws->scalar(sql(text), p).toDouble();
    }
    int rows(const QString& coyID)
    {
        return ws->scalar(sql("SELECT count(*) FROM %1 WHERE Company = ?"), {coyID}).toInt();
    }
    int masterItems()
    {
        const QString item = kind().itemColumn;
        return ws
            ->scalar(u"SELECT count(*) FROM (SELECT DISTINCT %1, %2 FROM %3) m"_s.arg(
                item, kind().categoryColumn, kind().master))
            .toInt();
    }
    // Chooses an entry of a list box as a click would.
    void choose(const char* box, const QString& entry)
    {
        auto* c = child<QComboBox>(screen.get(), box);
        const int i = c->findText(entry);
        ASSERT_GE(i, 0) << entry.toStdString();
        c->setCurrentIndex(i);
        emit c->activated(i);
    }
    void setTemplate(const QString& payer, const char* own, const QString& source = QString(),
                     const char* percent = "")
    {
        choose("cboHMO", payer);
        child<QComboBox>(screen.get(), "cboDrug")->setCurrentText(QString::fromLatin1(own));
        if (!source.isEmpty())
            child<QComboBox>(screen.get(), "cboUse")->setCurrentText(source);
        child<QComboBox>(screen.get(), "cboPCent")->setCurrentText(QString::fromLatin1(percent));
    }
    QString label(const char* name) { return child<QLabel>(screen.get(), name)->text(); }
    QTableView* grid() { return child<QTableView>(screen.get(), "grdData"); }
    int audits(const QString& action, const QString& remarks)
    {
        return ws
            ->scalar(
                u"SELECT count(*) FROM AuditTrail WHERE userAction = ? "
                "AND Remarks = ?"_s,
                {action, remarks})
            .toInt();
    }

    std::unique_ptr<Workspace> ws;
    std::unique_ptr<Desk> desk;
    std::unique_ptr<QWidget> screen;
};

TEST_P(Tariffs, AnOwnListStartsWithEveryMasterItemAtZero)
{
    EXPECT_EQ(screen->windowTitle(), kind().title);
    setTemplate(kLeamore, "YES");
    EXPECT_EQ(label("lblTariff"), u"NONE"_s);
    EXPECT_EQ(label("Label1"), u"LEAMORE HEALTH Tariff"_s);
    EXPECT_FALSE(child<QWidget>(screen.get(), "fraUse")->isVisible());
    desk->prompter.answerYes();
    click(screen.get(), "OKButton");
    ASSERT_EQ(desk->prompter.messages().size(), 2u);
    EXPECT_EQ(desk->prompter.messages()[0].text,
              u"You are about to make bulk save of Drug items for LEAMORE HEALTH "
              "Click YES to save items"_s);
    EXPECT_EQ(desk->prompter.messages()[0].title, u"bulk save"_s);
    EXPECT_EQ(desk->prompter.lastText(),
              u"Record Succesfully saved!!! Price values can now be edited"_s);
    EXPECT_EQ(rows(u"0009"_s), masterItems());
    EXPECT_EQ(number("SELECT sum(Price) FROM %1 WHERE Company = '0009'"), 0);
    EXPECT_EQ(ws->scalar(sql("SELECT count(*) FROM %1 WHERE Company = '0009' AND "
                             "(tariffStatus <> 'FIXED' OR CoyName <> 'LEAMORE HEALTH' OR "
                             "Remarks <> 'HMO')"))
                  .toInt(),
              0);
    EXPECT_EQ(ws->scalar(u"SELECT useTariff || ':' || CAST(Pcent AS VARCHAR(10)) "
                         "FROM DrugNHISListEntered WHERE CoyID = '0009' AND Type = ?"_s,
                         {kind().type})
                  .toString()
                  .left(6),
              u"0009:1"_s);
    EXPECT_EQ(label("lblTariff"), u"OWN TARIFF"_s);
    EXPECT_EQ(rowCount(grid()), masterItems());
    EXPECT_EQ(audits(kind().addAudit + u"LEAMORE HEALTH"_s, u"New Tariff Entry"_s), 1);
}

TEST_P(Tariffs, ACopyAt85PercentFollowsLaterPriceEditsOfItsSource)
{
    setTemplate(kClembrook, "NO", kHylova, "85");
    EXPECT_TRUE(child<QWidget>(screen.get(), "fraUse")->isVisible());
    desk->prompter.answerYes();
    click(screen.get(), "OKButton");
    EXPECT_EQ(rows(u"0010"_s), rows(u"0004"_s));
    EXPECT_NEAR(number("SELECT sum(Price) FROM %1 WHERE Company = '0010'"),
                0.85 * number("SELECT sum(Price) FROM %1 WHERE Company = '0004'"), 0.01);
    EXPECT_DOUBLE_EQ(ws->scalar(u"SELECT Pcent FROM DrugNHISListEntered WHERE "
                                "CoyID = '0010' AND Type = ?"_s,
                                {kind().type})
                         .toDouble(),
                     0.85);
    EXPECT_EQ(label("lblTariff"), u"85% of HYLOVA HMO"_s);

    // A price edit on the source list reaches the follower at its factor.
    choose("cboHMO", kHylova);
    grid()->selectRow(0);
    const QString item = cellText(grid(), 0, kind().viewItem);
    const QString untouched = cellText(grid(), 1, kind().viewItem);
    const double untouchedBefore = number(
        "SELECT Price FROM %1 WHERE Company = '0010' AND SNo = (SELECT min(SNo) FROM %1 "
        "WHERE Company = '0010' AND " +
            kind().itemColumn.toLatin1() + " = ?)",
        {untouched});
    click(screen.get(), "cmdEdit");
    EXPECT_EQ(child<QLineEdit>(screen.get(), "txtDrug")->text(), item);
    auto* price = child<QLineEdit>(screen.get(), "txtPrice");
    const QString oldPrice = price->text();
    price->setText(u"1000"_s);
    click(screen.get(), "OKButton");
    const QByteArray col = kind().itemColumn.toLatin1();
    EXPECT_DOUBLE_EQ(
        number("SELECT max(Price) FROM %1 WHERE Company = '0004' AND " + col + " = ?", {item}),
        1000);
    EXPECT_DOUBLE_EQ(
        number("SELECT max(Price) FROM %1 WHERE Company = '0010' AND " + col + " = ?", {item}),
        850);
    EXPECT_DOUBLE_EQ(
        number("SELECT Price FROM %1 WHERE Company = '0010' AND SNo = (SELECT min(SNo) FROM %1 "
               "WHERE Company = '0010' AND " +
                   col + " = ?)",
               {untouched}),
        untouchedBefore);
    // The edited row is the current row again.
    EXPECT_EQ(cellText(grid(), grid()->currentIndex().row(), kind().viewItem), item);
    EXPECT_EQ(
        audits(u"Edit Drug Price: "_s + item,
               u"OLD Price: "_s + QString::number(oldPrice.toDouble()) + u"New Price: 1000"_s),
        1);
}

TEST_P(Tariffs, ATypedCellPriceStaysWithItsRow)
{
    setTemplate(kClembrook, "NO", kHylova, "50");
    desk->prompter.answerYes();
    click(screen.get(), "OKButton");
    choose("cboHMO", kHylova);
    const QString item = cellText(grid(), 0, kind().viewItem);
    const qint64 sno = cellText(grid(), 0, u"SNO"_s).toLongLong();
    const double followerBefore = number("SELECT sum(Price) FROM %1 WHERE Company = '0010'");
    const QModelIndex cell = grid()->model()->index(0, grid::columnOf(grid()->model(), u"Price"_s));
    EXPECT_TRUE(grid()->model()->flags(cell) & Qt::ItemIsEditable);
    desk->prompter.answerNo();
    EXPECT_FALSE(grid()->model()->setData(cell, u"77.5"_s));
    desk->prompter.answerYes();
    EXPECT_TRUE(grid()->model()->setData(cell, u"77.5"_s));
    EXPECT_EQ(desk->prompter.lastText(), u"Tariff Price Cell Update to: (77.5) for "_s + item);
    EXPECT_DOUBLE_EQ(number("SELECT Price FROM %1 WHERE SNo = ?", {sno}), 77.5);
    EXPECT_DOUBLE_EQ(number("SELECT sum(Price) FROM %1 WHERE Company = '0010'"), followerBefore);
}

TEST_P(Tariffs, TemplateChecksComeInOrder)
{
    struct Step {
        const char* message;
        const char* focus;
        std::function<void()> set;
    };
    const Step steps[] = {
        {"Please specify Tariff Template Name", "cboHMO", [&] { setTemplate(kLeamore, "NO"); }},
        {"Please specify Tariff to use for this Template", "cboUse",
         [&] { child<QComboBox>(screen.get(), "cboUse")->setCurrentText(kHylova); }},
        {"Please specify Percentage to use for this Template", "cboPCent",
         [&] { child<QComboBox>(screen.get(), "cboPCent")->setCurrentText(u"8O"_s); }},
        {"Tariff Percentage has to be Numeric", "cboPCent",
         [&] { child<QComboBox>(screen.get(), "cboPCent")->setCurrentText(u"80"_s); }},
    };
    for (const Step& s : steps) {
        desk->prompter.clear();
        click(screen.get(), "OKButton");
        EXPECT_EQ(desk->prompter.lastText(), QString::fromLatin1(s.message));
        EXPECT_EQ(screen->focusWidget()->objectName(), QString::fromLatin1(s.focus));
        s.set();
    }
    // A source typed rather than chosen carries no code.
    child<QComboBox>(screen.get(), "cboUse")->setEditable(true);
    child<QComboBox>(screen.get(), "cboUse")->setEditText(u"HYLOVA"_s);
    desk->prompter.clear();
    click(screen.get(), "OKButton");
    EXPECT_EQ(desk->prompter.lastText(), u"Please SELECT/Re-SELECT Company Whose Tariff is Used"_s);
    // Neither an own list nor a copy: there is nothing to build the list from.
    child<QComboBox>(screen.get(), "cboDrug")->setCurrentIndex(-1);
    desk->prompter.clear();
    click(screen.get(), "OKButton");
    EXPECT_EQ(desk->prompter.lastText(), u"Please specify Tariff to use for this Template"_s);
    EXPECT_EQ(screen->focusWidget()->objectName(), u"cboDrug"_s);
    EXPECT_EQ(rows(u"0009"_s), 0);
}

TEST_P(Tariffs, AnExistingListIsRefusedRepricedOrReplaced)
{
    const int hylova = rows(u"0004"_s);
    const double total = number("SELECT sum(Price) FROM %1 WHERE Company = '0004'");

    setTemplate(kHylova, "YES");
    click(screen.get(), "OKButton");
    EXPECT_EQ(desk->prompter.lastText(), u"Bulk entry already exists for HYLOVA HMO"_s);

    // Its own list at a percentage: the prices are scaled in place.
    desk->prompter.clear();
    setTemplate(kHylova, "NO", kHylova, "110");
    desk->prompter.answerYes();
    click(screen.get(), "OKButton");
    EXPECT_EQ(desk->prompter.messages().front().text,
              u"Are you sure to update the Price List for HYLOVA HMO?"_s);
    EXPECT_EQ(desk->prompter.messages().front().title, u"save"_s);
    EXPECT_EQ(rows(u"0004"_s), hylova);
    EXPECT_NEAR(number("SELECT sum(Price) FROM %1 WHERE Company = '0004'"), total * 1.1, 0.01);
    EXPECT_EQ(audits(kind().repriceAudit + u"110%) for"_s, u"HYLOVA HMO"_s), 1);

    // Deleting the existing list and copying another payer's at 50%.
    setTemplate(kLeamore, "YES");
    desk->prompter.answerYes();
    click(screen.get(), "OKButton");
    desk->prompter.clear();
    setTemplate(kLeamore, "NO", kHylova, "50");
    child<QCheckBox>(screen.get(), "chkDel")->setChecked(true);
    desk->prompter.answerYes();
    click(screen.get(), "OKButton");
    EXPECT_EQ(desk->prompter.messages().front().text,
              u"You are about to make bulk save of Drug items 'Deleting Existing "
              "Drug Tariff' for LEAMORE HEALTH Click YES to save items"_s);
    EXPECT_EQ(rows(u"0009"_s), hylova);
    EXPECT_NEAR(number("SELECT sum(Price) FROM %1 WHERE Company = '0009'"), total * 1.1 * 0.5,
                0.01);
    EXPECT_EQ(ws->scalar(u"SELECT count(*) FROM DrugNHISListEntered WHERE CoyID = "
                         "'0009' AND Type = ? AND useTariff = '0004'"_s,
                         {kind().type})
                  .toInt(),
              1);
    EXPECT_EQ(label("lblTariff"), u"50% of HYLOVA HMO"_s);
    EXPECT_EQ(audits(u"Deleted Existing Tariff, "_s + kind().addAudit + u"LEAMORE HEALTH"_s,
                     u"Tariff Used:50% of HYLOVA HMO"_s),
              1);
}

TEST_P(Tariffs, DeletingAListThatIsNotThereIsHarmless)
{
    setTemplate(kLeamore, "YES");
    child<QCheckBox>(screen.get(), "chkDel")->setChecked(true);
    desk->prompter.answerYes();
    click(screen.get(), "OKButton");
    EXPECT_EQ(desk->prompter.lastText(),
              u"Record Succesfully saved!!! Price values can now be edited"_s);
    EXPECT_EQ(rows(u"0009"_s), masterItems());
    EXPECT_FALSE(child<QCheckBox>(screen.get(), "chkDel")->isChecked());
}

TEST_P(Tariffs, ASingleItemIsAddedToAList)
{
    choose("cboHMO", kHylova);
    child<QCheckBox>(screen.get(), "chkAdd")->setChecked(true);
    click(screen.get(), "OKButton");
    EXPECT_EQ(desk->prompter.lastText(), u"Please specify Item Name"_s);
    EXPECT_EQ(screen->focusWidget()->objectName(), u"txtDrug"_s);
    QTest::keyClicks(child<QLineEdit>(screen.get(), "txtDrug"), "ZINC O'XIDE [TUBE]");
    click(screen.get(), "OKButton");
    EXPECT_EQ(desk->prompter.lastText(), u"Please specify Price"_s);
    QTest::keyClicks(child<QLineEdit>(screen.get(), "txtPrice"), "250");
    const int before = rows(u"0004"_s);
    click(screen.get(), "OKButton");
    EXPECT_EQ(rows(u"0004"_s), before + 1);
    const QByteArray col = kind().itemColumn.toLatin1();
    EXPECT_DOUBLE_EQ(
        number("SELECT Price FROM %1 WHERE " + col + " = ?", {u"ZINC O'XIDE [TUBE]"_s}), 250);
    EXPECT_EQ(ws->scalar(u"SELECT %1 FROM %2 WHERE Company = '0004' "
                         "ORDER BY SNo DESC LIMIT 1"_s.arg(kind().categoryColumn, kind().table))
                  .toString(),
              u"XXXX"_s);
}

TEST_P(Tariffs, SearchAndEditNeedAPayerFirst)
{
    QTest::keyClicks(child<QLineEdit>(screen.get(), "txtSearch"), "a");
    EXPECT_EQ(desk->prompter.lastText(), kind().searchMessage);
    EXPECT_TRUE(child<QLineEdit>(screen.get(), "txtSearch")->text().isEmpty());
    click(screen.get(), "cmdEdit");
    EXPECT_EQ(desk->prompter.lastText(),
              u"No Item to Edit. Select a Company Tariff to Display Items to Edit"_s);

    choose("cboHMO", kHylova);
    const QString first = cellText(grid(), 0, kind().viewItem);
    const QString typed = first.left(4).toLower();
    QTest::keyClicks(child<QLineEdit>(screen.get(), "txtSearch"), typed);
    const int found = rowCount(grid());
    ASSERT_GT(found, 0);
    EXPECT_LT(found, rows(u"0004"_s));
    for (int r = 0; r < found; ++r)
        EXPECT_TRUE(cellText(grid(), r, kind().viewItem).startsWith(typed, Qt::CaseInsensitive));
    click(screen.get(), "Command1");
    EXPECT_EQ(rowCount(grid()), rows(u"0004"_s));
}

TEST_P(Tariffs, APriceEditChecksStatusPriceAndCapitation)
{
    choose("cboHMO", kHylova);
    grid()->selectRow(2);
    click(screen.get(), "cmdEdit");
    child<QComboBox>(screen.get(), "cboVal")->setCurrentIndex(-1);
    click(screen.get(), "OKButton");
    EXPECT_EQ(desk->prompter.lastText(), u"Please specify Tariff Status "_s);
    child<QComboBox>(screen.get(), "cboVal")->setCurrentText(u"NEGOTIATE"_s);
    child<QLineEdit>(screen.get(), "txtPrice")->clear();
    click(screen.get(), "OKButton");
    EXPECT_EQ(desk->prompter.lastText(), kind().priceMessage);
    EXPECT_EQ(screen->focusWidget()->objectName(), u"txtPrice"_s);
    child<QLineEdit>(screen.get(), "txtPrice")->setText(u"21.5"_s);
    EXPECT_EQ(label("lblWord"), u"Twenty One Naria and Fifty kobo only"_s);
    child<QComboBox>(screen.get(), "cboCap")->setCurrentIndex(-1);
    click(screen.get(), "OKButton");
    EXPECT_EQ(desk->prompter.lastText(), u"Please Specify Whether Capitated or Not "_s);
    child<QComboBox>(screen.get(), "cboCap")->setCurrentText(u"YES"_s);
    const int sno = cellText(grid(), 2, u"SNO"_s).toInt();
    click(screen.get(), "OKButton");
    auto conn = ws->connect();
    const auto row = conn->queryOne(sql("SELECT * FROM %1 WHERE SNo = ?"), {sno});
    EXPECT_EQ(row->text(u"tariffStatus"), u"NEGOTIATE"_s);
    EXPECT_EQ(row->text(u"Capitated"), u"YES"_s);
    EXPECT_DOUBLE_EQ(row->toDouble(u"Price"), 21.5);
    EXPECT_FALSE(static_cast<TariffPriceScreen*>(screen.get())->editing());
}

TEST_P(Tariffs, AFailureHalfwayThroughACopyLeavesNothingOfIt)
{
    // A trigger refuses the 100th row of LEAMORE's list: the copy fails in the middle.
    auto conn = ws->connect();
    if (ws->backend() == db::Backend::Sqlite) {
        conn->execScript(
            sql("CREATE TRIGGER inject_failure BEFORE INSERT ON %1 "
                "WHEN NEW.Company = '0009' AND (SELECT count(*) FROM %1 "
                "WHERE Company = '0009') >= 99 "
                "BEGIN SELECT RAISE(ABORT, 'injected failure'); END"));
    } else {
        conn->execScript(
            sql("CREATE FUNCTION inject_failure() RETURNS trigger AS $$ BEGIN "
                "IF NEW.Company = '0009' AND (SELECT count(*) FROM %1 "
                "WHERE Company = '0009') >= 99 THEN "
                "RAISE EXCEPTION 'injected failure'; END IF; RETURN NEW; END $$ "
                "LANGUAGE plpgsql"));
        conn->execScript(
            sql("CREATE TRIGGER inject_failure BEFORE INSERT ON %1 "
                "FOR EACH ROW EXECUTE FUNCTION inject_failure()"));
    }
    // First an own list of a few rows, then the copy that deletes it and fails.
    conn->exec(
        u"INSERT INTO %1 (%2, Price, Company, CoyName, Remarks) "
        "VALUES ('KEEP ME', 5, '0009', 'LEAMORE HEALTH', 'HMO')"_s.arg(kind().table,
                                                                       kind().itemColumn));
    conn->exec(
        u"INSERT INTO DrugNHISListEntered (CoyID, Type, remarks, useTariff, "
        "Pcent) VALUES ('0009', ?, 'HMO', '0009', 1)"_s,
        {kind().type});
    setTemplate(kLeamore, "NO", kHylova, "85");
    child<QCheckBox>(screen.get(), "chkDel")->setChecked(true);
    desk->prompter.answerYes();
    click(screen.get(), "OKButton");
    EXPECT_TRUE(desk->prompter.lastText().contains(u"injected failure"_s))
        << desk->prompter.lastText().toStdString();
    EXPECT_EQ(desk->prompter.last()->icon, Icon::Critical);
    EXPECT_EQ(rows(u"0009"_s), 1);
    EXPECT_EQ(ws->scalar(u"SELECT useTariff FROM DrugNHISListEntered WHERE CoyID = "
                         "'0009' AND Type = ?"_s,
                         {kind().type})
                  .toString(),
              u"0009"_s);
    EXPECT_EQ(audits(u"Deleted Existing Tariff, "_s + kind().addAudit + u"LEAMORE HEALTH"_s,
                     u"Tariff Used:85% of HYLOVA HMO"_s),
              0);
    // The screen stays as it was, ready to try again.
    EXPECT_TRUE(child<QCheckBox>(screen.get(), "chkDel")->isChecked());
}

std::string paramName(const testing::TestParamInfo<Param>& info)
{
    const std::string backend =
        backendName(testing::TestParamInfo<db::Backend>(std::get<0>(info.param), info.index));
    return backend + "_" + TariffKind::all()[size_t(std::get<1>(info.param))]->type.toStdString();
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Lists, Tariffs,
                         testing::Combine(testing::ValuesIn(backends()), testing::Values(0, 1, 2)),
                         paramName);
