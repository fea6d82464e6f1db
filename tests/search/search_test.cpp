// The desk's patient search on both backends: every mode, typed characters that are data,
// case and accents, the limit SearchValue asks for, and what starts an incremental search.
#include "support/workspace.h"

#include "patients/patientsearch.h"

#include <QAbstractItemModel>
#include <QSet>

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
            const char *pno, *surname, *first, *phone, *card;
        } people[] = {
            {"001/000000001", "O'CONNOR", "BRIDGET", "08031234567", "LAG/O'1"},
            {"001/000000002", "ÖZTÜRK", "ADA", "07061112222", "LAG/2"},
            {"001/000000003", "ADAMU", "IFEOMA", "0809%555_01", "LAG/3"},
            {"001/000000004", "AB_CD", "EFE", "", "LAG/4"},
            {"001/000000005", "ABXCD", "EFE", "", "LAG/5"},
            {"001/000000006", "ÀDÉBÁYỌ̀", "TUNDE", "", "LAG/6"},
            {"001/000000007", "OKO[RO]", "*STAR?", "", "LAG/7"},
        };
        for (const auto& p : people)
            add(p.pno, p.surname, p.first, p.phone, p.card);
        // Enough namesakes to need more than the first page of an unlimited search.
        for (int i = 0; i < 60; ++i)
            add(QStringLiteral("001/1%1").arg(i, 8, 10, QLatin1Char('0')), "BELLO", "ADAEZE",
                "", "");
    }
    void add(const QString& pno, const char* surname, const char* first, const char* phone,
             const char* card)
    {
        ws->exec(QStringLiteral("INSERT INTO hPatients (PNo, psurname, pfirstName, pPhoneNo, "
                                "oldPno) VALUES (?, ?, ?, ?, ?)"),
                 {pno, QString::fromUtf8(surname), QString::fromUtf8(first),
                  QString::fromUtf8(phone), QString::fromUtf8(card)});
    }
    // Every row of the outcome, fetching the rest as a grid scrolling down would.
    static QStringList pnos(const SearchOutcome& o)
    {
        QStringList out;
        if (!o.rows)
            return out;
        while (o.rows->canFetchMore({}))
            o.rows->fetchMore({});
        int column = -1;
        for (int c = 0; c < o.rows->columnCount(); ++c)
            if (o.rows->headerData(c, Qt::Horizontal).toString().toLower() == u"pno")
                column = c;
        for (int r = 0; r < o.rows->rowCount(); ++r)
            out << o.rows->index(r, column).data().toString();
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
        {kSearchName, "", "o'connor", 1, {"001/000000001"}},
        {kSearchName, "", "r b", 1, {"001/000000001"}},  // across surname and first name
        {kSearchName, "", "öztürk", 1, {"001/000000002"}},
        {kSearchName, "", "ozturk ada", 1, {"001/000000002"}},
        {kSearchName, "", "Adebayo", 1, {"001/000000006"}},
        {kSearchName, "", "b_c", 1, {"001/000000004"}},
        {kSearchName, "", "%", 0, {}},
        {kSearchName, "", "o[ro]", 1, {"001/000000007"}},
        {kSearchName, "", "*star?", 1, {"001/000000007"}},
        {kSearchName, "", "[", 1, {"001/000000007"}},
        // SearchValue: 20 limits; "0", blank and anything but a whole number do not.
        {kSearchName, "20", "ada", 20, {"001/000000003"}},
        {kSearchName, "0", "ada", 62, {"001/000000003"}},
        {kSearchName, "", "ada", 62, {"001/000000003"}},
        {kSearchName, "x", "ada", 62, {"001/000000003"}},
        {kSearchName, "-5", "ada", 62, {}},
        {kSearchCardNo, "", "LAG/O'1", 1, {"001/000000001"}},
        {kSearchCardNo, "", " LAG/3 ", 1, {"001/000000003"}},
        {kSearchCardNo, "", "LAG/", 0, {}},
        {kSearchSysNo, "", "1234", 1, {"001/000000001"}},
        {kSearchSysNo, "", "%555_", 1, {"001/000000003"}},
        {kSearchSysNo, "", "9%5", 1, {"001/000000003"}},
        {kSearchSysNo, "", "0_0", 0, {}},
        {QStringLiteral("Bogus"), "", "ada", 0, {}, "Unknown search mode"},
    };
    for (const auto& c : cases) {
        const std::string where = (c.mode + QLatin1Char('/') + QString::fromUtf8(c.text) +
                                   QLatin1Char('/') + QLatin1String(c.searchValue))
                                      .toStdString();
        const SearchOutcome o = searchPatients(desk->ctx, c.mode,
                                               searchLimit(QLatin1String(c.searchValue)),
                                               QString::fromUtf8(c.text), nullptr);
        std::unique_ptr<QAbstractItemModel> owned(o.rows);
        EXPECT_TRUE(o.error.contains(QLatin1String(c.error))) << where << o.error.toStdString();
        if (*c.error) {
            EXPECT_FALSE(o.rows) << where;
            EXPECT_TRUE(o.foundText.isEmpty()) << where;
            continue;
        }
        EXPECT_EQ(o.found, c.found) << where;
        EXPECT_EQ(o.foundText, QStringLiteral("%1 Records Found").arg(c.found)) << where;
        const QStringList got = pnos(o);
        EXPECT_EQ(got.size(), c.found) << where;
        EXPECT_EQ(got.mid(0, c.first.size()), c.first) << where;
        EXPECT_EQ(got.count(QStringLiteral("001/000000005")), 0) << where;  // ABXCD: "_" is data
    }
}

