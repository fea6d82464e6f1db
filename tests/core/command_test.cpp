// The one handler every screen runs its commands under.
#include "support/expect.h"

#include "core/command.h"
#include "core/ui/formbuilder.h"

#include <QApplication>
#include <QLineEdit>
#include <QTabWidget>
#include <QVBoxLayout>

#include <functional>

using namespace tolmar;
using namespace tolmar::test;
using namespace Qt::StringLiterals;

TEST(Command, FailedCheckShowsItsMessageAndFocusesItsControlOnItsTab)
{
    Workspace ws(db::Backend::Sqlite);
    Desk desk(ws);
    QWidget screen;
    screen.setWindowTitle(u"Registration"_s);
    auto* tabs = new QTabWidget(&screen);
    (new QVBoxLayout(&screen))->addWidget(tabs);
    auto* page1 = new QWidget;
    auto* page2 = new QWidget;
    ui::FormBuilder(page1).text(u"txtsurNAme"_s, u"Surname"_s);
    ui::FormBuilder(page2).text(u"txtPhone"_s, u"Phone"_s);
    tabs->addTab(page1, u"One"_s);
    tabs->addTab(page2, u"Two"_s);
    screen.show();

    const bool done = runCommand(&screen, desk.ctx, [] {
        throw CheckFailed(u"Patient's Phone No Required!"_s, u"txtPhone"_s, u"Phone"_s,
                          Icon::Warning);
    });
    EXPECT_FALSE(done);
    EXPECT_EQ(lastBox(desk.prompter), u"Patient's Phone No Required!|Phone"_s);
    EXPECT_EQ(desk.prompter.last()->icon, Icon::Warning);
    EXPECT_EQ(tabs->currentWidget(), page2);
    EXPECT_EQ(screen.focusWidget()->objectName(), u"txtPhone"_s);
}

TEST(Command, DatabaseErrorShowsItsOwnDescriptionAndRollsBack)
{
    Workspace ws(db::Backend::Sqlite);
    Desk desk(ws);
    QWidget screen;
    screen.setWindowTitle(u"Areas"_s);
    const bool done = runCommand(&screen, desk.ctx, [&] {
        auto c = desk.ctx.openConnection();
        db::Transaction tx(*c);
        c->exec(u"INSERT INTO hPatientArea (AreaName) VALUES (?)"_s, {u"OJOTA"_s});
        c->exec(u"INSERT INTO NoSuchTable (x) VALUES (?)"_s, {1});
        tx.commit();
    });
    EXPECT_FALSE(done);
    EXPECT_TRUE(desk.prompter.lastText().contains(u"NoSuchTable"_s));
    EXPECT_EQ(desk.prompter.last()->title, u"Areas"_s);
    EXPECT_EQ(
        ws.scalar(u"SELECT count(*) FROM hPatientArea WHERE AreaName = ?"_s, {u"OJOTA"_s}).toInt(),
        0);
    EXPECT_TRUE(desk.endedWith.empty());
}

TEST(Command, NoFailureReadsAsAnEmptyBoxAndALostServerSaysSoFirst)
{
    Workspace ws(db::Backend::Sqlite);
    Desk desk(ws);
    const QString driver =
        u"FATAL:  terminating connection due to administrator "
        "command\n(57P01)"_s;
    const std::vector<std::pair<std::function<void()>, QString>> cases{
        {[&] { throw db::DbError(driver, QString(), u"57P01"_s); },
         kServerUnreachableText + u"\n\n"_s + driver},
        {[] { throw db::DbError(QString()); }, kNoReasonText},
        {[] { throw std::runtime_error(" "); }, kNoReasonText},
        {[] { throw db::DbError(u"duplicate key"_s); }, u"duplicate key"_s},
    };
    for (const auto& [fail, shown] : cases) {
        EXPECT_FALSE(runCommand(nullptr, desk.ctx, fail));
        EXPECT_EQ(desk.prompter.lastText(), shown);
    }
}

TEST(Command, TimerTellsAnOutageOnceUntilATickGetsThroughAndOtherFailuresEveryTime)
{
    Workspace ws(db::Backend::Sqlite);
    Desk desk(ws);
    const db::DbError lost(u"server closed the connection unexpectedly"_s);
    const db::DbError refused(u"relation \"hreferal\" does not exist"_s);
    const std::pair<const db::DbError*, bool> ticks[] = {
        {&lost, true},     {&lost, false}, {&refused, true}, {&lost, false},
        {nullptr, false},  {&lost, true},
    };
    for (size_t i = 0; i < std::size(ticks); ++i) {
        const auto [thrown, boxed] = ticks[i];
        const size_t before = desk.prompter.messages().size();
        EXPECT_EQ(runTimerCommand(nullptr, desk.ctx,
                                  [thrown] {
                                      if (thrown)
                                          throw *thrown;
                                  }),
                  thrown == nullptr)
            << "tick " << i;
        EXPECT_EQ(desk.prompter.messages().size() - before, boxed ? 1u : 0u) << "tick " << i;
    }
}
