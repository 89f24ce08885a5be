#include "output/layout_reader.h"

#include "data/paths.h"
#include "output/layout_text.h"

#include <QFile>
#include <QPageSize>
#include <QRegularExpression>
#include <QXmlStreamReader>

#include <array>
#include <utility>

namespace output {

namespace {

constexpr double kFontSize = 9;      ///< points, unless the layout says otherwise
constexpr double kMargin = 12;       ///< millimetres
constexpr double kLineWidth = 0.2;   ///< millimetres
constexpr double kTolerance = 0.005; ///< millimetres that rounding may cost
constexpr double kLargestSize = 200; ///< points

template <class T>
struct Word
{
    const char *word;
    T value;
};

constexpr std::array<Word<QPageSize::PageSizeId>, 5> kPapers = {{{"A4", QPageSize::A4},
                                                                 {"A5", QPageSize::A5},
                                                                 {"A3", QPageSize::A3},
                                                                 {"Letter", QPageSize::Letter},
                                                                 {"Legal", QPageSize::Legal}}};
constexpr std::array<Word<QPageLayout::Orientation>, 2> kOrientations = {
    {{"portrait", QPageLayout::Portrait}, {"landscape", QPageLayout::Landscape}}};
constexpr std::array<Word<LayoutText::Across>, 3> kAcross = {{{"left", LayoutText::Across::Left},
                                                              {"right", LayoutText::Across::Right},
                                                              {"centre", LayoutText::Across::Centre}}};
constexpr std::array<Word<LayoutText::Down>, 3> kDown = {{{"top", LayoutText::Down::Top},
                                                          {"middle", LayoutText::Down::Middle},
                                                          {"bottom", LayoutText::Down::Bottom}}};
constexpr std::array<Word<bool>, 2> kYesNo = {{{"yes", true}, {"no", false}}};
constexpr std::array<Word<NumberFormat>, 6> kFormats = {{{"0", {0, Grouping::None}},
                                                         {"0.0", {1, Grouping::None}},
                                                         {"0.00", {2, Grouping::None}},
                                                         {"#,0", {0, Grouping::Indian}},
                                                         {"#,0.0", {1, Grouping::Indian}},
                                                         {"#,0.00", {2, Grouping::Indian}}}};

constexpr std::array<Word<Band Layout::*>, 5> kBands = {{{"pageHeader", &Layout::pageHeader},
                                                         {"columnHeader", &Layout::columnHeader},
                                                         {"detail", &Layout::detail},
                                                         {"summary", &Layout::summary},
                                                         {"pageFooter", &Layout::pageFooter}}};

/// The attributes of one element. Each is asked for by name; one that nobody asked for is a mistake.
class Attributes
{
public:
    explicit Attributes(const QXmlStreamAttributes &attributes)
    {
        for (const QXmlStreamAttribute &attribute : attributes)
            m_left.emplace_back(attribute.qualifiedName().toString(), attribute.value().toString());
    }

    std::optional<QString> text(const char *name)
    {
        const auto found = std::find_if(m_left.begin(), m_left.end(), [name](const auto &attribute) {
            return attribute.first == QLatin1String(name);
        });
        if (found == m_left.end())
            return {};
        QString value = found->second;
        m_left.erase(found);
        return value;
    }

    double number(const char *name, std::optional<double> otherwise, double least = 0)
    {
        const std::optional<QString> given = text(name);
        if (!given && otherwise)
            return *otherwise;
        if (!given)
            throw LayoutMistake(QStringLiteral("%1 is missing").arg(QLatin1String(name)));
        bool isNumber = false;
        const double value = given->toDouble(&isNumber);
        if (!isNumber || !(value >= least && value <= 2000)) {
            throw LayoutMistake(QStringLiteral("%1=\"%2\" is not a number from %3")
                                    .arg(QLatin1String(name), *given)
                                    .arg(least));
        }
        return value;
    }

    template <class T, std::size_t count>
    std::optional<T> word(const char *name, const std::array<Word<T>, count> &words)
    {
        const std::optional<QString> given = text(name);
        if (!given)
            return {};
        QStringList known;
        for (const Word<T> &candidate : words) {
            if (given->compare(QLatin1String(candidate.word), Qt::CaseInsensitive) == 0)
                return candidate.value;
            known << QLatin1String(candidate.word);
        }
        throw LayoutMistake(QStringLiteral("%1=\"%2\" is none of %3")
                                .arg(QLatin1String(name), *given, known.join(QStringLiteral(", "))));
    }

    std::optional<QRgb> colour(const char *name)
    {
        const std::optional<QString> given = text(name);
        if (!given)
            return {};
        static const QRegularExpression rule(QStringLiteral("^#[0-9A-Fa-f]{6}$"));
        if (!rule.match(*given).hasMatch()) {
            throw LayoutMistake(
                QStringLiteral("%1=\"%2\" is no colour such as #1f5f7a").arg(QLatin1String(name), *given));
        }
        return 0xFF000000U | given->mid(1).toUInt(nullptr, 16);
    }

