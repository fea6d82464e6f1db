// The list reports the main menu starts itself, on both backends: the empty messages, the
// day they cover, the captions, and the rows that reach the report window.
#include "mainwindowfixture.h"

#include "reports/datareportview.h"

#include <QMdiArea>
#include <QMdiSubWindow>

using namespace tolmar;
using namespace tolmar::test;
using namespace Qt::StringLiterals;

namespace {

class MenuReports : public MainWindowTest {
protected:
    // The report windows open in the frame, newest last.
    QList<DataReportView*> reportWindows() const
    {
        QList<DataReportView*> out;
        for (QMdiSubWindow* sub : window->mdiArea()->subWindowList())
            if (auto* v = qobject_cast<DataReportView*>(sub->widget()))
                out << v;
        return out;
    }
    // Opens the window and runs a report from the menu: the one report window it leaves.
    DataReportView* run(const char* entry)
    {
        if (!window)
            open();
        action(QString::fromLatin1(entry))->trigger();
        const auto all = reportWindows();
        EXPECT_EQ(all.size(), 1);
        return all.isEmpty() ? nullptr : all.front();
    }
    // The report's name, window title and caption.
    static QString title(const DataReportView* v)
    {
        return v->objectName() + u'|' + v->windowTitle() + u'|' + v->document().caption;
    }
    // The printed values of one column of the report, by caption.
    static QStringList column(const DataReportView* v, const QString& caption)
    {
        const auto& doc = v->document();
        int at = -1;
        for (int i = 0; i < int(doc.columns.size()); ++i)
            if (doc.columns[size_t(i)].caption == caption)
                at = i;
        QStringList out;
        if (at < 0)
            return out;
        for (const QStringList& row : doc.rows)
            out << row.at(at);
        return out;
    }
};

TEST_P(MenuReports, EachSaysSoWhenThereIsNothingToList)
{
    open();
    const std::pair<const char*, const char*> entries[] = {
        {"mnuRptSB", "No Patient Visit to clinic For Today"},
        {"mnuDR", "No New Registration For Today"},
        {"mnuPOA", "No Patient on Admission"},
        {"mnuINC", "No Income between these two dates"},
        {"mnuHMONHIS", "No HMO or NHIS Enrollee in the System"}};
    for (const auto& [name, message] : entries) {
        desk->prompter.clear();
        action(QString::fromLatin1(name))->trigger();
        EXPECT_EQ(desk->prompter.informs(), QStringList{QString::fromLatin1(message)}) << name;
    }
    EXPECT_TRUE(reportWindows().isEmpty());
}

TEST_P(MenuReports, DailyAttendanceListsTodaysVisitsNewestFirst)
{
    const QDate today(2026, 11, 23);
    addPatient(u"001/000000001"_s, u"O'CONNOR"_s, u"ỌLỌ́LÁ"_s, u"0007"_s);
    addPatient(u"001/000000002"_s, u"BELLO"_s, u"MUSA"_s);
    addVisit(u"001/000000001"_s, u"001000000001"_s, today, u"08:15"_s, u"GOPD"_s, u"0007"_s);
    addVisit(u"001/000000002"_s, u"001000000002"_s, today, u"11:40"_s, u"EYE CLINIC"_s);
    addVisit(u"001/000000002"_s, u"001000000003"_s, today.addDays(-1), u"12:00"_s);
    DataReportView* v = run("mnuRptSB");
    ASSERT_NE(v, nullptr);
    EXPECT_TRUE(desk->prompter.messages().empty());
    EXPECT_EQ(title(v),
              u"rptAttendance|Patients Attendance for Today|Patients Attendance for Today"_s);
    EXPECT_EQ(v->document().heading, u"TOLMAR SPECIALIST HOSPITAL"_s);
    EXPECT_EQ(v->document().printedOn, u"23/11/2026"_s);
    EXPECT_EQ(column(v, u"Patient Name"_s), (QStringList{u"BELLO MUSA"_s, u"O'CONNOR ỌLỌ́LÁ"_s}));
    EXPECT_EQ(column(v, u"Time"_s), (QStringList{u"11:40"_s, u"08:15"_s}));
    EXPECT_EQ(column(v, u"Date"_s), (QStringList{u"23/11/2026"_s, u"23/11/2026"_s}));
    // The payer by name, quote and all; the officer who took the visit.
    EXPECT_EQ(column(v, u"Company"_s).last(), u"O'DEX & SONS (NIG) LTD"_s);
    EXPECT_EQ(column(v, u"Taken By"_s).first(), u"demo"_s);
    EXPECT_EQ(v->pageCount(), 1);

    // Asking again replaces the window rather than stacking another.
    action(u"mnuRptSB"_s)->trigger();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(reportWindows().size(), 1);
}

TEST_P(MenuReports, DailyRegistrationListsTodaysNewPatients)
{
    const QDate today(2026, 11, 23);
    addPatient(u"001/000000001"_s, u"ADEYEMI"_s, u"TOLU"_s, u"0001"_s, today.addYears(1), 0, today);
    addPatient(u"001/000000002"_s, u"EZE"_s, u"JOHN"_s, u"0004"_s, QVariant(), 0,
               today.addDays(-2));
    // The patient row keeps the registering officer's employee id.
    ws->exec(u"UPDATE hPatients SET Username = ?"_s, {u"EMP001"_s});
    DataReportView* v = run("mnuDR");
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(title(v),
              u"rptNewReg|Patients Registration for Today|Patients Registration for Today"_s);
    // Named as the attendance list names who took a visit: by user name.
    EXPECT_EQ(column(v, u"Registered By"_s), QStringList{u"demo"_s});
    EXPECT_EQ(column(v, u"System No"_s), QStringList{u"001/000000001"_s});
    EXPECT_EQ(column(v, u"Company"_s), QStringList{u"PRIVATE PATIENTS"_s});
}

TEST_P(MenuReports, OnAdmissionListsStaysNotYetDischargedByName)
{
    addPatient(u"001/000000001"_s, u"YUSUF"_s, u"AISHA"_s, u"0004"_s);
    addPatient(u"001/000000002"_s, u"BELLO"_s, u"MUSA"_s);
    addPatient(u"001/000000003"_s, u"ADEYEMI"_s, u"TOLU"_s);
    addAdmission(u"001/000000001"_s, u"001000000001"_s, u"HMO"_s,
                 QDateTime(QDate(2026, 11, 25), QTime(14, 10)));
    addAdmission(u"001/000000002"_s, u"001000000002"_s, u"PRIVATE"_s, QVariant());
    addAdmission(u"001/000000003"_s, u"001000000003"_s, u"PRIVATE"_s, QVariant(), 1);
    DataReportView* v = run("mnuPOA");
    ASSERT_NE(v, nullptr);
    // No caption of its own: the report's title stands.
    EXPECT_EQ(title(v).section(u'|', 1), u"Patients Currently on Admission|"_s);
    EXPECT_EQ(column(v, u"Patient Name"_s), (QStringList{u"BELLO MUSA"_s, u"YUSUF AISHA"_s}));
    EXPECT_EQ(column(v, u"Company"_s).last(), u"HYLOVA HMO"_s);
    EXPECT_EQ(column(v, u"Stay Limit"_s), (QStringList{QString(), u"25/11/2026 2:10 PM"_s}));
}

TEST_P(MenuReports, IncomeForTodayTotalsTheDaysReceipts)
{
    const QDate today(2026, 11, 23);
    addPatient(u"001/000000001"_s, u"ADEYEMI"_s, u"TOLU"_s);
    for (const auto& [no, day, amount] : {std::tuple{"R0001", today, 12500.0},
                                          {"R0002", today, 1500.5},
                                          {"R0003", today.addDays(-1), 900.0}})
        ws->exec(
            u"insert into hpayments (receiptNo, receiptDate, receiptTime, billNo, PNo, "
            "ClientID, AmountPaid, PayMode, Username) values (?, ?, '09:05', "
            "'001000000001', '001/000000001', '0001', ?, 'CASH', 'cashier')"_s,
            {QString::fromLatin1(no), day, amount});
    DataReportView* v = run("mnuINC");
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v->windowTitle(), u"Income for Today"_s);
    EXPECT_EQ(column(v, u"Amount"_s), (QStringList{u"12,500.00"_s, u"1,500.50"_s}));
    EXPECT_TRUE(v->document().summary.contains(u"Total: 14,000.50"_s))
        << v->document().summary.toStdString();
}

TEST_P(MenuReports, HmoEnrolleesAreCaptionedWithTheMonth)
{
    addPatient(u"001/000000001"_s, u"EZE"_s, u"JOHN"_s, u"0004"_s);
    addPatient(u"001/000000002"_s, u"BELLO"_s, u"MUSA"_s, u"0006"_s);
    addPatient(u"001/000000003"_s, u"ADEYEMI"_s, u"TOLU"_s);
    DataReportView* v = run("mnuHMONHIS");
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(title(v).section(u'|', 0, 1), u"rptHMOList|For the Month of November"_s);
    EXPECT_EQ(column(v, u"HMO / Scheme"_s),
              (QStringList{u"FEDERAL STAFF HEALTH INSURANCE SCHEME"_s, u"HYLOVA HMO"_s}));
}

TOLMAR_INSTANTIATE_BACKENDS(MenuReports);

}  // namespace
