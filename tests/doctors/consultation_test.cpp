// The consultation screen: a whole consultation from the waiting list to the saved row,
// after which the visit leaves the doctor's list and queue; its checks in order; an edit,
// a delete that leaves the visit seen, a visit gone meanwhile, two doctors on one visit,
// and rows another desk removed meanwhile.
#include "doctorsfixture.h"

#include "clinical/consultation.h"
#include "core/command.h"
#include "core/screenhost.h"
#include "core/ui/gridcells.h"

#include <QLabel>
#include <QPlainTextEdit>

using namespace tolmar;
using namespace tolmar::test;

namespace {

class Consultation : public DoctorsTest {
protected:
    QWidget* open() { return DoctorsTest::open("frmConsultation"); }
    static QString label(QWidget* s, const char* name) { return child<QLabel>(s, name)->text(); }
    static void type(QWidget* s, const char* name, const QString& text)
    {
        child<QPlainTextEdit>(s, name)->setPlainText(text);
    }
    static void choose(QWidget* s, const QString& entry)
    {
        QComboBox* box = combo(s, "cboVehNo");
        pick(s, "cboVehNo", entry);
        emit box->activated(box->currentIndex());
    }
    int waiting(const QString& consultID)
    {
        return count(QStringLiteral("SELECT COUNT(*) FROM qryhPatListForDoc WHERE consultID = ?"),
                     {consultID}) +
               count(QStringLiteral("SELECT COUNT(*) FROM vwDocWaitingList WHERE empID = "
                                    "'DOC001' AND \"Date\" = ?"),
                     {today()});
    }
};

struct Step {
    const char* control;  // what the desk fills before pressing Save again
    QString value;
    QString message;  // what the Save then says
};

}  // namespace

TEST_P(Consultation, AWholeConsultationTakesTheVisitOffTheListAndTheQueue)
{
    const QString visit = addVisit(today(), QStringLiteral("DOC001"));
    addVisit(today(), QStringLiteral("DOC002"));
    addVisit(today().addDays(-1), QStringLiteral("DOC001"));  // yesterday's: not waiting now
    QWidget* s = open();
    const QString entry =
        QStringLiteral("O'KAFOR 1 ADA @%1 [%2]").arg(today().toString("dd/MM/yyyy"), visit);
    EXPECT_EQ(items(combo(s, "cboVehNo")),
              (QStringList{entry, QStringLiteral("O'KAFOR 2 ADA @%1 [001000000002]")
                                      .arg(today().toString("dd/MM/yyyy"))}));
    EXPECT_EQ(waiting(visit), 2);

    // The checks in order, each stopping the save until the desk fills its field; "0" is
    // content.
    const std::vector<Step> steps = {
        {"", "", "Please specify Patient Name"},
        {"cboVehNo", "  ", "Select a Patient for this Consultation"},
        {"cboVehNo", entry, "Specify Patient's Complaints Enter Zero if none"},
        {"txtComp", "FEVER FOR 3 DAYS", "Specify Diagnosis Enter Zero if none"},
        {"txtDiag", "0", "Specify Treatment Enter Zero if none"},
        {"txtPresc", "PARACETAMOL 1G TDS", "Specify Doctor's name"},
    };
    for (const Step& st : steps) {
        SCOPED_TRACE(st.message.toStdString());
        const QString control = QString::fromLatin1(st.control);
        if (control == QLatin1String("cboVehNo") && st.value.trimmed().isEmpty())
            combo(s, "cboVehNo")->setEditText(st.value);
        else if (control == QLatin1String("cboVehNo"))
            choose(s, st.value);
        else if (!control.isEmpty())
            type(s, st.control, st.value);
        desk->prompter.clear();
        click(s, "OKButton");
        EXPECT_EQ(desk->prompter.informs(), QStringList{st.message});
    }
    EXPECT_EQ(label(s, "lblBill"), visit);
    EXPECT_EQ(label(s, "lblClient"), QStringLiteral("CORPORATE"));
    EXPECT_EQ(label(s, "lblNo"), QStringLiteral("001/000000001"));
    EXPECT_EQ(label(s, "lblHeading"), QStringLiteral("Patient Referal/Appt for : O'KAFOR 1 ADA"));
    pick(s, "cboReason", QStringLiteral("EZE CHIDI"));
    desk->prompter.answerYes();
    click(s, "OKButton");
    EXPECT_EQ(desk->prompter.messages().at(desk->prompter.messages().size() - 2).title,
              QStringLiteral("About to save"));
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Record Succesfully saved"));

    expectColumns(ws->connect()->queryOne(QStringLiteral("SELECT * FROM hConsulting")),
                  {"consultID=" + visit, "clientCat=CORPORATE", "PNo=001/000000001",
                   "CDate=" + desk->clock.workstationNow().date().toString(Qt::ISODate),
                   "Complaints=FEVER FOR 3 DAYS", "diagnosis=0",
                   "preScription=PARACETAMOL 1G TDS", "treatedBy=DOC001", "attendedto=0"});
    EXPECT_EQ(waiting(visit), 0);
    EXPECT_EQ(items(combo(s, "cboVehNo")).size(), 1);
    EXPECT_EQ(label(s, "lblHeading"), QStringLiteral("Consultation/Treatment"));
    auto* grid = child<QTableView>(s, "grdData");
    ASSERT_EQ(rowCount(grid), 1);
    EXPECT_TRUE(grid->isColumnHidden(grid::columnOf(grid->model(), QStringLiteral("ID"))));

    // An edit changes the four columns and nothing else.
    editByDoubleClick(grid, 0);
    EXPECT_EQ(combo(s, "cboVehNo")->currentText(), QStringLiteral("O'KAFOR 1 ADA"));
    type(s, "txtDiag", QStringLiteral("MALARIA [B54]"));
    pick(s, "cboReason", QStringLiteral("MUSA IBRAHIM"));
    desk->prompter.answerYes();
    click(s, "OKButton");
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Record Succesfully updated"));
    expectColumns(ws->connect()->queryOne(QStringLiteral("SELECT * FROM hConsulting")),
                  {"consultID=" + visit, "diagnosis=MALARIA [B54]", "treatedBy=DOC003"});

    // Deleting the consultation leaves the visit seen.
    grid->selectRow(0);
    desk->prompter.answerYes();
    click(s, "cmdDel");
    EXPECT_EQ(desk->prompter.messages().at(desk->prompter.messages().size() - 2).title,
              QStringLiteral("Delete from Clinic"));
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral(" Record successfully deleted "));
    EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM hConsulting")), 0);
    EXPECT_EQ(
        count(QStringLiteral("SELECT attendedto FROM hRecords WHERE consultID = ?"), {visit}), 1);

    // A visit gone from the visits meanwhile empties the labels.
    ws->exec(QStringLiteral("DELETE FROM hRecords WHERE consultID = '001000000002'"));
    choose(s, QStringLiteral("O'KAFOR 2"));
    EXPECT_EQ(label(s, "lblBill") + label(s, "lblClient") + label(s, "lblNo"), QString());
    EXPECT_EQ(label(s, "lblHeading"), QStringLiteral("Patient Referal"));
    close(s);
}

