// The list reports the main menu starts itself, on both backends: the empty messages, the
// day they cover, the captions, and the rows that reach the report window.
#include "mainwindowfixture.h"

#include "reports/datareportview.h"

#include <QMdiArea>
#include <QMdiSubWindow>

using namespace tolmar;
using namespace tolmar::test;

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
    DataReportView* only() const
    {
        const auto all = reportWindows();
        EXPECT_EQ(all.size(), 1);
        return all.isEmpty() ? nullptr : all.front();
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
    addPatient(QStringLiteral("001/000000001"), QStringLiteral("O'CONNOR"),
               QStringLiteral("ỌLỌ́LÁ"), QStringLiteral("0007"));
    addPatient(QStringLiteral("001/000000002"), QStringLiteral("BELLO"), QStringLiteral("MUSA"));
    addVisit(QStringLiteral("001/000000001"), QStringLiteral("001000000001"), today,
             QStringLiteral("08:15"), QStringLiteral("GOPD"), QStringLiteral("0007"));
    addVisit(QStringLiteral("001/000000002"), QStringLiteral("001000000002"), today,
             QStringLiteral("11:40"), QStringLiteral("EYE CLINIC"));
    addVisit(QStringLiteral("001/000000002"), QStringLiteral("001000000003"), today.addDays(-1),
             QStringLiteral("12:00"));
    open();
    action(QStringLiteral("mnuRptSB"))->trigger();
    EXPECT_TRUE(desk->prompter.messages().empty());
    DataReportView* v = only();
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v->objectName(), QStringLiteral("rptAttendance"));
    EXPECT_EQ(v->windowTitle(), QStringLiteral("Patients Attendance for Today"));
    EXPECT_EQ(v->document().caption, QStringLiteral("Patients Attendance for Today"));
    EXPECT_EQ(v->document().heading, QStringLiteral("TOLMAR SPECIALIST HOSPITAL"));
    EXPECT_EQ(v->document().printedOn, QStringLiteral("23/11/2026"));
    EXPECT_EQ(column(v, QStringLiteral("Patient Name")),
              (QStringList{QStringLiteral("BELLO MUSA"), QStringLiteral("O'CONNOR ỌLỌ́LÁ")}));
    EXPECT_EQ(column(v, QStringLiteral("Time")),
              (QStringList{QStringLiteral("11:40"), QStringLiteral("08:15")}));
    EXPECT_EQ(column(v, QStringLiteral("Date")),
              (QStringList{QStringLiteral("23/11/2026"), QStringLiteral("23/11/2026")}));
    // The payer by name, quote and all; the officer who took the visit.
    EXPECT_EQ(column(v, QStringLiteral("Company")).last(),
              QStringLiteral("O'DEX & SONS (NIG) LTD"));
    EXPECT_EQ(column(v, QStringLiteral("Taken By")).first(), QStringLiteral("demo"));
    EXPECT_EQ(v->pageCount(), 1);

    // Asking again replaces the window rather than stacking another.
    action(QStringLiteral("mnuRptSB"))->trigger();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(reportWindows().size(), 1);
}

TEST_P(MenuReports, DailyRegistrationListsTodaysNewPatients)
{
    const QDate today(2026, 11, 23);
    addPatient(QStringLiteral("001/000000001"), QStringLiteral("ADEYEMI"), QStringLiteral("TOLU"),
               QStringLiteral("0001"), today.addYears(1), 0, today);
    addPatient(QStringLiteral("001/000000002"), QStringLiteral("EZE"), QStringLiteral("JOHN"),
               QStringLiteral("0004"), QVariant(), 0, today.addDays(-2));
    // The patient row keeps the registering officer's employee id.
    ws->exec(QStringLiteral("UPDATE hPatients SET Username = ?"), {QStringLiteral("EMP001")});
    open();
    action(QStringLiteral("mnuDR"))->trigger();
    DataReportView* v = only();
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v->objectName(), QStringLiteral("rptNewReg"));
    // Named as the attendance list names who took a visit: by user name.
    EXPECT_EQ(column(v, QStringLiteral("Registered By")), QStringList{QStringLiteral("demo")});
    EXPECT_EQ(v->windowTitle(), QStringLiteral("Patients Registration for Today"));
    EXPECT_EQ(column(v, QStringLiteral("System No")),
              QStringList{QStringLiteral("001/000000001")});
    EXPECT_EQ(column(v, QStringLiteral("Company")),
              QStringList{QStringLiteral("PRIVATE PATIENTS")});
}

