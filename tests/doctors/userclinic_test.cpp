// Assigning clinics to doctors: choosing a doctor fills the screen without the password,
// a save replaces the doctor's clinics all at once or not at all, the messages of an empty
// list, and deleting an account archives it and takes its roles and clinics along.
#include "doctorsfixture.h"

#include "security/userclinic.h"

#include <QGroupBox>
#include <QLabel>

using namespace tolmar;
using namespace tolmar::test;

namespace {

class UserClinic : public DoctorsTest {
protected:
    QStringList clinicsOf(const QString& user)
    {
        return security::clinicsOf(*ws->connect(), user);
    }
    int audits(const QString& action)
    {
        return count(QStringLiteral("SELECT COUNT(*) FROM AuditTrail WHERE userAction = ?"),
                     {action});
    }
    static void chooseDoctor(QWidget* s, const QString& name)
    {
        pick(s, "cboSys", name);
        emit combo(s, "cboSys")->activated(combo(s, "cboSys")->currentIndex());
    }
};

}  // namespace

TEST_P(UserClinic, ASaveReplacesTheDoctorsClinicsAllAtOnce)
{
    QWidget* s = open("frmUserClinic");
    chooseDoctor(s, QStringLiteral("DR FOLAKE BAKARE"));
    EXPECT_EQ(edit(s, "txtUsername")->text(), QStringLiteral("dr.bakare"));
    EXPECT_EQ(child<QLabel>(s, "lblEmpID")->text(), QStringLiteral("DOC002"));
    EXPECT_EQ(combo(s, "cboAcctStatus")->currentText(), QStringLiteral("ENABLED"));
    EXPECT_TRUE(edit(s, "txtPassword")->text().isEmpty());
    EXPECT_EQ(child<QGroupBox>(s, "fraClinics")->title(),
              QStringLiteral("Assigned Clinics for: dr.bakare"));
    auto* list = child<QListWidget>(s, "LstDate");
    QStringList ticked;
    for (int i = 0; i < list->count(); ++i)
        if (list->item(i)->checkState() == Qt::Checked)
            ticked << list->item(i)->text();
    EXPECT_EQ(ticked, (QStringList{"GENERAL [GEN]", "PAEDIATRICS [PAED]"}));

    click(s, "cmdDeSelect");
    click(s, "cmdAdd");
    EXPECT_EQ(desk->prompter.lastText(),
              QStringLiteral("No Item selected! Please Select one or more Clinics"));
    tick(list, {QStringLiteral("ANTE-NATAL [ANC]"), QStringLiteral("EYE CLINIC [EYE]")});
    click(s, "cmdAdd");
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Clinics successfully Assigned."));
    EXPECT_EQ(clinicsOf(QStringLiteral("dr.bakare")), (QStringList{"ANC", "EYE"}));
    EXPECT_EQ(audits(QStringLiteral("Insert User  Assigned Clinics for: dr.bakare")), 1);

    // A failure half-way (here the second row repeats the first) leaves the clinics as they
    // were.
    EXPECT_THROW(security::assignClinics(desk->ctx, QStringLiteral("dr.bakare"),
                                         {QStringLiteral("GEN"), QStringLiteral("GEN")}),
                 db::DbError);
    EXPECT_EQ(clinicsOf(QStringLiteral("dr.bakare")), (QStringList{"ANC", "EYE"}));

    desk->prompter.answerYes();
    click(s, "cmdDelClinics");
    EXPECT_EQ(desk->prompter.messages().at(desk->prompter.messages().size() - 2).text,
              QStringLiteral("About to Delete Assigned Clinics for dr.bakare"));
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Assigned Clinics successfully Deleted."));
    EXPECT_TRUE(clinicsOf(QStringLiteral("dr.bakare")).isEmpty());
    EXPECT_EQ(audits(QStringLiteral(" Assigned Clinics Deleted for: dr.bakare")), 1);

    edit(s, "txtPassword")->setText(QStringLiteral("a1"));
    edit(s, "txtConfirmPWD")->setText(QStringLiteral("a2"));
    emit edit(s, "txtConfirmPWD")->editingFinished();
    EXPECT_EQ(desk->prompter.lastText(),
              QStringLiteral("Alert! Unmatched password. Kindly re-type to go on."));
    EXPECT_EQ(desk->prompter.last()->icon, Icon::Critical);
    close(s);
}

TEST_P(UserClinic, EmptyFieldsAndAnEmptyListAreTold)
{
    ws->exec(QStringLiteral("DELETE FROM clinicTypes"));
    QWidget* s = open("frmUserClinic");
    const std::vector<std::pair<const char*, QString>> cases = {
        {"cmdAll", "No Item to select"},
        {"cmdDeSelect", "No Item to Deselect"},
        {"cmdAdd", "Username cannot be empty"},
        {"cmdDel", "Specify Username to Delete"},
    };
    for (const auto& [button, message] : cases) {
        click(s, button);
        EXPECT_EQ(desk->prompter.lastText(), message) << button;
    }
    close(s);
}

TEST_P(UserClinic, DeletingADoctorArchivesTheAccountAndTakesItsRolesAndClinics)
{
    QWidget* s = open("frmUserClinic");
    chooseDoctor(s, QStringLiteral("DR IBRAHIM MUSA"));
    desk->prompter.answerYes();
    click(s, "cmdDel");
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral(" Record successfully deleted "));
    expectColumns(ws->connect()->queryOne(QStringLiteral("SELECT * FROM UsersArchive")),
                  {"Username=dr.musa", "Fullname=DR IBRAHIM MUSA", "EmpID=DOC003"});
    for (const char* table : {"ApplicationUsers", "UserRoles", "userRoleClinic"})
        EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM %1 WHERE Username = 'dr.musa'")
                            .arg(QLatin1String(table))),
                  0)
            << table;
    EXPECT_EQ(audits(QStringLiteral("Delete User ")), 1);
    EXPECT_FALSE(items(combo(s, "cboSys")).contains(QStringLiteral("DR IBRAHIM MUSA [dr.musa]")));
    close(s);
}

TOLMAR_INSTANTIATE_BACKENDS(UserClinic);
