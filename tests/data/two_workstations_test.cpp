// Recordsets while another workstation works with the same file.
#include <QTemporaryDir>
#include <QTest>

#include "data/recordset.h"
#include "tests/jet/jet_support.h"
#include "tests/support/rows.h"

using data::CursorType;
using data::LockType;
using data::Recordset;

namespace {

constexpr int kRows = 200;

[[nodiscard]] std::vector<Value> part(int code, const std::string &name)
{
    return {Value{std::int32_t{code}}, Value{name}};
}

[[nodiscard]] Recordset editable(const std::string &text, const data::Connection &connection)
{
    return Recordset(text, connection, CursorType::Dynamic, LockType::Pessimistic);
}

} // namespace

class TwoWorkstationsTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_other.reset();
        m_folder = std::make_unique<QTemporaryDir>();
        const std::string path = m_folder->filePath(QStringLiteral("Parts.mdb")).toStdString();
        {
            const auto made = jet::Database::create(path);
            jet::ChangeScope scope(*made, jet::Durability::Lazy);
            jet::Table &table =
                made->createTable({.name = "Parts",
                                   .columns = {{.name = "Code", .type = jet::ColumnType::Long},
                                               {.name = "Name", .type = jet::ColumnType::Text, .size = 50}},
                                   .indexes = {{.name = "PrimaryKey", .keys = {{"Code"}}, .primary = true}}});
            for (int code = 1; code <= kRows; ++code)
                table.insert(part(code, "part"));
            scope.commit();
        }
        m_connection.setConnectionString("Provider=Microsoft.jet.oledb.3.51; Data Source=" + path +
                                         ";Jet OLEDB:Database Password=none");
        m_connection.open();
        jet::OpenOptions options;
        options.locks = {std::chrono::milliseconds(60), "OTHER"};
        m_other = jet::Database::open(path, options);
    }

    void cleanup() { QCOMPARE(support::problems(*m_other), QByteArray()); }

    /// A recordset that stands at a row keeps nobody from working, and meets what was changed meanwhile.
    void standingAtARow_data()
    {
        const Rows<int, int, int> row({"cursor", "lock", "rows"});
        row("row by row", int(CursorType::Dynamic), int(LockType::ReadOnly), kRows - 50);
        row("copy", int(CursorType::Static), int(LockType::ReadOnly), kRows);
        row("places", int(CursorType::Dynamic), int(LockType::Pessimistic), kRows - 50);
    }
    void standingAtARow()
    {
        QFETCH(int, cursor);
        QFETCH(int, lock);
        Recordset rows("Select * from Parts", m_connection, static_cast<CursorType>(cursor),
                       static_cast<LockType>(lock));
        int count = 0;
        for (; !rows.eof(); rows.moveNext()) {
            if (++count == 10) {
                for (int code = kRows - 49; code <= kRows; ++code)
                    m_other->table("Parts").erase(placeOf(code));
            }
        }
        QTEST(count, "rows");
    }

    void rowsBeingAddedAreForNobodyElse()
    {
        Recordset rows = editable("Select * from Parts Where Code = 0", m_connection);
        rows.addNew();
        rows.setField("Code", 1000);
        rows.update();
        QCOMPARE(support::errorOf([&] { static_cast<void>(m_other->table("Parts").fetch({})); }),
                 static_cast<int>(ErrorNumber::TableInUse));
        rows.close();
        QVERIFY(m_other->table("Parts").fetch(placeOf(1000)));
    }

    /// The row was deleted by another workstation, and its place given to a new one.
    void placeOfAnotherRow_data()
    {
        const Rows<bool> row({"erase"});
        row("update", false);
        row("delete", true);
    }
    void placeOfAnotherRow()
    {
        QFETCH(bool, erase);
        Recordset row = editable("Select * from Parts Where Code = 1", m_connection);
        const jet::RowId place = placeOf(1);
        jet::Table &table = m_other->table("Parts");
        for (int code = 1; code <= kRows; ++code)
            table.erase(placeOf(code));
        // The page is free now; the first row of the table takes it again.
        QCOMPARE(table.insert(part(777, "new")), place);
        const auto change = [&] {
            if (erase) {
                row.remove();
                return;
            }
            row.setField("Name", std::string("changed"));
            row.update();
        };
        QCOMPARE(support::errorOf(change), static_cast<int>(ErrorNumber::NoCurrentRow));
        QCOMPARE(table.fetch(place)->text(1), std::string("new"));
    }

    /// Another workstation changed the same row: it is overwritten.
    void changedRow()
    {
        Recordset row = editable("Select * from Parts Where Code = 1", m_connection);
        m_other->table("Parts").update(
            placeOf(1), std::vector<std::pair<std::size_t, Value>>{{1, Value{std::string("theirs")}}});
        row.setField("Name", std::string("ours"));
        row.update();
        QCOMPARE(m_other->table("Parts").fetch(placeOf(1))->text(1), std::string("ours"));
    }

private:
    [[nodiscard]] jet::RowId placeOf(int code)
    {
        jet::Cursor rows =
            m_other->table("Parts").along(0, jet::KeyRange::equal({Value{std::int32_t{code}}}));
        return rows.next() ? rows.row().id() : jet::RowId{};
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    data::Connection m_connection;
    std::unique_ptr<jet::Database> m_other;
};

QTEST_APPLESS_MAIN(TwoWorkstationsTest)
#include "two_workstations_test.moc"