TEST_P(MenuReports, OnAdmissionListsStaysNotYetDischargedByName)
{
    addPatient(QStringLiteral("001/000000001"), QStringLiteral("YUSUF"), QStringLiteral("AISHA"),
               QStringLiteral("0004"));
    addPatient(QStringLiteral("001/000000002"), QStringLiteral("BELLO"), QStringLiteral("MUSA"));
    addPatient(QStringLiteral("001/000000003"), QStringLiteral("ADEYEMI"), QStringLiteral("TOLU"));
    addAdmission(QStringLiteral("001/000000001"), QStringLiteral("001000000001"),
                 QStringLiteral("HMO"), QDateTime(QDate(2026, 11, 25), QTime(14, 10)));
    addAdmission(QStringLiteral("001/000000002"), QStringLiteral("001000000002"),
                 QStringLiteral("PRIVATE"), QVariant());
    addAdmission(QStringLiteral("001/000000003"), QStringLiteral("001000000003"),
                 QStringLiteral("PRIVATE"), QVariant(), 1);
    open();
    action(QStringLiteral("mnuPOA"))->trigger();
    DataReportView* v = only();
    ASSERT_NE(v, nullptr);
    // No caption of its own: the report's title stands.
    EXPECT_EQ(v->windowTitle(), QStringLiteral("Patients Currently on Admission"));
    EXPECT_EQ(v->document().caption, QString());
    EXPECT_EQ(column(v, QStringLiteral("Patient Name")),
              (QStringList{QStringLiteral("BELLO MUSA"), QStringLiteral("YUSUF AISHA")}));
    EXPECT_EQ(column(v, QStringLiteral("Company")).last(), QStringLiteral("HYLOVA HMO"));
    EXPECT_EQ(column(v, QStringLiteral("Stay Limit")),
              (QStringList{QString(), QStringLiteral("25/11/2026 2:10 PM")}));
}

TEST_P(MenuReports, IncomeForTodayTotalsTheDaysReceipts)
{
    const QDate today(2026, 11, 23);
    addPatient(QStringLiteral("001/000000001"), QStringLiteral("ADEYEMI"), QStringLiteral("TOLU"));
    const QString insert = QStringLiteral(
        "insert into hpayments (receiptNo, receiptDate, receiptTime, billNo, PNo, ClientID, "
        "AmountPaid, PayMode, Username) values (?, ?, ?, ?, ?, ?, ?, ?, ?)");
    ws->exec(insert,
             {QStringLiteral("R0001"), today, QStringLiteral("09:05"),
              QStringLiteral("001000000001"), QStringLiteral("001/000000001"),
              QStringLiteral("0001"), 12500.0, QStringLiteral("CASH"), QStringLiteral("cashier")});
    ws->exec(insert,
             {QStringLiteral("R0002"), today, QStringLiteral("09:20"),
              QStringLiteral("001000000001"), QStringLiteral("001/000000001"),
              QStringLiteral("0001"), 1500.5, QStringLiteral("POS"), QStringLiteral("cashier")});
    ws->exec(insert,
             {QStringLiteral("R0003"), today.addDays(-1), QStringLiteral("16:00"),
              QStringLiteral("001000000001"), QStringLiteral("001/000000001"),
              QStringLiteral("0001"), 900.0, QStringLiteral("CASH"), QStringLiteral("cashier")});
    open();
    action(QStringLiteral("mnuINC"))->trigger();
    DataReportView* v = only();
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v->windowTitle(), QStringLiteral("Income for Today"));
    EXPECT_EQ(column(v, QStringLiteral("Amount")),
              (QStringList{QStringLiteral("12,500.00"), QStringLiteral("1,500.50")}));
    EXPECT_TRUE(v->document().summary.contains(QStringLiteral("Total: 14,000.50")))
        << v->document().summary.toStdString();
}

TEST_P(MenuReports, HmoEnrolleesAreCaptionedWithTheMonth)
{
    addPatient(QStringLiteral("001/000000001"), QStringLiteral("EZE"), QStringLiteral("JOHN"),
               QStringLiteral("0004"));
    addPatient(QStringLiteral("001/000000002"), QStringLiteral("BELLO"), QStringLiteral("MUSA"),
               QStringLiteral("0006"));
    addPatient(QStringLiteral("001/000000003"), QStringLiteral("ADEYEMI"), QStringLiteral("TOLU"));
    open();
    action(QStringLiteral("mnuHMONHIS"))->trigger();
    DataReportView* v = only();
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v->objectName(), QStringLiteral("rptHMOList"));
    EXPECT_EQ(v->windowTitle(), QStringLiteral("For the Month of November"));
    EXPECT_EQ(column(v, QStringLiteral("HMO / Scheme")),
              (QStringList{QStringLiteral("FEDERAL STAFF HEALTH INSURANCE SCHEME"),
                           QStringLiteral("HYLOVA HMO")}));
}

TOLMAR_INSTANTIATE_BACKENDS(MenuReports);

}  // namespace
