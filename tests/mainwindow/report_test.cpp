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
using namespace Qt::StringLiterals;

namespace {

// The text of a PDF as pdftotext lays it out.
QString pdfText(const QString& path)
{
    QProcess p;
    p.start(u"pdftotext"_s, {u"-layout"_s, path, u"-"_s});
    if (!p.waitForFinished(30000) || p.exitCode() != 0)
        return u"<pdftotext failed: %1>"_s.arg(QString::fromLocal8Bit(p.readAllStandardError()));
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
        if (QStandardPaths::findExecutable(u"pdftotext"_s).isEmpty())
            GTEST_SKIP() << "pdftotext (poppler-utils) is not installed";
        ASSERT_TRUE(dir.isValid());
    }
    void addVisit(int n, const QString& surname, const QString& first, const QDate& day,
                  const QString& time, const QString& coy = u"0001"_s) const
    {
        const QString pno = u"001/%1"_s.arg(n, 9, 10, QLatin1Char('0'));
        ws->exec(
            u"insert into hPatients (PNo, oldPno, psurname, pfirstName, "
            "CoyName, pPhoneNo, Area, empno) values (?, ?, ?, ?, ?, ?, ?, ?)"_s,
            {pno, u"LAG/%1"_s.arg(n), surname, first, coy,
             u"0803%1"_s.arg(n, 7, 10, QLatin1Char('0')), u"IKEJA"_s, u"NIL"_s});
        ws->exec(
            u"insert into hRecords (recDate, htime, PNo, consultID, empID, "
            "clinicType, CoyName) values (?, ?, ?, ?, ?, ?, ?)"_s,
            {day, time, pno, u"001%1"_s.arg(n, 9, 10, QLatin1Char('0')), u"EMP001"_s, u"GOPD"_s,
             coy});
    }
    db::Result attendance(const QDate& day) const
    {
        return ws->connect()->query(
            u"select RecDate,Time,OLdPNo,FullName,ClinicType,CoyName,EmpNo,"
            "pPhoneNo,Area,Username from qryhVisitsForAttend where recdate = ? "
            "ORDER BY recDate desc, time desc"_s,
            {day});
    }
    report::ListDocument document(const db::Result& rows, const QString& caption) const
    {
        const reports::ListLayout* layout = reports::findListLayout(u"rptAttendance"_s);
        EXPECT_NE(layout, nullptr);
        return reports::buildListDocument(*layout, rows, caption,
                                          {u"TOLMAR SPECIALIST HOSPITAL"_s, QDate(2026, 11, 23)});
    }
    QTemporaryDir dir;
};

TEST_P(ListReports, PdfCarriesCaptionColumnsRowsPageAndDate)
{
    const QDate day(2026, 11, 23);
    addVisit(1, u"O'CONNOR"_s, u"ỌLỌ́LÁ"_s, day, u"08:15"_s, u"0007"_s);
    addVisit(2, u"BELLO"_s, u"MUSA"_s, day, u"10:40"_s);
    addVisit(3, u"NOT"_s, u"TODAY"_s, day.addDays(-1), u"10:40"_s);
    const QString pdf = dir.filePath(u"attendance.pdf"_s);
    report::writePdf(document(attendance(day), u"Patients Attendance for Today"_s), pdf);

    const QString text = pdfText(pdf);
    const QStringList lines = squeezedLines(text);
    EXPECT_TRUE(lines.contains(u"TOLMAR SPECIALIST HOSPITAL"_s)) << text.toStdString();
    EXPECT_TRUE(lines.contains(u"Patients Attendance"_s));
    EXPECT_TRUE(lines.contains(u"Patients Attendance for Today"_s));
    const QString header =
        u"Date Time Card No Patient Name Clinic Company Enrollee No Phone No Area Taken By"_s;
    EXPECT_TRUE(lines.contains(header)) << text.toStdString();
    // Newest first, every field in its column, names exactly as stored.
    const int bello = int(lines.indexOf(
        u"23/11/2026 10:40 LAG/2 BELLO MUSA GOPD PRIVATE PATIENTS NIL 08030000002 IKEJA demo"_s));
    const int oconnor = int(lines.indexOf(
        u"23/11/2026 08:15 LAG/1 O'CONNOR ỌLỌ́LÁ GOPD O'DEX & SONS (NIG) LTD NIL 08030000001 "
        "IKEJA demo"_s));
    EXPECT_GE(bello, 0) << text.toStdString();
    EXPECT_GT(oconnor, bello);
    EXPECT_FALSE(text.contains(u"TODAY"_s));
    EXPECT_TRUE(text.contains(u"Number of records: 2"_s));
    EXPECT_TRUE(text.contains(u"Printed: 23/11/2026"_s));
    EXPECT_TRUE(text.contains(u"Page 1 of 1"_s));
}

