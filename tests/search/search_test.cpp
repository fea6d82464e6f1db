// The desk's patient search on both backends: every mode, typed characters that are data,
// case and accents, the limit SearchValue asks for, what starts an incremental search; and
// the likely duplicates of a patient being registered.
#include "support/workspace.h"

#include "patients/duplicatecheck.h"
#include "patients/patientsearch.h"

#include <QAbstractItemModel>

#include <algorithm>

using namespace tolmar;
using namespace tolmar::patients;
using namespace tolmar::test;

namespace {

class Search : public BackendTest {
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        desk->startUp();
        // Written as another program would: no folded name, which the search makes itself.
        const struct {
            const char *pno, *surname, *first, *phone, *card, *dob;
        } people[] = {
            {"001/000000001", "O'CONNOR", "BRIDGET", "08031234567", "LAG/O'1", "1990-05-01"},
            {"001/000000002", "ÖZTÜRK", "ADA", "07061112222", "LAG/2", "1990-05-01"},
            {"001/000000003", "ADAMU", "IFEOMA", "0809%555_01", "LAG/3", ""},
            {"001/000000004", "AB_CD", "EFE", "", "LAG/4", ""},
            {"001/000000005", "ABXCD", "EFE", "", "LAG/5", ""},
            {"001/000000006", "ÀDÉBÁYỌ̀", "TUNDE", "2348059998888", "LAG/6", "1985-02-02"},
            {"001/000000007", "OKO[RO]", "*STAR?", "", "LAG/7", ""},
            {"001/000000008", "O'CONNOR", "SEAN", "08031234567", "LAG/8", "1990-05-01"},
        };
        for (const auto& p : people)
            ws->exec(QStringLiteral("INSERT INTO hPatients (PNo, psurname, pfirstName, "
                                    "pPhoneNo, oldPno, DOB) VALUES (?, ?, ?, ?, ?, ?)"),
                     {p.pno, p.surname, p.first, p.phone, p.card,
                      QDate::fromString(p.dob, Qt::ISODate)});
        // Enough namesakes to need more than the first page of an unlimited search.
        addMany(60, "B", "BELLO", "ADAEZE");
    }
    // n patients "{prefix}1"... named `surname` and `first` followed by their number.
    void addMany(int n, const char* prefix, const char* surname, const char* first)
    {
        ws->exec(QStringLiteral("INSERT INTO hPatients (PNo, psurname, pfirstName) WITH "
                                "RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n "
                                "WHERE i < ?) SELECT ? || i, ?, ? || i FROM n"),
                 {n, prefix, surname, first});
    }
    // Every row of the outcome, fetching the rest as a grid scrolling down would.
    static QStringList pnos(const SearchOutcome& o)
    {
        QStringList out;
        if (!o.rows)
            return out;
        while (o.rows->canFetchMore({}))
            o.rows->fetchMore({});
        for (int r = 0; r < o.rows->rowCount(); ++r)
            for (int c = 0; c < o.rows->columnCount(); ++c)
                if (o.rows->headerData(c, Qt::Horizontal).toString().toLower() == u"pno")
                    out << o.rows->index(r, c).data().toString();
        return out;
    }
};

TEST_P(Search, FindsByEveryModeWithTypedCharactersAsData)
{
    const struct {
        QString mode;
        const char* searchValue;
        const char* text;
        int found;              // rows matched (after the limit)
        QStringList first;      // the first PNos shown, in order; empty: not checked
        const char* error = ""; // part of the failure's description
    } cases[] = {
        {kSearchName, "", "  ", 0, {}},
        {kSearchName, "", "o'connor", 2, {"001/000000001", "001/000000008"}},
        {kSearchName, "", "r b", 1, {"001/000000001"}},  // across surname and first name
        {kSearchName, "", "öztürk", 1, {"001/000000002"}},
        {kSearchName, "", "ozturk ada", 1, {"001/000000002"}},
        {kSearchName, "", "Adebayo", 1, {"001/000000006"}},
        {kSearchName, "", "b_c", 1, {"001/000000004"}},
        {kSearchName, "", "%", 0, {}},
        {kSearchName, "", "o[ro]", 1, {"001/000000007"}},
        {kSearchName, "", "*star?", 1, {"001/000000007"}},
        {kSearchName, "", "*", 1, {"001/000000007"}},  // short of a trigram: the GLOB path
        {kSearchName, "", "[", 1, {"001/000000007"}},
        {kSearchName, "", "r\"b", 0, {}},
        // SearchValue: 20 limits; "0", blank and anything but a whole number do not.
        {kSearchName, "20", "ada", 20, {"001/000000003", "B1", "B10"}},
        {kSearchName, "0", "ada", 62, {"001/000000003"}},
        {kSearchName, "", "ada", 62, {"001/000000003"}},
        {kSearchName, "x", "ada", 62, {"001/000000003"}},
        {kSearchName, "-5", "ada", 62, {}},
        {kSearchCardNo, "", "LAG/O'1", 1, {"001/000000001"}},
        {kSearchCardNo, "", " LAG/3 ", 1, {"001/000000003"}},
        {kSearchCardNo, "", "LAG/", 0, {}},
        {kSearchSysNo, "", "1234", 2, {"001/000000001", "001/000000008"}},
        {kSearchSysNo, "", "%555_", 1, {"001/000000003"}},
        {kSearchSysNo, "", "9%5", 1, {"001/000000003"}},
        {kSearchSysNo, "", "0_0", 0, {}},
        {QStringLiteral("Bogus"), "", "ada", 0, {}, "Unknown search mode"},
    };
    for (const auto& c : cases) {
        const std::string where =
            (c.mode + u'/' + c.text + u'/' + c.searchValue).toStdString();
        const SearchOutcome o =
            searchPatients(desk->ctx, c.mode, searchLimit(c.searchValue), c.text, nullptr);
        std::unique_ptr<QAbstractItemModel> owned(o.rows);
        EXPECT_TRUE(o.error.contains(QLatin1String(c.error))) << where << o.error.toStdString();
        if (*c.error) {
            EXPECT_FALSE(o.rows) << where;
            EXPECT_TRUE(o.foundText.isEmpty()) << where;
            continue;
        }
        EXPECT_EQ(o.foundText, QStringLiteral("%1 Records Found").arg(c.found)) << where;
        const QStringList got = pnos(o);
        EXPECT_EQ(got.size(), c.found) << where;
        EXPECT_EQ(got.mid(0, c.first.size()), c.first) << where;
        EXPECT_EQ(got.count(QStringLiteral("001/000000005")), 0) << where;  // ABXCD: "_" is data
    }
}

