#pragma once
// Per-payer price lists of drugs, investigations and services. The three lists work
// alike on three tables; TariffKind holds what differs, TariffList does the work.
//
// A list is made as a template: an own list (every item of the master list at price 0)
// or a copy of another payer's list at a percentage. A copy keeps following its source:
// DrugNHISListEntered records whose list a payer uses and at which factor, and a price
// edit on a list is passed on to every payer that names it.

#include "platform/db.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace tolmar {

class AppContext;

struct TariffKind {
    QString screen;          // frmDrugPriceHMO
    QString title;           // "Drugs"
    QString type;            // DrugNHISListEntered.Type: "DRUG"
    QString table;           // price table
    QString itemColumn;      // the item's name in the price and master tables
    QString categoryColumn;  // the item's category there
    bool hasPharmCat;        // the drug lists also carry the pharmacy category
    QString master;          // master list copied for an own list
    QString view;            // read view of the price table
    QString viewItem;        // the item's column in that view
    QString viewRemarks;     // what the grid shows as Remarks
    QString repriceAudit;    // "Tariff Drug Price Updated to: ("
    QString addAudit;        // "Add Drug Tariff for: "
    QString priceMessage;    // the price check of a price edit
    QString searchMessage;   // search without a payer
    bool byCategory;         // the service list can be viewed by category

    static const TariffKind& drugs();
    static const TariffKind& investigations();
    static const TariffKind& services();
    static const std::vector<const TariffKind*>& all();
};

struct Payer {
    QString coyID;
    QString name;
};

// What the template section holds when Save is pressed.
struct TemplateRequest {
    QString payerEntry;     // cboHMO: "{name} [{coyID}]"
    QString ownTariff;      // cboDrug: "YES", "NO" or ""
    QString sourceEntry;    // cboUse
    QString percentage;     // cboPCent, as typed
    bool deleteExisting = false;  // chkDel
    bool singleItem = false;      // chkAdd
    QString item;           // txtDrug (single item)
    QString price;          // txtPrice (single item)
};

// What the price section holds for a price edit.
struct PriceEdit {
    qint64 sno = 0;
    QString coyID;
    QString item;
    QString price;
    QString capitated;
    QString tariffStatus;
};

enum class TemplateOutcome { Cancelled, Refused, Repriced, Saved };

class TariffList {
public:
    TariffList(AppContext& ctx, const TariffKind& kind);
    const TariffKind& kind() const { return m_kind; }

    // cboHMO: every payer, or only those without a list of this kind.
    std::vector<Payer> payers(bool withoutListOnly);
    // cboUse: payers that have a list of this kind.
    std::vector<Payer> listedPayers();
    // The payer's kind as the list rows carry it; "HMO" when it has none.
    QString remarksOf(const QString& coyID);
    // lblTariff: "NONE", "OWN TARIFF" or "{percent}% of {name}".
    QString tariffUsed(const QString& coyID);

    // The grid of one payer's list; a search narrows it to items starting with the text,
    // a category (services) to that category.
    QString gridSql(bool search, bool category) const;
    static db::Params gridParams(const QString& coyID, const QString& search,
                                 const QString& category);
    // The service categories for "View by Category".
    QStringList categories();

    // The whole Save of the template section: checks, the questions, the copy in one
    // transaction, the audit entry after the commit.
    TemplateOutcome saveTemplate(const TemplateRequest& r);
    // The price edit: the row, then every follower at its factor, in one transaction.
    void editPrice(const PriceEdit& e);
    // A price typed into the grid's cell, after a question; no follower is touched.
    bool setCellPrice(qint64 sno, const QString& item, const QString& price);

private:
    struct Template;
    void saveTariff(db::Connection& conn, const Template& t);
    void saveTariffSingle(db::Connection& conn, const Template& t, const QString& item,
                          double price);
    QString insertColumns() const;

    AppContext& m_ctx;
    const TariffKind& m_kind;
};

}  // namespace tolmar
