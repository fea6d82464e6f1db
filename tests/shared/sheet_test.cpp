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

namespace {

QByteArray unzipEntry(const QString& zip, const QString& entry)
{
    QProcess p;
    p.start(QStringLiteral("unzip"), {QStringLiteral("-p"), zip, entry});
    if (!p.waitForFinished(30000) || p.exitCode() != 0)
        return {};
    return p.readAllStandardOutput();
}

// The sheet as cell reference -> shown text (shared strings resolved).
QMap<QString, QString> readSheet(const QString& xlsx)
{
    QStringList shared;
    {
        QXmlStreamReader x(unzipEntry(xlsx, QStringLiteral("xl/sharedStrings.xml")));
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
    QXmlStreamReader x(unzipEntry(xlsx, QStringLiteral("xl/worksheets/sheet1.xml")));
    QString ref, type;
    while (!x.atEnd()) {
        x.readNext();
        if (x.isStartElement() && x.name() == u"c") {
            ref = x.attributes().value(QStringLiteral("r")).toString();
            type = x.attributes().value(QStringLiteral("t")).toString();
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
        ws->exec(QStringLiteral("INSERT INTO hPatients (PNo, psurname, DOB, Debt, patPix) "
                                "VALUES (?, ?, ?, ?, ?)"),
                 {QString::fromLatin1(pno), surname, dob, debt, pix});
    };
    add("001/000000002", QStringLiteral("O'Brien-Ọládipọ̀"), QDate(1990, 2, 28), 1250.5,
        QVariant());
    add("001/000000001", QStringLiteral("Adeyemi"), QVariant(), 0, QByteArray("\x89PNG", 4));
    const db::Result rs = ws->connect()->query(QStringLiteral(
        "SELECT PNo AS \"PNo\", psurname AS \"Surname\", DOB AS \"DOB\", Debt AS \"Debt\", "
        "patPix AS \"Picture\", Email AS \"Email\" FROM hPatients ORDER BY PNo DESC"));

    const QString file = exportToSheet(desk->ctx, rs, dir.filePath(QStringLiteral("out.xlsx")));
    ASSERT_EQ(file, dir.filePath(QStringLiteral("out.xlsx")));
    ASSERT_TRUE(QFileInfo(file).size() > 0);
    EXPECT_TRUE(desk->prompter.messages().empty());

    const auto cells = readSheet(file);
    ASSERT_FALSE(cells.isEmpty()) << "could not read the workbook back";
    EXPECT_EQ(cells.value(QStringLiteral("A1")), QStringLiteral("PNo"));
    EXPECT_EQ(cells.value(QStringLiteral("B1")), QStringLiteral("Surname"));
    EXPECT_EQ(cells.value(QStringLiteral("C1")), QStringLiteral("DOB"));
    EXPECT_EQ(cells.value(QStringLiteral("D1")), QStringLiteral("Debt"));
    EXPECT_EQ(cells.value(QStringLiteral("E1")), QStringLiteral("Picture"));
    EXPECT_EQ(cells.value(QStringLiteral("F1")), QStringLiteral("Email"));

    EXPECT_EQ(cells.value(QStringLiteral("A2")), QStringLiteral("001/000000002"));
    EXPECT_EQ(cells.value(QStringLiteral("B2")), QStringLiteral("O'Brien-Ọládipọ̀"));
    EXPECT_EQ(cells.value(QStringLiteral("C2")), QStringLiteral("28/02/1990"));
    EXPECT_EQ(cells.value(QStringLiteral("D2")).toDouble(), 1250.5);
    EXPECT_FALSE(cells.contains(QStringLiteral("E2")));  // no picture: a blank cell
    EXPECT_FALSE(cells.contains(QStringLiteral("F2")));

    EXPECT_EQ(cells.value(QStringLiteral("A3")), QStringLiteral("001/000000001"));
    EXPECT_FALSE(cells.contains(QStringLiteral("C3")));
    EXPECT_EQ(cells.value(QStringLiteral("D3")).toDouble(), 0.0);
    EXPECT_EQ(cells.value(QStringLiteral("E3")), QStringLiteral("Array Field"));
    EXPECT_FALSE(cells.contains(QStringLiteral("A4")));
}

TEST_P(SheetExport, ResultWithoutRowsWritesNothingAndSaysSo)
{
    const db::Result rs = ws->connect()->query(
        QStringLiteral("SELECT PNo FROM hPatients WHERE PNo = ?"), {QStringLiteral("none")});
    const QString path = dir.filePath(QStringLiteral("empty.xlsx"));
    EXPECT_EQ(exportToSheet(desk->ctx, rs, path, QStringLiteral("Operation is not allowed")),
              QString());
    EXPECT_FALSE(QFileInfo::exists(path));
    EXPECT_EQ(desk->prompter.informs(),
              QStringList{QStringLiteral("No MarginAnalysis OR \r\nOperation is not allowed")});
}

TOLMAR_INSTANTIATE_BACKENDS(SheetExport);

TEST(SheetCell, ValuesThatCannotBeACellAndDates)
{
    EXPECT_EQ(sheetCell(QVariant(QVariantList{1, 2})), QVariant(QStringLiteral("Array Field")));
    EXPECT_EQ(sheetCell(QByteArray("x")), QVariant(QStringLiteral("Array Field")));
    EXPECT_EQ(sheetCell(QDate(2026, 1, 5)), QVariant(QStringLiteral("05/01/2026")));
    EXPECT_EQ(sheetCell(QDateTime(QDate(2026, 1, 5), QTime(13, 4))),
              QVariant(QStringLiteral("05/01/2026")));
    EXPECT_EQ(sheetCell(QStringLiteral("2026-01-05 00:00:00")),
              QVariant(QStringLiteral("05/01/2026")));
    EXPECT_EQ(sheetCell(QStringLiteral("001/000000001")),
              QVariant(QStringLiteral("001/000000001")));
    EXPECT_FALSE(sheetCell(QVariant()).isValid());
    EXPECT_EQ(sheetCell(42).toInt(), 42);
}

TEST(Sheet, NoDesktopWhenOffscreen)
{
    // The tests run offscreen: the workbook is written, and nobody is there to open it.
    EXPECT_FALSE(sheet::hasDesktop());
    EXPECT_FALSE(sheet::openWithDesktop(QStringLiteral("/nonexistent.xlsx")));
}

TEST(Sheet, UnwritableFileIsAnError)
{
    EXPECT_THROW(sheet::writeWorkbook(QStringLiteral("/nonexistent-dir/x.xlsx"),
                                      {QStringLiteral("A")}, {{QVariant(1)}}),
                 std::runtime_error);
}

}  // namespace
