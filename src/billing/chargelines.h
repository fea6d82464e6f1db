#pragma once
// Charge lines: the rows the front desk drops into billAccum for the billing module to turn
// into bills. Every writer runs on the caller's connection (inside its transaction when it
// has one) and only ever appends.

#include "platform/db.h"

#include <QDate>
#include <QString>

namespace tolmar::billing {

// The column of qryhServices a client category pays: PRIVATE and DEFAULT pay `Private`,
// PHCN pays `NEPA`, and a category the list does not know pays `Private` too.
QString feeColumnFor(const QString& clientCat);

// The price of a service for a client category, from qryhServices (type "OPD"); 0 when the
// service is not on the list. Rounded to 2 decimals as the bill shows it.
double serviceFee(db::Connection& c, const QString& service, const QString& clientCat);

// The payer's fee columns in hRetainership; 0 when the payer or the amount is missing.
double registrationAmount(db::Connection& c, const QString& retainID);
double cardRenewAmount(db::Connection& c, const QString& retainID);
double consultationAmount(db::Connection& c, const QString& retainID);
double screeningAmount(db::Connection& c, const QString& retainID);
// The price of one service of hServiceNHIS by its number; 0 when there is no such service.
double serviceAmount(db::Connection& c, int sno);

// What every line of one visit carries.
struct VisitBill {
    QDate date;         // the server date of the charge
    QString pno;
    QString consultID;  // the visit number, also the bill number; "" until the visit exists
    QString coyName;    // the paying client's name as the form holds it
    QString billTo;     // the client's code
};

// Registration-kind lines (registration, card renewal) also set Category, suppres and
// Capitated, and are revenue "REGISTRATION".
inline const QString kCategoryRegistration = QStringLiteral("REGISTRATION");
inline const QString kCategoryCardRenew = QStringLiteral("CARD_RENEW");

// "REGISTRATION": the payer's RegAmount. Returns the price written.
double getServiceFeeForReg(db::Connection& c, const VisitBill& bill, const QString& retainID);
// "CARD RENEWAL FEE": the payer's CardRenewAmount. The registration screen files it under
// CARD_RENEW, the attendance screen under REGISTRATION.
double getCardRenewFee(db::Connection& c, const VisitBill& bill, const QString& retainID,
                       const QString& category = kCategoryCardRenew);

// The visit's own line, always priced 0: the visit is charged for what it later incurs.
// appVersion > 0 writes AppVersion too (the registration screen does, frmRecords not).
void writeAttendanceLine(db::Connection& c, const VisitBill& bill, const QString& revType,
                         int appVersion = 0);

// The lines of a visit taken on the registration screen, in order, on one connection:
// the attendance line, the pending instant fee, and the opening balance of a new patient.
struct VisitLines {
    QString revTypeConsult;  // the Revtype_Consult default
    int appVersion = 0;
    bool instantFeePending = false;
    QString instantFeeItem;
    double instantFeeAmount = 0;
    double carryOverDebt = 0;
    bool isEdit = false;  // an edited patient never gets an opening balance line
};
void writeVisitLines(db::Connection& c, const VisitBill& bill, const VisitLines& lines);

// One row per screening visit, beside the visit's bill lines.
void recordScreeningVisit(db::Connection& c, const QDate& date, const QString& consultID,
                          const QString& purposeClass);

// "CONSULTATION" of the consulting room: a line of its own kind, tied to the consultation.
void writeConsultationLine(db::Connection& c, const QDate& screenDate, const QString& pno,
                           const QString& consultID, const QString& conID,
                           const QString& clientCat);
// "ANTENATAL" and "ATTENDANCE" of the ante-natal registration: the item names the line's
// kind and its price follows the patient's category.
void writeAntenatalLine(db::Connection& c, const QString& item, const QDate& date,
                        const QString& pno, const QString& consultID, const QString& clientCat);

// Registration and card-renewal lines made before the visit existed are claimed by it.
int updateRegInBillAccum(db::Connection& c, const QString& pno, const QString& consultID);

}  // namespace tolmar::billing
