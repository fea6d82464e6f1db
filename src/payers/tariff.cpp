#include "payers/tariff.h"

#include "core/appcontext.h"
#include "core/audit.h"
#include "core/command.h"
#include "core/likepattern.h"
#include "core/listentry.h"

namespace tolmar {

using namespace Qt::StringLiterals;

namespace {

const QString kYes = QStringLiteral("YES");
const QString kNo = QStringLiteral("NO");
const QString kFixed = QStringLiteral("FIXED");

QString percentText(double factor)
{
    // 0.85 shows as 85; six significant digits hide the binary noise of factor * 100.
    return QString::number(factor * 100, 'g', 6);
}

void audit(AppContext& ctx, const QString& action, const QString& tranCode, const QString& remarks)
{
    const Session& s = ctx.session();
    SpAudiTrail(ctx, s.userName, action, tranCode, remarks, s.computerName);
}

std::optional<double> number(const QString& typed)
{
    bool ok = false;
    const double v = typed.trimmed().toDouble(&ok);
    return ok ? std::optional<double>(v) : std::nullopt;
}

}  // namespace

// The table of the three lists.

const TariffKind& TariffKind::drugs()
{
    static const TariffKind k{.screen = u"frmDrugPriceHMO"_s,
                              .title = u"Drugs"_s,
                              .type = u"DRUG"_s,
                              .table = u"DrugNHIS"_s,
                              .itemColumn = u"drgName"_s,
                              .categoryColumn = u"drgCatName"_s,
                              .hasPharmCat = true,
                              .master = u"drugMaster"_s,
                              .view = u"vwDrugNHIS"_s,
                              .viewItem = u"Drug"_s,
                              .viewRemarks = u"PharmCat"_s,
                              .repriceAudit = u"Tariff Drug Price Updated to: ("_s,
                              .addAudit = u"Add Drug Tariff for: "_s,
                              .priceMessage = u"Please Specify Drug Price "_s,
                              .searchMessage = u"Specify Company Tariff before Search"_s,
                              .byCategory = false};
    return k;
}

const TariffKind& TariffKind::investigations()
{
    static const TariffKind k{.screen = u"frmLabPriceHMO"_s,
                              .title = u"Investigations"_s,
                              .type = u"LAB"_s,
                              .table = u"LabServiceNHIS"_s,
                              .itemColumn = u"labName"_s,
                              .categoryColumn = u"labCatName"_s,
                              .hasPharmCat = false,
                              .master = u"LabServices"_s,
                              .view = u"vwLabServiceNHIS"_s,
                              .viewItem = u"LabItem"_s,
                              .viewRemarks = u"Remarks"_s,
                              .repriceAudit = u"Tariff Investigation Price Updated to: ("_s,
                              .addAudit = u"Add Lab Tariff for: "_s,
                              .priceMessage = u"Please LAB Price "_s,
                              .searchMessage = u"Specify Company Tariff before Search"_s,
                              .byCategory = false};
    return k;
}

const TariffKind& TariffKind::services()
{
    static const TariffKind k{.screen = u"frmServPriceHMO"_s,
                              .title = u"Services"_s,
                              .type = u"SERVICE"_s,
                              .table = u"hServiceNHIS"_s,
                              .itemColumn = u"ServName"_s,
                              .categoryColumn = u"servCatName"_s,
                              .hasPharmCat = false,
                              .master = u"hServices"_s,
                              .view = u"vwServiceNHIS"_s,
                              .viewItem = u"Service"_s,
                              .viewRemarks = u"Remarks"_s,
                              .repriceAudit = u"Tariff SERVICEs Price Updated to: ("_s,
                              .addAudit = u"Add Service Tariff for: "_s,
                              .priceMessage = u"Please SERVICE Price "_s,
                              .searchMessage = u"Please specify Tariff Company before Search"_s,
                              .byCategory = true};
    return k;
}

const std::vector<const TariffKind*>& TariffKind::all()
{
    static const std::vector<const TariffKind*> kinds{&drugs(), &investigations(), &services()};
    return kinds;
}

struct TariffList::Template {
    QString coyID;
    QString name;
    QString remarks;
    bool own = false;
    QString source;  // the payer whose list is copied; the payer itself for an own list
    QString sourceName;
    double factor = 1;
    bool deleteExisting = false;
};

TariffList::TariffList(AppContext& ctx, const TariffKind& kind) : m_ctx(ctx), m_kind(kind) {}

std::vector<Payer> TariffList::payers(bool withoutListOnly)
{
    const auto rows =
        withoutListOnly
            ? m_ctx.db().query(QStringLiteral("select company, coyID from vwCoyAndNHIS where "
                                              "coyID not in (select CoyID from "
                                              "DrugNHISListEntered where Type = ?) "
                                              "order by company"),
                               {m_kind.type})
            : m_ctx.db().query(
                  QStringLiteral("select company, coyID from vwCoyAndNHIS order by company"));
    std::vector<Payer> out;
    for (const db::Row& r : rows.rows)
        out.push_back({r.text(u"coyID"), r.text(u"company")});
    return out;
}

std::vector<Payer> TariffList::listedPayers()
{
    std::vector<Payer> out;
    for (const db::Row& r :
         m_ctx.db()
             .query(QStringLiteral("select coyname as company, coyID from vwDrugNHISListEntered "
                                   "where type = ? order by coyname"),
                    {m_kind.type})
             .rows)
        out.push_back({r.text(u"coyID"), r.text(u"company")});
    return out;
}

QString TariffList::remarksOf(const QString& coyID)
{
    const auto row = m_ctx.db().queryOne(
        QStringLiteral("select Remarks from vwCoyAndNHIS where coyID = ?"), {coyID});
    return row ? row->text(u"Remarks") : QStringLiteral("HMO");
}

QString TariffList::tariffUsed(const QString& coyID)
{
    const auto row = m_ctx.db().queryOne(
        QStringLiteral("select UseName, UseTariff, pcent from vwhRetainershipUseTariff "
                       "where type = ? and coyID = ?"),
        {m_kind.type, coyID});
    if (!row || row->isNull(u"UseTariff"))
        return QStringLiteral("NONE");
    if (row->text(u"UseTariff") == coyID)
        return QStringLiteral("OWN TARIFF");
    return percentText(row->toDouble(u"pcent")) + QStringLiteral("% of ") + row->text(u"UseName");
}

QString TariffList::gridSql(bool search, bool category) const
{
    const QString item = m_kind.viewItem;
    QString sql = QStringLiteral(
                      "select distinct SNO AS \"SNO\", %1 AS \"%1\", "
                      "Category AS \"Category\", Price AS \"Price\", "
                      "Capitated AS \"Capitated\", TariffStatus AS \"TariffStatus\", "
                      "Company AS \"Company\", %2 AS \"Remarks\", CoyID AS \"CoyID\" "
                      "from %3 WHERE CoyID = ?")
                      .arg(item, m_kind.viewRemarks, m_kind.view);
    if (search)
        sql += QStringLiteral(" and upper(%1) like ? escape '\\'").arg(item);
    if (category)
        sql += QStringLiteral(" and Category = ?");
    return sql + QStringLiteral(" order by \"%1\"").arg(item);
}

db::Params TariffList::gridParams(const QString& coyID, const QString& search,
                                  const QString& category)
{
    db::Params p{coyID};
    if (!search.isEmpty())
        p.push_back(like::startsWith(search));
    if (!category.isEmpty())
        p.push_back(category);
    return p;
}

QStringList TariffList::categories()
{
    QStringList out;
    for (const db::Row& r : m_ctx.db()
                                .query(QStringLiteral("select distinct catName from HserviceCat "
                                                      "order by catName"))
                                .rows)
        out << r.text(u"catName");
    return out;
}

QString TariffList::insertColumns() const
{
    return QStringLiteral("%1, %2, Price, Company, CoyName, %3Remarks, Capitated, tariffStatus")
        .arg(m_kind.itemColumn, m_kind.categoryColumn,
             m_kind.hasPharmCat ? QStringLiteral("pharmCat, ") : QString());
}

TemplateOutcome TariffList::saveTemplate(const TemplateRequest& r)
{
    const bool copy = r.ownTariff == kNo;
    if (r.payerEntry.trimmed().isEmpty())
        throw CheckFailed(QStringLiteral("Please specify Tariff Template Name"),
                          QStringLiteral("cboHMO"));
    if (copy && r.sourceEntry.trimmed().isEmpty())
        throw CheckFailed(QStringLiteral("Please specify Tariff to use for this Template"),
                          QStringLiteral("cboUse"));
    if (copy && r.percentage.trimmed().isEmpty())
        throw CheckFailed(QStringLiteral("Please specify Percentage to use for this Template"),
                          QStringLiteral("cboPCent"));
    const std::optional<double> percent = number(r.percentage);
    if (copy && !percent)
        throw CheckFailed(QStringLiteral("Tariff Percentage has to be Numeric"),
                          QStringLiteral("cboPCent"));
    Template t;
    t.coyID = listentry::key(r.payerEntry).trimmed();
    t.name = listentry::text(r.payerEntry);
    if (t.coyID.isEmpty())
        throw CheckFailed(QStringLiteral("Please SELECT/Re-SELECT Company"),
                          QStringLiteral("cboHMO"));
    t.own = r.ownTariff == kYes;
    if (copy) {
        t.source = listentry::key(r.sourceEntry).trimmed();
        t.sourceName = listentry::text(r.sourceEntry);
        if (t.source.isEmpty())
            throw CheckFailed(
                QStringLiteral("Please SELECT/Re-SELECT Company Whose Tariff is Used"),
                QStringLiteral("cboUse"));
        t.factor = *percent / 100;
    } else if (t.own) {
        t.source = t.coyID;
        t.sourceName = t.name;
    } else if (!r.singleItem) {
        // Neither an own list nor a copy: there is nothing to make the list from, and the
        // desk is asked, in the screen's own words, which tariff the template is to use.
        throw CheckFailed(QStringLiteral("Please specify Tariff to use for this Template"),
                          QStringLiteral("cboDrug"));
    }
    t.remarks = remarksOf(t.coyID);
    t.deleteExisting = r.deleteExisting;

    Prompter& ask = m_ctx.prompter();
    const bool hasRows =
        m_ctx.db()
            .queryOne(
                QStringLiteral("select SNo from %1 where Company = ? LIMIT 1").arg(m_kind.table),
                {t.coyID})
            .has_value();
    if (!hasRows) {
        if (!ask.ask(QStringLiteral("You are about to make bulk save of Drug items for %1 "
                                    "Click YES to save items")
                         .arg(t.name),
                     QStringLiteral("bulk save")))
            return TemplateOutcome::Cancelled;
    } else if (!r.deleteExisting && !r.singleItem) {
        if (!copy || t.source != t.coyID) {
            ask.inform(QStringLiteral("Bulk entry already exists for %1").arg(t.name));
            return TemplateOutcome::Refused;
        }
        // A copy of its own list: the list is repriced in place.
        if (!ask.ask(QStringLiteral("Are you sure to update the Price List for %1?").arg(t.name),
                     QStringLiteral("save")))
            return TemplateOutcome::Cancelled;
        m_ctx.openConnection()->exec(
            QStringLiteral("update %1 set Price = Price * ? where Company = ?").arg(m_kind.table),
            {t.factor, t.coyID});
        audit(m_ctx, m_kind.repriceAudit + r.percentage.trimmed() + QStringLiteral("%) for"),
              t.coyID, t.name);
        return TemplateOutcome::Repriced;
    } else if (r.deleteExisting) {
        if (!ask.ask(QStringLiteral("You are about to make bulk save of Drug items 'Deleting "
                                    "Existing Drug Tariff' for %1 Click YES to save items")
                         .arg(t.name),
                     QStringLiteral("bulk save")))
            return TemplateOutcome::Cancelled;
    }

    if (r.singleItem) {
        if (r.item.trimmed().isEmpty())
            throw CheckFailed(QStringLiteral("Please specify Item Name"),
                              QStringLiteral("txtDrug"));
        if (r.price.trimmed().isEmpty())
            throw CheckFailed(QStringLiteral("Please specify Price"), QStringLiteral("txtPrice"));
    }
    {
        auto conn = m_ctx.openConnection();
        db::Transaction tx(*conn);
        if (r.singleItem)
            saveTariffSingle(*conn, t, r.item.trimmed(), number(r.price).value_or(0));
        else
            saveTariff(*conn, t);
        tx.commit();
    }
    m_ctx.prompter().inform(
        QStringLiteral("Record Succesfully saved!!! Price values can now "
                       "be edited"));
    if (r.deleteExisting)
        audit(m_ctx, QStringLiteral("Deleted Existing Tariff, ") + m_kind.addAudit + t.name,
              t.coyID,
              QStringLiteral("Tariff Used:") + percentText(t.factor) + QStringLiteral("% of ") +
                  t.sourceName);
    else
        audit(m_ctx, m_kind.addAudit + t.name, t.coyID, QStringLiteral("New Tariff Entry"));
    return TemplateOutcome::Saved;
}

void TariffList::saveTariff(db::Connection& conn, const Template& t)
{
    if (t.deleteExisting) {
        conn.exec(QStringLiteral("delete from DrugNHISListEntered where CoyID = ? and Type = ?"),
                  {t.coyID, m_kind.type});
        conn.exec(QStringLiteral("delete from %1 where Company = ?").arg(m_kind.table), {t.coyID});
    }
    // One statement per list: a few thousand rows copied by the database itself, inside
    // the caller's transaction, so an error leaves nothing of the copy behind.
    const QString pharm = m_kind.hasPharmCat ? QStringLiteral("pharmCat, ") : QString();
    if (t.own) {
        conn.exec(QStringLiteral("insert into %1 (%2) select distinct %3, %4, 0, "
                                 "CAST(? AS VARCHAR(20)), CAST(? AS VARCHAR(200)), %5"
                                 "CAST(? AS VARCHAR(50)), Capitated, CAST(? AS VARCHAR(20)) "
                                 "from %6")
                      .arg(m_kind.table, insertColumns(), m_kind.itemColumn, m_kind.categoryColumn,
                           pharm, m_kind.master),
                  {t.coyID, t.name, t.remarks, kFixed});
    } else {
        conn.exec(QStringLiteral("insert into %1 (%2) select %3, %4, "
                                 "COALESCE(Price, 0) * CAST(? AS DOUBLE PRECISION), "
                                 "CAST(? AS VARCHAR(20)), CAST(? AS VARCHAR(200)), %5"
                                 "CAST(? AS VARCHAR(50)), Capitated, tariffStatus from %1 "
                                 "where Company = ? order by SNo")
                      .arg(m_kind.table, insertColumns(), m_kind.itemColumn, m_kind.categoryColumn,
                           pharm),
                  {t.factor, t.coyID, t.name, t.remarks, t.source});
    }
    // A payer has one list of a kind: whatever it followed before, it follows this now.
    conn.exec(QStringLiteral("delete from DrugNHISListEntered where CoyID = ? and Type = ?"),
              {t.coyID, m_kind.type});
    conn.exec(
        QStringLiteral("insert into DrugNHISListEntered (CoyID, Type, remarks, useTariff, "
                       "Pcent) values (?, ?, ?, ?, ?)"),
        {t.coyID, m_kind.type, t.remarks, t.own ? t.coyID : t.source, t.own ? 1.0 : t.factor});
}

void TariffList::saveTariffSingle(db::Connection& conn, const Template& t, const QString& item,
                                  double price)
{
    const QString placeholders = m_kind.hasPharmCat ? QStringLiteral("?, ?, ?, ?, ?, ?, ?, ?, ?")
                                                    : QStringLiteral("?, ?, ?, ?, ?, ?, ?, ?");
    db::Params p{item, QStringLiteral("XXXX"), price, t.coyID, t.name};
    if (m_kind.hasPharmCat)
        p.push_back(QStringLiteral("XXXX"));
    p.push_back(t.remarks);
    p.push_back(kNo);
    p.push_back(kFixed);
    conn.exec(QStringLiteral("insert into %1 (%2) values (%3)")
                  .arg(m_kind.table, insertColumns(), placeholders),
              p);
}

void TariffList::editPrice(const PriceEdit& e)
{
    if (e.tariffStatus.trimmed().isEmpty())
        throw CheckFailed(QStringLiteral("Please specify Tariff Status "),
                          QStringLiteral("cboVal"));
    const std::optional<double> price = number(e.price);
    if (!price)
        throw CheckFailed(m_kind.priceMessage, QStringLiteral("txtPrice"));
    if (e.capitated.trimmed().isEmpty())
        throw CheckFailed(QStringLiteral("Please Specify Whether Capitated or Not "),
                          QStringLiteral("cboCap"));
    const QString remarks = remarksOf(e.coyID);
    double old = 0;
    {
        auto conn = m_ctx.openConnection();
        db::Transaction tx(*conn);
        const auto row = conn->queryOne(
            QStringLiteral("select Price from %1 where SNo = ?").arg(m_kind.table), {e.sno});
        if (!row)
            throw std::runtime_error(
                QStringLiteral("The item %1 is no longer on the list.").arg(e.item).toStdString());
        old = row->toDouble(u"Price");
        conn->exec(QStringLiteral("update %1 set tariffStatus = ?, Capitated = ?, Price = ?, "
                                  "Remarks = ? where SNo = ?")
                       .arg(m_kind.table),
                   {e.tariffStatus.trimmed(), e.capitated.trimmed(), *price, remarks, e.sno});
        // Every list that follows this one (this one too, at 1) takes the new price at its
        // own factor: one statement for all followers.
        conn->exec(QStringLiteral("update %1 set Price = CAST(? AS DOUBLE PRECISION) * "
                                  "(select l.Pcent from DrugNHISListEntered l where "
                                  "l.CoyID = %1.Company and l.Type = ? and l.useTariff = ?) "
                                  "where %2 = ? and Company in (select CoyID from "
                                  "DrugNHISListEntered where Type = ? and useTariff = ?)")
                       .arg(m_kind.table, m_kind.itemColumn),
                   {*price, m_kind.type, e.coyID, e.item, m_kind.type, e.coyID});
        tx.commit();
    }
    audit(m_ctx, QStringLiteral("Edit Drug Price: ") + e.item, e.coyID,
          QStringLiteral("OLD Price: ") + QString::number(old) + QStringLiteral("New Price: ") +
              QString::number(*price));
}

bool TariffList::setCellPrice(qint64 sno, const QString& item, const QString& price)
{
    const std::optional<double> value = number(price);
    if (!value)
        return false;
    if (!m_ctx.prompter().ask(
            QStringLiteral("Tariff Price Cell Update to: (%1) for %2").arg(price.trimmed(), item),
            m_kind.title))
        return false;
    m_ctx.openConnection()->exec(
        QStringLiteral("update %1 set Price = ? where SNo = ?").arg(m_kind.table), {*value, sno});
    return true;
}

}  // namespace tolmar
