// Messages composed on an event and queued for the gateway.
#include "support/workspace.h"

#include "messaging/smsqueue.h"

using namespace tolmar;
using namespace tolmar::test;
using db::Database;

namespace {
const QString kPno = QStringLiteral("001/000000031");
}

TEST(SmsPhone, ElevenCharactersAreLocalOthersGoAsTheyAre)
{
    EXPECT_EQ(normalisePhone(QStringLiteral("08031234567"), QString()),
              QStringLiteral("2348031234567"));
    EXPECT_EQ(normalisePhone(QStringLiteral("8031234567"), QString()), QStringLiteral("8031234567"));
    EXPECT_EQ(normalisePhone(QStringLiteral("2348031234567"), QString()),
              QStringLiteral("2348031234567"));
    EXPECT_EQ(normalisePhone(QString(), QStringLiteral("07061112222")),
              QStringLiteral("2347061112222"));
    EXPECT_EQ(normalisePhone(QString(), QString()), QString());
}

class SmsQueue : public BackendTest {
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        ws->exec(QStringLiteral("INSERT INTO hPatients (PNo, Title, psurname, pfirstName, "
                                "pPhoneNo) VALUES (?, ?, ?, ?, ?)"),
                 {kPno, QStringLiteral("MRS"), QStringLiteral("O'NEIL"),
                  QStringLiteral("Ọlọ́lá"), QStringLiteral("08031234567")});
        desk->startUp();
    }
    db::Result queued()
    {
        return ws->connect(Database::SmsCenter)
            ->query(QStringLiteral("SELECT * FROM MessageOut ORDER BY SNo"));
    }
    SmsRequest attendance()
    {
        SmsRequest r;
        r.clinic = QStringLiteral("GOPD");
        r.pno = kPno;
        r.kind = kSmsAttendance;
        r.reference = QStringLiteral("001000000012");
        r.time = QTime(10, 5);
        r.code = QStringLiteral("C1");
        return r;
    }
    SmsRequest appointment(const QDate& day, const QString& clinic = QStringLiteral("GOPD"))
    {
        SmsRequest r = attendance();
        r.kind = kSmsAppointment;
        r.clinic = clinic;
        r.date = day;
        r.reference = QStringLiteral("REF-7");
        return r;
    }
};

TEST_P(SmsQueue, AttendanceGreetsByTheShortSalutation)
{
    EXPECT_EQ(composeSms(desk->ctx, attendance()), 1);
    const auto rows = queued();
    ASSERT_EQ(rows.size(), 1u);
    const auto& m = rows.front();
    EXPECT_EQ(m.text(u"Message"),
              QStringLiteral("TOLMAR SPECIALIST HOSPITAL\r\nDear MRS O'NEIL, Thank you for visiting "
                             "us today. We wish you quick recovery."));
    EXPECT_EQ(m.text(u"Phone"), QStringLiteral("2348031234567"));
    EXPECT_EQ(m.date(u"Date"), QDate(2026, 11, 23));
    EXPECT_EQ(m.date(u"SendDate"), QDate(2026, 11, 23));
    EXPECT_EQ(m.text(u"SendTime"), QStringLiteral("10:05 AM"));
    EXPECT_EQ(m.text(u"Remarks"), QStringLiteral("ATTENDANCE"));
    EXPECT_EQ(m.text(u"Remarks2"), QStringLiteral("001000000012"));
    EXPECT_EQ(m.text(u"Catname"), QStringLiteral("ATTEND"));
    EXPECT_EQ(m.text(u"fullName"), QStringLiteral("MRS O'NEIL Ọlọ́lá"));
    EXPECT_EQ(m.text(u"Code"), QStringLiteral("C1"));
    EXPECT_EQ(m.toInt(u"isSent"), 0);
    EXPECT_GT(m.toInt(u"SNoCat"), 0);
}

