#include "forms/paper_preview/paper_sheets.h"

#include "common/ui/text.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QtMath>

#include <algorithm>

using output::escp::kLineWidth;
using output::escp::kUnitsPerInch;
using output::escp::Run;

namespace {

constexpr int kSheetWidth = kUnitsPerInch * 17 / 2;
constexpr int kStripWidth = kUnitsPerInch / 2;
constexpr int kLeftMargin = (kSheetWidth - kLineWidth) / 2;
constexpr int kUsualLength = kUnitsPerInch * 12;
constexpr int kHoleStep = kUnitsPerInch / 2;
constexpr double kHoleRadius = kUnitsPerInch * 5 / 64.0;
constexpr int kBarHeight = kUnitsPerInch / 2;

// The character cell of 24 pins is 48 high, more than the 36 of a paper advance: letters are chosen so that
// the descenders of one line just clear the capitals of the next.
constexpr int kFontHeight = 40;
constexpr int kBaseline = 34;
constexpr int kCellHeight = 48;

constexpr QRgb kInk = qRgb(0x26, 0x28, 0x33);
constexpr QRgb kBar = qRgb(0xE4, 0xF1, 0xE6);
constexpr QRgb kPerforation = qRgb(0xB5, 0xB9, 0xBC);
constexpr QRgb kHole = qRgb(0xB4, 0xBC, 0xC1);

void paintBars(QPainter &painter, const QRectF &sheet)
{
    const int bars = qCeil(sheet.height() / (2 * kBarHeight));
    for (int bar = 0; bar < bars; ++bar) {
        const double y = sheet.top() + bar * 2 * kBarHeight;
        painter.fillRect(QRectF(sheet.left(), y, sheet.width(), kBarHeight), QColor(kBar));
    }
}

void paintStrips(QPainter &painter, const QSizeF &size)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(kHole));
    const int holes = qCeil(size.height() / kHoleStep - 0.5);
    for (int hole = 0; hole < holes; ++hole) {
        const double y = (hole + 0.5) * kHoleStep;
        for (const double x : {kStripWidth / 2.0, size.width() - kStripWidth / 2.0})
            painter.drawEllipse(QPointF(x, y), kHoleRadius, kHoleRadius);
    }
    QPen perforation(QColor(kPerforation), 3);
    perforation.setDashPattern({3, 3});
    painter.setPen(perforation);
    for (const double x : {double(kStripWidth), size.width() - kStripWidth})
        painter.drawLine(QPointF(x, 0), QPointF(x, size.height()));
    painter.drawLine(QPointF(0, size.height()), QPointF(size.width(), size.height()));
}

} // namespace

PaperSheets::PaperSheets(output::escp::Paper paper)
    : m_paper(std::move(paper))
    , m_font(QStringLiteral("DejaVu Sans Mono"))
{
    m_font.setStyleHint(QFont::TypeWriter);
    m_font.setPixelSize(kFontHeight);
    m_font.setHintingPreference(QFont::PreferNoHinting);
    m_fontPitch = QFontMetricsF(m_font).horizontalAdvance(QLatin1Char('0'));
    const auto longest = std::max_element(m_paper.pageLengths.begin(), m_paper.pageLengths.end());
    m_length = longest == m_paper.pageLengths.end() ? kUsualLength : *longest;
}

QSizeF PaperSheets::size(PaperStock stock) const
{
    const int strips = stock == PaperStock::Continuous ? 2 * kStripWidth : 0;
    return {double(kSheetWidth + strips), double(m_length)};
}

void PaperSheets::paint(QPainter &painter, int page, PaperStock stock, bool bars) const
{
    const int left = stock == PaperStock::Continuous ? kStripWidth : 0;
    painter.save();
    if (bars)
        paintBars(painter, QRectF(left, 0, kSheetWidth, m_length));
    if (stock == PaperStock::Continuous)
        paintStrips(painter, size(stock));
    painter.setPen(QColor(kInk));
    painter.setFont(m_font);
    painter.translate(left + kLeftMargin, 0);
    paintRuns(painter, page, 0);
    if (page > 0) {
        const int perforation = m_paper.pageLengths[static_cast<std::size_t>(page) - 1];
        painter.translate(0, -perforation);
        paintRuns(painter, page - 1, perforation);
    }
    painter.restore();
}

/// The runs of a page that are within the painter's clip and reach below `from`: in a PDF what lies off the
/// sheet would be there unseen, to be found by a search.
void PaperSheets::paintRuns(QPainter &painter, int page, int from) const
{
    const auto [first, end] =
        std::equal_range(m_paper.runs.begin(), m_paper.runs.end(), Run{.page = page, .text = {}},
                         [](const Run &a, const Run &b) { return a.page < b.page; });
    const QRectF visible = painter.hasClipping() ? painter.clipBoundingRect() : QRectF();
    for (auto run = first; run != end; ++run) {
        const int bottom = run->y + kCellHeight;
        if (bottom > from && (visible.isNull() || (bottom >= visible.top() && run->y <= visible.bottom())))
            paintRun(painter, *run);
    }
}

void PaperSheets::paintRun(QPainter &painter, const Run &run) const
{
    const QString text = ui::shown(run.text);
    painter.save();
    painter.translate(run.x, run.y + kBaseline);
    painter.scale(run.pitch / m_fontPitch, 1);
    // A character of another font may be wider; each is then put into its own cell.
    const double width = static_cast<double>(text.size()) * m_fontPitch;
    if (std::abs(QFontMetricsF(m_font, painter.device()).horizontalAdvance(text) - width) < 1) {
        painter.drawText(QPointF(0, 0), text);
    } else {
        for (qsizetype at = 0; at < text.size(); ++at)
            painter.drawText(QPointF(static_cast<double>(at) * m_fontPitch, 0), text.mid(at, 1));
    }
    painter.restore();
}
