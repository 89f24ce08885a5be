// Layout: a report's form as values. docs/report-layouts.md describes the file it is read from.
//
// All places and widths are millimetres; a band's elements count from the band's upper left corner.
#pragma once

#include "common/format.h"

#include <QLineF>
#include <QPageLayout>
#include <QRectF>
#include <QRgb>
#include <QString>

#include <array>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace output {

/// A piece of a text: fixed words, or a field that is filled in when the page is painted.
struct Piece
{
    enum class Kind { Words, Column, Formula, Sum, SlNo, Count, PageNo, PageCount, Today };
    Kind kind = Kind::Words;
    QString text; ///< the words; or the name of the column or formula
};
using TextLine = std::vector<Piece>;

struct NumberFormat
{
    std::uint8_t decimals = 0; ///< 0, 1 or 2
    Grouping grouping = Grouping::None;
};

struct LayoutText
{
    enum class Across { Left, Right, Centre };
    enum class Down { Top, Middle, Bottom };

    QRectF place;
    std::vector<TextLine> lines;
    Across across = Across::Left;
    Down down = Down::Middle;
    QString font;
    double size = 0; ///< points
    bool bold = false;
    bool italic = false;
    QRgb colour = 0;
    std::optional<NumberFormat> format; ///< of every field in the text; none: as the value stands
    bool blankZero = false;
};

struct LayoutLine
{
    QLineF place;
    double width = 0;
    QRgb colour = 0;
};

struct LayoutBox
{
    QRectF place;
    double width = 0; ///< of the rim; 0: no rim
    QRgb colour = 0;
    std::optional<QRgb> fill;
};

struct Band
{
    double height = 0;
    std::vector<std::variant<LayoutBox, LayoutLine, LayoutText>> elements; ///< painted in this order
};

/// Where a layout names a column of the table.
struct ColumnUse
{
    QString column;
    bool summed = false;
    qint64 line = 0; ///< of the file
};

struct Layout
{
    QString file; ///< as the messages name it
    QString table;
    TextLine saveAs; ///< proposed name of a PDF, without ending
    QPageLayout page;
    Band pageHeader;
    Band columnHeader;
    Band detail;
    Band summary;
    Band pageFooter;
    std::vector<ColumnUse> columns;

    /// Room between both heads and the foot of a page, at least a detail and the summary.
    [[nodiscard]] double bodyHeight() const
    {
        return page.paintRect(QPageLayout::Millimeter).height() - pageHeader.height - columnHeader.height -
               pageFooter.height;
    }
};

/// Names of the formulas that a layout can use.
inline constexpr std::array<const char *, 4> kFormulas = {"Title", "Town", "Head", "Head1"};

} // namespace output
