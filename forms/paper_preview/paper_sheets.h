// The sheets of continuous paper as a dot-matrix printer leaves them, drawn in 1/360 inch.
#pragma once

#include "output/escp_paper.h"

#include <QFont>
#include <QSizeF>

class QPainter;

/// What lies under the print.
enum class PaperStock {
    TornOff,   ///< 8.5 inches, without the strips at the sides
    Continuous ///< 9.5 inches, with the strips that the printer moves it by
};

class PaperSheets
{
public:
    explicit PaperSheets(output::escp::Paper paper = {});

    [[nodiscard]] const output::escp::Paper &paper() const { return m_paper; }
    [[nodiscard]] int count() const { return static_cast<int>(m_paper.pageLengths.size()); }
    /// Size of every sheet; when the stream changes the length, that of the longest.
    [[nodiscard]] QSizeF size(PaperStock stock) const;
    /// The sheet `page` at the painter's origin. Print that runs over the perforation is on both sheets.
    void paint(QPainter &painter, int page, PaperStock stock, bool bars) const;

private:
    void paintRuns(QPainter &painter, int page, int from) const;
    void paintRun(QPainter &painter, const output::escp::Run &run) const;

    output::escp::Paper m_paper;
    QFont m_font;
    double m_fontPitch; ///< advance of one character of the font
    int m_length;
};
