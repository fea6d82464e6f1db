// List reports on paper: rows from a real statement put into their layout, written as a
// PDF and read back with pdftotext to show caption, columns, rows, page numbers and date.
#include "support/workspace.h"

#include "platform/report.h"
#include "reports/listlayouts.h"

#include <QFontMetricsF>
#include <QPrinter>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

using namespace tolmar;
using namespace tolmar::test;

namespace {

// The text of a PDF as pdftotext lays it out.
QString pdfText(const QString& path)
{
    QProcess p;
    p.start(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), path, QStringLiteral("-")});
    if (!p.waitForFinished(30000) || p.exitCode() != 0)
        return QStringLiteral("<pdftotext failed: %1>")
            .arg(QString::fromLocal8Bit(p.readAllStandardError()));
    return QString::fromUtf8(p.readAllStandardOutput());
}

// A line of the text squeezed to single spaces, so columns can be matched as words.
QStringList squeezedLines(const QString& text)
{
    QStringList out;
    for (const QString& line : text.split(QLatin1Char('\n')))
        out << line.simplified();
    return out;
}

class ListReports : public BackendTest {
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        if (QStandardPaths::findExecutable(QStringLiteral("pdftotext")).isEmpty())
            GTEST_SKIP() << "pdftotext (poppler-utils) is not installed";
        ASSERT_TRUE(dir.isValid());
    }
    void addVisit(int n, const QString& surname, const QString& first, const QDate& day,
                  const QString& time, const QString& coy = QStringLiteral("0001")) const
    {
        const QString pno = QStringLiteral("001/%1").arg(n, 9, 10, QLatin1Char('0'));
        ws->exec(QStringLiteral("insert into hPatients (PNo, oldPno, psurname, pfirstName, "
                                "CoyName, pPhoneNo, Area, empno) values (?, ?, ?, ?, ?, ?, ?, ?)"),
                 {pno, QStringLiteral("LAG/%1").arg(n), surname, first, coy,
                  QStringLiteral("0803%1").arg(n, 7, 10, QLatin1Char('0')),
                  QStringLiteral("IKEJA"), QStringLiteral("NIL")});
        ws->exec(QStringLiteral("insert into hRecords (recDate, htime, PNo, consultID, empID, "
                                "clinicType, CoyName) values (?, ?, ?, ?, ?, ?, ?)"),
                 {day, time, pno, QStringLiteral("001%1").arg(n, 9, 10, QLatin1Char('0')),
                  QStringLiteral("EMP001"), QStringLiteral("GOPD"), coy});
    }
    db::Result attendance(const QDate& day) const
    {
        return ws->connect()->query(
            QStringLiteral("select RecDate,Time,OLdPNo,FullName,ClinicType,CoyName,EmpNo,"
                           "pPhoneNo,Area,Username from qryhVisitsForAttend where recdate = ? "
                           "ORDER BY recDate desc, time desc"),
            {day});
    }
    report::ListDocument document(const db::Result& rows, const QString& caption) const
    {
        const reports::ListLayout* layout =
            reports::findListLayout(QStringLiteral("rptAttendance"));
        EXPECT_NE(layout, nullptr);
        return reports::buildListDocument(
            *layout, rows, caption,
            {QStringLiteral("TOLMAR SPECIALIST HOSPITAL"), QDate(2026, 11, 23)});
    }
    QTemporaryDir dir;
};

