// The quick and incremental search of the registration screen, driven by its controls, and
// its list of likely duplicates.
#include "registration/registrationfixture.h"

#include <QGroupBox>
#include <QLabel>
#include <QListWidget>

using namespace tolmar;
using namespace tolmar::test;

namespace {

class QuickSearch : public RegistrationTest {
protected:
    frmPatientsNew& openWithPatients()
    {
        addPatient({"001/000000011", "ADAMU", "IFEOMA"});
        addPatient({"001/000000012", "O'CONNOR", "ADAEZE"});
        addPatient({"001/000000013", "OKAFOR", "NGOZI"});
        frmPatientsNew& s = open();
        desk->ctx.session().defaults.SearchWaitTime = 40;
        return s;
    }
    QString found() { return child<QLabel>(screen.get(), "lblFound")->text(); }
    QStringList surnames()
    {
        auto* grid = child<QTableView>(screen.get(), "grdData");
        QStringList out;
        for (int r = 0; r < rowCount(grid); ++r)
            out << cellText(grid, r, QStringLiteral("Surname"));
        return out;
    }
    // Types over the box; `settle` waits until every search typing started has had its turn.
    void type(const char* text, bool settle = true)
    {
        QLineEdit* box = edit(screen.get(), "txtName");
        box->selectAll();
        QTest::keyClicks(box, QString::fromUtf8(text));
        if (settle)
            EXPECT_TRUE(QTest::qWaitFor([&] { return desk->prompter.busyDepth() == 0; }, 5000));
    }
};

TEST_P(QuickSearch, ButtonsSayWhatToTypeSearchWithoutLimitAndKeepTheGridOnFailure)
{
    frmPatientsNew& s = openWithPatients();
    desk->ctx.session().defaults.SearchValue = QStringLiteral("1");
    const struct {
        const char *button, *blank, *typed;
        QStringList found;
    } cases[] = {
        {"cmdOK", "To locate a patient, Enter few Letters and click OK Button", "ada",
         {"ADAMU", "O'CONNOR"}},
        {"cmdSys", "To locate a patient, Enter Patient Tel No and click 'Tel No' Button",
         "0803", {}},
        {"cmdCard", "To locate a patient, Enter Card No and click 'Card No' Button",
         "001/26/000013", {"OKAFOR"}},
    };
    for (const auto& c : cases) {
        edit(&s, "txtName")->clear();
        desk->prompter.clear();
        click(&s, c.button);
        EXPECT_EQ(desk->prompter.informs(), QStringList{c.blank});
        EXPECT_EQ(s.focusWidget(), edit(&s, "txtName"));
        edit(&s, "txtName")->setText(c.typed);
        click(&s, c.button);
        EXPECT_EQ(surnames(), c.found) << c.button;
        EXPECT_EQ(found(), QStringLiteral("%1 Records Found").arg(c.found.size())) << c.button;
    }
    // A failure shows its own description; the grid and its count stay as they were.
    ws->connect()->execScript(
        QStringLiteral("ALTER TABLE hPatients RENAME COLUMN SearchName TO SearchNameGone"));
    desk->prompter.clear();
    edit(&s, "txtName")->setText(QStringLiteral("adamu"));
    click(&s, "cmdOK");
    ASSERT_EQ(desk->prompter.informs().size(), 1);
    EXPECT_TRUE(desk->prompter.informs().front().contains("searchname", Qt::CaseInsensitive));
    EXPECT_EQ(surnames(), QStringList{"OKAFOR"});
    EXPECT_EQ(found(), QStringLiteral("1 Records Found"));
}

TEST_P(QuickSearch, TypingSearchesAfterTheWaitEndsOnTheTextInTheBoxAndOpensARow)
{
    frmPatientsNew& s = openWithPatients();
    type("ada", false);
    EXPECT_EQ(desk->prompter.busyDepth(), 1);  // the hourglass while it waits
    EXPECT_TRUE(found().isEmpty());            // nothing before the wait is over
    type("o'con");  // typed over before the first wait ends: the grid ends on this one
    EXPECT_EQ(surnames(), QStringList{"O'CONNOR"});
    EXPECT_EQ(found(), QStringLiteral("1 Records Found"));
    saveScreenshot(&s, QStringLiteral("quick-search"));
    EXPECT_EQ(child<QLabel>(&s, "Label5")->text(), "Patient Attendance / Registration");
    EXPECT_TRUE(desk->prompter.messages().empty());  // the quote is data, not an error
    // Typed over by a text that runs no search (too short, or a number being typed):
    // the longer text's wait ends on a text that is gone, and the grid stays.
    type("adamu", false);
    for (const char* typed : {"ad", "ok1", "080"})
        type(typed);
    EXPECT_EQ(surnames(), QStringList{"O'CONNOR"});
    desk->ctx.session().defaults.SearchValue = QStringLiteral("1");
    type("ada");
    EXPECT_EQ(surnames(), QStringList{"ADAMU"});
    edit(&s, "txtName")->clear();  // at once, no wait
    EXPECT_EQ(surnames(), QStringList{});
    EXPECT_EQ(found(), QStringLiteral("0 Records Found"));

    type("okafor");
    doubleClickRow(child<QTableView>(&s, "grdData"), 0);
    EXPECT_EQ(s.mode(), frmPatientsNew::Mode::Edit);
    EXPECT_TRUE(s.isEdit());
    EXPECT_EQ(edit(&s, "txtsurNAme")->text(), QStringLiteral("OKAFOR"));
    EXPECT_EQ(edit(&s, "txtSupp")->text(), QStringLiteral("001/000000013"));
    EXPECT_TRUE(child<QPushButton>(&s, "cmdPatDep")->isEnabled());
}

TEST_P(QuickSearch, LikelyDuplicatesAreListedAndSaveStillGoesThrough)
{
    ws->exec(QStringLiteral("INSERT INTO hPatients (PNo, psurname, pfirstName, pPhoneNo) "
                            "VALUES ('001/000000021', 'OKAFOR', 'NGOZI', '08031234567')"));
    frmPatientsNew& s = open();
    fillNewPrivate(&s, QStringLiteral("OKAFOR"));
    auto* box = child<QGroupBox>(&s, "fraDuplicates");
    EXPECT_FALSE(box->isVisible());
    edit(&s, "txtPhone")->setText(QStringLiteral("08031234567"));
    QTest::keyClick(edit(&s, "txtPhone"), Qt::Key_Return);
    EXPECT_TRUE(box->isVisible());
    auto* list = child<QListWidget>(&s, "lstDuplicates");
    ASSERT_EQ(list->count(), 1);
    EXPECT_EQ(list->item(0)->text(), QStringLiteral("OKAFOR NGOZI (001/000000021): same phone"));
    saveScreenshot(&s, QStringLiteral("likely-duplicates"));
    EXPECT_TRUE(desk->prompter.messages().empty());
    desk->prompter.answerYes();
    click(&s, "OKButton");
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT count(*) FROM hPatients")).toInt(), 2);
    EXPECT_FALSE(box->isVisible());  // gone with the fields
}

TOLMAR_INSTANTIATE_BACKENDS(QuickSearch);

}  // namespace
