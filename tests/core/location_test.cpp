// The two server-location screens, driven by control name as a person would use them.
#include "support/screenkit.h"
#include "support/workspace.h"

#include "core/appdefaults.h"
#include "core/frmlocip.h"
#include "core/frmlocnew.h"
#include "core/screenhost.h"
#include "core/serverlocation.h"
#include "platform/files.h"
#include "platform/local.h"

#include <QComboBox>
#include <QFile>
#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QStandardItemModel>
#include <QTableView>
#include <QTest>

using namespace tolmar;
using namespace tolmar::test;

namespace {

class Locations : public testing::Test {
protected:
    void SetUp() override
    {
        ws = std::make_unique<Workspace>(db::Backend::Sqlite);
        ws->writeSettings();
        local::createKeyDb(ws->homePath(QStringLiteral("key.db")));
        ServerLocations l(desk().ctx);
        l.add(QStringLiteral("10.0.0.4"), QStringLiteral("HEAD OFFICE"));
        l.add(QStringLiteral("192.168.1.20\\SQL2019"), QStringLiteral("ANNEX"));
        desk().ctx.session().userName = QStringLiteral("demo");  // holds MANAGEMENT
    }
    Desk& desk()
    {
        if (!m_desk)
            m_desk = std::make_unique<Desk>(*ws);
        return *m_desk;
    }
    std::unique_ptr<Workspace> ws;
    std::unique_ptr<Desk> m_desk;
};

}  // namespace

TEST_F(Locations, ListShowsNameAndAddressInFileOrder)
{
    frmLocIP screen(desk().ctx);
    auto* list = child<QComboBox>(&screen, "cboVehNo");
    ASSERT_EQ(list->count(), 2);
    EXPECT_EQ(list->itemText(0), QStringLiteral("HEAD OFFICE [10.0.0.4]"));
    EXPECT_EQ(list->itemText(1), QStringLiteral("ANNEX [192.168.1.20\\SQL2019]"));
    EXPECT_EQ(screen.windowTitle(), QStringLiteral("Server Location"));
    list->setCurrentIndex(1);
    EXPECT_EQ(screen.locationAddress(), QStringLiteral("192.168.1.20\\SQL2019"));
    EXPECT_EQ(screen.locationName(), QStringLiteral("ANNEX"));
}

TEST_F(Locations, ConnectWithoutAChoiceAsksForOne)
{
    frmLocIP screen(desk().ctx);
    screen.show();
    click(&screen, "cmdOK");
    EXPECT_EQ(desk().prompter.lastText(), QStringLiteral("Specify Server Name"));
    EXPECT_EQ(screen.focusWidget(), child<QComboBox>(&screen, "cboVehNo"));
}

TEST_F(Locations, ConnectRewritesMadeSysAndRunsTheStartUpAgain)
{
    int reruns = 0;
    desk().ctx.rerunStartup = [&] { ++reruns; };
    frmLocIP screen(desk().ctx);
    child<QComboBox>(&screen, "cboVehNo")->setCurrentIndex(0);
    click(&screen, "cmdOK");
    EXPECT_EQ(*files::readLines(ws->homePath(QStringLiteral("made.sys"))),
              QStringList{QStringLiteral("SVR=10.0.0.4")});  // the HNO line is gone
    EXPECT_EQ(reruns, 1);
    EXPECT_EQ(screen.result(), QDialog::Accepted);
    EXPECT_EQ(desk().prompter.busyDepth(), 0);
}

TEST_F(Locations, MadeSysGoneAtConnectEndsTheProcess)
{
    frmLocIP screen(desk().ctx);
    child<QComboBox>(&screen, "cboVehNo")->setCurrentIndex(0);
    QFile::remove(ws->homePath(QStringLiteral("made.sys")));
    click(&screen, "cmdOK");
    EXPECT_EQ(desk().prompter.lastText(),
              QStringLiteral("A System file  required for Server Location is MISSING"));
    EXPECT_EQ(desk().endedWith, std::vector<int>{kExitLocationFileMissing});
    EXPECT_FALSE(QFile::exists(ws->homePath(QStringLiteral("made.sys"))));
}

TEST_F(Locations, SaveChecksBothFieldsInOrder)
{
    frmLocNew screen(desk().ctx);
    screen.show();
    click(&screen, "cmdAdd");
    click(&screen, "OKButton");
    EXPECT_EQ(desk().prompter.lastText(),
              QStringLiteral("Specify Ip Address of new Server Location"));
    QTest::keyClicks(child<QLineEdit>(&screen, "txtID"), QStringLiteral("  "));
    click(&screen, "OKButton");
    EXPECT_EQ(desk().prompter.lastText(),
              QStringLiteral("Specify Ip Address of new Server Location"));
    child<QLineEdit>(&screen, "txtID")->clear();
    QTest::keyClicks(child<QLineEdit>(&screen, "txtID"), QStringLiteral("10.1.1.1"));
    click(&screen, "OKButton");
    EXPECT_EQ(desk().prompter.lastText(), QStringLiteral("Specify Name of new Server Location"));
    EXPECT_EQ(screen.focusWidget(), child<QLineEdit>(&screen, "txtName"));
    EXPECT_EQ(screen.mode(), frmLocNew::Mode::Add);  // nothing typed was lost
    EXPECT_EQ(child<QLineEdit>(&screen, "txtID")->text(), QStringLiteral("10.1.1.1"));
}