TEST_P(SmsQueue, AppointmentsAfterTomorrowGetAReminderTheEveningBefore)
{
    EXPECT_EQ(composeSms(desk->ctx, appointment(QDate(2026, 11, 23))), 1);
    EXPECT_EQ(composeSms(desk->ctx, appointment(QDate(2026, 11, 24))), 1);
    EXPECT_EQ(composeSms(desk->ctx, appointment(QDate(2026, 12, 2))), 2);
    const auto rows = queued();
    ASSERT_EQ(rows.size(), 4u);
    const auto& reminder = rows.rows[2];
    EXPECT_EQ(reminder.date(u"SendDate"), QDate(2026, 12, 1));
    EXPECT_EQ(reminder.text(u"SendTime"), QStringLiteral("11:59 PM"));
    const auto& message = rows.rows[3];
    EXPECT_EQ(message.date(u"SendDate"), QDate(2026, 11, 23));
    EXPECT_EQ(message.text(u"SendTime"), QStringLiteral("11:59 PM"));
    EXPECT_EQ(message.text(u"Remarks"), QStringLiteral("APPOINTMENT"));
    EXPECT_EQ(message.text(u"Message"),
              QStringLiteral("TOLMAR SPECIALIST HOSPITAL\r\nDear MRS O'NEIL Ọlọ́lá You have an "
                             "APPOINTMENT with the Medical Officer\r\nDate: 02/12/2026\r\n"
                             "Time: Between 10am - 3pm\r\nResponse: 08012345678"));
    EXPECT_EQ(reminder.text(u"Message"), message.text(u"Message"));
}

TEST_P(SmsQueue, ClinicWithoutADesignationIsNamed)
{
    EXPECT_EQ(composeSms(desk->ctx, appointment(QDate(2026, 11, 24), QStringLiteral("SURGERY"))),
              1);
    EXPECT_TRUE(queued().front().text(u"Message").startsWith(
        QStringLiteral("TOLMAR SPECIALIST HOSPITAL\r\nDear MRS O'NEIL Ọlọ́lá You have SURGERY "
                       "Clinic APPOINTMENT\r\nDate: 24/11/2026\r\n")));
}

TEST_P(SmsQueue, ReschedulingLeavesTheCategoryEmpty)
{
    SmsRequest r = appointment(QDate(2026, 11, 24));
    r.rescheduling = true;
    EXPECT_EQ(composeSms(desk->ctx, r), 1);
    const auto m = queued().front();
    EXPECT_TRUE(m.isNull(u"Catname"));
    EXPECT_EQ(m.text(u"fullName"), QStringLiteral("MRS O'NEIL Ọlọ́lá"));
    EXPECT_EQ(m.text(u"Remarks2"), QStringLiteral("REF-7"));
}

TEST_P(SmsQueue, NothingIsQueuedUnlessSmsIsOn)
{
    for (const QString& off : {QStringLiteral("NO"), QStringLiteral("Yes")}) {
        desk->ctx.session().defaults.SendSMS = off;
        EXPECT_EQ(composeSms(desk->ctx, attendance()), 0);
        EXPECT_EQ(composeSms(desk->ctx, appointment(QDate(2026, 12, 20))), 0);
    }
    EXPECT_TRUE(queued().empty());
}

TEST_P(SmsQueue, UnknownPatientStillGoesToTheFallbackNumber)
{
    SmsRequest r = attendance();
    r.pno = QStringLiteral("001/999999999");
    r.fallbackPhone = QStringLiteral("07061112222");
    EXPECT_EQ(composeSms(desk->ctx, r), 1);
    EXPECT_EQ(queued().front().text(u"Phone"), QStringLiteral("2347061112222"));
}

TEST_P(SmsQueue, AFailureIsSwallowedAndTheCursorComesBack)
{
    ws->connect(Database::SmsCenter)->execScript(QStringLiteral("DROP TABLE MessageOut"));
    desk->ctx.resetConnections();
    EXPECT_EQ(composeSms(desk->ctx, attendance()), 0);
    EXPECT_EQ(desk->prompter.busyDepth(), 0);
    EXPECT_TRUE(desk->prompter.messages().empty());
}

TOLMAR_INSTANTIATE_BACKENDS(SmsQueue);
