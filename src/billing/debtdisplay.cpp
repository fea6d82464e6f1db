#include "billing/debtdisplay.h"

#include "core/appcontext.h"
#include "core/mditolmar.h"
#include "core/screenhost.h"

#include <QMdiArea>

namespace tolmar::billing {

namespace {
MdiTolmar* mainWindow(AppContext& ctx)
{
    QMdiArea* frame = ctx.screens().frame();
    return frame ? qobject_cast<MdiTolmar*>(frame->window()) : nullptr;
}
}  // namespace

void showDebtOnMainWindow(AppContext& ctx, const DebtOutcome& outcome)
{
    ctx.session().currentBalance = outcome.balance;
    ctx.session().debtShown = outcome.shown();
    MdiTolmar* main = mainWindow(ctx);
    if (!main)
        return;
    // The panel is reset first, so a new patient never inherits the last one's colours.
    main->clearDebt();
    if (outcome.shown())
        main->showDebt(outcome.caption);
}

void clearDebtDisplay(AppContext& ctx) { showDebtOnMainWindow(ctx, DebtOutcome{}); }

DebtOutcome lastDebt(const AppContext& ctx)
{
    const double balance = ctx.session().currentBalance;
    return {balance, debtCaption(balance)};
}

}  // namespace tolmar::billing
