#include "common/ui/grid_model.h"

#include "common/ui/text.h"

#include <QColor>

namespace ui {

namespace {

/// The neutral grey of a button's face, whatever the palette.
constexpr QRgb kButtonFaceGrey = qRgb(0xE4, 0xE6, 0xE8);
constexpr QRgb kTextOnColour = qRgb(0x1A, 0x1A, 0x1A);

QColor fromBgr(BgrColour colour)
{
    if (colour == kButtonFace)
        return kButtonFaceGrey;
    return qRgb(static_cast<int>(colour & 0xFF), static_cast<int>(colour >> 8 & 0xFF),
                static_cast<int>(colour >> 16 & 0xFF));
}

int alignmentFlags(TextGrid::Alignment alignment)
{
    const Qt::Alignment vertical = Qt::AlignVCenter;
    switch (alignment) {
    case TextGrid::Alignment::Centre:
        return static_cast<int>((vertical | Qt::AlignHCenter).toInt());
    case TextGrid::Alignment::Right:
        return static_cast<int>((vertical | Qt::AlignRight).toInt());
    case TextGrid::Alignment::Left:
        break;
    }
    return static_cast<int>((vertical | Qt::AlignLeft).toInt());
}

} // namespace

GridModel::GridModel(TextGrid &grid, QObject *parent)
    : QAbstractTableModel(parent)
    , m_grid(grid)
    , m_rows(grid.rows() - 1)
    , m_columns(grid.columns())
{
    m_grid.setListener(this);
}

GridModel::~GridModel()
{
    m_grid.setListener(nullptr);
}

int GridModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_rows;
}

int GridModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_columns;
}

QVariant GridModel::data(const QModelIndex &index, int role) const
{
    const int row = index.row() + 1;
    const int column = index.column();
    // While rows come or go the views may still ask for what the grid no longer has.
    if (!index.isValid() || row >= m_grid.rows() || column >= m_grid.columns())
        return {};
    switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        return shown(m_grid.text(row, column));
    case Qt::UserRole:
        return column == 0 ? QVariant(m_grid.rowData(row)) : QVariant();
    case Qt::TextAlignmentRole:
        return alignmentFlags(m_grid.heading(column).alignment);
    case Qt::BackgroundRole:
        if (const BgrColour colour = m_grid.backColour(row, column); colour != kNoColour)
            return fromBgr(colour);
        return {};
    case Qt::ForegroundRole:
        return m_grid.backColour(row, column) != kNoColour ? QVariant(QColor(kTextOnColour)) : QVariant();
    default:
        return {};
    }
}

QVariant GridModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section >= m_grid.columns())
        return {};
    if (role == Qt::DisplayRole)
        return shown(m_grid.heading(section).text);
    if (role == Qt::TextAlignmentRole)
        return alignmentFlags(m_grid.heading(section).alignment);
    if (role == Qt::ToolTipRole)
        return m_headingTips.value(section);
    return {};
}

void GridModel::cellChanged(int row, int column)
{
    if (row >= 1 && row <= m_rows && column < m_columns)
        emit dataChanged(index(row - 1, column), index(row - 1, column));
}

void GridModel::rowsChanged()
{
    const int now = m_grid.rows() - 1;
    if (m_columns != m_grid.columns()) {
        headingChanged();
        return;
    }
    const int common = qMin(now, m_rows);
    if (now > m_rows) {
        beginInsertRows({}, m_rows, now - 1);
        m_rows = now;
        endInsertRows();
    } else if (now < m_rows) {
        beginRemoveRows({}, now, m_rows - 1);
        m_rows = now;
        endRemoveRows();
    }
    if (common > 0)
        emit dataChanged(index(0, 0), index(common - 1, m_columns - 1));
    emit currentMoved(m_grid.currentRow(), m_grid.currentColumn());
}

void GridModel::headingChanged()
{
    if (m_columns != m_grid.columns() || m_rows != m_grid.rows() - 1) {
        beginResetModel();
        m_rows = m_grid.rows() - 1;
        m_columns = m_grid.columns();
        endResetModel();
        emit currentMoved(m_grid.currentRow(), m_grid.currentColumn());
    } else {
        emit headerDataChanged(Qt::Horizontal, 0, m_columns - 1);
        // Alignments come with the headings.
        if (m_rows > 0)
            emit dataChanged(index(0, 0), index(m_rows - 1, m_columns - 1), {Qt::TextAlignmentRole});
    }
    emit headingsChanged();
}

void GridModel::currentChanged(int row, int column)
{
    emit currentMoved(row, column);
}

} // namespace ui
