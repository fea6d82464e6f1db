#pragma once
// Age as the desks read it: "34 yrs, 2 mths and 11 days".

#include <QDate>
#include <QString>

namespace tolmar {

class AppContext;

// The age on `today` of someone born on `dob`. All three parts are always there, also
// when a count is 0; each is singular only for exactly 1.
QString ageText(const QDate& dob, const QDate& today);
// Against the workstation's own date, as the desks have always counted it.
QString ageText(AppContext& ctx, const QDate& dob);

}  // namespace tolmar
