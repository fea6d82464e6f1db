// Messages composed on an event and queued for the gateway.
#include "support/expect.h"

#include "messaging/smsqueue.h"

using namespace tolmar;
using namespace tolmar::test;
using namespace Qt::StringLiterals;
using db::Database;

namespace {
const QString kPno = u"001/000000031"_s;
}

TEST(SmsPhone, ElevenCharactersAreLocalOthersGoAsTheyAre)
{
    EXPECT_EQ(normalisePhone(u"08031234567"_s, QString()), u"2348031234567"_s);
    EXPECT_EQ(normalisePhone(u"8031234567"_s, QString()), u"8031234567"_s);
    EXPECT_EQ(normalisePhone(u"2348031234567"_s, QString()), u"2348031234567"_s);
    EXPECT_EQ(normalisePhone(QString(), u"07061112222"_s), u"2347061112222"_s);
    EXPECT_EQ(normalisePhone(QString(), QString()), QString());
}

class SmsQueue : public BackendTest {
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        ws->exec(
            u"INSERT INTO hPatients (PNo, Title, psurname, pfirstName, "
            "pPhoneNo) VALUES (?, ?, ?, ?, ?)"_s,
            {kPno, u"MRS"_s, u"O'NEIL"_s, u"Ọlọ́lá"_s, u"08031234567"_s});
        desk->startUp();
    }
    db::Result queued()
    {
        return ws->connect(Database::SmsCenter)->query(u"SELECT * FROM MessageOut ORDER BY SNo"_s);
    }
    SmsRequest attendance()
    {
        SmsRequest r;
        r.clinic = u"GOPD"_s;
        r.pno = kPno;
        r.kind = kSmsAttendance;
        r.reference = u"001000000012"_s;
        r.time = QTime(10, 5);
        r.code = u"C1"_s;
        return r;
    }
    SmsRequest appointment(const QDate& day, const QString& clinic = u"GOPD"_s)
    {
        SmsRequest r = attendance();
        r.kind = kSmsAppointment;
        r.clinic = clinic;
        r.date = day;
        r.reference = u"REF-7"_s;
        return r;
    }
};

TEST_P(SmsQueue, AttendanceGreetsByTheShortSalutation)
{
    EXPECT_EQ(composeSms(desk->ctx, attendance()), 1);
    const auto rows = queued();
    ASSERT_EQ(rows.size(), 1u);
    expectColumns(rows.front(),
                  {"Message=TOLMAR SPECIALIST HOSPITAL\r\nDear MRS O'NEIL, Thank you for visiting "
                   "us today. We wish you quick recovery.",
                   "Phone=2348031234567", "Date=2026-11-23", "SendDate=2026-11-23",
                   "SendTime=10:05 AM", "Remarks=ATTENDANCE", "Remarks2=001000000012",
                   "Catname=ATTEND", "fullName=MRS O'NEIL Ọlọ́lá", "Code=C1", "isSent=0"});
    EXPECT_GT(rows.front().toInt(u"SNoCat"), 0);
}

TEST_P(SmsQueue, AppointmentsAfterTomorrowGetAReminderTheEveningBefore)
{
    EXPECT_EQ(composeSms(desk->ctx, appointment(QDate(2026, 11, 23))), 1);
    EXPECT_EQ(composeSms(desk->ctx, appointment(QDate(2026, 11, 24))), 1);
    EXPECT_EQ(composeSms(desk->ctx, appointment(QDate(2026, 12, 2))), 2);
    const auto rows = queued();
    ASSERT_EQ(rows.size(), 4u);
    const QString text =
        u"TOLMAR SPECIALIST HOSPITAL\r\nDear MRS O'NEIL Ọlọ́lá You have an "
        "APPOINTMENT with the Medical Officer\r\nDate: 02/12/2026\r\n"
        "Time: Between 10am - 3pm\r\nResponse: 08012345678"_s;
    expectColumns(rows.rows[2], {"SendDate=2026-12-01", "SendTime=11:59 PM", "Message=" + text});
    expectColumns(rows.rows[3], {"SendDate=2026-11-23", "SendTime=11:59 PM", "Remarks=APPOINTMENT",
                                 "Message=" + text});
}

TEST_P(SmsQueue, ClinicWithoutADesignationIsNamed)
{
    EXPECT_EQ(composeSms(desk->ctx, appointment(QDate(2026, 11, 24), u"SURGERY"_s)), 1);
    EXPECT_TRUE(
        queued()
            .front()
            .text(u"Message")
            .startsWith(u"TOLMAR SPECIALIST HOSPITAL\r\nDear MRS O'NEIL Ọlọ́lá You have SURGERY "
                        "Clinic APPOINTMENT\r\nDate: 24/11/2026\r\n"_s));
}

TEST_P(SmsQueue, ReschedulingLeavesTheCategoryEmpty)
{
    SmsRequest r = appointment(QDate(2026, 11, 24));
    r.rescheduling = true;
    EXPECT_EQ(composeSms(desk->ctx, r), 1);
    expectColumns(queued().front(), {"Catname=", "fullName=MRS O'NEIL Ọlọ́lá", "Remarks2=REF-7"});
}

TEST_P(SmsQueue, NothingIsQueuedUnlessSmsIsOn)
{
    for (const QString& off : {u"NO"_s, u"Yes"_s}) {
        desk->ctx.session().defaults.SendSMS = off;
        EXPECT_EQ(composeSms(desk->ctx, attendance()), 0);
        EXPECT_EQ(composeSms(desk->ctx, appointment(QDate(2026, 12, 20))), 0);
    }
    EXPECT_TRUE(queued().empty());
}

TEST_P(SmsQueue, UnknownPatientStillGoesToTheFallbackNumber)
{
    SmsRequest r = attendance();
    r.pno = u"001/999999999"_s;
    r.fallbackPhone = u"07061112222"_s;
    EXPECT_EQ(composeSms(desk->ctx, r), 1);
    EXPECT_EQ(queued().front().text(u"Phone"), u"2347061112222"_s);
}

TEST_P(SmsQueue, AFailureIsSwallowedAndTheCursorComesBack)
{
    ws->connect(Database::SmsCenter)->execScript(u"DROP TABLE MessageOut"_s);
    desk->ctx.resetConnections();
    EXPECT_EQ(composeSms(desk->ctx, attendance()), 0);
    EXPECT_EQ(desk->prompter.busyDepth(), 0);
    EXPECT_TRUE(desk->prompter.messages().empty());
}

TOLMAR_INSTANTIATE_BACKENDS(SmsQueue);
