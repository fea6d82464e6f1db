// The one handler every screen runs its commands under.
#include "support/workspace.h"

#include "core/command.h"
#include "core/ui/formbuilder.h"

#include <QApplication>
#include <QLineEdit>
#include <QTabWidget>
#include <QVBoxLayout>

#include <functional>

using namespace tolmar;
using namespace tolmar::test;

TEST(Command, FailedCheckShowsItsMessageAndFocusesItsControlOnItsTab)
{
    Workspace ws(db::Backend::Sqlite);
    Desk desk(ws);
    QWidget screen;
    screen.setWindowTitle(QStringLiteral("Registration"));
    auto* tabs = new QTabWidget(&screen);
    (new QVBoxLayout(&screen))->addWidget(tabs);
    auto* page1 = new QWidget;
    auto* page2 = new QWidget;
    ui::FormBuilder(page1).text(QStringLiteral("txtsurNAme"), QStringLiteral("Surname"));
    ui::FormBuilder(page2).text(QStringLiteral("txtPhone"), QStringLiteral("Phone"));
    tabs->addTab(page1, QStringLiteral("One"));
    tabs->addTab(page2, QStringLiteral("Two"));
    screen.show();

    const bool done = runCommand(&screen, desk.ctx, [] {
        throw CheckFailed(QStringLiteral("Patient's Phone No Required!"),
                          QStringLiteral("txtPhone"), QStringLiteral("Phone"), Icon::Warning);
    });
    EXPECT_FALSE(done);
    ASSERT_NE(desk.prompter.last(), nullptr);
    EXPECT_EQ(desk.prompter.last()->text, QStringLiteral("Patient's Phone No Required!"));
    EXPECT_EQ(desk.prompter.last()->title, QStringLiteral("Phone"));
    EXPECT_EQ(desk.prompter.last()->icon, Icon::Warning);
    EXPECT_EQ(tabs->currentWidget(), page2);
    EXPECT_EQ(screen.focusWidget()->objectName(), QStringLiteral("txtPhone"));
}

TEST(Command, DatabaseErrorShowsItsOwnDescriptionAndRollsBack)
{
    Workspace ws(db::Backend::Sqlite);
    Desk desk(ws);
    QWidget screen;
    screen.setWindowTitle(QStringLiteral("Areas"));
    const bool done = runCommand(&screen, desk.ctx, [&] {
        auto c = desk.ctx.openConnection();
        db::Transaction tx(*c);
        c->exec(QStringLiteral("INSERT INTO hPatientArea (AreaName) VALUES (?)"),
                {QStringLiteral("OJOTA")});
        c->exec(QStringLiteral("INSERT INTO NoSuchTable (x) VALUES (?)"), {1});
        tx.commit();
    });
    EXPECT_FALSE(done);
    EXPECT_TRUE(desk.prompter.lastText().contains(QStringLiteral("NoSuchTable")));
    EXPECT_EQ(desk.prompter.last()->title, QStringLiteral("Areas"));
    EXPECT_EQ(ws.scalar(QStringLiteral("SELECT count(*) FROM hPatientArea WHERE AreaName = ?"),
                        {QStringLiteral("OJOTA")})
                  .toInt(),
              0);
    EXPECT_TRUE(desk.endedWith.empty());
}

TEST(Command, NoFailureReadsAsAnEmptyBoxAndALostServerSaysSoFirst)
{
    Workspace ws(db::Backend::Sqlite);
    Desk desk(ws);
    const QString driver = QStringLiteral("FATAL:  terminating connection due to administrator "
                                          "command\n(57P01)");
    const std::vector<std::pair<std::function<void()>, QString>> cases{
        {[&] { throw db::DbError(driver, QString(), QStringLiteral("57P01")); },
         kServerUnreachableText + QStringLiteral("\n\n") + driver},
        {[] { throw db::DbError(QString()); }, kNoReasonText},
        {[] { throw std::runtime_error(" "); }, kNoReasonText},
        {[] { throw db::DbError(QStringLiteral("duplicate key")); }, QStringLiteral("duplicate key")},
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
    const db::DbError lost(QStringLiteral("server closed the connection unexpectedly"));
    const db::DbError refused(QStringLiteral("relation \"hreferal\" does not exist"));
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
