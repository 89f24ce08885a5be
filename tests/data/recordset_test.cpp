// Recordsets over real files of both formats.
#include <QTemporaryDir>
#include <QTest>

#include "common/db.h"
#include "common/format.h"
#include "data/jet/field_default.h"
#include "data/recordset.h"
#include "tests/jet/column_property.h"
#include "tests/support/mdb_export.h"
#include "tests/support/outcome.h"
#include "tests/support/rows.h"
#include "tests/support/small_dealership.h"

Q_DECLARE_METATYPE(jet::Version)

using data::CursorType;
using data::LockType;
using data::Recordset;

namespace {

Recordset editable(const std::string &text, const data::Connection &connection)
{
    return Recordset(text, connection, CursorType::Dynamic, LockType::Pessimistic);
}

} // namespace

class RecordsetTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase_data()
    {
        const Rows<jet::Version> row({"version"});
        row("Access 97", jet::Version::Jet3);
        row("Access 2000", jet::Version::Jet4);
    }

    void init()
    {
        QFETCH_GLOBAL(jet::Version, version);
        m_connection = data::Connection();
        m_folder = std::make_unique<QTemporaryDir>();
        m_file = m_folder->filePath(QStringLiteral("Y26.mdb")).toStdString();
        auto tables = data::schema::yearTables();
        for (const auto &table : data::schema::layoutsTables())
            tables.push_back(table);
        TestDatabase(m_file, version, tables)
            .row("Mast_Heads", {{"HeadCode", 10}, {"SDC", 1}})
            .row("Mast_Heads", {{"HeadCode", 20}})
            .row("Mast_Heads", {{"HeadCode", 30}, {"SDC", 3}});
        m_connection = data::openFile(m_file);
    }

    void noRowsMeansBothEnds()
    {
        for (const LockType lock : {LockType::ReadOnly, LockType::Pessimistic}) {
            Recordset none("Select * from Mast_Heads where HeadCode = 99", m_connection, CursorType::Dynamic,
                           lock);
            QVERIFY(none.bof() && none.eof() && !none.hasRows());
            QCOMPARE(errorOf([&] { none.moveFirst(); }), ErrorNumber::NoCurrentRow);
            QCOMPARE(errorOf([&] { none.moveNext(); }), ErrorNumber::NoCurrentRow);
            QCOMPARE(errorOf([&] { static_cast<void>(none.field("SDC")); }), ErrorNumber::NoCurrentRow);
            QCOMPARE(errorOf([&] { none.remove(); }), ErrorNumber::NoCurrentRow);
        }
    }

    /// Of two columns of one name the first is meant, whatever was asked for before.
    void fieldsAreFoundInAnySequence()
    {
        Recordset rows("Select * from Mast_Heads left join Mast_Ledgers on Mast_Heads.HeadCode = "
                       "Mast_Ledgers.HeadCode",
                       m_connection);
        for (const std::string head : {"10", "20", "30"}) {
            for (const char *name : {"LedgName", "HeadCode", "Town", "headCODE", "AcClosed", "HeadCode"}) {
                QCOMPARE(toText(rows.field(name)), equalNoCase(name, "HeadCode") ? head : std::string());
            }
            QCOMPARE(errorOf([&] { static_cast<void>(rows.field("Head")); }), ErrorNumber::FieldNotFound);
            rows.moveNext();
        }
    }

    void rowsAreWalkedForwards_data()
    {
        const Rows<int, bool> row({"cursor", "pessimistic"});
        row("forward only", static_cast<int>(CursorType::ForwardOnly), false);
        row("static", static_cast<int>(CursorType::Static), false);
        row("dynamic, to read", static_cast<int>(CursorType::Dynamic), false);
        row("dynamic, to change", static_cast<int>(CursorType::Dynamic), true);
    }

    void rowsAreWalkedForwards()
    {
        QFETCH(int, cursor);
        QFETCH(bool, pessimistic);
        Recordset heads("Select * from Mast_Heads Order by HeadCode desc", m_connection,
                        static_cast<CursorType>(cursor),
                        pessimistic ? LockType::Pessimistic : LockType::ReadOnly);
        for (int pass = 0; pass < 2; ++pass) {
            QVERIFY(heads.hasRows() && !heads.bof());
            std::string codes;
            for (; !heads.eof(); heads.moveNext())
                codes += toText(heads.field("HeadCode")) + " ";
            QCOMPARE(codes, std::string("30 20 10 "));
            QVERIFY(!heads.bof() && heads.hasRows()); // behind the last row there are rows all the same
            QCOMPARE(errorOf([&] { heads.moveNext(); }), ErrorNumber::NoCurrentRow);
            heads.moveFirst();
        }
        heads.moveLast();
        QCOMPARE(toText(heads.field("HeadCode")), std::string("10"));
        heads.moveFirst();
        QCOMPARE(toText(heads.field("HeadCode")), std::string("30"));
    }

    void onlyStaticRecordsetsCount()
    {
        QCOMPARE(Recordset("Select * from Mast_Heads", m_connection, CursorType::Static).recordCount(), 3);
        QCOMPARE(
            Recordset("Select * from Mast_Heads", m_connection, CursorType::Static, LockType::Pessimistic)
                .recordCount(),
            3);
        QCOMPARE(Recordset("Select * from Mast_Heads", m_connection, CursorType::Dynamic).recordCount(), -1);
        QCOMPARE(Recordset("Select * from Mast_Heads", m_connection).recordCount(), -1);
    }

    void fieldsAreFoundWithoutRegardToCase()
    {
        const Recordset sum(
            "Select Sum(SDC) as at, HeadCode from Mast_Heads Group by HeadCode Order by HeadCode",
            m_connection);
        QCOMPARE(toText(sum.field("At")), std::string("1"));
        QCOMPARE(toText(sum.field("HEADCODE")), std::string("10"));
        QCOMPARE(errorOf([&] { static_cast<void>(sum.field("Town")); }), ErrorNumber::FieldNotFound);
    }

    void closedRecordsetsSaySo()
    {
        Recordset heads("Select * from Mast_Heads", m_connection);
        heads.close();
        QVERIFY(!heads.isOpen());
        QCOMPARE(errorOf([&] { heads.close(); }), ErrorNumber::ObjectClosed);
        QCOMPARE(errorOf([&] { static_cast<void>(heads.eof()); }), ErrorNumber::ObjectClosed);
        QCOMPARE(errorOf([&] { heads.addNew(); }), ErrorNumber::ObjectClosed);
    }

    void addedRowsAreSeenAtOnceAndByOthersAfterClosing()
    {
        Recordset lines = editable("Select * from Stock_OrdSub where StkOrdNo =7", m_connection);
        QVERIFY(!lines.hasRows());
        for (const int row : {1, 3}) {
            lines.addNew();
            lines.setField("StkOrdNo", 7.0);
            lines.setField("slno", row);
            lines.setField("Rate", 12.5 * row);
            lines.update();
            QCOMPARE(toText(lines.field("Slno")), std::to_string(row)); // the new row is the current one
        }
        QCOMPARE(rowsOf("Select * from Stock_OrdSub where StkOrdNo = 7 Order by SlNo ", m_connection,
                        {"Slno", "Rate"}),
                 QByteArray("1|12.5\n3|37.5"));
        lines.close();
        QCOMPARE(exported(m_file, "Stock_OrdSub"), QByteArray("7,1,,,,,12.5000,,,,\n7,3,,,,,37.5000,,,,\n"));
    }

    void fieldsThatAreNotSetTakeTheirDefaults_data()
    {
        const Rows<std::string, std::string, std::string> row({"column", "expression", "stored"});
        const std::string today = toText(jet::localNow().midnight());
        row("text", "SupName", "\"41 Days\"", "41 Days");
        row("number", "Mq", "=7", "7");
        row("day", "StkOrdDate", "Date()", today);
        row("time", "StkOrdDate", "=Now()", "now");
        row("function", "SupName", "CurrentUser()", "");
    }

    void fieldsThatAreNotSetTakeTheirDefaults()
    {
        QFETCH(std::string, column);
        QFETCH(std::string, expression);
        QFETCH(std::string, stored);
        const std::string table = "Stock_Ord";
        support::putDefault(*jet::Database::open(m_file, {.password = std::string(data::schema::kPassword)}),
                            table, column, expression);
        const auto before = jet::localNow().serial();
        Recordset orders = editable("Select * from " + table, m_connection);
        const auto add = [&](bool given) {
            orders.addNew();
            orders.setField("StkOrdNo", given ? 1.0 : 2.0);
            if (given)
                orders.setField(column, Null{});
            orders.update();
        };
        add(true);
        QVERIFY(isNull(orders.field(column)));
        if (stored.empty()) {
            QCOMPARE(errorOf([&] { add(false); }), ErrorNumber::TableReadOnly);
            return;
        }
        add(false);
        orders.close();
        Recordset found("Select * from " + table + " where StkOrdNo = 2", m_connection);
        if (stored == "now") {
            const double time = std::get<Date>(found.field(column)).serial();
            QVERIFY(time >= before && time <= jet::localNow().serial());
        } else {
            QCOMPARE(toText(found.field(column)), stored);
        }
    }

    void rowsAddedAndNotClosedAreDropped()
    {
        {
            Recordset heads = editable("Select * from Mast_Heads", m_connection);
            heads.addNew();
            heads.setField("HeadCode", 40);
            heads.update();
        }
        QCOMPARE(Recordset("Select * from Mast_Heads", m_connection, CursorType::Static).recordCount(), 3);
        QCOMPARE(exported(m_file, "Mast_Heads"), QByteArray("10,1\n20,\n30,3\n"));
    }

    void scratchRowsAreKeptWithoutClosing()
    {
        data::Connection scratch;
        scratch.setConnectionString(m_connection.connectionString());
        scratch.setDurable(data::Durable::No);
        scratch.open();
        {
            Recordset rows = editable("Select * from Dum", scratch);
            rows.addNew();
            rows.setField("A66", 5);
            rows.update();
            rows.setField("A67", 2.5);
            rows.update();
            rows.addNew();
            rows.setField("A66", 6);
            rows.setField("A21", std::string(2000, 'x'));
            QCOMPARE(errorOf([&] { rows.update(); }), ErrorNumber::FieldTooSmall);
            rows.addNew();
            rows.setField("A66", 7);
            rows.update();
        }
        QCOMPARE(rowsOf("Select * From Dum Where A66 in (5,6,7)", scratch, {"A66", "A67"}),
                 QByteArray("5|2.5\n7|null"));
    }

    void oneRowTooManyDropsTheUnit()
    {
        {
            Recordset heads = editable("Select * from Mast_Heads", m_connection);
            const auto add = [&heads](int code) {
                heads.addNew();
                heads.setField("HeadCode", code);
                heads.update();
            };
            add(40);
            QCOMPARE(errorOf([&] { add(20); }), ErrorNumber::DuplicateKey);
        }
        QCOMPARE(exported(m_file, "Mast_Heads"), QByteArray("10,1\n20,\n30,3\n"));
        // The table can be written again afterwards.
        Recordset heads = editable("Select * from Mast_Heads", m_connection);
        heads.addNew();
        heads.setField("HeadCode", 50);
        heads.update();
        heads.close();
        QCOMPARE(exported(m_file, "Mast_Heads"), QByteArray("10,1\n20,\n30,3\n50,\n"));
    }

    void assignedFieldsReadBackAsTheyWillBeStored()
    {
        Recordset rows = editable("Select * From Dum Where A66 = 5", m_connection);
        rows.addNew();
        QVERIFY(isNull(rows.field("A73")));
        rows.setField("A66", 5);
        rows.setField("A68", 100.0 / 3);
        QCOMPARE(toText(rows.field("A68")), std::string("33.3333"));
        rows.setField("a68", 2.5);
        QCOMPARE(toText(rows.field("A68")), std::string("2.5"));
        QCOMPARE(errorOf([&] { rows.setField("A66", 3e9); }), ErrorNumber::Overflow);
        rows.update();
        rows.setField("A23", std::string("41 Days"));
        rows.update();
        rows.close();
        QCOMPARE(rowsOf("Select * From Dum", m_connection, {"A66", "A68", "A23", "A73"}),
                 QByteArray("5|2.5|41 Days|null"));
    }

    void aMoveWritesWhatIsPending()
    {
        Recordset heads = editable("Select * from Mast_Heads Order by HeadCode", m_connection);
        heads.setField("SDC", 9);
        heads.moveNext();
        QVERIFY(isNull(heads.field("SDC")));
        heads.setField("SDC", 8);
        heads.close(); // nothing moved since: given up
        QCOMPARE(rowsOf("Select * from Mast_Heads Order by HeadCode", m_connection, {"SDC"}),
                 QByteArray("9\nnull\n3"));
    }

    void removedRowsAreGoneForEveryone()
    {
        Recordset heads = editable("Select * from Mast_Heads Order by HeadCode", m_connection);
        heads.setField("SDC", 9); // a change of a row that is then removed is given up with it
        heads.remove();
        QCOMPARE(errorOf([&] { static_cast<void>(heads.field("SDC")); }), ErrorNumber::NoCurrentRow);
        QCOMPARE(errorOf([&] { heads.remove(); }), ErrorNumber::NoCurrentRow);
        heads.moveNext();
        QCOMPARE(toText(heads.field("HeadCode")), std::string("20"));
        heads.moveFirst();
        QCOMPARE(toText(heads.field("HeadCode")), std::string("20"));
        QCOMPARE(exported(m_file, "Mast_Heads"), QByteArray("20,\n30,3\n"));
        while (!heads.eof()) {
            heads.remove();
            heads.moveNext();
        }
        heads.close();
        QVERIFY(!Recordset("Select * from Mast_Heads", m_connection).hasRows());
    }

    void rowsAreReadWhenTheyAreReached()
    {
        Recordset heads = editable("Select * from Mast_Heads Order by HeadCode", m_connection);
        m_connection.execute("Delete * from Mast_Heads where HeadCode = 20");
        Recordset other = editable("Select * from Mast_Heads where HeadCode = 30", m_connection);
        other.setField("SDC", 77);
        other.update();
        other.close();
        heads.moveNext();
        QCOMPARE(toText(heads.field("HeadCode")), std::string("30"));
        QCOMPARE(toText(heads.field("SDC")), std::string("77"));
    }

    void readOnlyRowsAreNotChanged()
    {
        const auto change = [](Recordset rows) {
            rows.setField("SDC", 5);
            rows.update();
        };
        QCOMPARE(errorOf([&] { change(Recordset("Select * from Mast_Heads", m_connection)); }),
                 ErrorNumber::TableReadOnly);
        QCOMPARE(errorOf([&] { change(editable("Select Sum(SDC) as SDC from Mast_Heads", m_connection)); }),
                 ErrorNumber::TableReadOnly);
        QCOMPARE(errorOf([&] { Recordset("Select * from Mast_Heads", m_connection).remove(); }),
                 ErrorNumber::TableReadOnly);
    }

    void tablesAreCleared()
    {
        Clear_Table(m_connection, "MAST_HEADS");
        QVERIFY(!Recordset("Select * from Mast_Heads", m_connection).hasRows());
        Clear_Table(m_connection, "Mast_Heads");
        Clear_Table(m_connection, "NoSuchTable"); // errors are skipped
        Clear_Table(data::Connection(), "Mast_Heads");
    }

    void oneFieldIsLookedUp()
    {
        QCOMPARE(Get_Field(m_connection, "Mast_Heads", "HeadCode", 30, "SDC"), std::string("3"));
        QCOMPARE(Get_Field(m_connection, "Mast_Heads", "HeadCode", 20, "SDC"), std::string());
        QCOMPARE(Get_Field(m_connection, "Mast_Heads", "HeadCode", 99, "SDC"), std::string());
    }

    void aQuoteInATextIsAnError()
    {
        QVERIFY_EXCEPTION_THROWN(
            static_cast<void>(Recordset("Select * from AAddress Where DBMst = 'O'Brien' ", m_connection)),
            SqlError);
        QVERIFY_EXCEPTION_THROWN(m_connection.execute("Delete * from NoSuchTable"), AppError);
    }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    std::string m_file;
    data::Connection m_connection;
};

QTEST_GUILESS_MAIN(RecordsetTest)
#include "recordset_test.moc"
