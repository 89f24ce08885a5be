// The grid's cells, rows and headings, and the row helpers that work on it.
#include "common/text_grid.h"
#include "tests/support/outcome.h"

namespace {

/// A grid with a heading and rows whose cells hold "row.column", numbered from 1, row data 100 * row.
TextGrid numbered(int dataRows, int columns = 3)
{
    TextGrid grid(columns);
    grid.setRows(dataRows + 1);
    for (int row = 1; row <= dataRows; ++row) {
        for (int column = 0; column < columns; ++column)
            grid.setText(row, column, std::to_string(row) + "." + std::to_string(column));
        grid.setRowData(row, 100 * row);
    }
    return grid;
}

/// The data rows as "cell cell cell:data" separated by bars.
QString contents(const TextGrid &grid)
{
    QStringList rows;
    for (int row = 1; row < grid.rows(); ++row) {
        QStringList cells;
        for (int column = 0; column < grid.columns(); ++column)
            cells << QString::fromStdString(grid.text(row, column));
        rows << cells.join(QLatin1Char(' ')) + QStringLiteral(":%1").arg(grid.rowData(row));
    }
    return rows.join(QLatin1Char('|'));
}

class Recorder : public TextGrid::Listener
{
public:
    void cellChanged(int row, int column) override
    {
        heard << QStringLiteral("cell %1 %2").arg(row).arg(column);
    }
    void rowsChanged() override { heard << QStringLiteral("rows"); }
    void headingChanged() override { heard << QStringLiteral("heading"); }
    void currentChanged(int row, int column) override
    {
        heard << QStringLiteral("current %1 %2").arg(row).arg(column);
    }

    QStringList heard;
};

} // namespace

class TextGridTest : public QObject
{
    Q_OBJECT

private slots:
    void removedRowsCloseUp_data()
    {
        const OutcomeRows row;
        const auto without = [](std::int16_t removed, int lastColumn) {
            TextGrid grid = numbered(3);
            Del_Row(grid, lastColumn, removed);
            return contents(grid);
        };
        row("first", without(1, 2), "2.0 2.1 2.2:200|3.0 3.1 3.2:300");
        row("middle", without(2, 2), "1.0 1.1 1.2:100|3.0 3.1 3.2:300");
        row("last", without(3, 2), "1.0 1.1 1.2:100|2.0 2.1 2.2:200");
        row("columns behind the last one stay", without(1, 1), "2.0 2.1 1.2:200|3.0 3.1 2.2:300");
        row("heading row", without(0, 2), "1.0 1.1 1.2:100|2.0 2.1 2.2:200|3.0 3.1 3.2:300");
        row("no such row", without(4, 2), "1.0 1.1 1.2:100|2.0 2.1 2.2:200|3.0 3.1 3.2:300");
    }
    void removedRowsCloseUp() { compareOutcome(); }

    void theOnlyLineIsEmptiedAndNumbered()
    {
        TextGrid grid = numbered(1);
        Del_Row(grid, 2, 1);
        QCOMPARE(contents(grid), QStringLiteral("1  :0"));
    }

    void coloursStayInTheirPlace()
    {
        TextGrid grid = numbered(3);
        grid.setBackColour(2, 1, 0xC0E0FF);
        Del_Row(grid, 2, 1);
        QCOMPARE(grid.backColour(1, 1), kNoColour);
        QCOMPARE(grid.backColour(2, 1), BgrColour{0xC0E0FF});
    }

    void formatStrings_data()
    {
        const OutcomeRows row;
        const auto headings = [](int columns, const char *format) {
            TextGrid grid(columns);
            grid.setFormatString(format);
            QStringList all; // alignment, width, text
            for (int column = 0; column < grid.columns(); ++column) {
                const TextGrid::Heading &heading = grid.heading(column);
                all << QStringLiteral("%1,%2,%3")
                           .arg(static_cast<int>(heading.alignment))
                           .arg(heading.widthInCharacters)
                           .arg(QString::fromStdString(heading.text));
            }
            return all.join(QLatin1Char('|'));
        };
        row("three alignments", headings(1, "^Sl.No.  |<Part Name   |>Rate      |"),
            "1,8,Sl.No.|0,12,Part Name|2,10,Rate");
        row("empty columns that exist", headings(4, "<A|^Qty.  ||"), "0,1,A|1,6,Qty.|0,0,|0,0,");
        row("columns behind stay", headings(3, "<A"), "0,1,A|0,0,|0,0,");
    }
    void formatStrings() { compareOutcome(); }

    void clearingKeepsRowsAndHeadings()
    {
        TextGrid grid = numbered(2);
        grid.setHeadingText(1, "Part");
        grid.setBackColour(1, 1, kButtonFace);
        grid.clear();
        QCOMPARE(contents(grid), QStringLiteral("  :0|  :0"));
        QCOMPARE(grid.text(0, 1), std::string("Part"));
        QCOMPARE(grid.backColour(1, 1), kNoColour);
    }

    void filledRowsLeaveOutTheEntryRow()
    {
        TextGrid grid = numbered(4);
        grid.setText(2, 1, {});
        QCOMPARE(ValidRows(grid), 2); // rows 1 and 3; row 4 is the entry row, filled or not
        grid.setRows(2);
        QCOMPARE(ValidRows(grid), 0);
        grid.setRows(1);
        QCOMPARE(ValidRows(grid), 0);
    }

    void listenersHearWhatHappened()
    {
        TextGrid grid = numbered(3);
        grid.setCurrent(3, 2);
        Recorder recorder;
        grid.setListener(&recorder);
        grid.setText(1, 1, "x");
        grid.setText(1, 1, "x"); // no change
        grid.setRows(2);         // the current row is gone
        QCOMPARE(recorder.heard, (QStringList{QStringLiteral("cell 1 1"), QStringLiteral("rows"),
                                              QStringLiteral("current 1 2")}));

        recorder.heard.clear();
        {
            const TextGrid::Batch batch(grid);
            grid.setText(1, 0, "y");
            grid.setRows(9);
        }
        QCOMPARE(recorder.heard.count(QStringLiteral("rows")), 1);
        QVERIFY(!recorder.heard.contains(QStringLiteral("cell 1 0")));
        grid.setText(0, 0, "Sl.No.");
        QCOMPARE(recorder.heard.last(), QStringLiteral("heading"));
    }

    void aRowThatIsNotThereIsAProgrammingMistake()
    {
        TextGrid grid = numbered(1);
        QVERIFY_EXCEPTION_THROWN(grid.setText(2, 0, "x"), std::out_of_range);
        QVERIFY_EXCEPTION_THROWN(grid.removeRow(0), std::out_of_range);
        QVERIFY_EXCEPTION_THROWN(static_cast<void>(grid.text(1, 3)), std::out_of_range);
    }
};

QTEST_APPLESS_MAIN(TextGridTest)
#include "text_grid_test.moc"
