// Every screen the host can open, opened inside the main window the size a front desk's
// laptop gives it: the screen lies in the frame's visible area with its captions whole and
// its buttons in sight, and its own close control closes it, frame and all. A screen
// registered tomorrow is covered here without a line more.
#include "mainwindowfixture.h"

#include "core/ui/gridcells.h"
#include "platform/local.h"
#include "support/screenkit.h"

#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QHeaderView>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QTableView>
#include <QTest>

using namespace tolmar;
using namespace tolmar::test;

namespace {

// Grids that must show at least this many rows without scrolling.
struct TallGrid {
    const char* screen;
    const char* grid;
    int rows;
};
const TallGrid kTallGrids[] = {
    {"frmPatientsNew", "grdDoc", 3},  // the doctors' queue, watched while the desk works
    {"frmDrugPriceHMO", "grdData", 12},
    {"frmLabPriceHMO", "grdData", 12},
    {"frmServPriceHMO", "grdData", 12},
};

// The control a screen closes with: "Close" on most, "Exit" or "Close" on a dialog.
QPushButton* closeControl(QWidget* screen)
{
    for (const char* name : {"CancelButton", "cmdClose", "cmdCancel"})
        if (auto* b = screen->findChild<QPushButton*>(QString::fromLatin1(name)))
            return b;
    return nullptr;
}

// Whole and in sight: no ancestor up to `upTo` cuts any part of the widget off.
bool wholeInSight(const QWidget* w, const QWidget* upTo)
{
    for (const QWidget* p = w->parentWidget(); p; p = p->parentWidget()) {
        const QRect at(w->mapTo(p, QPoint(0, 0)), w->size());
        if (!p->rect().contains(at))
            return false;
        if (p == upTo)
            return true;
    }
    return true;
}

class EveryScreen : public MainWindowTest {
protected:
    void SetUp() override
    {
        MainWindowTest::SetUp();
        local::createKeyDb(ws->homePath(QStringLiteral("key.db")));
        open();
        window->resize(kDeskLaptop);
        QCoreApplication::processEvents();
    }

    // Checks one open screen: its window inside the frame's visible area (a dialog inside
    // the main window), every caption whole, every button and grid in sight.
    void checkFits(QWidget* screen, const QString& shot = QString())
    {
        saveScreenshot(window.get(), screen->objectName() + shot);
        QWidget* box = screen;
        QRect room = window->frameGeometry();
        if (auto* sub = qobject_cast<QMdiSubWindow*>(screen->parentWidget())) {
            box = sub;
            room = window->mdiArea()->viewport()->rect();
            EXPECT_EQ(sub->pos(), QPoint(0, 0));
        }
        const QRect at = box->isWindow() ? box->frameGeometry() : box->geometry();
        EXPECT_TRUE(room.contains(at)) << "window " << at.width() << "x" << at.height() << "+"
                                       << at.x() << "+" << at.y() << " in " << room.width()
                                       << "x" << room.height();
        for (QPushButton* b : screen->findChildren<QPushButton*>())
            if (b->isVisible())
                EXPECT_TRUE(wholeInSight(b, box)) << "button " << qPrintable(b->objectName());
        for (QLabel* l : screen->findChildren<QLabel*>()) {
            if (!l->isVisible() || l->text().isEmpty() || l->wordWrap() || l->hasScaledContents())
                continue;
            EXPECT_GE(l->width(), l->sizeHint().width())
                << "label " << qPrintable(l->objectName()) << " \"" << qPrintable(l->text())
                << "\" is cut";
            EXPECT_TRUE(wholeInSight(l, box)) << "label " << qPrintable(l->text());
        }
    }

    // Presses the close control; whatever comes up modally after it is noted and closed.
    QStringList closeWithOwnButton(QWidget* screen)
    {
        QStringList cameUp;
        QTimer dismiss;
        dismiss.setInterval(5);
        QObject::connect(&dismiss, &QTimer::timeout, [&] {
            if (QWidget* modal = QApplication::activeModalWidget()) {
                cameUp << modal->objectName();
                modal->close();
            }
        });
        dismiss.start();
        QPushButton* close = closeControl(screen);
        if (!close) {
            ADD_FAILURE() << "no close control";
            return cameUp;
        }
        close->click();
        QTest::qWait(30);
        dismiss.stop();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
        return cameUp;
    }

