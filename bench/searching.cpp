// The part search as the user has it: from the key to the painted list.

#include "bench/fill_sections.h"
#include "bench/native.h"
#include "bench/year_copy.h"
#include "common/ui/grid_view.h"
#include "forms/frm_Srh_Spares/frm_Srh_Spares.h"
#include "tests/forms/workstation.h"

#include <QApplication>
#include <QTest>

#include <algorithm>
#include <stdexcept>

namespace bench {

namespace {

constexpr int kTurns = 7;
constexpr double kFirstTime = 0.4;
constexpr double kKeystroke = 0.05;
constexpr int kColStock = 2;

/// What a search came to, for holding one way against the other.
struct Found
{
    std::int64_t parts = 0;
    std::int64_t stock = 0; ///< of all parts, in ten-thousandths
};

/// A movement comes and goes from another workstation: a database opened a second time is one.
void changeElsewhere(const std::string &file)
{
    const auto other = jet::Database::open(file, {.password = std::string(data::schema::kPassword)});
    jet::Table &movements = other->table("Stock_Stock");
    movements.erase(movements.insert(std::vector<Value>(movements.definition().columns.size())));
}

/// A workstation that has opened its year and not yet searched.
class SearchingStation
{
public:
    explicit SearchingStation(const std::string &file)
    {
        const std::string connect = "Provider=Microsoft.jet.oledb.3.51; Data Source=" + file +
                                    ";Jet OLEDB:Database Password=" + std::string(data::schema::kPassword);
        m_station.connections.conYear.setConnectionString(connect);
        m_station.connections.conYear.open();
        m_station.session.YearDsnConnect = connect;
        m_station.session.MdiWidth = 1200;
        m_station.session.MdiHeight = 700;
    }

    /// Brings up the form, which searches for the letter that was typed in the order grid.
    void open(const std::string &letter)
    {
        m_station.session.SearchFilter = letter;
        m_form = std::make_unique<frm_Srh_Spares>(m_station.context);
        m_form->show();
        QCoreApplication::processEvents();
        m_form->grab();
    }

    void press(const char *box, Qt::Key key)
    {
        QTest::keyClick(m_form->findChild<QWidget *>(QLatin1String(box)), key);
        m_form->grab();
    }

    /// What the list holds. Throws std::runtime_error when the form showed a message.
    [[nodiscard]] Found listed()
    {
        if (!m_station.dialogs.takeShown().isEmpty())
            throw std::runtime_error("the search failed");
        const auto *list = m_form->findChild<ui::GridView *>(QStringLiteral("fgList"))->model();
        Found found{list->rowCount(), 0};
        for (int row = 0; row < list->rowCount(); ++row)
            found.stock +=
                Currency::fromText(list->index(row, kColStock).data().toString().toStdString()).raw();
        return found;
    }

private:
    Workstation m_station;
    std::unique_ptr<frm_Srh_Spares> m_form;
};

/// A key in one of the two boxes.
struct Stroke
{
    const char *what;
    const char *box;
    const char *field;
    char letter;
    bool takenOut; ///< the letter goes again, and all parts are listed
};

class SearchReport
{
public:
    SearchReport(Report &report, const YearCopy &year)
        : m_report(report)
        , m_file(year.yearFile())
        , m_native(year.nativeFile())
    {}

    /// From opening the form.
    void firstTime(const std::string &letter)
    {
        Found found;
        const double seconds = middle([&] {
            SearchingStation station(m_file);
            const double opening = processorSecondsOf([&] { station.open(letter); });
            found = station.listed();
            return opening;
        });
        add({"search opened", "first time", "ItemName", letter, kFirstTime}, seconds, found);
    }

    void stroke(const Stroke &stroke, bool afterChange)
    {
        const auto letter = static_cast<Qt::Key>(stroke.letter);
        const Qt::Key key = stroke.takenOut ? Qt::Key_Backspace : letter;
        const Qt::Key undo = stroke.takenOut ? letter : Qt::Key_Backspace;
        SearchingStation station(m_file);
        station.open("");
        if (stroke.takenOut)
            station.press(stroke.box, letter);
        Found found;
        const double seconds = middle([&] {
            if (afterChange)
                changeElsewhere(m_file);
            const double pressed = processorSecondsOf([&] { station.press(stroke.box, key); });
            found = station.listed();
            station.press(stroke.box, undo);
            return pressed;
        });
        add({stroke.what, afterChange ? "after another's change" : "sums known", stroke.field,
             stroke.takenOut ? std::string() : std::string(1, stroke.letter),
             afterChange ? kFirstTime : kKeystroke},
            seconds, found);
    }

private:
    template <class Turn>
    static double middle(Turn &&turn)
    {
        std::vector<double> times;
        for (int done = 0; done < kTurns; ++done)
            times.push_back(turn());
        std::ranges::sort(times);
        return times[times.size() / 2];
    }

    struct Line
    {
        const char *what;
        const char *when;
        const char *field;
        std::string text;
        double limit;
    };

    void add(const Line &line, double seconds, const Found &found)
    {
        Found peer;
        const double other = processorSecondsOf([&] { peer = findNative(line.field, line.text); });
        requireSame("parts found for '" + line.text + "'", found.parts, peer.parts);
        requireSame("stock found for '" + line.text + "'", found.stock, peer.stock);
        const std::string searched = line.text.empty() ? std::string("all") : line.text;
        m_report.add({std::string(line.what) + ", " + searched + ", " + line.when + "; native",
                      seconds,
                      other,
                      {Target::Kind::Below, line.limit}});
    }

    /// The statement of the part search in SQLite's own dialect, as it stands.
    [[nodiscard]] Found findNative(const std::string &field, const std::string &text) const
    {
        NativeStatement rows = m_native.prepare(
            "SELECT PartCode, ItemName, sum(Stock_Stock.ITQty - Stock_Stock.OTQty) AS Qt, Location, "
            "Mast_Items.ItemCode, Mast_Items.Higher FROM Mast_Items LEFT JOIN Stock_Stock ON "
            "Mast_Items.ItemCode = Stock_Stock.ItemCode GROUP BY PartCode, ItemName, Location, "
            "Mast_Items.ItemCode, Mast_Items.Higher HAVING substr(" +
            field + ", 1, " + std::to_string(text.size()) + ") = '" + text + "' AND Mast_Items.Higher > 0");
        Found found;
        for (; rows.step(); ++found.parts)
            found.stock += rows.integer(kColStock);
        return found;
    }

    Report &m_report;
    std::string m_file;
    NativeDatabase m_native;
};

} // namespace

void measureSearching(Report &report, const std::string &folder)
{
    YearCopy year(folder);
    year.fillNative();
    SearchReport search(report, year);
    // By letters that parts of the sample data begin with.
    for (const char *letter : {"B", ""})
        search.firstTime(letter);
    for (const bool afterChange : {true, false}) {
        for (const bool takenOut : {false, true}) {
            search.stroke({"part name", "txtItem_Name", "ItemName", 'B', takenOut}, afterChange);
            search.stroke({"part number", "txtItem_Code", "PartCode", 'T', takenOut}, afterChange);
        }
    }
}

} // namespace bench
