// The SMS Center screen, driven by control name.
#include "support/expect.h"

#include "messaging/frmbirthday.h"

#include <QComboBox>
#include <QDateEdit>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>
#include <QTest>
#include <QTimeEdit>

using namespace tolmar;
using namespace tolmar::test;
using namespace Qt::StringLiterals;
using db::Database;

class SmsCenterScreen : public BackendTest {
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        const QDate today = QDate::currentDate();  // the database's own today decides birthdays
        insertRows(*ws, u"hPatients"_s,
                   u"PNo, Title, psurname, pfirstName, pPhoneNo, clientCatID, DOB, CoyName"_s,
                   {{"001/000000001", "MR", "BELLO", "MUSA", "08031234567", "HMO",
                     today.addYears(-40), "0004"},
                    {"001/000000002", "MRS", "EZE", "NGOZI", "07061112222", "HMO",
                     today.addYears(-30).addDays(3), "0004"},
                    {"001/000000003", "MISS", "OJO", "ADA", QString(), "PRIVATE",
                     today.addYears(-8).addDays(-40), "0001"}});
        desk->startUp();
    }
    std::unique_ptr<frmBirthday> open()
    {
        auto s = std::make_unique<frmBirthday>(desk->ctx);
        s->show();
        return s;
    }
    void choose(QWidget* s, const char* combo, const QString& text)
    {
        auto* box = child<QComboBox>(s, combo);
        const int i = box->findText(text, Qt::MatchStartsWith);
        ASSERT_GE(i, 0) << text.toStdString();
        box->setCurrentIndex(i);
    }
    int queued()
    {
        return ws->scalar(u"SELECT count(*) FROM MessageOut"_s, {}, Database::SmsCenter).toInt();
    }
};

TEST_P(SmsCenterScreen, LoadsTheListsAndGuardsTheSpecialTab)
{
    auto s = open();
    EXPECT_EQ(s->windowTitle(), u"SMS Center"_s);
    EXPECT_EQ(child<QComboBox>(s.get(), "cboCat")->count(), 6);
    auto* people = child<QComboBox>(s.get(), "cboVehNo");
    ASSERT_EQ(people->count(), 3);
    EXPECT_TRUE(people->itemText(2).startsWith(u"HMO ENROLLEES ["_s));
    EXPECT_EQ(child<QLabel>(s.get(), "lblGridTitle")->text(), u"Saved Special Messages"_s);
    EXPECT_FALSE(child<QPushButton>(s.get(), "cmdExcel")->isVisibleTo(s.get()));
    EXPECT_TRUE(child<QTabWidget>(s.get(), "tabSMS")->isTabEnabled(1));
    EXPECT_EQ(child<QLabel>(s.get(), "lblChars")->text(), u"459 Characters left"_s);

    // Someone not listed among the SMS senders sees the special tab closed.
    ws->exec(u"DELETE FROM UsersForSMS"_s, {}, Database::SmsCenter);
    desk->ctx.session().defaults.EnableDOBExport = u"YES"_s;
    auto t = open();
    EXPECT_FALSE(child<QTabWidget>(t.get(), "tabSMS")->isTabEnabled(1));
    EXPECT_TRUE(child<QPushButton>(t.get(), "cmdExcel")->isVisibleTo(t.get()));
}

TEST_P(SmsCenterScreen, BirthdaysOfTheDay)
{
    auto s = open();
    click(s.get(), "cmdBirthday");
    EXPECT_EQ(child<QLabel>(s.get(), "lblShow")->text(), u"Happy Birthday Today"_s);
    auto* grid = child<QTableView>(s.get(), "grdData");
    ASSERT_EQ(grid->model()->rowCount(), 1);
    const auto* m = grid->model();
    QStringList header;
    for (int c = 0; c < m->columnCount(); ++c)
        header << m->headerData(c, Qt::Horizontal).toString().toLower();
    EXPECT_EQ(header, (QStringList{"sno", "fullname", "phone", "email", "company"}));
    EXPECT_EQ(m->index(0, 1).data().toString(), u"MR BELLO MUSA"_s);
    EXPECT_EQ(m->index(0, 4).data().toString(), u"HYLOVA HMO"_s);

    ws->exec(u"UPDATE hPatients SET DOB = NULL"_s);
    click(s.get(), "cmdBirthday");
    EXPECT_EQ(child<QLabel>(s.get(), "lblShow")->text(), u"No Patient has Birthday Today"_s);
}

TEST_P(SmsCenterScreen, StatusAndCredit)
{
    auto s = open();
    click(s.get(), "cmdSMS");
    expectControls(s.get(), {"lblShow=No SMS Sent Today", "lblAttnd=1,250.00", "lblBirth=300.00"});
    ws->exec(u"DELETE FROM SmsAccount WHERE CatName = ?"_s, {u"PROMO"_s}, Database::SmsCenter);
    ws->exec(
        u"INSERT INTO MessageOut (Date, Message, isSent, Catname) VALUES "
        "(?, ?, 1, ?), (?, ?, 0, ?)"_s,
        {QDate(2026, 11, 23), u"a"_s, u"ATTEND"_s, QDate(2026, 11, 23), u"b"_s, u"ATTEND"_s},
        Database::SmsCenter);
    click(s.get(), "cmdSMS");
    expectControls(s.get(), {"lblShow=SMS Status Today", "lblPromo=N/A"});
    const auto* m = child<QTableView>(s.get(), "grdData")->model();
    ASSERT_EQ(m->rowCount(), 1);
    EXPECT_EQ(m->index(0, 1).data().toInt(), 2);
    EXPECT_EQ(m->index(0, 2).data().toInt(), 1);
}

