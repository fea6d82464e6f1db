// The SMS Center screen, driven by control name.
#include "support/screenkit.h"
#include "support/workspace.h"

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
using db::Database;

class SmsCenterScreen : public BackendTest {
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        const QDate today = QDate::currentDate();  // the database's own today decides birthdays
        ws->exec(QStringLiteral("INSERT INTO hPatients (PNo, Title, psurname, pfirstName, pPhoneNo, "
                                "clientCatID, DOB, CoyName) VALUES (?, ?, ?, ?, ?, ?, ?, ?), "
                                "(?, ?, ?, ?, ?, ?, ?, ?), (?, ?, ?, ?, ?, ?, ?, ?)"),
                 {QStringLiteral("001/000000001"), QStringLiteral("MR"), QStringLiteral("BELLO"),
                  QStringLiteral("MUSA"), QStringLiteral("08031234567"), QStringLiteral("HMO"),
                  today.addYears(-40), QStringLiteral("0004"),
                  QStringLiteral("001/000000002"), QStringLiteral("MRS"), QStringLiteral("EZE"),
                  QStringLiteral("NGOZI"), QStringLiteral("07061112222"), QStringLiteral("HMO"),
                  today.addYears(-30).addDays(3), QStringLiteral("0004"),
                  QStringLiteral("001/000000003"), QStringLiteral("MISS"), QStringLiteral("OJO"),
                  QStringLiteral("ADA"), QString(), QStringLiteral("PRIVATE"),
                  today.addYears(-8).addDays(-40), QStringLiteral("0001")});
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
        return ws->scalar(QStringLiteral("SELECT count(*) FROM MessageOut"), {}, Database::SmsCenter)
            .toInt();
    }
};

TEST_P(SmsCenterScreen, LoadsTheListsAndGuardsTheSpecialTab)
{
    auto s = open();
    EXPECT_EQ(s->windowTitle(), QStringLiteral("SMS Center"));
    EXPECT_EQ(child<QComboBox>(s.get(), "cboCat")->count(), 6);
    auto* people = child<QComboBox>(s.get(), "cboVehNo");
    ASSERT_EQ(people->count(), 3);
    EXPECT_TRUE(people->itemText(2).startsWith(QStringLiteral("HMO ENROLLEES [")));
    EXPECT_EQ(child<QLabel>(s.get(), "lblGridTitle")->text(), QStringLiteral("Saved Special Messages"));
    EXPECT_FALSE(child<QPushButton>(s.get(), "cmdExcel")->isVisibleTo(s.get()));
    EXPECT_TRUE(child<QTabWidget>(s.get(), "tabSMS")->isTabEnabled(1));
    EXPECT_EQ(child<QLabel>(s.get(), "lblChars")->text(), QStringLiteral("459 Characters left"));

    // Someone not listed among the SMS senders sees the special tab closed.
    ws->exec(QStringLiteral("DELETE FROM UsersForSMS"), {}, Database::SmsCenter);
    desk->ctx.session().defaults.EnableDOBExport = QStringLiteral("YES");
    auto t = open();
    EXPECT_FALSE(child<QTabWidget>(t.get(), "tabSMS")->isTabEnabled(1));
    EXPECT_TRUE(child<QPushButton>(t.get(), "cmdExcel")->isVisibleTo(t.get()));
}

TEST_P(SmsCenterScreen, BirthdaysOfTheDay)
{
    auto s = open();
    click(s.get(), "cmdBirthday");
    EXPECT_EQ(child<QLabel>(s.get(), "lblShow")->text(), QStringLiteral("Happy Birthday Today"));
    auto* grid = child<QTableView>(s.get(), "grdData");
    ASSERT_EQ(grid->model()->rowCount(), 1);
    const auto* m = grid->model();
    QStringList header;
    for (int c = 0; c < m->columnCount(); ++c)
        header << m->headerData(c, Qt::Horizontal).toString().toLower();
    EXPECT_EQ(header, (QStringList{"sno", "fullname", "phone", "email", "company"}));
    EXPECT_EQ(m->index(0, 1).data().toString(), QStringLiteral("MR BELLO MUSA"));
    EXPECT_EQ(m->index(0, 4).data().toString(), QStringLiteral("HYLOVA HMO"));

    ws->exec(QStringLiteral("UPDATE hPatients SET DOB = NULL"));
    click(s.get(), "cmdBirthday");
    EXPECT_EQ(child<QLabel>(s.get(), "lblShow")->text(), QStringLiteral("No Patient has Birthday Today"));
}