    void expectNothingLeft(const QString& name)
    {
        EXPECT_TRUE(window->mdiArea()->subWindowList().isEmpty());
        EXPECT_EQ(desk->ctx.screens().find(name), nullptr);
        for (QWidget* w : QApplication::topLevelWidgets())
            if (w != window.get() && w->isVisible())
                ADD_FAILURE() << "still up: " << qPrintable(w->objectName());
    }
};

TEST_P(EveryScreen, OpensInSightAndClosesWithItsOwnButtonFrameAndAll)
{
    ScreenHost& host = desk->ctx.screens();
    const QStringList names = ScreenHost::registeredNames();
    ASSERT_GE(names.size(), 10);
    for (const QString& name : names) {
        SCOPED_TRACE(name.toStdString());
        // Twice: a screen opened again after its close must come up whole and working.
        for (int round = 0; round < 2; ++round) {
            QWidget* screen = host.open(name);
            ASSERT_NE(screen, nullptr);
            QCoreApplication::processEvents();
            EXPECT_TRUE(screen->isVisible());
            checkFits(screen);
            const QStringList cameUp = closeWithOwnButton(screen);
            // The server locations hand back to the list of servers; nothing else follows.
            EXPECT_EQ(cameUp, name == QLatin1String("frmLocNew")
                                  ? QStringList{QStringLiteral("frmLocIP")}
                                  : QStringList{});
            expectNothingLeft(name);
        }
    }
    EXPECT_FALSE(desk->prompter.answersLeft());
}

TEST_P(EveryScreen, GridsTheDeskWatchesShowTheirRowsWithoutScrolling)
{
    for (const TallGrid& g : kTallGrids) {
        SCOPED_TRACE(g.screen);
        QWidget* screen = desk->ctx.screens().open(QString::fromLatin1(g.screen));
        ASSERT_NE(screen, nullptr);
        QCoreApplication::processEvents();
        auto* view = screen->findChild<QTableView*>(QString::fromLatin1(g.grid));
        ASSERT_NE(view, nullptr);
        EXPECT_GE(view->viewport()->height(),
                  g.rows * view->verticalHeader()->defaultSectionSize());
        closeWithOwnButton(screen);
    }
}

TEST_P(EveryScreen, APriceListShowsItsPriceColumnWithoutScrollingSideways)
{
    for (const char* name : {"frmDrugPriceHMO", "frmLabPriceHMO", "frmServPriceHMO"}) {
        SCOPED_TRACE(name);
        QWidget* screen = desk->ctx.screens().open(QString::fromLatin1(name));
        ASSERT_NE(screen, nullptr);
        pick(screen, "cboHMO", QStringLiteral("HYLOVA HMO"));
        QComboBox* payer = combo(screen, "cboHMO");
        emit payer->activated(payer->currentIndex());
        QCoreApplication::processEvents();
        checkFits(screen, QStringLiteral("-priced"));
        auto* grid = screen->findChild<QTableView*>(QStringLiteral("grdData"));
        ASSERT_NE(grid, nullptr);
        ASSERT_GT(rowCount(grid), 0);
        const int price = grid::columnOf(grid->model(), QStringLiteral("Price"));
        ASSERT_GE(price, 0);
        EXPECT_LE(grid->columnViewportPosition(price) + grid->columnWidth(price),
                  grid->viewport()->width());
        closeWithOwnButton(screen);
    }
}

TEST_P(EveryScreen, TheSmsCreditStaysWholeOnceTheAmountsAreIn)
{
    ws->exec(QStringLiteral("UPDATE SmsAccount SET CurrBalance = ?"), {987654321.5},
             db::Database::SmsCenter);
    QWidget* screen = desk->ctx.screens().open(QStringLiteral("frmBirthday"));
    ASSERT_NE(screen, nullptr);
    click(screen, "cmdSMS");
    QCoreApplication::processEvents();
    EXPECT_EQ(child<QLabel>(QStringLiteral("lblAttnd"))->text(),
              QStringLiteral("987,654,321.50"));
    checkFits(screen, QStringLiteral("-status"));
}

TEST_P(EveryScreen, AListReportClosesWithItsFrame)
{
    addPatient(QStringLiteral("001/000000001"), QStringLiteral("ADEYEMI"), QStringLiteral("TOLU"),
               QStringLiteral("0001"), QVariant(), 0, today());
    action(QStringLiteral("mnuDR"))->trigger();
    const auto subs = window->mdiArea()->subWindowList();
    ASSERT_EQ(subs.size(), 1);
    QWidget* report = subs.front()->widget();
    checkFits(report);
    closeWithOwnButton(report);
    expectNothingLeft(QStringLiteral("rptNewReg"));
}

TOLMAR_INSTANTIATE_BACKENDS(EveryScreen);

}  // namespace
