#include "billing/chargelines.h"

#include <cmath>

namespace tolmar::billing {

namespace {

// The bill shows two decimals; the amount is read back as what it shows.
double twoDecimals(double v) { return std::round(v * 100.0) / 100.0; }

double amountOf(db::Connection& c, const QString& sql, const db::Params& params)
{
    const auto row = c.queryOne(sql, params);
    return row ? twoDecimals(row->toDouble(u"Amount")) : 0.0;
}

const QString kInsertLine = QStringLiteral(
    "INSERT INTO billAccum (dtDate, drgName, Price, Qty, SubTotal, PNo, consultID, billType, "
    "ConID, Category, CoyName, billTo, attendedto, suppres, Capitated, isbilled, revType, "
    "AppVersion) VALUES (?, ?, ?, 1, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");

// One line with every column the front desk may set; the writers leave unset columns NULL.
struct Line {
    QDate date;
    QString drgName;
    double price = 0;
    QString pno;
    QString consultID;
    QString billType;
    QVariant conID;
    QVariant category;
    QVariant coyName;
    QVariant billTo;
    QVariant attendedto;
    QVariant suppres;
    QVariant capitated;
    QVariant isbilled;
    QVariant revType;
    QVariant appVersion;
};

void insert(db::Connection& c, const Line& l)
{
    c.exec(kInsertLine, {l.date, l.drgName, l.price, l.price, l.pno, l.consultID, l.billType,
                         l.conID, l.category, l.coyName, l.billTo, l.attendedto, l.suppres,
                         l.capitated, l.isbilled, l.revType, l.appVersion});
}

Line serviceLine(const VisitBill& bill, const QString& drgName, double price)
{
    Line l;
    l.date = bill.date;
    l.drgName = drgName;
    l.price = price;
    l.pno = bill.pno;
    l.consultID = bill.consultID;
    l.billType = QStringLiteral("SERVICE");
    l.coyName = bill.coyName;
    l.billTo = bill.billTo;
    l.attendedto = 0;
    l.isbilled = 0;
    return l;
}

Line registrationKindLine(const VisitBill& bill, const QString& drgName, double price,
                          const QString& category)
{
    Line l = serviceLine(bill, drgName, price);
    l.category = category;
    l.suppres = 0;
    l.capitated = QStringLiteral("NO");
    l.revType = QStringLiteral("REGISTRATION");
    return l;
}

double retainerAmount(db::Connection& c, const char* column, const QString& retainID)
{
    return amountOf(c,
                    QStringLiteral("SELECT %1 AS Amount FROM hRetainership WHERE retainID = ?")
                        .arg(QLatin1String(column)),
                    {retainID});
}

}  // namespace

QString feeColumnFor(const QString& clientCat)
{
    const QString cat = clientCat.trimmed().toUpper();
    if (cat == QLatin1String("PRIVATE") || cat == QLatin1String("DEFAULT"))
        return QStringLiteral("Private");
    if (cat == QLatin1String("PHCN"))
        return QStringLiteral("NEPA");
    for (const char* own : {"HMO", "NHIS", "MTHLY", "3MTHLY", "6MTHLY", "CBN", "NEPA"})
        if (cat == QLatin1String(own))
            return cat;
    return QStringLiteral("Private");
}

double serviceFee(db::Connection& c, const QString& service, const QString& clientCat)
{
    const auto row = c.queryOne(
        QStringLiteral("SELECT * FROM qryhServices WHERE service = ? AND type = 'OPD'"),
        {service});
    return row ? twoDecimals(row->toDouble(feeColumnFor(clientCat))) : 0.0;
}

double registrationAmount(db::Connection& c, const QString& retainID)
{
    return retainerAmount(c, "RegAmount", retainID);
}

double cardRenewAmount(db::Connection& c, const QString& retainID)
{
    return retainerAmount(c, "CardRenewAmount", retainID);
}

double consultationAmount(db::Connection& c, const QString& retainID)
{
    return retainerAmount(c, "ConAmount", retainID);
}

double screeningAmount(db::Connection& c, const QString& retainID)
{
    return amountOf(c, QStringLiteral("SELECT Amount FROM hScreeningAmount WHERE coycode = ?"),
                    {retainID});
}

double serviceAmount(db::Connection& c, int sno)
{
    return amountOf(c, QStringLiteral("SELECT Price AS Amount FROM hServiceNHIS WHERE SNo = ?"),
                    {sno});
}

double getServiceFeeForReg(db::Connection& c, const VisitBill& bill, const QString& retainID)
{
    const double fee = registrationAmount(c, retainID);
    insert(c, registrationKindLine(bill, QStringLiteral("REGISTRATION"), fee,
                                   kCategoryRegistration));
    return fee;
}

double getCardRenewFee(db::Connection& c, const VisitBill& bill, const QString& retainID,
                       const QString& category)
{
    const double fee = cardRenewAmount(c, retainID);
    insert(c, registrationKindLine(bill, QStringLiteral("CARD RENEWAL FEE"), fee, category));
    return fee;
}

void writeAttendanceLine(db::Connection& c, const VisitBill& bill, const QString& revType,
                         int appVersion)
{
    Line l = serviceLine(bill, QStringLiteral("ATTENDANCE"), 0);
    l.revType = revType;
    if (appVersion > 0)
        l.appVersion = appVersion;
    insert(c, l);
}

void writeVisitLines(db::Connection& c, const VisitBill& bill, const VisitLines& lines)
{
    writeAttendanceLine(c, bill, lines.revTypeConsult, lines.appVersion);
    if (lines.instantFeePending) {
        Line l = serviceLine(bill, lines.instantFeeItem, lines.instantFeeAmount);
        l.revType = lines.revTypeConsult;
        l.appVersion = lines.appVersion;
        insert(c, l);
    }
    if (lines.carryOverDebt != 0 && !lines.isEdit) {
        Line l = serviceLine(bill, QStringLiteral("OPENING_BALANCE_DEBT"), lines.carryOverDebt);
        l.revType = lines.revTypeConsult;
        l.appVersion = lines.appVersion;
        insert(c, l);
    }
}

void recordScreeningVisit(db::Connection& c, const QDate& date, const QString& consultID,
                          const QString& purposeClass)
{
    c.exec(QStringLiteral(
               "INSERT INTO hhScreeningAttnd (recDate, consultID, Remarks) VALUES (?, ?, ?)"),
           {date, consultID, purposeClass});
}

void writeConsultationLine(db::Connection& c, const QDate& screenDate, const QString& pno,
                           const QString& consultID, const QString& conID,
                           const QString& clientCat)
{
    Line l;
    l.date = screenDate;
    l.drgName = QStringLiteral("CONSULTATION");
    l.billType = l.drgName;
    l.price = serviceFee(c, QStringLiteral("CONSULTATION"), clientCat);
    l.pno = pno;
    l.consultID = consultID;
    l.conID = conID;
    insert(c, l);
}

void writeAntenatalLine(db::Connection& c, const QString& item, const QDate& date,
                        const QString& pno, const QString& consultID, const QString& clientCat)
{
    Line l;
    l.date = date;
    l.drgName = item;
    l.billType = item;
    l.price = serviceFee(c, item, clientCat);
    l.pno = pno;
    l.consultID = consultID;
    insert(c, l);
}

int updateRegInBillAccum(db::Connection& c, const QString& pno, const QString& consultID)
{
    return c.exec(QStringLiteral("UPDATE billAccum SET consultID = ? "
                                 "WHERE PNo = ? AND COALESCE(consultID, '') = ''"),
                  {consultID, pno});
}

}  // namespace tolmar::billing
