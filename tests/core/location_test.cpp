// The two server-location screens, driven by control name as a person would use them.
#include "support/screenkit.h"
#include "support/expect.h"

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
using namespace Qt::StringLiterals;

namespace {

class Locations : public testing::Test {
protected:
    void SetUp() override
    {
        ws = std::make_unique<Workspace>(db::Backend::Sqlite);
        ws->writeSettings();
        local::createKeyDb(ws->homePath(u"key.db"_s));
        ServerLocations l(desk().ctx);
        l.add(u"10.0.0.4"_s, u"HEAD OFFICE"_s);
        l.add(u"192.168.1.20\\SQL2019"_s, u"ANNEX"_s);
        desk().ctx.session().userName = u"demo"_s;  // holds MANAGEMENT
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
    EXPECT_EQ(list->itemText(0), u"HEAD OFFICE [10.0.0.4]"_s);
    EXPECT_EQ(list->itemText(1), u"ANNEX [192.168.1.20\\SQL2019]"_s);
    EXPECT_EQ(screen.windowTitle(), u"Server Location"_s);
    list->setCurrentIndex(1);
    EXPECT_EQ(screen.locationAddress(), u"192.168.1.20\\SQL2019"_s);
    EXPECT_EQ(screen.locationName(), u"ANNEX"_s);
}

TEST_F(Locations, ConnectWithoutAChoiceAsksForOne)
{
    frmLocIP screen(desk().ctx);
    screen.show();
    click(&screen, "cmdOK");
    EXPECT_EQ(desk().prompter.lastText(), u"Specify Server Name"_s);
    EXPECT_EQ(screen.focusWidget(), child<QComboBox>(&screen, "cboVehNo"));
}

TEST_F(Locations, ConnectRewritesMadeSysAndRunsTheStartUpAgain)
{
    int reruns = 0;
    desk().ctx.rerunStartup = [&] { ++reruns; };
    frmLocIP screen(desk().ctx);
    child<QComboBox>(&screen, "cboVehNo")->setCurrentIndex(0);
    click(&screen, "cmdOK");
    EXPECT_EQ(*files::readLines(ws->homePath(u"made.sys"_s)),
              QStringList{u"SVR=10.0.0.4"_s});  // the HNO line is gone
    EXPECT_EQ(reruns, 1);
    EXPECT_EQ(screen.result(), QDialog::Accepted);
    EXPECT_EQ(desk().prompter.busyDepth(), 0);
}

TEST_F(Locations, MadeSysGoneAtConnectEndsTheProcess)
{
    frmLocIP screen(desk().ctx);
    child<QComboBox>(&screen, "cboVehNo")->setCurrentIndex(0);
    QFile::remove(ws->homePath(u"made.sys"_s));
    click(&screen, "cmdOK");
    EXPECT_EQ(desk().prompter.lastText(),
              u"A System file  required for Server Location is MISSING"_s);
    EXPECT_EQ(desk().endedWith, std::vector<int>{kExitLocationFileMissing});
    EXPECT_FALSE(QFile::exists(ws->homePath(u"made.sys"_s)));
}

TEST_F(Locations, SaveChecksBothFieldsInOrder)
{
    frmLocNew screen(desk().ctx);
    screen.show();
    click(&screen, "cmdAdd");
    click(&screen, "OKButton");
    EXPECT_EQ(desk().prompter.lastText(), u"Specify Ip Address of new Server Location"_s);
    QTest::keyClicks(child<QLineEdit>(&screen, "txtID"), u"  "_s);
    click(&screen, "OKButton");
    EXPECT_EQ(desk().prompter.lastText(), u"Specify Ip Address of new Server Location"_s);
    child<QLineEdit>(&screen, "txtID")->clear();
    QTest::keyClicks(child<QLineEdit>(&screen, "txtID"), u"10.1.1.1"_s);
    click(&screen, "OKButton");
    EXPECT_EQ(desk().prompter.lastText(), u"Specify Name of new Server Location"_s);
    EXPECT_EQ(screen.focusWidget(), child<QLineEdit>(&screen, "txtName"));
    EXPECT_EQ(screen.mode(), frmLocNew::Mode::Add);  // nothing typed was lost
    EXPECT_EQ(child<QLineEdit>(&screen, "txtID")->text(), u"10.1.1.1"_s);
}

TEST_F(Locations, AddKeepsBracketsTypesCapitalsAndRefreshesBothScreens)
{
    QWidget* list = desk().ctx.screens().open(u"frmLocIP"_s);
    ASSERT_NE(list, nullptr);
    frmLocNew screen(desk().ctx);
    click(&screen, "cmdAdd");
    EXPECT_FALSE(child<QPushButton>(&screen, "cmdAdd")->isEnabled());
    EXPECT_TRUE(child<QPushButton>(&screen, "OKButton")->isEnabled());
    QTest::keyClicks(child<QLineEdit>(&screen, "txtID"), u" db-3 "_s);
    QTest::keyClicks(child<QLineEdit>(&screen, "txtName"), u"o'dua [west] ward"_s);
    click(&screen, "OKButton");
    EXPECT_EQ(desk().prompter.lastText(), u"Record Succesfully saved"_s);
    const auto all = ServerLocations(desk().ctx).all();
    ASSERT_EQ(all.size(), 3u);
    EXPECT_EQ(all[2].id, u"DB-3"_s);
    EXPECT_EQ(all[2].name, u"O'DUA [WEST] WARD"_s);
    EXPECT_EQ(screen.mode(), frmLocNew::Mode::View);
    EXPECT_TRUE(child<QLineEdit>(&screen, "txtID")->text().isEmpty());
    EXPECT_EQ(child<QTableView>(&screen, "grdData")->model()->rowCount(), 3);
    EXPECT_EQ(list->findChild<QComboBox*>(u"cboVehNo"_s)->count(), 3);
    list->close();
}

TEST_F(Locations, EditRewritesTheRowWithoutBrackets)
{
    frmLocNew screen(desk().ctx);
    auto* grid = child<QTableView>(&screen, "grdData");
    grid->setCurrentIndex(grid->model()->index(1, 0));
    click(&screen, "cmdEdit");
    EXPECT_EQ(child<QLineEdit>(&screen, "txtID")->text(), u"192.168.1.20\\SQL2019"_s);
    EXPECT_EQ(child<QLineEdit>(&screen, "txtName")->text(), u"ANNEX"_s);
    child<QLineEdit>(&screen, "txtName")->setText(u"[ANNEX] B"_s);
    click(&screen, "OKButton");
    const auto all = ServerLocations(desk().ctx).all();
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[1].name, u"ANNEX B"_s);
    EXPECT_EQ(all[1].id, u"192.168.1.20\\SQL2019"_s);
}

TEST_F(Locations, DeleteAsksFirstAndNoKeepsTheRow)
{
    frmLocNew screen(desk().ctx);
    auto* grid = child<QTableView>(&screen, "grdData");
    grid->setCurrentIndex(grid->model()->index(0, 0));
    desk().prompter.answerNo();
    click(&screen, "cmdDel");
    EXPECT_EQ(lastBox(desk().prompter), u"Are you sure to Delete Record|Delete"_s);
    EXPECT_EQ(ServerLocations(desk().ctx).all().size(), 2u);

    desk().prompter.answerYes();
    click(&screen, "cmdDel");
    EXPECT_EQ(desk().prompter.lastText(), u" Record successfully deleted "_s);
    const auto all = ServerLocations(desk().ctx).all();
    ASSERT_EQ(all.size(), 1u);
    EXPECT_EQ(all[0].name, u"ANNEX"_s);
    EXPECT_EQ(grid->model()->rowCount(), 1);
}

TEST_F(Locations, CancelLeavesEditModeAndRestoresTheButtons)
{
    frmLocNew screen(desk().ctx);
    click(&screen, "cmdAdd");
    QTest::keyClicks(child<QLineEdit>(&screen, "txtID"), u"x"_s);
    click(&screen, "cmdCancel");
    EXPECT_EQ(screen.mode(), frmLocNew::Mode::View);
    for (const char* b : {"cmdAdd", "cmdEdit", "cmdDel", "cmdRefresh"})
        EXPECT_TRUE(child<QPushButton>(&screen, b)->isEnabled()) << b;
    EXPECT_FALSE(child<QPushButton>(&screen, "OKButton")->isEnabled());
    EXPECT_EQ(ServerLocations(desk().ctx).all().size(), 2u);
}