TEST_P(SmsCenterScreen, DisplayListsAndCountsTheGroup)
{
    auto s = open();
    click(s.get(), "cmdDisplay");
    EXPECT_EQ(desk->prompter.lastText(), u"Specify Patient Category"_s);
    EXPECT_EQ(s->focusWidget(), child<QComboBox>(s.get(), "cboVehNo"));
    choose(s.get(), "cboVehNo", u"HMO ENROLLEES"_s);
    click(s.get(), "cmdDisplay");
    expectControls(s.get(), {"lblTotalNum=2", "lblDisplayTitle=Patients that will Receive SMS"});
    EXPECT_EQ(child<QTableView>(s.get(), "grdDisplay")->model()->rowCount(), 2);
}

TEST_P(SmsCenterScreen, SendChecksInOrderAndAsksFirst)
{
    auto s = open();
    auto expect = [&](const char* message, const char* focus) {
        click(s.get(), "cmdSend");
        EXPECT_EQ(desk->prompter.lastText(), QString::fromLatin1(message));
        EXPECT_EQ(s->focusWidget()->objectName(), QString::fromLatin1(focus));
    };
    expect("Specify Patient Category", "cboVehNo");
    choose(s.get(), "cboVehNo", u"HMO ENROLLEES"_s);
    expect("Specify Message Category", "cboCat");
    choose(s.get(), "cboCat", u"PROMO"_s);
    expect("Specify Send Date", "dtDate");
    child<QDateEdit>(s.get(), "dtDate")->setDate(QDate(2026, 11, 30));
    expect("Specify Send Time", "dtTime");
    child<QTimeEdit>(s.get(), "dtTime")->setTime(QTime(9, 0));
    child<QPlainTextEdit>(s.get(), "txtMessage")->setPlainText(u"   "_s);
    expect("Specify Message to Recipients", "txtMessage");
    child<QPlainTextEdit>(s.get(), "txtMessage")->setPlainText(u"Free eye check"_s);
    expect("No Recipients in the Grid to Receive message", "grdDisplay");

    click(s.get(), "cmdDisplay");
    desk->prompter.answerNo();
    click(s.get(), "cmdSend");
    EXPECT_EQ(lastBox(desk->prompter), u"Are you sure to Send Message to these Recipients|Send"_s);
    EXPECT_EQ(queued(), 0);
}

TEST_P(SmsCenterScreen, SendQueuesEveryRecipientAndKeepsTheMessage)
{
    auto s = open();
    choose(s.get(), "cboVehNo", u"HMO ENROLLEES"_s);
    choose(s.get(), "cboCat", u"PROMO"_s);
    child<QDateEdit>(s.get(), "dtDate")->setDate(QDate(2026, 11, 30));
    child<QTimeEdit>(s.get(), "dtTime")->setTime(QTime(14, 30));
    const QString text = u"Don't miss Saturday's free eye check; bring O'Neil's card"_s;
    child<QPlainTextEdit>(s.get(), "txtMessage")->setPlainText(text);
    click(s.get(), "cmdDisplay");
    // Somebody joins the group after the desk looked at it: not shown, not sent to.
    ws->exec(
        u"INSERT INTO hPatients (PNo, psurname, pPhoneNo, clientCatID, "
        "CoyName) VALUES ('001/000000009', 'LATE', '08039999999', 'HMO', "
        "'0004')"_s);
    desk->prompter.answerYes();
    click(s.get(), "cmdSend");
    EXPECT_EQ(desk->prompter.lastText(), u"2 Record successfully Sent to SMS Center"_s);
    auto c = ws->connect(Database::SmsCenter);
    const auto rows = c->query(u"SELECT * FROM MessageOut ORDER BY Code"_s);
    ASSERT_EQ(rows.size(), 2u);
    // No reference of the desk's own making.
    expectColumns(rows.front(),
                  {"Message=Dear MR BELLO,\r\n" + text, "Phone=08031234567", "Code=001/000000001",
                   "SendDate=2026-11-30", "SendTime=2:30 PM", "Catname=PROMO",
                   "Remarks=HMO ENROLLEES", "isSent=0", "fullName=MR BELLO MUSA", "Remarks2="});

    // Sending again to the same two categories rewrites the saved message, not a second one.
    child<QPlainTextEdit>(s.get(), "txtMessage")->setPlainText(u"Changed"_s);
    desk->prompter.answerYes();
    click(s.get(), "cmdSend");
    EXPECT_EQ(c->scalar(u"SELECT count(*) FROM messageSpecial"_s).toInt(), 1);
    EXPECT_EQ(c->scalar(u"SELECT Message FROM messageSpecial"_s).toString(), u"Changed"_s);
    EXPECT_EQ(queued(), 4);
    EXPECT_EQ(child<QTableView>(s.get(), "grdData")->model()->rowCount(), 1);
}

TEST_P(SmsCenterScreen, CharacterCounterStopsAtTheLimit)
{
    auto s = open();
    auto* text = child<QPlainTextEdit>(s.get(), "txtMessage");
    QTest::keyClicks(text, u"Hello"_s);
    EXPECT_EQ(child<QLabel>(s.get(), "lblChars")->text(), u"454 Characters left"_s);
    text->setPlainText(QString(500, QLatin1Char('x')));
    EXPECT_EQ(text->toPlainText().size(), 459);
    EXPECT_EQ(child<QLabel>(s.get(), "lblChars")->text(), u"Maximum Characters Reached!"_s);
}

TOLMAR_INSTANTIATE_BACKENDS(SmsCenterScreen);