TEST_P(ListReports, LongListsBreakIntoNumberedPagesEachWithItsHeader)
{
    const QDate day(2026, 11, 23);
    for (int i = 1; i <= 140; ++i)
        addVisit(i, u"PATIENT%1"_s.arg(i, 3, 10, QLatin1Char('0')), u"ADA"_s, day,
                 u"%1:%2"_s.arg(8 + i / 60, 2, 10, QLatin1Char('0'))
                     .arg(i % 60, 2, 10, QLatin1Char('0')));
    const report::ListDocument doc = document(attendance(day), u"Busy day"_s);
    QPrinter printer(QPrinter::HighResolution);
    printer.setOutputFormat(QPrinter::PdfFormat);
    report::preparePrinter(doc, printer);
    const std::vector<int> starts = report::pageStarts(doc, printer);
    ASSERT_GE(starts.size(), 3u);
    for (size_t i = 1; i < starts.size(); ++i)
        EXPECT_GT(starts[i], starts[i - 1]);

    const QString pdf = dir.filePath(u"busy.pdf"_s);
    report::writePdf(doc, pdf);
    const QString text = pdfText(pdf);
    const int pages = int(starts.size());
    EXPECT_EQ(text.count(u"Patient Name"_s), pages);
    EXPECT_EQ(text.count(u"Busy day"_s), pages);
    EXPECT_TRUE(text.contains(u"Page 1 of %1"_s.arg(pages)));
    EXPECT_TRUE(text.contains(u"Page %1 of %1"_s.arg(pages)));
    // Every row lands on paper once: none lost at a page break, none printed twice.
    for (int i = 1; i <= 140; ++i)
        EXPECT_EQ(text.count(u"PATIENT%1 ADA"_s.arg(i, 3, 10, QLatin1Char('0'))), 1) << i;
    EXPECT_TRUE(text.contains(u"Number of records: 140"_s));
}

TEST_P(ListReports, LayoutPrintsWhatTheStatementGivesInPrintedForm)
{
    ws->exec(
        u"insert into hpayments (receiptNo, receiptDate, billNo, PNo, "
        "AmountPaid, PayMode) values (?, ?, ?, ?, ?, ?)"_s,
        {u"R1"_s, QDate(2026, 11, 23), u"B1"_s, u"001/000000009"_s, 2500.0, QVariant()});
    ws->exec(
        u"insert into hpayments (receiptNo, receiptDate, billNo, PNo, "
        "AmountPaid, PayMode) values (?, ?, ?, ?, ?, ?)"_s,
        {u"R2"_s, QDate(2026, 11, 23), u"B2"_s, u"001/000000009"_s, 1234567.891, u"CASH"_s});
    // A statement that gives only some of the layout's fields, in its own order and case.
    const db::Result rows = ws->connect()->query(
        u"select AMOUNTPAID, receiptNo, PayMode, receiptdate from qryhBillingIncome "
        "order by receiptNo"_s);
    const reports::ListLayout* income = reports::findListLayout(u"rptbillingincome"_s);
    ASSERT_NE(income, nullptr);
    const report::ListDocument doc =
        reports::buildListDocument(*income, rows, u"Income for Today"_s, {});
    QStringList captions;
    for (const auto& c : doc.columns)
        captions << c.caption;
    // The layout's order, not the statement's; fields it lacks are left out.
    EXPECT_EQ(captions, (QStringList{u"Date"_s, u"Receipt No"_s, u"Pay Mode"_s, u"Amount"_s}));
    EXPECT_EQ(doc.columns.back().align, report::Align::Right);
    ASSERT_EQ(doc.rows.size(), 2u);
    EXPECT_EQ(doc.rows[0], (QStringList{u"23/11/2026"_s, u"R1"_s, QString(), u"2,500.00"_s}));
    EXPECT_EQ(doc.rows[1].last(), u"1,234,567.89"_s);
    EXPECT_EQ(doc.summary, u"Number of records: 2      Total: 1,237,067.89"_s);

    // A layout without fields prints every column as the statement names it.
    const reports::ListLayout* generic = reports::findListLayout(u"rptConsulting"_s);
    ASSERT_NE(generic, nullptr);
    const report::ListDocument all = reports::buildListDocument(*generic, rows, QString(), {});
    ASSERT_EQ(all.columns.size(), 4u);
    EXPECT_EQ(all.rows[0][1], u"R1"_s);
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
    EXPECT_EQ(reports::findListLayout(u"rptNoSuchThing"_s), nullptr);
}

TEST(ListCells, BreakBetweenWordsAndShortenAWordTooLongForTheColumn)
{
    QFont f(u"DejaVu Sans"_s);
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
        {"FEDERAL STAFF HEALTH INSURANCE SCHEME",
         width("HEALTH INSURANCE") + 1,
         {u"FEDERAL STAFF"_s, u"HEALTH INSURANCE"_s, u"SCHEME"_s}},
        {"O'DEX & SONS (NIG) LTD",
         width("O'DEX & SONS (NIG) LTD") + 1,
         {u"O'DEX & SONS (NIG) LTD"_s}},
        {"", 40, {QString()}},
        {"TWO\nLINES", 400, {u"TWO"_s, u"LINES"_s}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(report::cellLines(QString::fromUtf8(c.text), fm, c.width), c.lines);
    }
    // A word longer than the column is shortened with an ellipsis, never split.
    const QStringList cut = report::cellLines(u"OKWUDILICHUKWU"_s, fm, width("OKWUDI"));
    ASSERT_EQ(cut.size(), 1);
    EXPECT_TRUE(cut[0].endsWith(QChar(0x2026))) << cut[0].toStdString();
    EXPECT_LE(fm.horizontalAdvance(cut[0]), width("OKWUDI"));
}

TEST_P(ListReports, AnUnwritableFileIsAnError)
{
    const report::ListDocument doc = document(attendance(QDate(2026, 11, 23)), QString());
    EXPECT_THROW(report::writePdf(doc, dir.filePath(u"missing/dir/x.pdf"_s)), std::runtime_error);
}

TOLMAR_INSTANTIATE_BACKENDS(ListReports);

}  // namespace