TEST_P(ListReports, PdfCarriesCaptionColumnsRowsPageAndDate)
{
    const QDate day(2026, 11, 23);
    addVisit(1, QStringLiteral("O'CONNOR"), QStringLiteral("ỌLỌ́LÁ"), day, QStringLiteral("08:15"),
             QStringLiteral("0007"));
    addVisit(2, QStringLiteral("BELLO"), QStringLiteral("MUSA"), day, QStringLiteral("10:40"));
    addVisit(3, QStringLiteral("NOT"), QStringLiteral("TODAY"), day.addDays(-1),
             QStringLiteral("10:40"));
    const QString pdf = dir.filePath(QStringLiteral("attendance.pdf"));
    report::writePdf(document(attendance(day), QStringLiteral("Patients Attendance for Today")),
                     pdf);

    const QString text = pdfText(pdf);
    const QStringList lines = squeezedLines(text);
    EXPECT_TRUE(lines.contains(QStringLiteral("TOLMAR SPECIALIST HOSPITAL")))
        << text.toStdString();
    EXPECT_TRUE(lines.contains(QStringLiteral("Patients Attendance")));
    EXPECT_TRUE(lines.contains(QStringLiteral("Patients Attendance for Today")));
    const QString header = QStringLiteral(
        "Date Time Card No Patient Name Clinic Company Enrollee No Phone No Area Taken By");
    EXPECT_TRUE(lines.contains(header)) << text.toStdString();
    // Newest first, every field in its column, names exactly as stored.
    const int bello = int(lines.indexOf(QStringLiteral(
        "23/11/2026 10:40 LAG/2 BELLO MUSA GOPD PRIVATE PATIENTS NIL 08030000002 IKEJA demo")));
    const int oconnor = int(lines.indexOf(QStringLiteral(
        "23/11/2026 08:15 LAG/1 O'CONNOR ỌLỌ́LÁ GOPD O'DEX & SONS (NIG) LTD NIL 08030000001 "
        "IKEJA demo")));
    EXPECT_GE(bello, 0) << text.toStdString();
    EXPECT_GT(oconnor, bello);
    EXPECT_FALSE(text.contains(QStringLiteral("TODAY")));
    EXPECT_TRUE(text.contains(QStringLiteral("Number of records: 2")));
    EXPECT_TRUE(text.contains(QStringLiteral("Printed: 23/11/2026")));
    EXPECT_TRUE(text.contains(QStringLiteral("Page 1 of 1")));
}

TEST_P(ListReports, LongListsBreakIntoNumberedPagesEachWithItsHeader)
{
    const QDate day(2026, 11, 23);
    for (int i = 1; i <= 140; ++i)
        addVisit(i, QStringLiteral("PATIENT%1").arg(i, 3, 10, QLatin1Char('0')),
                 QStringLiteral("ADA"), day,
                 QStringLiteral("%1:%2")
                     .arg(8 + i / 60, 2, 10, QLatin1Char('0'))
                     .arg(i % 60, 2, 10, QLatin1Char('0')));
    const report::ListDocument doc = document(attendance(day), QStringLiteral("Busy day"));
    QPrinter printer(QPrinter::HighResolution);
    printer.setOutputFormat(QPrinter::PdfFormat);
    report::preparePrinter(doc, printer);
    const std::vector<int> starts = report::pageStarts(doc, printer);
    ASSERT_GE(starts.size(), 3u);
    for (size_t i = 1; i < starts.size(); ++i)
        EXPECT_GT(starts[i], starts[i - 1]);

    const QString pdf = dir.filePath(QStringLiteral("busy.pdf"));
    report::writePdf(doc, pdf);
    const QString text = pdfText(pdf);
    const int pages = int(starts.size());
    EXPECT_EQ(text.count(QStringLiteral("Patient Name")), pages);
    EXPECT_EQ(text.count(QStringLiteral("Busy day")), pages);
    EXPECT_TRUE(text.contains(QStringLiteral("Page 1 of %1").arg(pages)));
    EXPECT_TRUE(text.contains(QStringLiteral("Page %1 of %1").arg(pages)));
    // Every row lands on paper once: none lost at a page break, none printed twice.
    for (int i = 1; i <= 140; ++i)
        EXPECT_EQ(text.count(QStringLiteral("PATIENT%1 ADA").arg(i, 3, 10, QLatin1Char('0'))), 1)
            << i;
    EXPECT_TRUE(text.contains(QStringLiteral("Number of records: 140")));
}

