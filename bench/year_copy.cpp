#include "bench/year_copy.h"

#include "bench/native.h"
#include "data/jet/database.h"
#include "data/schema.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <stdlib.h>

namespace bench {

namespace fs = std::filesystem;

namespace {

/// The year databases, smallest first.
std::vector<fs::path> yearFiles(const fs::path &databases)
{
    std::vector<fs::path> files;
    if (fs::is_directory(databases))
        for (const fs::directory_entry &entry : fs::directory_iterator(databases))
            if (entry.path().extension() == ".mdb" && entry.path().filename().string().front() == 'Y')
                files.push_back(entry.path());
    std::sort(files.begin(), files.end(),
              [](const fs::path &a, const fs::path &b) { return fs::file_size(a) < fs::file_size(b); });
    if (files.empty())
        throw std::runtime_error(databases.string() + " has no year database; make-dealership makes one");
    return files;
}

std::size_t columnOf(const jet::Table &table, const char *name)
{
    return table.definition().findColumn(name).value();
}

/// The fields of a movement, all of them numbers, as parameters in the order of the columns.
void bindRow(NativeStatement &insert, const jet::RowView &row, const std::vector<jet::Column> &columns)
{
    for (std::size_t column = 0; column < columns.size(); ++column) {
        const int parameter = static_cast<int>(column) + 1;
        const jet::ColumnType type = columns[column].type();
        if (row.isNull(column))
            insert.bindNull(parameter);
        else if (type == jet::ColumnType::Currency)
            insert.bind(parameter, row.currencyRaw(column));
        else if (type == jet::ColumnType::DateTime)
            insert.bind(parameter, row.number(column));
        else
            insert.bind(parameter, std::int64_t{row.integer(column)});
    }
}

} // namespace

YearCopy::YearCopy(const std::string &folder)
{
    const fs::path databases = fs::path(folder) / "server" / "DataBas";
    const std::vector<fs::path> years = yearFiles(databases);
    m_yearName = years.back().filename().string();

    std::string pattern = (fs::path(folder) / "bench.XXXXXX").string();
    if (!::mkdtemp(pattern.data()))
        throw std::runtime_error("No scratch folder can be made in " + folder);
    m_scratch = pattern;
    fs::create_directory(m_scratch + "/DataBas");
    fs::copy_file(years.back(), yearFile());
    fs::copy_file(years.front(), smallYearFile());
    fs::copy_file(databases / "Main.mdb", m_scratch + "/DataBas/Main.mdb");
}

YearCopy::~YearCopy()
{
    std::error_code ignored;
    fs::remove_all(m_scratch, ignored);
}

std::string YearCopy::path(const std::string &name) const
{
    return m_scratch + "/" + name;
}

std::string YearCopy::yearFile() const
{
    return path("DataBas/" + m_yearName);
}

void YearCopy::fillNative()
{
    const auto database = jet::Database::open(yearFile(), {.password = std::string(data::schema::kPassword)});
    NativeDatabase native(nativeFile());
    native.run("PRAGMA synchronous=OFF; BEGIN;"
               "CREATE TABLE Stock_Stock(ItemCode INTEGER, ITQty INTEGER, OTQty INTEGER, StkDate REAL, "
               "FrmId INTEGER, StkPoint INTEGER);"
               "CREATE TABLE Mast_Items(ItemCode INTEGER PRIMARY KEY, PartCode TEXT COLLATE NOCASE, "
               "ItemName TEXT COLLATE NOCASE, Location TEXT COLLATE NOCASE, Higher INTEGER)");

    jet::Table &movements = database->table("Stock_Stock");
    NativeStatement movement = native.prepare("INSERT INTO Stock_Stock VALUES(?,?,?,?,?,?)");
    double first = 0;
    double last = 0;
    const std::size_t date = columnOf(movements, "StkDate");
    for (jet::Cursor rows = movements.scan(); rows.next(); ++m_movements) {
        const jet::RowView &row = rows.row();
        bindRow(movement, row, movements.definition().columns);
        movement.run();
        const double day = row.number(date);
        first = day > 0 && (first == 0 || day < first) ? day : first;
        last = std::max(last, day);
    }
    m_firstDay = Date::fromSerial(first).midnight();
    m_lastDay = Date::fromSerial(last).midnight();

    jet::Table &master = database->table("Mast_Items");
    NativeStatement item = native.prepare("INSERT INTO Mast_Items VALUES(?,?,?,?,?)");
    for (jet::Cursor rows = master.scan(); rows.next();) {
        const jet::RowView &row = rows.row();
        m_items.push_back(row.integer(columnOf(master, "ItemCode")));
        item.bind(1, std::int64_t{m_items.back()});
        int parameter = 2;
        for (const char *field : {"PartCode", "ItemName", "Location"})
            item.bind(parameter++, row.text(columnOf(master, field)));
        item.bind(parameter, std::int64_t{row.integer(columnOf(master, "Higher"))});
        item.run();
    }
    native.run("CREATE INDEX MovementItem ON Stock_Stock(ItemCode);"
               "CREATE INDEX MovementDay ON Stock_Stock(StkDate);"
               "CREATE INDEX ItemPart ON Mast_Items(PartCode);"
               "COMMIT");
}

} // namespace bench