    void requireAllRead() const
    {
        if (!m_left.empty())
            throw LayoutMistake(QStringLiteral("%1 is not known here").arg(m_left.front().first));
    }

private:
    std::vector<std::pair<QString, QString>> m_left;
};

class LayoutReader
{
public:
    LayoutReader(const QString &file, const QByteArray &bytes)
        : m_xml(bytes)
    {
        m_layout.file = file;
    }

    Layout read()
    {
        try {
            readReport();
        } catch (const LayoutMistake &mistake) {
            throw LayoutError(m_layout.file, m_line, QString::fromUtf8(mistake.what()));
        }
        return std::move(m_layout);
    }

private:
    /// The next child element of the current one; false at its end. Words between elements are a mistake.
    bool nextChild()
    {
        for (;;) {
            const QXmlStreamReader::TokenType token = m_xml.readNext();
            m_line = m_xml.lineNumber();
            if (m_xml.hasError())
                throw LayoutMistake(m_xml.errorString());
            if (token == QXmlStreamReader::StartElement)
                return true;
            if (token == QXmlStreamReader::EndElement || token == QXmlStreamReader::EndDocument)
                return false;
            if (token == QXmlStreamReader::Characters && !m_xml.isWhitespace())
                throw LayoutMistake(
                    QStringLiteral("\"%1\" stands outside a text").arg(m_xml.text().toString().trimmed()));
        }
    }

    [[noreturn]] void unknownElement() const
    {
        throw LayoutMistake(QStringLiteral("<%1> is not known here").arg(m_xml.name().toString()));
    }

    void readReport()
    {
        if (!nextChild() || m_xml.name() != QLatin1String("report"))
            throw LayoutMistake(QStringLiteral("the file does not begin with <report>"));
        const qint64 reportLine = m_line;
        readPage();
        std::vector<Band Layout::*> seen;
        while (nextChild()) {
            const auto found = std::find_if(kBands.begin(), kBands.end(), [this](const auto &band) {
                return m_xml.name() == QLatin1String(band.word);
            });
            if (found == kBands.end())
                unknownElement();
            if (std::find(seen.begin(), seen.end(), found->value) != seen.end())
                throw LayoutMistake(QStringLiteral("there is a second <%1>").arg(QLatin1String(found->word)));
            seen.push_back(found->value);
            readBand(m_layout.*(found->value));
        }
        nextChild(); // What follows </report> must be well-formed too.
        m_line = reportLine;
        if (m_layout.detail.height <= 0)
            throw LayoutMistake(QStringLiteral("there is no <detail> with a height"));
        if (m_layout.bodyHeight() + kTolerance < m_layout.detail.height + m_layout.summary.height)
            throw LayoutMistake(QStringLiteral("the bands are higher than the page"));
    }

    void readPage()
    {
        Attributes given(m_xml.attributes());
        m_layout.table = given.text("table").value_or(QStringLiteral("StkOrd"));
        static const QRegularExpression name(QStringLiteral("^[A-Za-z][A-Za-z0-9_]*$"));
        if (!name.match(m_layout.table).hasMatch())
            throw LayoutMistake(QStringLiteral("table=\"%1\" is no name of a table").arg(m_layout.table));
        m_layout.saveAs = fields(given.text("saveAs").value_or(QStringLiteral("Report")));
        m_font = given.text("font").value_or(QStringLiteral("DejaVu Sans"));
        m_size = readSize(given, kFontSize);
        const QPageSize paper(given.word("paper", kPapers).value_or(QPageSize::A4));
        const auto orientation = given.word("orientation", kOrientations).value_or(QPageLayout::Portrait);
        const QMarginsF margins(given.number("left", kMargin), given.number("top", kMargin),
                                given.number("right", kMargin), given.number("bottom", kMargin));
        given.requireAllRead();
        m_layout.page = QPageLayout(paper, orientation, margins, QPageLayout::Millimeter);
        m_width = m_layout.page.paintRect(QPageLayout::Millimeter).width();
        if (!m_layout.page.isValid() || m_width <= 0 ||
            m_layout.page.paintRect(QPageLayout::Millimeter).height() <= 0)
            throw LayoutMistake(QStringLiteral("the margins leave no room on the page"));
    }

    static double readSize(Attributes &given, double otherwise)
    {
        const double size = given.number("size", otherwise, 1);
        if (size > kLargestSize)
            throw LayoutMistake(QStringLiteral("size is larger than %1 points").arg(kLargestSize));
        return size;
    }

    void readBand(Band &band)
    {
        Attributes given(m_xml.attributes());
        band.height = given.number("height", {});
        given.requireAllRead();
        while (nextChild()) {
            if (m_xml.name() == QLatin1String("text"))
                band.elements.emplace_back(readText(band));
            else if (m_xml.name() == QLatin1String("line"))
                band.elements.emplace_back(readLine(band));
            else if (m_xml.name() == QLatin1String("box"))
                band.elements.emplace_back(readBox(band));
            else
                unknownElement();
        }
    }