TEST_F(Locations, AddKeepsBracketsTypesCapitalsAndRefreshesBothScreens)
{
    QWidget* list = desk().ctx.screens().open(QStringLiteral("frmLocIP"));
    ASSERT_NE(list, nullptr);
    frmLocNew screen(desk().ctx);
    click(&screen, "cmdAdd");
    EXPECT_FALSE(child<QPushButton>(&screen, "cmdAdd")->isEnabled());
    EXPECT_TRUE(child<QPushButton>(&screen, "OKButton")->isEnabled());
    QTest::keyClicks(child<QLineEdit>(&screen, "txtID"), QStringLiteral(" db-3 "));
    QTest::keyClicks(child<QLineEdit>(&screen, "txtName"), QStringLiteral("o'dua [west] ward"));
    click(&screen, "OKButton");
    EXPECT_EQ(desk().prompter.lastText(), QStringLiteral("Record Succesfully saved"));
    const auto all = ServerLocations(desk().ctx).all();
    ASSERT_EQ(all.size(), 3u);
    EXPECT_EQ(all[2].id, QStringLiteral("DB-3"));
    EXPECT_EQ(all[2].name, QStringLiteral("O'DUA [WEST] WARD"));
    EXPECT_EQ(screen.mode(), frmLocNew::Mode::View);
    EXPECT_TRUE(child<QLineEdit>(&screen, "txtID")->text().isEmpty());
    EXPECT_EQ(child<QTableView>(&screen, "grdData")->model()->rowCount(), 3);
    EXPECT_EQ(list->findChild<QComboBox*>(QStringLiteral("cboVehNo"))->count(), 3);
    list->close();
}

TEST_F(Locations, EditRewritesTheRowWithoutBrackets)
{
    frmLocNew screen(desk().ctx);
    auto* grid = child<QTableView>(&screen, "grdData");
    grid->setCurrentIndex(grid->model()->index(1, 0));
    click(&screen, "cmdEdit");
    EXPECT_EQ(child<QLineEdit>(&screen, "txtID")->text(), QStringLiteral("192.168.1.20\\SQL2019"));
    EXPECT_EQ(child<QLineEdit>(&screen, "txtName")->text(), QStringLiteral("ANNEX"));
    child<QLineEdit>(&screen, "txtName")->setText(QStringLiteral("[ANNEX] B"));
    click(&screen, "OKButton");
    const auto all = ServerLocations(desk().ctx).all();
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[1].name, QStringLiteral("ANNEX B"));
    EXPECT_EQ(all[1].id, QStringLiteral("192.168.1.20\\SQL2019"));
}

TEST_F(Locations, DeleteAsksFirstAndNoKeepsTheRow)
{
    frmLocNew screen(desk().ctx);
    auto* grid = child<QTableView>(&screen, "grdData");
    grid->setCurrentIndex(grid->model()->index(0, 0));
    desk().prompter.answerNo();
    click(&screen, "cmdDel");
    ASSERT_NE(desk().prompter.last(), nullptr);
    EXPECT_EQ(desk().prompter.last()->text, QStringLiteral("Are you sure to Delete Record"));
    EXPECT_EQ(desk().prompter.last()->title, QStringLiteral("Delete"));
    EXPECT_EQ(ServerLocations(desk().ctx).all().size(), 2u);

    desk().prompter.answerYes();
    click(&screen, "cmdDel");
    EXPECT_EQ(desk().prompter.lastText(), QStringLiteral(" Record successfully deleted "));
    const auto all = ServerLocations(desk().ctx).all();
    ASSERT_EQ(all.size(), 1u);
    EXPECT_EQ(all[0].name, QStringLiteral("ANNEX"));
    EXPECT_EQ(grid->model()->rowCount(), 1);
}

TEST_F(Locations, CancelLeavesEditModeAndRestoresTheButtons)
{
    frmLocNew screen(desk().ctx);
    click(&screen, "cmdAdd");
    QTest::keyClicks(child<QLineEdit>(&screen, "txtID"), QStringLiteral("x"));
    click(&screen, "cmdCancel");
    EXPECT_EQ(screen.mode(), frmLocNew::Mode::View);
    for (const char* b : {"cmdAdd", "cmdEdit", "cmdDel", "cmdRefresh"})
        EXPECT_TRUE(child<QPushButton>(&screen, b)->isEnabled()) << b;
    EXPECT_FALSE(child<QPushButton>(&screen, "OKButton")->isEnabled());
    EXPECT_EQ(ServerLocations(desk().ctx).all().size(), 2u);
}