TEST_P(SmsCenterScreen, StatusAndCredit)
{
    auto s = open();
    click(s.get(), "cmdSMS");
    EXPECT_EQ(child<QLabel>(s.get(), "lblShow")->text(), QStringLiteral("No SMS Sent Today"));
    EXPECT_EQ(child<QLabel>(s.get(), "lblAttnd")->text(), QStringLiteral("1,250.00"));
    EXPECT_EQ(child<QLabel>(s.get(), "lblBirth")->text(), QStringLiteral("300.00"));
    ws->exec(QStringLiteral("DELETE FROM SmsAccount WHERE CatName = ?"), {QStringLiteral("PROMO")},
             Database::SmsCenter);
    ws->exec(QStringLiteral("INSERT INTO MessageOut (Date, Message, isSent, Catname) VALUES "
                            "(?, ?, 1, ?), (?, ?, 0, ?)"),
             {QDate(2026, 11, 23), QStringLiteral("a"), QStringLiteral("ATTEND"),
              QDate(2026, 11, 23), QStringLiteral("b"), QStringLiteral("ATTEND")},
             Database::SmsCenter);
    click(s.get(), "cmdSMS");
    EXPECT_EQ(child<QLabel>(s.get(), "lblShow")->text(), QStringLiteral("SMS Status Today"));
    EXPECT_EQ(child<QLabel>(s.get(), "lblPromo")->text(), QStringLiteral("N/A"));
    const auto* m = child<QTableView>(s.get(), "grdData")->model();
    ASSERT_EQ(m->rowCount(), 1);
    EXPECT_EQ(m->index(0, 1).data().toInt(), 2);
    EXPECT_EQ(m->index(0, 2).data().toInt(), 1);
}

TEST_P(SmsCenterScreen, DisplayListsAndCountsTheGroup)
{
    auto s = open();
    click(s.get(), "cmdDisplay");
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Specify Patient Category"));
    EXPECT_EQ(s->focusWidget(), child<QComboBox>(s.get(), "cboVehNo"));
    choose(s.get(), "cboVehNo", QStringLiteral("HMO ENROLLEES"));
    click(s.get(), "cmdDisplay");
    EXPECT_EQ(child<QLabel>(s.get(), "lblTotalNum")->text(), QStringLiteral("2"));
    EXPECT_EQ(child<QLabel>(s.get(), "lblDisplayTitle")->text(),
              QStringLiteral("Patients that will Receive SMS"));
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
    choose(s.get(), "cboVehNo", QStringLiteral("HMO ENROLLEES"));
    expect("Specify Message Category", "cboCat");
    choose(s.get(), "cboCat", QStringLiteral("PROMO"));
    expect("Specify Send Date", "dtDate");
    child<QDateEdit>(s.get(), "dtDate")->setDate(QDate(2026, 11, 30));
    expect("Specify Send Time", "dtTime");
    child<QTimeEdit>(s.get(), "dtTime")->setTime(QTime(9, 0));
    child<QPlainTextEdit>(s.get(), "txtMessage")->setPlainText(QStringLiteral("   "));
    expect("Specify Message to Recipients", "txtMessage");
    child<QPlainTextEdit>(s.get(), "txtMessage")->setPlainText(QStringLiteral("Free eye check"));
    expect("No Recipients in the Grid to Receive message", "grdDisplay");

    click(s.get(), "cmdDisplay");
    desk->prompter.answerNo();
    click(s.get(), "cmdSend");
    EXPECT_EQ(desk->prompter.last()->text,
              QStringLiteral("Are you sure to Send Message to these Recipients"));
    EXPECT_EQ(desk->prompter.last()->title, QStringLiteral("Send"));
    EXPECT_EQ(queued(), 0);
}

