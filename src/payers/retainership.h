#pragma once
// Payers (client companies, HMOs, the scheme, the private client): their codes, the checks
// and writes of the client screen, the scheme rows of HMOs, and the export of the list.

#include "platform/db.h"

#include <QString>

namespace tolmar {

class AppContext;

// What the client screen holds, as typed.
struct ClientFields {
    QString retainID;  // the client being edited; empty for a new one
    QString name;
    QString clientType;
    QString contact;
    QString address;
    QString phone;
    QString email;
    QString active;       // "YES" / "NO"
    QString monthEnding;  // "1" .. "31"; blank means 31
    QString conAmount;    // blank means 0
    QString regAmount;
    QString renewAmount;
    QString acctNo;
};

struct ClientAdded {
    QString retainID;
    QString accountID;     // the receivable account opened, if one was
    QString accountError;  // why the account could not be opened; the client stands
};

// The client types whose list the scheme update walks.
inline const QString kClientTypeHMO = QStringLiteral("HMO");

class Retainership {
public:
    explicit Retainership(AppContext& ctx);

    // The next payer code: one above the highest four-digit ending of all codes, behind
    // the hospital's id when Coy_Code is "LONG". Not reserved: two desks adding at once
    // draw the same code and the second save is refused by the database.
    QString genIDNoMain();

    // The checks of Save, in order; a blank month ending becomes "31".
    static void check(ClientFields& f);
    // Add: the row, then (posting on, no account typed) the receivable account, then the
    // audit entry. The account's failure is reported in the result, not thrown.
    ClientAdded add(ClientFields f);
    // The code of another client saved under this name (any case), or "".
    QString codeOfName(const QString& name, const QString& except = QString());
    // Edit: every field but the code and the account.
    void edit(ClientFields f);
    // Refuses (CheckFailed) while a patient holds the payer. The scheme rows go too unless
    // told otherwise.
    void remove(const QString& retainID, bool withSchemeRows = true);

    // The list of the screen, narrowed by a part of the name (blank: everything).
    static QString listSql(bool filtered);
    static db::Params listParams(const QString& filter);
    // What "Export to Excel" writes.
    db::Result exportRows();

    // The HMO list of the scheme screen; its one value is kClientTypeHMO.
    static QString hmoListSql();
    // Categories of a client type, as list entries "{clientCat} [{clientCatID}]".
    QStringList categoriesOf(const QString& clientType);
    QStringList clientTypes();
    // Writes the three scheme rows (HMO, NHIS, FFS) of every HMO, replacing earlier ones.
    // Returns the number of HMOs.
    int updateSchemeRows();

private:
    AppContext& m_ctx;
};

}  // namespace tolmar