TEST_P(ListReports, LayoutPrintsWhatTheStatementGivesInPrintedForm)
{
    ws->exec(QStringLiteral("insert into hpayments (receiptNo, receiptDate, billNo, PNo, "
                            "AmountPaid, PayMode) values (?, ?, ?, ?, ?, ?)"),
             {QStringLiteral("R1"), QDate(2026, 11, 23), QStringLiteral("B1"),
              QStringLiteral("001/000000009"), 2500.0, QVariant()});
    ws->exec(QStringLiteral("insert into hpayments (receiptNo, receiptDate, billNo, PNo, "
                            "AmountPaid, PayMode) values (?, ?, ?, ?, ?, ?)"),
             {QStringLiteral("R2"), QDate(2026, 11, 23), QStringLiteral("B2"),
              QStringLiteral("001/000000009"), 1234567.891, QStringLiteral("CASH")});
    // A statement that gives only some of the layout's fields, in its own order and case.
    const db::Result rows = ws->connect()->query(
        QStringLiteral("select AMOUNTPAID, receiptNo, PayMode, receiptdate from qryhBillingIncome "
                       "order by receiptNo"));
    const reports::ListLayout* income =
        reports::findListLayout(QStringLiteral("rptbillingincome"));
    ASSERT_NE(income, nullptr);
    const report::ListDocument doc =
        reports::buildListDocument(*income, rows, QStringLiteral("Income for Today"), {});
    QStringList captions;
    for (const auto& c : doc.columns)
        captions << c.caption;
    // The layout's order, not the statement's; fields it lacks are left out.
    EXPECT_EQ(captions, (QStringList{QStringLiteral("Date"), QStringLiteral("Receipt No"),
                                     QStringLiteral("Pay Mode"), QStringLiteral("Amount")}));
    EXPECT_EQ(doc.columns.back().align, report::Align::Right);
    ASSERT_EQ(doc.rows.size(), 2u);
    EXPECT_EQ(doc.rows[0], (QStringList{QStringLiteral("23/11/2026"), QStringLiteral("R1"),
                                        QString(), QStringLiteral("2,500.00")}));
    EXPECT_EQ(doc.rows[1].last(), QStringLiteral("1,234,567.89"));
    EXPECT_EQ(doc.summary, QStringLiteral("Number of records: 2      Total: 1,237,067.89"));

    // A layout without fields prints every column as the statement names it.
    const reports::ListLayout* generic = reports::findListLayout(QStringLiteral("rptConsulting"));
    ASSERT_NE(generic, nullptr);
    const report::ListDocument all = reports::buildListDocument(*generic, rows, QString(), {});
    ASSERT_EQ(all.columns.size(), 4u);
    EXPECT_EQ(all.rows[0][1], QStringLiteral("R1"));
}

TEST(ListLayouts, EveryNamedLayoutExists)
{
    for (const char* name :
         {"rptNewReg", "rptHMOList", "rptAttendance", "rptBillingIncome", "rptPatientAdmission",
          "rptPatientDischarge", "rptHMOList2", "rptConsulting", "rptConsultingForCoy",
          "rptConsultingForCoyPat", "rptConsultingForCoyPatAdm", "rptConsultingForPat",
          "rptConsultingForPhy", "rptConsultingForCon", "rptConsultingForDiag",
          "rptConsultingForDiagHMO", "rptConsultingForDiagHMO2"}) {
        const reports::ListLayout* l = reports::findListLayout(QString::fromLatin1(name));
        ASSERT_NE(l, nullptr) << name;
        EXPECT_FALSE(l->title.isEmpty()) << name;
    }
    EXPECT_EQ(reports::findListLayout(QStringLiteral("rptNoSuchThing")), nullptr);
}

TEST(ListCells, BreakBetweenWordsAndShortenAWordTooLongForTheColumn)
{
    QFont f(QStringLiteral("DejaVu Sans"));
    f.setPointSizeF(7.5);
    const QFontMetricsF fm(f);
    const auto width = [&](const char* text) {
        return fm.horizontalAdvance(QString::fromUtf8(text));
    };
    struct Case {
        const char* text;
        double width;
        QStringList lines;
    };
    const Case cases[] = {
        // Lines break before a whole word, never inside one ("…INSURANCE S / CHEME").
        {"FEDERAL STAFF HEALTH INSURANCE SCHEME", width("HEALTH INSURANCE") + 1,
         {QStringLiteral("FEDERAL STAFF"), QStringLiteral("HEALTH INSURANCE"),
          QStringLiteral("SCHEME")}},
        {"O'DEX & SONS (NIG) LTD", width("O'DEX & SONS (NIG) LTD") + 1,
         {QStringLiteral("O'DEX & SONS (NIG) LTD")}},
        {"", 40, {QString()}},
        {"TWO\nLINES", 400, {QStringLiteral("TWO"), QStringLiteral("LINES")}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(report::cellLines(QString::fromUtf8(c.text), fm, c.width), c.lines);
    }
    // A word longer than the column is shortened with an ellipsis, never split.
    const QStringList cut =
        report::cellLines(QStringLiteral("OKWUDILICHUKWU"), fm, width("OKWUDI"));
    ASSERT_EQ(cut.size(), 1);
    EXPECT_TRUE(cut[0].endsWith(QChar(0x2026))) << cut[0].toStdString();
    EXPECT_LE(fm.horizontalAdvance(cut[0]), width("OKWUDI"));
}

TEST_P(ListReports, AnUnwritableFileIsAnError)
{
    const report::ListDocument doc = document(attendance(QDate(2026, 11, 23)), QString());
    EXPECT_THROW(report::writePdf(doc, dir.filePath(QStringLiteral("missing/dir/x.pdf"))),
                 std::runtime_error);
}

TOLMAR_INSTANTIATE_BACKENDS(ListReports);

}  // namespace