TEST_P(SmsCenterScreen, SendQueuesEveryRecipientAndKeepsTheMessage)
{
    auto s = open();
    choose(s.get(), "cboVehNo", QStringLiteral("HMO ENROLLEES"));
    choose(s.get(), "cboCat", QStringLiteral("PROMO"));
    child<QDateEdit>(s.get(), "dtDate")->setDate(QDate(2026, 11, 30));
    child<QTimeEdit>(s.get(), "dtTime")->setTime(QTime(14, 30));
    const QString text = QStringLiteral("Don't miss Saturday's free eye check; bring O'Neil's card");
    child<QPlainTextEdit>(s.get(), "txtMessage")->setPlainText(text);
    click(s.get(), "cmdDisplay");
    // Somebody joins the group after the desk looked at it: not shown, not sent to.
    ws->exec(QStringLiteral("INSERT INTO hPatients (PNo, psurname, pPhoneNo, clientCatID, "
                            "CoyName) VALUES ('001/000000009', 'LATE', '08039999999', 'HMO', "
                            "'0004')"));
    desk->prompter.answerYes();
    click(s.get(), "cmdSend");
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("2 Record successfully Sent to SMS Center"));
    auto c = ws->connect(Database::SmsCenter);
    const auto rows = c->query(QStringLiteral("SELECT * FROM MessageOut ORDER BY Code"));
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows.front().text(u"Message"), QStringLiteral("Dear MR BELLO,\r\n") + text);
    EXPECT_EQ(rows.front().text(u"Phone"), QStringLiteral("08031234567"));
    EXPECT_EQ(rows.front().text(u"Code"), QStringLiteral("001/000000001"));
    EXPECT_EQ(rows.front().date(u"SendDate"), QDate(2026, 11, 30));
    EXPECT_EQ(rows.front().text(u"SendTime"), QStringLiteral("2:30 PM"));
    EXPECT_EQ(rows.front().text(u"Catname"), QStringLiteral("PROMO"));
    EXPECT_EQ(rows.front().text(u"Remarks"), QStringLiteral("HMO ENROLLEES"));
    EXPECT_EQ(rows.front().toInt(u"isSent"), 0);
    EXPECT_EQ(rows.front().text(u"fullName"), QStringLiteral("MR BELLO MUSA"));
    EXPECT_TRUE(rows.front().isNull(u"Remarks2"));  // no reference of the desk's own making

    // Sending again to the same two categories rewrites the saved message, not a second one.
    child<QPlainTextEdit>(s.get(), "txtMessage")->setPlainText(QStringLiteral("Changed"));
    desk->prompter.answerYes();
    click(s.get(), "cmdSend");
    EXPECT_EQ(c->scalar(QStringLiteral("SELECT count(*) FROM messageSpecial")).toInt(), 1);
    EXPECT_EQ(c->scalar(QStringLiteral("SELECT Message FROM messageSpecial")).toString(),
              QStringLiteral("Changed"));
    EXPECT_EQ(queued(), 4);
    EXPECT_EQ(child<QTableView>(s.get(), "grdData")->model()->rowCount(), 1);
}

TEST_P(SmsCenterScreen, CharacterCounterStopsAtTheLimit)
{
    auto s = open();
    auto* text = child<QPlainTextEdit>(s.get(), "txtMessage");
    QTest::keyClicks(text, QStringLiteral("Hello"));
    EXPECT_EQ(child<QLabel>(s.get(), "lblChars")->text(), QStringLiteral("454 Characters left"));
    text->setPlainText(QString(500, QLatin1Char('x')));
    EXPECT_EQ(text->toPlainText().size(), 459);
    EXPECT_EQ(child<QLabel>(s.get(), "lblChars")->text(), QStringLiteral("Maximum Characters Reached!"));
}

TOLMAR_INSTANTIATE_BACKENDS(SmsCenterScreen);
