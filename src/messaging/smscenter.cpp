#include "messaging/smscenter.h"

#include "core/appcontext.h"
#include "core/formats.h"

#include <QAbstractItemModel>

namespace tolmar {

namespace {
constexpr db::Database kSms = db::Database::SmsCenter;

QStringList firstColumn(const db::Result& r)
{
    QStringList out;
    for (const auto& row : r.rows)
        out << db::variantText(row.value(0));
    return out;
}
}  // namespace

SmsCenter::SmsCenter(AppContext& ctx) : m_ctx(ctx) {}

QStringList SmsCenter::messageCategories()
{
    return firstColumn(m_ctx.db(kSms).query(
        QStringLiteral("SELECT CatName FROM MessageCategory ORDER BY SNo")));
}

std::vector<PeopleCategoryEntry> SmsCenter::peopleCategories()
{
    std::vector<PeopleCategoryEntry> out;
    for (const auto& r :
         m_ctx.db(kSms).query(QStringLiteral("SELECT SNo, CatName FROM PeopleCategory ORDER BY SNo"))
             .rows)
        out.push_back({r.toInt(u"SNo"), r.text(u"CatName")});
    return out;
}

bool SmsCenter::maySendSpecial(const QString& userName)
{
    return m_ctx.db(kSms)
        .queryOne(QStringLiteral("SELECT username FROM UsersForSMS WHERE username = ?"),
                  {userName})
        .has_value();
}

QAbstractItemModel* SmsCenter::savedSpecials(QObject* parent)
{
    return m_ctx.db(kSms).gridModel(
        QStringLiteral("SELECT SendDate, SendTime, Message, CatName, Remarks FROM messageSpecial "
                       "ORDER BY SendDate DESC, SNo DESC"),
        {}, parent);
}

namespace {
const QString kBirthdays = QStringLiteral(
    "SELECT ROW_NUMBER() OVER (ORDER BY Fullname) AS SNo, Fullname, Phone, Email, Company "
    "FROM vwBirthday");
}

QAbstractItemModel* SmsCenter::birthdays(QObject* parent)
{
    db::Connection& c = m_ctx.db(db::Database::Hospital);
    if (c.scalar(QStringLiteral("SELECT count(*) FROM vwBirthday")).toInt() == 0)
        return nullptr;
    return c.gridModel(kBirthdays + QStringLiteral(" ORDER BY Fullname"), {}, parent);
}

db::Result SmsCenter::birthdaysForExport()
{
    return m_ctx.db(db::Database::Hospital).query(kBirthdays + QStringLiteral(" ORDER BY Fullname"));
}

QAbstractItemModel* SmsCenter::statusToday(QObject* parent)
{
    db::Connection& c = m_ctx.db(kSms);
    const QDate today = m_ctx.session().serverDate;
    if (c.scalar(QStringLiteral("SELECT count(*) FROM MessageOut WHERE Date = ?"), {today})
            .toInt() == 0)
        return nullptr;
    return c.gridModel(
        QStringLiteral("SELECT COALESCE(Catname, Remarks) AS \"Category\", count(*) AS \"Queued\", "
                       "sum(CASE WHEN isSent <> 0 THEN 1 ELSE 0 END) AS \"Sent\" "
                       "FROM MessageOut WHERE Date = ? GROUP BY COALESCE(Catname, Remarks) "
                       "ORDER BY 1"),
        {today}, parent);
}

QString SmsCenter::balance(const QString& category)
{
    const auto row = m_ctx.db(kSms).queryOne(
        QStringLiteral("SELECT CurrBalance FROM vwSMS_AcctDef WHERE CatNAme = ?"), {category});
    return row ? fmt::money(row->toDouble(u"CurrBalance")) : QStringLiteral("N/A");
}

QString SmsCenter::statement(int peopleCategory, const char* column)
{
    const auto row = m_ctx.db(kSms).queryOne(
        QStringLiteral("SELECT Remarks, RemarksCount FROM PeopleCategory WHERE SNo = ?"),
        {peopleCategory});
    return row ? row->text(QString::fromLatin1(column)).trimmed() : QString();
}

SmsCenter::Recipients SmsCenter::recipients(int peopleCategory, QObject* parent)
{
    // The groups are statements the administrator keeps in PeopleCategory; they take no
    // values, so nothing typed at the desk ever reaches them.
    Recipients r;
    const QString count = statement(peopleCategory, "RemarksCount");
    r.total = QStringLiteral("N/A");
    if (!count.isEmpty()) {
        const QVariant n = m_ctx.db(kSms).scalar(count);
        if (n.isValid())
            r.total = db::variantText(n);
    }
    const QString list = statement(peopleCategory, "Remarks");
    if (!list.isEmpty())
        r.model = m_ctx.db(kSms).gridModel(list, {}, parent);
    return r;
}

int SmsCenter::send(const SpecialMessage& m, const std::vector<Recipient>& to)
{
    auto c = m_ctx.openConnection(kSms);
    db::Transaction tx(*c);
    const QString time = fmt::shortTime(m.sendTime);
    const int saved = c->exec(
        QStringLiteral("UPDATE messageSpecial SET sendDate = ?, sendTime = ?, Message = ?, "
                       "CatName = ?, Remarks = ? WHERE CatName = ? AND Remarks = ?"),
        {m.sendDate, time, m.text, m.messageCategory, m.peopleCategoryName, m.messageCategory,
         m.peopleCategoryName});
    if (saved == 0)
        c->exec(QStringLiteral("INSERT INTO messageSpecial (CatName, Remarks, sendDate, sendTime, "
                               "Message) VALUES (?, ?, ?, ?, ?)"),
                {m.messageCategory, m.peopleCategoryName, m.sendDate, time, m.text});
    // The people the desk saw listed, and only they: the group's statement run again now
    // could take in somebody registered since, whom nobody checked.
    const QDate today = m_ctx.session().serverDate;
    for (const Recipient& r : to)
        c->exec(QStringLiteral("INSERT INTO MessageOut (Date, Message, Phone, SendDate, SendTime, "
                               "isSent, Remarks, Code, fullName, Catname) "
                               "VALUES (?, ?, ?, ?, ?, 0, ?, ?, ?, ?)"),
                {today, r.fullName2 + QStringLiteral("\r\n") + m.text, r.phone, m.sendDate, time,
                 m.peopleCategoryName, r.code, r.fullName, m.messageCategory});
    tx.commit();
    return int(to.size());
}

}  // namespace tolmar
