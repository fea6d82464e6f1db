#include "reports/menureports.h"

#include "core/appcontext.h"
#include "core/command.h"
#include "core/screenhost.h"
#include "reports/datareportview.h"
#include "reports/listlayouts.h"

#include <QLocale>
#include <QMdiArea>
#include <QMdiSubWindow>

#include <stdexcept>

namespace tolmar::reports {

namespace {

struct Entry {
    QString layout;
    QString sql;
    QString emptyMessage;
};

Entry entryFor(MenuReport which)
{
    switch (which) {
    case MenuReport::DailyAttendance:
        return {QStringLiteral("rptAttendance"),
                QStringLiteral("select RecDate,Time,OLdPNo,FullName,ClinicType,CoyName,EmpNo,"
                               "pPhoneNo,Area,Username from qryhVisitsForAttend "
                               "where recdate = ? ORDER BY recDate desc, time desc"),
                QStringLiteral("No Patient Visit to clinic For Today")};
    case MenuReport::DailyRegistration:
        return {QStringLiteral("rptNewReg"),
                QStringLiteral("select * from qryhNewReg where regDate = ? order by PNo"),
                QStringLiteral("No New Registration For Today")};
    case MenuReport::OnAdmission:
        return {QStringLiteral("rptPatientAdmission"),
                QStringLiteral("select * from qryhAdmission order by fullname"),
                QStringLiteral("No Patient on Admission")};
    case MenuReport::IncomeForToday:
        return {QStringLiteral("rptBillingIncome"),
                QStringLiteral("select * from qryhBillingIncome where receiptdate = ? "
                               "order by receiptNo"),
                QStringLiteral("No Income between these two dates")};
    case MenuReport::HmoEnrollees:
        // Enrollees of every HMO and of the national scheme, grouped by their scheme.
        return {QStringLiteral("rptHMOList"),
                QStringLiteral("select * from qryhNewReg where clientCatID2 in (?, ?) "
                               "order by retainName, Fullname"),
                QStringLiteral("No HMO or NHIS Enrollee in the System")};
    }
    throw std::logic_error("unknown menu report");
}

}  // namespace

MenuReportRows runMenuReport(AppContext& ctx, MenuReport which)
{
    const Entry e = entryFor(which);
    ctx.refreshServerClock();
    const QDate today = ctx.session().serverDate;
    db::Params params;
    QString caption;
    switch (which) {
    case MenuReport::DailyAttendance:
        params = {today};
        caption = QStringLiteral("Patients Attendance for Today");
        break;
    case MenuReport::DailyRegistration:
        params = {today};
        caption = QStringLiteral("Patients Registration for Today");
        break;
    case MenuReport::OnAdmission:
        break;
    case MenuReport::IncomeForToday:
        params = {today};
        caption = QStringLiteral("Income for Today");
        break;
    case MenuReport::HmoEnrollees:
        params = {QStringLiteral("HMO"), QStringLiteral("NHIS")};
        caption = QStringLiteral("For the Month of %1")
                      .arg(QLocale(QLocale::English).monthName(today.month()));
        break;
    }
    auto busy = ctx.prompter().busy();
    db::Result rows = ctx.db().query(e.sql, params);
    if (rows.empty())
        throw CheckFailed(e.emptyMessage);
    return {e.layout, caption, std::move(rows)};
}

DataReportView* showListReport(AppContext& ctx, const QString& layoutName,
                               const db::Result& rows, const QString& caption)
{
    const ListLayout* layout = findListLayout(layoutName);
    if (!layout)
        throw std::runtime_error(
            QStringLiteral("There is no report layout %1").arg(layoutName).toStdString());
    const PrintContext printing{ctx.session().hospitalName, ctx.session().serverDate};
    auto* view = new DataReportView(ctx, layout->name,
                                    buildListDocument(*layout, rows, caption, printing));
    if (QMdiArea* area = ctx.screens().frame()) {
        for (QMdiSubWindow* sub : area->subWindowList())
            if (sub->widget() && sub->widget()->objectName() == layout->name)
                sub->close();
    }
    ctx.screens().show(view);
    // A list reads best large: the report takes most of the frame.
    if (auto* sub = qobject_cast<QMdiSubWindow*>(view->parentWidget())) {
        if (QMdiArea* area = sub->mdiArea()) {
            const QSize room = area->viewport()->size();
            sub->resize(room.boundedTo(QSize(1040, 760)).expandedTo(QSize(640, 420)));
            sub->move(0, 0);
        }
    }
    return view;
}

}  // namespace tolmar::reports
