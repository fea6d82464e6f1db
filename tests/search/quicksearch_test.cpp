// The quick and incremental search of the registration screen, driven by its controls.
#include "registration/registrationfixture.h"

#include <QLabel>

using namespace tolmar;
using namespace tolmar::test;

namespace {

class QuickSearch : public RegistrationTest {
protected:
    frmPatientsNew& openWithPatients()
    {
        for (const auto& [pno, surname, first] :
             {std::tuple{"001/000000011", "ADAMU", "IFEOMA"},
              std::tuple{"001/000000012", "O'CONNOR", "ADAEZE"},
              std::tuple{"001/000000013", "OKAFOR", "NGOZI"}})
            addPatient({QString::fromUtf8(pno), QString::fromUtf8(surname),
                        QString::fromUtf8(first)});
        frmPatientsNew& s = open();
        desk->ctx.session().defaults.SearchWaitTime = 40;
        return s;
    }
    QTableView* grid() { return child<QTableView>(screen.get(), "grdData"); }
    QString found() { return child<QLabel>(screen.get(), "lblFound")->text(); }
    QStringList surnames()
    {
        QStringList out;
        for (int r = 0; r < rowCount(grid()); ++r)
            out << cellText(grid(), r, QStringLiteral("Surname"));
        return out;
    }
    void type(const QString& text)
    {
        QLineEdit* box = edit(screen.get(), "txtName");
        box->selectAll();
        QTest::keyClicks(box, text);
    }
    // Until every incremental search has had its turn.
    void settle()
    {
        EXPECT_TRUE(QTest::qWaitFor([&] { return desk->prompter.busyDepth() == 0; }, 5000));
    }
};

TEST_P(QuickSearch, ButtonsSayWhatToTypeAndSearchWithoutLimit)
{
    frmPatientsNew& s = openWithPatients();
    desk->ctx.session().defaults.SearchValue = QStringLiteral("1");
    const struct {
        const char* button;
        const char* blank;
        const char* typed;
        QStringList found;
    } cases[] = {
        {"cmdOK", "To locate a patient, Enter few Letters and click OK Button", "ada",
         {"ADAMU", "O'CONNOR"}},
        {"cmdCard", "To locate a patient, Enter Card No and click 'Card No' Button",
         "001/26/000013", {"OKAFOR"}},
        {"cmdSys", "To locate a patient, Enter Patient Tel No and click 'Tel No' Button",
         "0803", {}},
    };
    for (const auto& c : cases) {
        edit(&s, "txtName")->clear();
        desk->prompter.clear();
        click(&s, c.button);
        EXPECT_EQ(desk->prompter.informs(), QStringList{QString::fromUtf8(c.blank)});
        EXPECT_EQ(s.focusWidget(), edit(&s, "txtName"));
        edit(&s, "txtName")->setText(QString::fromUtf8(c.typed));
        click(&s, c.button);
        EXPECT_EQ(surnames(), c.found) << c.button;
        EXPECT_EQ(found(), QStringLiteral("%1 Records Found").arg(c.found.size())) << c.button;
    }
    settle();
}

TEST_P(QuickSearch, TypingSearchesAfterTheWaitAndEndsOnTheTextInTheBox)
{
    frmPatientsNew& s = openWithPatients();
    auto* label5 = child<QLabel>(&s, "Label5");
    type(QStringLiteral("ada"));
    EXPECT_EQ(desk->prompter.busyDepth(), 1);  // the hourglass while it waits
    EXPECT_TRUE(found().isEmpty());            // nothing before the wait is over
    // Typed over before the first wait ends: the grid ends on the second text.
    type(QStringLiteral("o'con"));
    settle();
    EXPECT_EQ(surnames(), QStringList{QStringLiteral("O'CONNOR")});
    EXPECT_EQ(found(), QStringLiteral("1 Records Found"));
    EXPECT_EQ(label5->text(), QStringLiteral("Patient Attendance / Registration"));
    EXPECT_TRUE(desk->prompter.messages().empty());  // the quote is data, not an error

    // Too short, or a number being typed: no search, the grid stays.
    for (const char* typed : {"ok", "ok1", "080"}) {
        type(QString::fromUtf8(typed));
        settle();
        EXPECT_EQ(surnames(), QStringList{QStringLiteral("O'CONNOR")}) << typed;
    }
    // SearchValue limits what typing shows.
    desk->ctx.session().defaults.SearchValue = QStringLiteral("1");
    type(QStringLiteral("ada"));
    settle();
    EXPECT_EQ(surnames(), QStringList{QStringLiteral("ADAMU")});
    // A blank box empties the grid at once.
    edit(&s, "txtName")->clear();
    EXPECT_EQ(rowCount(grid()), 0);
    EXPECT_EQ(found(), QStringLiteral("0 Records Found"));
}

TEST_P(QuickSearch, DoubleClickLoadsThePatientIntoEdit)
{
    frmPatientsNew& s = openWithPatients();
    type(QStringLiteral("okafor"));
    settle();
    ASSERT_EQ(rowCount(grid()), 1);
    doubleClickRow(grid(), 0);
    EXPECT_EQ(s.mode(), frmPatientsNew::Mode::Edit);
    EXPECT_TRUE(s.isEdit());
    EXPECT_EQ(edit(&s, "txtsurNAme")->text(), QStringLiteral("OKAFOR"));
    EXPECT_EQ(edit(&s, "txtSupp")->text(), QStringLiteral("001/000000013"));
    EXPECT_TRUE(child<QPushButton>(&s, "cmdPatDep")->isEnabled());
}

TEST_P(QuickSearch, AFailedSearchShowsItsDescriptionAndKeepsTheGrid)
{
    frmPatientsNew& s = openWithPatients();
    edit(&s, "txtName")->setText(QStringLiteral("okafor"));
    click(&s, "cmdOK");
    ASSERT_EQ(surnames(), QStringList{QStringLiteral("OKAFOR")});
    ws->connect()->execScript(
        QStringLiteral("ALTER TABLE hPatients RENAME COLUMN SearchName TO SearchNameGone"));
    desk->prompter.clear();
    edit(&s, "txtName")->setText(QStringLiteral("adamu"));
    click(&s, "cmdOK");
    ASSERT_EQ(desk->prompter.informs().size(), 1);
    EXPECT_TRUE(desk->prompter.informs().front().contains(QStringLiteral("searchname"),
                                                          Qt::CaseInsensitive))
        << desk->prompter.informs().front().toStdString();
    EXPECT_EQ(surnames(), QStringList{QStringLiteral("OKAFOR")});
    EXPECT_EQ(found(), QStringLiteral("1 Records Found"));
}

TOLMAR_INSTANTIATE_BACKENDS(QuickSearch);

}  // namespace
