// Reads, rewrites, compiles and runs statements over a small database. A statement that passed our own
// parser must be one that SQLite accepts.
#include "common/errors.h"
#include "data/sql/engine.h"
#include "tests/jet/memory_file.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>

namespace {

using jet::ColumnType;

constexpr int kMostRowsRead = 50;
/// Joins of more tables take too long over conditions that are always true.
constexpr int kMostTablesRun = 4;

class Workbench
{
public:
    explicit Workbench(jet::Version version)
        : m_database(jet::Database::create("fuzz.mdb", {.version = version}, m_folder))
        , m_engine(*m_database)
    {
        fill();
    }

    void run(std::string_view text)
    {
        try {
            if (begins(text, "delete")) {
                const jet::ChangeScope givenUp(*m_database);
                m_engine.execute(text);
            } else {
                read(*m_engine.select(text), tablesIn(text) <= kMostTablesRun);
            }
        } catch (const AppError &error) {
            judge(error);
        }
    }

private:
    void fill()
    {
        jet::ChangeScope scope(*m_database);
        jet::Table &items = m_database->createTable(
            {.name = "Items",
             .columns = {{.name = "ItemCode", .type = ColumnType::Long},
                         {.name = "PartCode", .size = 30},
                         {.name = "Rate", .type = ColumnType::Currency},
                         {.name = "Higher", .type = ColumnType::Integer}},
             .indexes = {{.name = "PrimaryKey", .keys = {{"ItemCode"}}, .primary = true},
                         {.name = "Part", .keys = {{"PartCode"}, {"Rate", false}}}}});
        jet::Table &stock = m_database->createTable(
            {.name = "Stock",
             .columns = {{.name = "ItemCode", .type = ColumnType::Long},
                         {.name = "OTQty", .type = ColumnType::Double},
                         {.name = "StkDate", .type = ColumnType::DateTime},
                         {.name = "Open", .type = ColumnType::Boolean}},
             .indexes = {{.name = "Item", .keys = {{"ItemCode"}}, .ignoreNulls = true}}});
        jet::TableSpec spec{.name = "Group Names",
                            .columns = {{.name = "FrmId", .type = ColumnType::Byte},
                                        {.name = "Group"},
                                        {.name = "Note", .type = ColumnType::Memo},
                                        {.name = "Photo", .type = ColumnType::Ole},
                                        {.name = "Serial", .type = ColumnType::Guid},
                                        {.name = "Weight", .type = ColumnType::Single}},
                            .indexes = {}};
        if (m_database->version() == jet::Version::Jet4)
            spec.columns.push_back({.name = "Big", .type = ColumnType::Decimal, .scale = 4});
        else
            spec.columns.push_back({.name = "Big", .type = ColumnType::Double});
        jet::Table &groups = m_database->createTable(spec);
        for (int i = 0; i < 4; ++i) {
            items.insert(std::vector<Value>{i, std::string("abc", static_cast<std::size_t>(i)),
                                            Currency::fromRaw(i * 12'345 - 20'000),
                                            i == 2 ? Value(Null{}) : Value(i / 2)});
            stock.insert(std::vector<Value>{i == 3 ? Value(Null{}) : Value(i), i * 0.5 - 1,
                                            Date::fromSerial(38'447.0 + i), i % 2 == 0});
            groups.insert(
                std::vector<Value>{i, std::string("G"), std::string("note"), Bytes(3), Null{}, 1.5, Null{}});
        }
        scope.commit();
    }

    static void read(sql::Query &query, bool rowsToo)
    {
        for (int rows = 0; rowsToo && rows < kMostRowsRead && query.next(); ++rows) {
            for (std::size_t i = 0; i < query.columns().size(); ++i)
                static_cast<void>(toText(query.value(i)));
        }
    }

    /// What SQLite refuses should have been refused before, save for its limits of size.
    static void judge(const AppError &error)
    {
        const std::string_view said = error.what();
        const bool ours = !said.starts_with("The statement cannot be run");
        const bool limit =
            said.find("too ") != std::string_view::npos || said.find("at most") != std::string_view::npos;
        if (error.number() == ErrorNumber::InternalFault || (!ours && !limit)) {
            std::fprintf(stderr, "%s\n", error.what());
            std::abort();
        }
    }

    static bool begins(std::string_view text, std::string_view word)
    {
        const std::size_t at = text.find_first_not_of(" \t\r\n");
        if (at == std::string_view::npos)
            return false;
        text.remove_prefix(at);
        return std::ranges::equal(text.substr(0, word.size()), word,
                                  [](char a, char b) { return std::tolower(a) == b; });
    }

    static int tablesIn(std::string_view text)
    {
        int joins = 1;
        for (std::size_t at = 0; at < text.size(); ++at)
            joins += begins(text.substr(at), "join") && !std::isspace(static_cast<unsigned char>(text[at]));
        return joins;
    }

    MemoryFolder m_folder;
    std::unique_ptr<jet::Database> m_database;
    sql::Engine m_engine;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static Workbench jet3(jet::Version::Jet3);
    static Workbench jet4(jet::Version::Jet4);
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    (size % 2 == 0 ? jet3 : jet4).run(text);
    return 0;
}