// A name changed by anything but the desk's save is found by its new name, not the old;
// and more matches than the trigram index is asked to sort come off the name index in
// order, every match once however the grid pages.
TEST_P(Search, FollowsRenamesAndPagesACommonTextInOrder)
{
    delete searchPatients(desk->ctx, kSearchName, 0, "adamu", nullptr).rows;
    ws->exec(QStringLiteral("UPDATE hPatients SET psurname = 'ZÚBAIRU' WHERE PNo = ?"),
             {QStringLiteral("001/000000003")});
    addMany(1100, "W", "NWADA", "X");
    const auto search = [&](const char* text, int limit) {
        const SearchOutcome o = searchPatients(desk->ctx, kSearchName, limit, text, nullptr);
        const QStringList got = pnos(o);
        delete o.rows;
        return got;
    };
    EXPECT_EQ(search("adamu", 0), QStringList{});
    EXPECT_EQ(search("zubairu ife", 0), QStringList{"001/000000003"});
    EXPECT_EQ(search("ZÚB", 0), QStringList{"001/000000003"});
    QStringList byName;  // "NWADA X1", "NWADA X10", "NWADA X100", ... as text sorts them
    for (int i = 1; i <= 1100; ++i)
        byName << QStringLiteral("W%1").arg(i);
    std::sort(byName.begin(), byName.end());
    EXPECT_EQ(search("nwada x", 20), byName.mid(0, 20));
    EXPECT_EQ(search("wada", 0), byName);
}

TEST_P(Search, ListsLikelyDuplicatesOnTheSameBirthdayOrPhoneWithMuchTheSameName)
{
    const QDate born(1990, 5, 1);
    const struct {
        const char *surname, *first;
        QDate dob;
        const char* phone;
        QStringList listed;  // "name|reason", most alike first
    } cases[] = {
        {"o'connor", "bridget", born, "", {"O'CONNOR BRIDGET|same DOB"}},
        {"Bridget", "O'Connor", born, "", {"O'CONNOR BRIDGET|same DOB"}},  // swapped
        {"Bridgette", "OConnor", born, "", {"O'CONNOR BRIDGET|same DOB"}},  // and misspelt
        {"Ò'CONNÓR", "[BRIDGET]", {}, "08031234567", {"O'CONNOR BRIDGET|same phone"}},
        {"OCONNOR", "BRIDGET", born, "08031234567", {"O'CONNOR BRIDGET|same DOB, same phone"}},
        {"O'CONNOR", "", born, "", {"O'CONNOR BRIDGET|same DOB", "O'CONNOR SEAN|same DOB"}},
        {"ozturk", "ada", born, "", {"ÖZTÜRK ADA|same DOB"}},
        {"adebayo", "tunde", {}, "08059998888", {"ÀDÉBÁYỌ̀ TUNDE|same phone"}},  // 234...
        {"ADEBAYO", "TUNDE", born, "", {}},             // another birthday
        {"O'CONNOR", "MARY", born, "08031234567", {}},  // a sister is not a duplicate
        {"O'CONNOR", "BRIDGET", {}, "080312", {}},      // too short to be a number
        {"", "", born, "08031234567", {}},
    };
    for (const auto& k : cases) {
        QStringList got;
        for (const auto& d : likelyDuplicates(desk->ctx.db(), {k.surname, k.first, k.dob, k.phone}))
            got << d.name + u'|' + d.reason;
        EXPECT_EQ(got, k.listed) << k.surname << ' ' << k.first << ' ' << k.phone;
    }
}

TEST(SearchGates, ThreeLettersWithoutZeroOrOneAndNamesFolded)
{
    for (const auto& [text, runs] :
         {std::pair{"ada", true}, std::pair{"ad", false}, std::pair{"ad1", false},
          std::pair{" ad ", false}, std::pair{"o'c", true}, std::pair{"080", false},
          std::pair{"a 0b", false}, std::pair{"ÖZT", true}, std::pair{"", false}})
        EXPECT_EQ(startsIncrementalSearch(QString::fromUtf8(text)), runs) << text;
    for (const auto& [typed, folded] :
         {std::pair{"öztürk  ada", "OZTURK ADA"}, std::pair{"ÀDÉBÁYỌ̀", "ADEBAYO"},
          std::pair{" o'connor ", "O'CONNOR"}, std::pair{"Straße", "STRASSE"}})
        EXPECT_EQ(foldName(QString::fromUtf8(typed)), QString::fromUtf8(folded)) << typed;
}

TOLMAR_INSTANTIATE_BACKENDS(Search);

}  // namespace
