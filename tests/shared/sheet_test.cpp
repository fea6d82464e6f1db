// The spreadsheet export writes a real workbook: read back from the zip, the shared
// strings and the sheet show the header and the rows in order.
#include "support/workspace.h"

#include "core/sheetexport.h"
#include "platform/sheet.h"

#include <QFileInfo>
#include <QMap>
#include <QProcess>
#include <QTemporaryDir>
#include <QXmlStreamReader>

using namespace tolmar;
using namespace tolmar::test;
using namespace Qt::StringLiterals;

namespace {

QByteArray unzipEntry(const QString& zip, const QString& entry)
{
    QProcess p;
    p.start(u"unzip"_s, {u"-p"_s, zip, entry});
    if (!p.waitForFinished(30000) || p.exitCode() != 0)
        return {};
    return p.readAllStandardOutput();
}

// The sheet as cell reference -> shown text (shared strings resolved).
QMap<QString, QString> readSheet(const QString& xlsx)
{
    QStringList shared;
    {
        QXmlStreamReader x(unzipEntry(xlsx, u"xl/sharedStrings.xml"_s));
        QString current;
        bool inSi = false;
        while (!x.atEnd()) {
            x.readNext();
            if (x.isStartElement() && x.name() == u"si") {
                inSi = true;
                current.clear();
            } else if (x.isStartElement() && x.name() == u"t" && inSi) {
                current += x.readElementText();
            } else if (x.isEndElement() && x.name() == u"si") {
                shared << current;
                inSi = false;
            }
        }
    }
    QMap<QString, QString> cells;
    QXmlStreamReader x(unzipEntry(xlsx, u"xl/worksheets/sheet1.xml"_s));
    QString ref, type;
    while (!x.atEnd()) {
        x.readNext();
        if (x.isStartElement() && x.name() == u"c") {
            ref = x.attributes().value(u"r"_s).toString();
            type = x.attributes().value(u"t"_s).toString();
        } else if (x.isStartElement() && x.name() == u"v") {
            const QString v = x.readElementText();
            cells[ref] = type == u"s" ? shared.value(v.toInt()) : v;
        }
    }
    return cells;
}

class SheetExport : public BackendTest {
protected:
    QTemporaryDir dir;
};

TEST_P(SheetExport, WorkbookHoldsTheHeaderAndTheRowsInOrder)
{
    auto add = [&](const char* pno, const QString& surname, const QVariant& dob, double debt,
                   const QVariant& pix) {
        ws->exec(
            u"INSERT INTO hPatients (PNo, psurname, DOB, Debt, patPix) "
            "VALUES (?, ?, ?, ?, ?)"_s,
            {QString::fromLatin1(pno), surname, dob, debt, pix});
    };
    add("001/000000002", u"O'Brien-Ọládipọ̀"_s, QDate(1990, 2, 28), 1250.5, QVariant());
    add("001/000000001", u"Adeyemi"_s, QVariant(), 0, QByteArray("\x89PNG", 4));
    const db::Result rs = ws->connect()->query(
        u"SELECT PNo AS \"PNo\", psurname AS \"Surname\", DOB AS \"DOB\", Debt AS \"Debt\", "
        "patPix AS \"Picture\", Email AS \"Email\" FROM hPatients ORDER BY PNo DESC"_s);

    const QString file = exportToSheet(desk->ctx, rs, dir.filePath(u"out.xlsx"_s));
    ASSERT_EQ(file, dir.filePath(u"out.xlsx"_s));
    ASSERT_TRUE(QFileInfo(file).size() > 0);
    EXPECT_TRUE(desk->prompter.messages().empty());

    const auto cells = readSheet(file);
    ASSERT_FALSE(cells.isEmpty()) << "could not read the workbook back";
    EXPECT_EQ(cells.value(u"A1"_s), u"PNo"_s);
    EXPECT_EQ(cells.value(u"B1"_s), u"Surname"_s);
    EXPECT_EQ(cells.value(u"C1"_s), u"DOB"_s);
    EXPECT_EQ(cells.value(u"D1"_s), u"Debt"_s);
    EXPECT_EQ(cells.value(u"E1"_s), u"Picture"_s);
    EXPECT_EQ(cells.value(u"F1"_s), u"Email"_s);

    EXPECT_EQ(cells.value(u"A2"_s), u"001/000000002"_s);
    EXPECT_EQ(cells.value(u"B2"_s), u"O'Brien-Ọládipọ̀"_s);
    EXPECT_EQ(cells.value(u"C2"_s), u"28/02/1990"_s);
    EXPECT_EQ(cells.value(u"D2"_s).toDouble(), 1250.5);
    EXPECT_FALSE(cells.contains(u"E2"_s));  // no picture: a blank cell
    EXPECT_FALSE(cells.contains(u"F2"_s));

    EXPECT_EQ(cells.value(u"A3"_s), u"001/000000001"_s);
    EXPECT_FALSE(cells.contains(u"C3"_s));
    EXPECT_EQ(cells.value(u"D3"_s).toDouble(), 0.0);
    EXPECT_EQ(cells.value(u"E3"_s), u"Array Field"_s);
    EXPECT_FALSE(cells.contains(u"A4"_s));
}

TEST_P(SheetExport, ResultWithoutRowsWritesNothingAndSaysSo)
{
    const db::Result rs =
        ws->connect()->query(u"SELECT PNo FROM hPatients WHERE PNo = ?"_s, {u"none"_s});
    const QString path = dir.filePath(u"empty.xlsx"_s);
    EXPECT_EQ(exportToSheet(desk->ctx, rs, path, u"Operation is not allowed"_s), QString());
    EXPECT_FALSE(QFileInfo::exists(path));
    EXPECT_EQ(desk->prompter.informs(),
              QStringList{u"No MarginAnalysis OR \r\nOperation is not allowed"_s});
}

TOLMAR_INSTANTIATE_BACKENDS(SheetExport);

TEST(SheetCell, ValuesThatCannotBeACellAndDates)
{
    EXPECT_EQ(sheetCell(QVariant(QVariantList{1, 2})), QVariant(u"Array Field"_s));
    EXPECT_EQ(sheetCell(QByteArray("x")), QVariant(u"Array Field"_s));
    EXPECT_EQ(sheetCell(QDate(2026, 1, 5)), QVariant(u"05/01/2026"_s));
    EXPECT_EQ(sheetCell(QDateTime(QDate(2026, 1, 5), QTime(13, 4))), QVariant(u"05/01/2026"_s));
    EXPECT_EQ(sheetCell(u"2026-01-05 00:00:00"_s), QVariant(u"05/01/2026"_s));
    EXPECT_EQ(sheetCell(u"001/000000001"_s), QVariant(u"001/000000001"_s));
    EXPECT_FALSE(sheetCell(QVariant()).isValid());
    EXPECT_EQ(sheetCell(42).toInt(), 42);
}

TEST(Sheet, NoDesktopWhenOffscreen)
{
    // The tests run offscreen: the workbook is written, and nobody is there to open it.
    EXPECT_FALSE(sheet::hasDesktop());
    EXPECT_FALSE(sheet::openWithDesktop(u"/nonexistent.xlsx"_s));
}

TEST(Sheet, UnwritableFileIsAnError)
{
    EXPECT_THROW(sheet::writeWorkbook(u"/nonexistent-dir/x.xlsx"_s, {u"A"_s}, {{QVariant(1)}}),
                 std::runtime_error);
}

}  // namespace