    QRectF readPlace(Attributes &given, const Band &band) const
    {
        const QRectF place(given.number("x", {}), given.number("y", {}), given.number("w", {}),
                           given.number("h", {}));
        requireInside(place.bottomRight(), band);
        return place;
    }

    void requireInside(QPointF corner, const Band &band) const
    {
        if (corner.x() > m_width + kTolerance) {
            throw LayoutMistake(QStringLiteral("it reaches %1 mm to the right, the page has room for %2")
                                    .arg(corner.x())
                                    .arg(m_width));
        }
        if (corner.y() > band.height + kTolerance) {
            throw LayoutMistake(QStringLiteral("it reaches %1 mm down, its band is %2 high")
                                    .arg(corner.y())
                                    .arg(band.height));
        }
    }

    LayoutLine readLine(const Band &band)
    {
        Attributes given(m_xml.attributes());
        LayoutLine line;
        line.place = QLineF(given.number("x1", {}), given.number("y1", {}), given.number("x2", {}),
                            given.number("y2", {}));
        line.width = given.number("width", kLineWidth);
        line.colour = given.colour("color").value_or(qRgb(0, 0, 0));
        given.requireAllRead();
        requireInside(line.place.p1(), band);
        requireInside(line.place.p2(), band);
        requireEmpty();
        return line;
    }

    LayoutBox readBox(const Band &band)
    {
        Attributes given(m_xml.attributes());
        LayoutBox box;
        box.place = readPlace(given, band);
        box.width = given.number("width", kLineWidth);
        box.colour = given.colour("color").value_or(qRgb(0, 0, 0));
        box.fill = given.colour("fill");
        given.requireAllRead();
        requireEmpty();
        return box;
    }

    void requireEmpty()
    {
        if (nextChild())
            unknownElement();
    }

    LayoutText readText(const Band &band)
    {
        Attributes given(m_xml.attributes());
        LayoutText text;
        text.place = readPlace(given, band);
        text.across = given.word("align", kAcross).value_or(LayoutText::Across::Left);
        text.down = given.word("valign", kDown).value_or(LayoutText::Down::Middle);
        text.font = given.text("font").value_or(m_font);
        text.size = readSize(given, m_size);
        text.bold = given.word("bold", kYesNo).value_or(false);
        text.italic = given.word("italic", kYesNo).value_or(false);
        text.colour = given.colour("color").value_or(qRgb(0, 0, 0));
        text.format = given.word("format", kFormats);
        text.blankZero = given.word("blankZero", kYesNo).value_or(false);
        given.requireAllRead();
        text.lines = readLines();
        return text;
    }

    /// The words of a text up to its end; <br/> begins a new line.
    std::vector<TextLine> readLines()
    {
        std::vector<TextLine> lines;
        QString words;
        for (;;) {
            const QXmlStreamReader::TokenType token = m_xml.readNext();
            m_line = m_xml.lineNumber();
            if (m_xml.hasError())
                throw LayoutMistake(m_xml.errorString());
            if (token == QXmlStreamReader::Characters) {
                words += m_xml.text();
                continue;
            }
            const bool isEnd = token == QXmlStreamReader::EndElement;
            const bool isBreak =
                token == QXmlStreamReader::StartElement && m_xml.name() == QLatin1String("br");
            if (isEnd || isBreak)
                lines.push_back(fields(std::exchange(words, QString()).simplified()));
            else if (token == QXmlStreamReader::StartElement)
                unknownElement();
            if (isEnd)
                return lines;
            if (isBreak)
                requireEmpty();
        }
    }

    TextLine fields(const QString &text)
    {
        TextLine pieces = parseLayoutText(text);
        for (const Piece &piece : pieces) {
            const bool summed = piece.kind == Piece::Kind::Sum;
            if (summed || piece.kind == Piece::Kind::Column)
                m_layout.columns.push_back({piece.text, summed, m_line});
        }
        return pieces;
    }

    QXmlStreamReader m_xml;
    Layout m_layout;
    qint64 m_line = 1;
    QString m_font;
    double m_size = kFontSize;
    double m_width = 0; ///< of the page between its margins
};

} // namespace

LayoutError::LayoutError(const QString &file, qint64 line, const QString &reason)
    : CorruptFile(QStringLiteral("The report layout %1 cannot be used.\nLine %2: %3.")
                      .arg(file)
                      .arg(line)
                      .arg(reason.endsWith(QLatin1Char('.')) ? reason.chopped(1) : reason)
                      .toStdString())
{}

Layout readLayout(const std::string &path)
{
    const QString name = QString::fromStdString(data::localPath(path));
    QFile file(name);
    if (!file.exists())
        throw FileError(ErrorNumber::FileNotFound, "The report layout " + path + " does not exist.");
    if (!file.open(QIODevice::ReadOnly))
        throw FileError(ErrorNumber::PathAccess, "The report layout " + path + " cannot be read.");
    return LayoutReader(name, file.readAll()).read();
}

} // namespace output
