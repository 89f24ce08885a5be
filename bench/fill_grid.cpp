#include "bench/fill_sections.h"

#include "common/ui/grid_view.h"
#include "orders/order.h"

#include <QApplication>
#include <QScrollBar>

#include <algorithm>

namespace bench {

namespace {

constexpr int kLines = 15'000;

void fillLines(TextGrid &grid)
{
    const TextGrid::Batch batch(grid);
    grid.setRows(kLines + 2);
    for (int row = 1; row <= kLines; ++row) {
        for (int column = 0; column < orders::kColumns; ++column)
            grid.setText(row, column, "1234." + std::to_string(row));
        orders::colourLine(grid, row, orders::LineColours::Filled);
    }
}

} // namespace

void measureGrid(Report &report)
{
    TextGrid grid(orders::kColumns);
    grid.setFormatString(orders::gridFormat());
    ui::GridView view(grid, ui::GridView::Selection::Cells);
    view.resize(1200, 600);
    view.show();
    QCoreApplication::processEvents();

    const double appears = processorSecondsOf([&] {
        fillLines(grid);
        view.grab();
    });
    double page = 0;
    for (int step = 0; step < 50; ++step) {
        page = std::max(page, processorSecondsOf([&] {
                            QScrollBar *bar = view.verticalScrollBar();
                            bar->setValue(bar->value() + bar->maximum() / 50);
                            view.grab();
                        }));
    }
    report.add({"a grid of 15,000 lines appears", appears, std::nullopt, {Target::Kind::Below, 0.250}});
    report.add({"and scrolls, the slowest of 50 pages", page, std::nullopt, {Target::Kind::Below, 0.050}});
}

} // namespace bench