TEST_P(Consultation, TwoDoctorsOnOneVisitAndRowsRemovedMeanwhile)
{
    const QString visit = addVisit(today(), QStringLiteral("DOC001"));
    Desk other(*ws);
    other.startUp();
    auto consult = [&](Desk& d, int id, const QString& doctor) {
        clinical::ConsultationFields f;
        f.id = id;
        f.patientEntry = QStringLiteral("O'KAFOR 1 ADA");
        f.consultID = visit;
        f.pno = QStringLiteral("001/000000001");
        f.date = today();
        f.time = QStringLiteral("10:00 AM");
        f.complaints = f.diagnosis = f.prescription = QStringLiteral("0");
        f.doctor = doctor;
        d.prompter.answerYes();
        return clinical::saveConsultation(d.ctx, f);
    };
    EXPECT_EQ(consult(*desk, 0, QStringLiteral("EZE CHIDI [DOC001]")),
              QStringLiteral("Record Succesfully saved"));
    EXPECT_EQ(consult(other, 0, QStringLiteral("MUSA IBRAHIM [DOC003]")),
              QStringLiteral("Record Succesfully saved"));
    EXPECT_EQ(count(QStringLiteral("SELECT COUNT(DISTINCT ID) FROM hConsulting WHERE "
                                   "consultID = ?"),
                    {visit}),
              2);
    EXPECT_EQ(
        count(QStringLiteral("SELECT attendedto FROM hRecords WHERE consultID = ?"), {visit}), 1);

    // Another desk deletes one meanwhile: the edit and the delete of it are refused.
    const int id = count(QStringLiteral("SELECT MIN(ID) FROM hConsulting"));
    other.prompter.answerYes();
    ASSERT_TRUE(clinical::deleteConsultation(other.ctx, id));
    EXPECT_THROW(consult(*desk, id, QStringLiteral("EZE CHIDI [DOC001]")), CheckFailed);
    desk->prompter.answerYes();
    EXPECT_THROW(clinical::deleteConsultation(desk->ctx, id), CheckFailed);
    EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM hConsulting")), 1);
}

TOLMAR_INSTANTIATE_BACKENDS(Consultation);
