#include "output/report_document.h"

#include "common/errors.h"
#include "common/null_safe.h"

#include <QFontMetricsF>
#include <QPdfWriter>
#include <QRegularExpression>
#include <QSaveFile>

#include <algorithm>
#include <cmath>

namespace output {

namespace {

constexpr double kTwipsPerMm = kTwipsPerInch / 25.4;
constexpr double kTwipsPerPoint = kTwipsPerInch / 72;
constexpr double kTolerance = 1e-6;

QString shown(const std::string &text)
{
    return QString::fromStdString(text);
}

QRectF twips(const QRectF &millimetres)
{
    return {millimetres.topLeft() * kTwipsPerMm, millimetres.size() * kTwipsPerMm};
}

QFont fontOf(const LayoutText &text)
{
    // In pixels of the painter, which are twips: no device then has a say in how wide a text is.
    QFont font(text.font);
    font.setPixelSize(static_cast<int>(std::lround(text.size * kTwipsPerPoint)));
    font.setBold(text.bold);
    font.setItalic(text.italic);
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

void paint(QPainter &painter, const LayoutLine &line, QPointF origin)
{
    painter.setPen(QPen(QColor(line.colour), line.width * kTwipsPerMm, Qt::SolidLine, Qt::SquareCap));
    painter.drawLine(origin + line.place.p1() * kTwipsPerMm, origin + line.place.p2() * kTwipsPerMm);
}

void paint(QPainter &painter, const LayoutBox &box, QPointF origin)
{
    painter.setPen(box.width > 0 ? QPen(QColor(box.colour), box.width * kTwipsPerMm, Qt::SolidLine,
                                        Qt::SquareCap, Qt::MiterJoin)
                                 : QPen(Qt::NoPen));
    painter.setBrush(box.fill ? QBrush(QColor(*box.fill)) : QBrush(Qt::NoBrush));
    painter.drawRect(twips(box.place).translated(origin));
}

QString valueText(const Value &value, const LayoutText *text)
{
    std::string asItStands = Null_Str(value);
    if (isNull(value) || !text || (!text->format && !text->blankZero))
        return shown(asItStands);
    // A number that is too large for an amount stands as it is.
    return shown(attemptOr(asItStands, [&]() -> std::string {
        const Currency amount = Null_Cur(value);
        if (text->blankZero && amount == Currency())
            return {};
        if (!text->format)
            return asItStands;
        return Format_Num(amount, text->format->decimals, BlankIfZero::No, text->format->grouping);
    }));
}

int acrossFlag(LayoutText::Across across)
{
    switch (across) {
    case LayoutText::Across::Right:
        return Qt::AlignRight;
    case LayoutText::Across::Centre:
        return Qt::AlignHCenter;
    case LayoutText::Across::Left:
        break;
    }
    return Qt::AlignLeft;
}

/// How far down in its place a block of text begins.
double lead(LayoutText::Down down, double spare)
{
    switch (down) {
    case LayoutText::Down::Middle:
        return spare / 2;
    case LayoutText::Down::Bottom:
        return spare;
    case LayoutText::Down::Top:
        break;
    }
    return 0;
}

} // namespace

ReportDocument::ReportDocument(Layout layout, ReportData data, FormulaTexts formulas, Date today)
    : m_layout(std::move(layout))
    , m_data(std::move(data))
    , m_formulas(std::move(formulas))
    , m_today(shown(today.toText()))
{
    breakPages();
}

void ReportDocument::breakPages()
{
    const double body = m_layout.bodyHeight();
    const double detail = m_layout.detail.height;
    const auto perPage = static_cast<std::size_t>(std::floor(body / detail + kTolerance));
    const std::size_t rows = m_data.rows();
    m_firstRows = {0};
    for (std::size_t row = perPage; row < rows; row += perPage)
        m_firstRows.push_back(row);
    const auto lastRows = static_cast<double>(rows - m_firstRows.back());
    // A total never stands alone: where it does not fit any more, the last line goes over with it.
    if (lastRows * detail + m_layout.summary.height > body + kTolerance)
        m_firstRows.push_back(rows - 1);
}

QSizeF ReportDocument::pageSize() const
{
    return m_layout.page.fullRect(QPageLayout::Point).size() * kTwipsPerPoint;
}

QString ReportDocument::pdfName() const
{
    QString name;
    for (const Piece &piece : m_layout.saveAs)
        name += fieldText(piece, {});
    static const QRegularExpression notInNames(QStringLiteral("[/\\\\:*?\"<>|\\x00-\\x1f]"));
    name = name.replace(notInNames, QStringLiteral("-")).simplified();
    return (name.isEmpty() ? QStringLiteral("Report") : name) + QStringLiteral(".pdf");
}

QString ReportDocument::fieldText(const Piece &piece, const Spot &spot, const LayoutText *text) const
{
    switch (piece.kind) {
    case Piece::Kind::Words:
        return piece.text;
    case Piece::Kind::Column:
        return valueText(m_data.value(spot.row, piece.text), text);
    case Piece::Kind::Sum:
        return valueText(Value(m_data.sum(piece.text)), text);
    case Piece::Kind::Formula: {
        const auto formula = m_formulas.find(piece.text);
        return formula == m_formulas.end() ? QString() : formula->second;
    }
    case Piece::Kind::SlNo:
        return QString::number(spot.row + 1);
    case Piece::Kind::Count:
        return QString::number(m_data.rows());
    case Piece::Kind::PageNo:
        return QString::number(spot.page + 1);
    case Piece::Kind::PageCount:
        return QString::number(pageCount());
    case Piece::Kind::Today:
        return m_today;
    }
    return {};
}

QStringList ReportDocument::filledLines(const LayoutText &text, const Spot &spot) const
{
    QStringList lines;
    for (const TextLine &pieces : text.lines) {
        QString line;
        bool hasFields = false;
        bool hasValue = false;
        for (const Piece &piece : pieces) {
            // A line end or tab inside a value would spoil the line.
            const QString value = fieldText(piece, spot, &text).replace(QLatin1Char('\n'), QLatin1Char(' '));
            const bool isField = piece.kind != Piece::Kind::Words;
            hasFields = hasFields || isField;
            hasValue = hasValue || (isField && !value.trimmed().isEmpty());
            line += value;
        }
        if (!hasFields || hasValue)
            lines << line.simplified();
    }
    return lines;
}

void ReportDocument::paintText(QPainter &painter, const LayoutText &text, QPointF origin,
                               const Spot &spot) const
{
    const QRectF place = twips(text.place).translated(origin);
    const QFont font = fontOf(text);
    const QFontMetricsF metrics(font);
    const QStringList lines = filledLines(text, spot);
    const double block = metrics.height() + static_cast<double>(lines.size() - 1) * metrics.lineSpacing();
    QRectF line(place.left(), place.top() + lead(text.down, place.height() - block), place.width(),
                metrics.height());
    painter.setPen(QColor(text.colour));
    for (const QString &words : lines) {
        QFont fitting = font;
        QString cut = words;
        const double width = metrics.horizontalAdvance(words);
        if (width > place.width() && text.format) {
            // A number is made smaller: one that is cut reads as another number.
            fitting.setPixelSize(std::max(1, static_cast<int>(font.pixelSize() * place.width() / width)));
        } else if (width > place.width()) {
            cut = metrics.elidedText(words, Qt::ElideRight, place.width());
        }
        painter.setFont(fitting);
        painter.drawText(line, acrossFlag(text.across) | Qt::AlignVCenter | Qt::TextSingleLine, cut);
        line.translate(0, metrics.lineSpacing());
    }
}

void ReportDocument::paintBand(QPainter &painter, const Band &band, double top, const Spot &spot) const
{
    const QMarginsF margins = m_layout.page.margins(QPageLayout::Millimeter);
    const QPointF origin = QPointF(margins.left(), top) * kTwipsPerMm;
    if (painter.hasClipping()) {
        // Scrolling uncovers a strip of the page; the bands outside need no work.
        const QRectF strip = painter.clipBoundingRect();
        if (origin.y() > strip.bottom() || origin.y() + band.height * kTwipsPerMm < strip.top())
            return;
    }
    for (const auto &element : band.elements) {
        if (const auto *text = std::get_if<LayoutText>(&element))
            paintText(painter, *text, origin, spot);
        else if (const auto *line = std::get_if<LayoutLine>(&element))
            paint(painter, *line, origin);
        else
            paint(painter, std::get<LayoutBox>(element), origin);
    }
}

void ReportDocument::paintPage(QPainter &painter, int page) const
{
    const auto at = static_cast<std::size_t>(page);
    const bool isLast = at + 1 == m_firstRows.size();
    const std::size_t end = isLast ? m_data.rows() : m_firstRows[at + 1];
    const QMarginsF margins = m_layout.page.margins(QPageLayout::Millimeter);
    double top = margins.top();
    const auto next = [&](const Band &band, std::size_t row) {
        paintBand(painter, band, top, {page, row});
        top += band.height;
    };
    // Heads and foot speak of the whole report: their columns are those of its first row.
    next(m_layout.pageHeader, 0);
    next(m_layout.columnHeader, 0);
    for (std::size_t row = m_firstRows[at]; row < end; ++row)
        next(m_layout.detail, row);
    if (isLast)
        next(m_layout.summary, 0);
    const double paper = m_layout.page.fullRect(QPageLayout::Millimeter).height();
    paintBand(painter, m_layout.pageFooter, paper - margins.bottom() - m_layout.pageFooter.height, {page, 0});
}

void ReportDocument::paintPages(QPagedPaintDevice &device, int first, int last) const
{
    const auto require = [](bool done) {
        if (!done)
            throw FileError(ErrorNumber::PathAccess, "The printer does not take the report.");
    };
    QPainter painter;
    require(painter.begin(&device));
    painter.scale(device.logicalDpiX() / kTwipsPerInch, device.logicalDpiY() / kTwipsPerInch);
    for (int page = first; page <= last; ++page) {
        require(page == first || device.newPage());
        paintPage(painter, page);
    }
    require(painter.end());
}

void ReportDocument::savePdf(const std::string &path) const
{
    const auto fail = [&](const QSaveFile &file) {
        throw FileError(ErrorNumber::PathAccess,
                        "The file " + path + " cannot be written: " + file.errorString().toStdString() + ".");
    };
    QSaveFile file(shown(path));
    if (!file.open(QIODevice::WriteOnly))
        fail(file);
    {
        QPdfWriter pdf(&file);
        pdf.setTitle(pdfName().chopped(4));
        pdf.setCreator(QStringLiteral("Velk Spares"));
        pdf.setResolution(static_cast<int>(kTwipsPerInch));
        pdf.setPageLayout(QPageLayout(m_layout.page.pageSize(), m_layout.page.orientation(), QMarginsF()));
        paintPages(pdf, 0, pageCount() - 1);
    }
    if (!file.commit())
        fail(file);
}

} // namespace output
