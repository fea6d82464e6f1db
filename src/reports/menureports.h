#pragma once
// The list reports that the main menu starts itself: each runs its statement on HOSPITAL,
// says so when there is nothing to list, and otherwise hands the rows to its layout under
// its caption.

#include "platform/db.h"

#include <QString>

namespace tolmar {
class AppContext;
class DataReportView;
}

namespace tolmar::reports {

enum class MenuReport {
    DailyAttendance,    // mnuRptSB
    DailyRegistration,  // mnuDR
    OnAdmission,        // mnuPOA
    IncomeForToday,     // mnuINC
    HmoEnrollees,       // mnuHMONHIS
};

struct MenuReportRows {
    QString layout;
    QString caption;  // empty: the layout's own title stands
    db::Result rows;
};

// Runs the entry's statement for the server's date. No rows: throws CheckFailed with the
// entry's message.
MenuReportRows runMenuReport(AppContext& ctx, MenuReport which);

// Shows rows in a report window inside the main window, replacing an open window of the
// same layout. Throws when the layout is unknown.
DataReportView* showListReport(AppContext& ctx, const QString& layout, const db::Result& rows,
                               const QString& caption);

}  // namespace tolmar::reports
