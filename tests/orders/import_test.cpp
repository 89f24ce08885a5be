// Imported part codes against the item master: joined into the statement as they are.
#include "orders/import.h"

#include "orders/order.h"
#include "tests/support/outcome.h"
#include "tests/support/small_dealership.h"

using namespace orders;

class ImportTest : public QObject
{
    Q_OBJECT

private slots:
    void looksACodeUpAsItStands_data()
    {
        // A line that was imported shows its item code and the master's spelling.
        const auto imported = [this](const char *code) {
            return outcome([&] {
                TextGrid grid(kColumns);
                grid.setRows(2);
                if (!addImportedLine(m_dealer.conYear, {.partCode = code, .quantity = 1}, grid))
                    return "none, rows " + std::to_string(grid.rows());
                return grid.text(1, kColSlNo) + " " + grid.text(1, kColPartNo);
            });
        };
        m_dealer.year("Y26")
            .item(1, "GSK-7")
            .item(2, "GSK*7")
            .item(3, "100%_A")
            .item(4, "O'RING 5")
            .item(5, "[A-C]?#1")
            .item(6, "Say \"7\"");
        m_dealer.connect("Y26");
        OutcomeRows rows;
        rows("its own", imported("GSK-7"), "1 GSK-7");
        rows("other capitals", imported("gsk-7"), "1 GSK-7");
        rows("unknown", imported("GSK-8"), "none, rows 2");
        // What a pattern would mean elsewhere is a character here.
        rows("star in the master", imported("GSK*7"), "2 GSK*7");
        rows("percent and underline in the master", imported("100%_A"), "3 100%_A");
        rows("brackets in the master", imported("[A-C]?#1"), "5 [A-C]?#1");
        rows("double quotes", imported("Say \"7\""), "6 Say \"7\"");
        for (const char *pattern : {"*", "%", "GSK*", "GSK%", "GSK-_", "GSK-?", "GSK-#", "[G]SK-7"})
            rows(pattern, imported(pattern), "none, rows 2");
        // A quote ends the text in the statement; nothing is looked up by what follows it.
        const char *notUnderstood = "error 3075";
        rows("quote", imported("O'RING 5"), notUnderstood);
        rows("quote and star", imported("O'RING*"), notUnderstood);
        rows("quote and percent", imported("O'%"), notUnderstood);
        rows("only a quote", imported("'"), notUnderstood);
        rows("quote at the end", imported("GSK-7'"), notUnderstood);
        rows("quotes in pairs stand for one", imported("O''RING 5"), "4 O'RING 5");
        rows("condition that always holds", imported("X' Or 'A' = 'A"), notUnderstood);
        rows("another statement", imported("X'; Delete * from Mast_Items Where 'A' = 'A"), notUnderstood);
        rows("nothing was harmed", imported("GSK-7"), "1 GSK-7");
    }
    void looksACodeUpAsItStands() { compareOutcome(); }

private:
    SmallDealership m_dealer;
};

QTEST_GUILESS_MAIN(ImportTest)
#include "import_test.moc"
