#pragma once
// Renewing a private patient's card: the card as the renewal desk sees it, and the renewal
// itself. The fee is not billed here: the opener's next save bills it (see Session).

#include <QDate>
#include <QString>

#include <optional>

class QAbstractItemModel;
class QObject;

namespace tolmar {
class AppContext;
namespace db {
class Connection;
}
}  // namespace tolmar

namespace tolmar::patients {

// Who opened the renewal screen; each is handed the new date back.
inline const QString kRenewFromRegistration = QStringLiteral("REG");
inline const QString kRenewFromAttendance = QStringLiteral("RECORDS");

// A row of qryhCardExpiredForPrivate.
struct ExpiredCard {
    QString pno;
    QString fullName;
    QString pCatID;
    QString oldPno;
    QString fileDuration;
    QDate regDate;
    QDate expiryDate;  // invalid when the card was declared expired without a date
    int numval = 0;    // whole days past the expiry date
};
// nullopt when the patient's card is not on the list (not private, or not expired).
std::optional<ExpiredCard> expiredCard(db::Connection& c, const QString& pno);
// The renewal screen's grid: the same card, read lazily; owned by parent.
QAbstractItemModel* expiredCardGrid(db::Connection& c, const QString& pno, QObject* parent);

// The year the card-history row records: of the old expiry when that box holds a date,
// else of the registration date; 0 when neither is a date.
int cardYear(const QString& expiryText, const QString& regDateText);

struct Renewal {
    QString pno;
    QString name;        // as the question names the patient
    QString tag;         // kRenewFromRegistration, kRenewFromAttendance, or "" (menu)
    QDate newExpiry;
    QString oldCardNo;   // the card number, unchanged by the renewal
    QString expiryText;  // the old expiry and the registration date as the boxes show them
    QString regDateText;
};

// Asks first, then gives the card its new date at once (that stands whatever follows),
// hands the date back to the opener, audits, congratulates and records the card's history.
// False when the person answered No. A blank PNo is refused.
bool renewCard(AppContext& ctx, const Renewal& r);

}  // namespace tolmar::patients
