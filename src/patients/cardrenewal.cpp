#include "patients/cardrenewal.h"

#include "core/appcontext.h"
#include "core/audit.h"
#include "core/command.h"
#include "core/formats.h"

namespace tolmar::patients {

namespace {
const QString kCardColumns = QStringLiteral(
    "numval, FullName, pCatID, PNo, regDate, ExpiryDate, fileduration, OldPno");

QDate shownDate(const QString& text)
{
    return QDate::fromString(text.trimmed(), fmt::kShortDate);
}
}  // namespace

std::optional<ExpiredCard> expiredCard(db::Connection& c, const QString& pno)
{
    const auto r = c.queryOne(
        QStringLiteral("SELECT %1 FROM qryhCardExpiredForPrivate WHERE PNo = ?").arg(kCardColumns),
        {pno});
    if (!r)
        return std::nullopt;
    ExpiredCard card;
    card.pno = r->text(u"PNo");
    card.fullName = r->text(u"FullName");
    card.pCatID = r->text(u"pCatID");
    card.oldPno = r->text(u"OldPno");
    card.fileDuration = r->text(u"fileduration");
    card.regDate = r->date(u"regDate");
    card.expiryDate = r->date(u"ExpiryDate");
    card.numval = r->toInt(u"numval");
    return card;
}

QAbstractItemModel* expiredCardGrid(db::Connection& c, const QString& pno, QObject* parent)
{
    return c.gridModel(QStringLiteral("SELECT FullName AS \"Fullname\", PNo AS \"SysCardNo\", "
                                      "OldPno AS \"CardNo\", ExpiryDate AS \"ExpiryDate\" "
                                      "FROM qryhCardExpiredForPrivate WHERE PNo = ?"),
                       {pno}, parent);
}

int cardYear(const QString& expiryText, const QString& regDateText)
{
    const QDate expiry = shownDate(expiryText);
    if (expiry.isValid())
        return expiry.year();
    const QDate reg = shownDate(regDateText);
    return reg.isValid() ? reg.year() : 0;
}

bool renewCard(AppContext& ctx, const Renewal& r)
{
    if (r.pno.trimmed().isEmpty())
        throw CheckFailed(QStringLiteral("Invalid patient System No"), QStringLiteral("txtNo"));
    if (!ctx.prompter().ask(QStringLiteral("Are you sure to Renew %1").arg(r.name),
                            QStringLiteral("Confirm before renewal")))
        return false;

    // On the shared connection and outside any transaction: the card is renewed from here
    // on, even if the history row below cannot be written.
    db::Connection& c = ctx.db();
    c.exec(QStringLiteral("UPDATE hPatients SET expirydate = ?, expired = 0 WHERE PNo = ?"),
           {r.newExpiry, r.pno});

    Session& s = ctx.session();
    if (r.tag == kRenewFromRegistration || r.tag == kRenewFromAttendance) {
        s.renewedPNo = r.pno;
        s.renewedExpiryDate = r.newExpiry;
        s.CardRenewedFlag = true;
    }
    const QString action = QStringLiteral("Card Renewal for %1").arg(r.name);
    SpAudiTrail(ctx, s.userName, action, r.pno, action, s.computerName);
    ctx.prompter().inform(QStringLiteral("Congrats!!! Your Card(s) has been renewed for another "
                                         "year"),
                          QStringLiteral("Card Renewal"));

    const int year = cardYear(r.expiryText, r.regDateText);
    c.exec(QStringLiteral("INSERT INTO hPatientsOldCardNoHist (PNo, OldCardNo, CardYear) "
                          "VALUES (?, ?, ?)"),
           {r.pno, r.oldCardNo, year > 0 ? QVariant(year) : QVariant()});
    return true;
}

}  // namespace tolmar::patients
