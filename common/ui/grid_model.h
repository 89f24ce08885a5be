// GridModel: shows a TextGrid to the toolkit's views.
//
// Row r of the model is row r + 1 of the grid; the grid's heading row is the horizontal header. The row data
// is Qt::UserRole of column 0. The model is the grid's listener as long as it lives.
#pragma once

#include "common/text_grid.h"

#include <QAbstractTableModel>

namespace ui {

class GridModel : public QAbstractTableModel, private TextGrid::Listener
{
    Q_OBJECT

public:
    explicit GridModel(TextGrid &grid, QObject *parent = nullptr);
    ~GridModel() override;

    [[nodiscard]] TextGrid &grid() { return m_grid; }
    [[nodiscard]] const TextGrid &grid() const { return m_grid; }

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    void setHeadingTips(const QStringList &tips) { m_headingTips = tips; }

signals:
    /// Headings, and with them the column widths, changed.
    void headingsChanged();
    /// The grid's current cell may have changed (grid rows; row 0 is the heading).
    void currentMoved(int row, int column);

private:
    void cellChanged(int row, int column) override;
    void rowsChanged() override;
    void headingChanged() override;
    void currentChanged(int row, int column) override;

    TextGrid &m_grid;
    QStringList m_headingTips;
    // What the views have been told: the grid reports its changes after they happened.
    int m_rows = 0;
    int m_columns = 0;
};

} // namespace ui
