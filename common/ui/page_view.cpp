#include "common/ui/page_view.h"

#include <QKeyEvent>
#include <QPaintEvent>
#include <QScopedValueRollback>
#include <QScrollBar>

#include <algorithm>
#include <cmath>

namespace ui {

namespace {

constexpr int kGap = 14;
constexpr int kLineStep = 24;
constexpr QRgb kDesk = qRgb(0xB4, 0xBC, 0xC1);
constexpr QRgb kRim = qRgb(0x8A, 0x94, 0x9A);
constexpr QRgb kShadow = qRgba(0, 0, 0, 50);

} // namespace

PageView::PageView(QWidget *parent)
    : QAbstractScrollArea(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setFrameShape(QFrame::NoFrame);
    verticalScrollBar()->setSingleStep(kLineStep);
    horizontalScrollBar()->setSingleStep(kLineStep);
    viewport()->setBackgroundRole(QPalette::NoRole);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
}

void PageView::setPages(Pages pages)
{
    m_pages = std::move(pages);
    applyZoom();
    setPage(std::clamp(m_page, 0, std::max(0, m_pages.count - 1)));
    viewport()->update();
}

double PageView::pixelsPerUnit() const
{
    return m_zoom * logicalDpiX() / m_pages.unitsPerInch;
}

QSize PageView::pagePixels() const
{
    return (m_pages.size * pixelsPerUnit()).toSize();
}

int PageView::rowHeight() const
{
    return pagePixels().height() + (m_pages.joined ? 0 : kGap);
}

QRect PageView::pageRect(int page) const
{
    const QSize size = pagePixels();
    const int spare = viewport()->width() - size.width();
    const int left = spare > 2 * kGap ? spare / 2 : kGap - horizontalScrollBar()->value();
    return {QPoint(left, kGap + page * rowHeight() - verticalScrollBar()->value()), size};
}

void PageView::setZoom(double zoom)
{
    m_fit = Fit::None;
    m_zoom = zoom;
    applyZoom();
}

void PageView::setFit(Fit fit)
{
    m_fit = fit;
    applyZoom();
}

/// Works out the zoom of a fit and the scroll ranges; what stood in the middle of the view stays there.
void PageView::applyZoom()
{
    if (m_pages.size.isEmpty())
        return;
    const QScopedValueRollback moving(m_moving, true);
    QScrollBar *bar = verticalScrollBar();
    const double middle = viewport()->height() / 2.0;
    const double before = (bar->value() + middle - kGap) / rowHeight();
    if (m_fit != Fit::None) {
        const QSizeF paper = m_pages.size * logicalDpiX() / m_pages.unitsPerInch;
        const double wide = (viewport()->width() - 2 * kGap) / paper.width();
        const double high = (viewport()->height() - 2 * kGap) / paper.height();
        m_zoom = std::max(0.1, m_fit == Fit::Width ? wide : std::min(wide, high));
    }
    bar->setPageStep(viewport()->height());
    const int whole = m_pages.count * rowHeight() + (m_pages.joined ? 2 * kGap : kGap);
    bar->setRange(0, std::max(0, whole - viewport()->height()));
    horizontalScrollBar()->setPageStep(viewport()->width());
    horizontalScrollBar()->setRange(0, std::max(0, pagePixels().width() + 2 * kGap - viewport()->width()));
    if (m_fit == Fit::Page)
        bar->setValue(m_page * rowHeight());
    else
        bar->setValue(static_cast<int>(std::lround(before * rowHeight() + kGap - middle)));
    viewport()->update();
}

void PageView::goTo(int page)
{
    const QScopedValueRollback moving(m_moving, true);
    setPage(std::clamp(page, 0, std::max(0, m_pages.count - 1)));
    verticalScrollBar()->setValue(m_page * rowHeight());
}

void PageView::setPage(int page)
{
    if (page == m_page)
        return;
    m_page = page;
    emit pageChanged(page);
}

/// The page at a third of the view's height counts as the one that is looked at.
void PageView::takePageFromPosition()
{
    const QScrollBar *bar = verticalScrollBar();
    int page = (bar->value() + viewport()->height() / 3 - kGap) / rowHeight();
    if (bar->value() == bar->minimum())
        page = 0;
    else if (bar->value() == bar->maximum())
        page = m_pages.count - 1;
    setPage(std::clamp(page, 0, std::max(0, m_pages.count - 1)));
}

void PageView::scrollContentsBy(int dx, int dy)
{
    viewport()->scroll(dx, dy);
    if (!m_moving)
        takePageFromPosition();
}

void PageView::resizeEvent(QResizeEvent *event)
{
    QAbstractScrollArea::resizeEvent(event);
    applyZoom();
}

void PageView::paintEvent(QPaintEvent *event)
{
    QPainter painter(viewport());
    painter.fillRect(event->rect(), QColor(kDesk));
    painter.setRenderHint(QPainter::Antialiasing);
    for (int page = 0; page < m_pages.count; ++page) {
        const QRect paper = pageRect(page);
        if (!paper.adjusted(-kGap, -kGap, kGap, kGap).intersects(event->rect()))
            continue;
        painter.fillRect(paper.translated(3, 3), QColor::fromRgba(kShadow));
        const int top = m_pages.joined && page > 0 ? 0 : 1;
        painter.fillRect(paper.adjusted(-1, -top, 1, 1), QColor(kRim));
        painter.fillRect(paper, Qt::white);
        painter.save();
        painter.setClipRect(paper & event->rect());
        painter.translate(paper.topLeft());
        painter.scale(pixelsPerUnit(), pixelsPerUnit());
        m_pages.paint(painter, page);
        painter.restore();
    }
}

void PageView::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Home)
        goTo(0);
    else if (event->key() == Qt::Key_End)
        goTo(m_pages.count - 1);
    else
        QAbstractScrollArea::keyPressEvent(event);
}

void PageView::wheelEvent(QWheelEvent *event)
{
    if (!(event->modifiers() & Qt::ControlModifier))
        return QAbstractScrollArea::wheelEvent(event);
    if (const int turn = event->angleDelta().y(); turn != 0)
        emit zoomStep(turn > 0 ? 1 : -1);
    event->accept();
}

} // namespace ui
