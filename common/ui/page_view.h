// PageView: pages of paper, one below the other, at any zoom.
//
// The view paints what is visible and keeps no pictures: a page at 400 % would be 60 MB. The keys of a scroll
// area work (arrows, Page Up and Down by a screenful), Home and End go to the first and last page, and the
// wheel zooms while Ctrl is held.
#pragma once

#include <QAbstractScrollArea>
#include <QPainter>

#include <functional>

namespace ui {

/// Pages of one size. `paint` draws page 0, 1, ... into a painter whose origin is the corner of the paper.
struct Pages
{
    int count = 0;
    QSizeF size;                ///< of a page, in units of the painter
    double unitsPerInch = 1440; ///< resolution that `size` and `paint` count in
    std::function<void(QPainter &painter, int page)> paint;
    bool joined = false; ///< no gap between the pages, as on continuous paper
};

class PageView : public QAbstractScrollArea
{
    Q_OBJECT

public:
    enum class Fit { None, Width, Page };

    explicit PageView(QWidget *parent = nullptr);

    /// Shows other pages, at the same zoom; stays on the page shown as far as there is one of that number.
    void setPages(Pages pages);
    [[nodiscard]] int pageCount() const { return m_pages.count; }
    [[nodiscard]] int currentPage() const { return m_page; }
    void goTo(int page);

    /// 1.0 shows the paper in its own size.
    void setZoom(double zoom);
    void setFit(Fit fit);
    [[nodiscard]] double zoom() const { return m_zoom; }
    [[nodiscard]] Fit fit() const { return m_fit; }

signals:
    void pageChanged(int page);
    void zoomStep(int direction); ///< Ctrl and the wheel: +1 larger, -1 smaller

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void keyPressEvent(QKeyEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    [[nodiscard]] double pixelsPerUnit() const;
    [[nodiscard]] QSize pagePixels() const;
    [[nodiscard]] QRect pageRect(int page) const;
    [[nodiscard]] int rowHeight() const; ///< a page and the gap below it
    void applyZoom();
    void takePageFromPosition();
    void setPage(int page);

    Pages m_pages;
    double m_zoom = 1;
    Fit m_fit = Fit::None;
    int m_page = 0;
    bool m_moving = false; ///< the position changes without the user having scrolled
};

} // namespace ui
