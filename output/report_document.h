// ReportDocument: a report ready to be shown or printed, page by page.
//
// It holds everything it prints, so a preview stays as it is while the next order is already in the scratch
// table. Counting and painting pages go by the same list of first rows, so "Page x of y" cannot disagree with
// the paper. Sizes come out the same on every device: all painting is done in twips, with fonts measured in
// them.
#pragma once

#include "common/date.h"
#include "output/report_data.h"

#include <QPagedPaintDevice>
#include <QPainter>

#include <map>
#include <string>

namespace output {

/// Units of the painter in an inch.
inline constexpr double kTwipsPerInch = 1440;

/// Texts of formulas by name in lower case.
using FormulaTexts = std::map<QString, QString>;

class ReportDocument
{
public:
    ReportDocument(Layout layout, ReportData data, FormulaTexts formulas, Date today);

    [[nodiscard]] int pageCount() const { return static_cast<int>(m_firstRows.size()); }
    /// Paper, orientation and margins.
    [[nodiscard]] const QPageLayout &pageLayout() const { return m_layout.page; }
    /// Of the paper, in twips.
    [[nodiscard]] QSizeF pageSize() const;
    /// Proposed name for a PDF, without a folder: "Order 25.pdf".
    [[nodiscard]] QString pdfName() const;

    /// Paints page 0, 1, ...; the painter counts in twips from the corner of the paper.
    void paintPage(QPainter &painter, int page) const;
    /// Paints pages `first` to `last` on a device whose origin is the corner of the paper. Throws
    /// FileError(PathAccess) when the device does not take them.
    void paintPages(QPagedPaintDevice &device, int first, int last) const;
    /// Throws FileError when the file cannot be written; an earlier one is then still there.
    void savePdf(const std::string &path) const;

private:
    /// Where a band stands: what its fields are filled from.
    struct Spot
    {
        int page = 0;
        std::size_t row = 0;
    };

    void breakPages();
    void paintBand(QPainter &painter, const Band &band, double top, const Spot &spot) const;
    void paintText(QPainter &painter, const LayoutText &text, QPointF origin, const Spot &spot) const;
    [[nodiscard]] QString fieldText(const Piece &piece, const Spot &spot,
                                    const LayoutText *text = nullptr) const;
    /// The lines of a text, without those whose fields are all empty.
    [[nodiscard]] QStringList filledLines(const LayoutText &text, const Spot &spot) const;

    Layout m_layout;
    ReportData m_data;
    FormulaTexts m_formulas;
    QString m_today;
    std::vector<std::size_t> m_firstRows; ///< of every page; the last one has no end but the table's
};

} // namespace output