// A name changed by anything but the desk's save still finds the new name and not the old.
TEST_P(Search, FollowsANameChangedBehindItsBack)
{
    delete searchPatients(desk->ctx, kSearchName, 0, QStringLiteral("adamu"), nullptr).rows;
    ws->exec(QStringLiteral("UPDATE hPatients SET psurname = ? WHERE PNo = ?"),
             {QStringLiteral("ZÚBAIRU"), QStringLiteral("001/000000003")});
    for (const auto& [text, found] :
         {std::pair{"adamu", 0}, std::pair{"zubairu ife", 1}, std::pair{"ZÚB", 1}}) {
        const SearchOutcome o =
            searchPatients(desk->ctx, kSearchName, 0, QString::fromUtf8(text), nullptr);
        delete o.rows;
        EXPECT_EQ(o.found, found) << text;
    }
}

// More matches than the trigram index is asked to sort: the page comes off the name index
// in order instead, and paging still reaches every match once.
TEST_P(Search, ACommonTextGivesTheSamePagesAndCount)
{
    ws->exec(QStringLiteral(
        "INSERT INTO hPatients (PNo, psurname, pfirstName) WITH RECURSIVE n(i) AS "
        "(SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 1100) "
        "SELECT 'W' || i, 'NWADA', 'X' || i FROM n"));
    const SearchOutcome limited = searchPatients(desk->ctx, kSearchName, 20, "nwada x", nullptr);
    std::unique_ptr<QAbstractItemModel> owned(limited.rows);
    EXPECT_EQ(pnos(limited), (QStringList{"W1", "W10", "W100", "W1000", "W1001", "W1002",
                                          "W1003", "W1004", "W1005", "W1006", "W1007", "W1008",
                                          "W1009", "W101", "W1010", "W1011", "W1012", "W1013",
                                          "W1014", "W1015"}));
    const SearchOutcome all = searchPatients(desk->ctx, kSearchName, 0, "wada", nullptr);
    std::unique_ptr<QAbstractItemModel> ownedAll(all.rows);
    EXPECT_EQ(all.found, 1100);
    const QStringList every = pnos(all);
    EXPECT_EQ(every.size(), 1100);
    EXPECT_EQ(QSet<QString>(every.begin(), every.end()).size(), 1100);
}

TEST(SearchGates, IncrementalSearchRunsOnThreeLettersWithoutZeroOrOne)
{
    for (const auto& [text, runs] :
         {std::pair{"ada", true}, std::pair{"ad", false}, std::pair{"ad1", false},
          std::pair{" ad ", false}, std::pair{"o'c", true}, std::pair{"080", false},
          std::pair{"a 0b", false}, std::pair{"ÖZT", true}, std::pair{"", false}})
        EXPECT_EQ(startsIncrementalSearch(QString::fromUtf8(text)), runs) << text;
}

TEST(SearchGates, FoldsCaseAccentsAndBlanks)
{
    for (const auto& [typed, folded] :
         {std::pair{"öztürk  ada", "OZTURK ADA"}, std::pair{"ÀDÉBÁYỌ̀", "ADEBAYO"},
          std::pair{" o'connor ", "O'CONNOR"}, std::pair{"Straße", "STRASSE"}})
        EXPECT_EQ(foldName(QString::fromUtf8(typed)), QString::fromUtf8(folded)) << typed;
}

TOLMAR_INSTANTIATE_BACKENDS(Search);

}  // namespace
