#include "common/ui/preview_window.h"

#include "common/ui/text.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QSpinBox>
#include <QStandardPaths>
#include <QToolBar>

#include <algorithm>
#include <array>

namespace ui {

namespace {

constexpr std::array<int, 8> kPercents = {50, 75, 100, 125, 150, 200, 300, 400};
constexpr int kFits = 2; ///< entries of the zoom list before the percentages
constexpr double kWhole = 100;
constexpr QSize kUsualSize(1000, 760);

void describe(QAction *action, const QString &text)
{
    action->setToolTip(
        QStringLiteral("%1 (%2)").arg(text, action->shortcut().toString(QKeySequence::NativeText)));
}

} // namespace

PreviewWindow::PreviewWindow(const QString &name, Dialogs &dialogs)
    : m_dialogs(dialogs)
    , m_view(new PageView(this))
    , m_bar(addToolBar(tr("Preview")))
    , m_page(new QSpinBox(this))
    , m_pages(new QLabel(this))
    , m_zoom(new QComboBox(this))
{
    setObjectName(name);
    setAttribute(Qt::WA_DeleteOnClose);
    m_view->setObjectName(QStringLiteral("pages"));
    m_view->setAccessibleName(tr("Pages"));
    setCentralWidget(m_view);
    m_bar->setMovable(false);
    m_bar->setContextMenuPolicy(Qt::PreventContextMenu);
    m_ownCommandsEnd = m_bar->addSeparator();
    addPageButtons();
    m_bar->addSeparator();
    addZoomButtons();
    m_bar->addSeparator();
    QAction *close = addStep(QStringLiteral("cmdClose"), tr("Close"), tr("Close"), Qt::Key_Escape);
    connect(close, &QAction::triggered, this, &QWidget::close);
    resize(kUsualSize);
    m_view->setFocus();
}

QAction *PreviewWindow::addCommand(const QString &name, const QString &caption, const QKeySequence &key)
{
    auto *action = new QAction(caption, this);
    action->setIconText(caption); // With its dots: the button leads to a box.
    action->setObjectName(name);
    action->setShortcut(key);
    describe(action, caption);
    m_bar->insertAction(m_ownCommandsEnd, action);
    return action;
}

void PreviewWindow::addControl(QWidget *control)
{
    m_bar->insertWidget(m_ownCommandsEnd, control);
}

void PreviewWindow::setKeys(const QString &title, QList<KeyLine> own)
{
    own += QList<KeyLine>{
        {tr("Ctrl+Page Up, Ctrl+Page Down"), tr("to the page before or behind")},
        {tr("Ctrl+Home, Ctrl+End"), tr("to the first or the last page")},
        {tr("Ctrl+Plus, Ctrl+Minus"), tr("larger, smaller")},
        {tr("Escape"), tr("closes the window")},
    };
    setKeyCard(this, title, own);
}

QAction *PreviewWindow::addStep(const QString &name, const QString &caption, const QString &sign,
                                const QKeySequence &key)
{
    QAction *action = m_bar->addAction(sign);
    action->setObjectName(name);
    action->setShortcut(key);
    describe(action, caption);
    m_bar->widgetForAction(action)->setAccessibleName(caption);
    return action;
}

void PreviewWindow::addPageButtons()
{
    m_backward[0] = addStep(QStringLiteral("cmdFirst"), tr("First page"), QStringLiteral("|\u25C0"),
                            Qt::CTRL | Qt::Key_Home);
    m_backward[1] = addStep(QStringLiteral("cmdPrevious"), tr("Previous page"), QStringLiteral("\u25C0"),
                            Qt::CTRL | Qt::Key_PageUp);
    m_page->setObjectName(QStringLiteral("txtPage"));
    m_page->setAccessibleName(tr("Page"));
    m_page->setPrefix(tr("Page "));
    m_page->setKeyboardTracking(false);
    m_page->setAlignment(Qt::AlignHCenter);
    m_page->setButtonSymbols(QAbstractSpinBox::NoButtons);
    m_bar->addWidget(m_page);
    m_pages->setObjectName(QStringLiteral("lblPages"));
    m_pages->setContentsMargins(4, 0, 4, 0);
    m_bar->addWidget(m_pages);
    m_forward[0] = addStep(QStringLiteral("cmdNext"), tr("Next page"), QStringLiteral("\u25B6"),
                           Qt::CTRL | Qt::Key_PageDown);
    m_forward[1] = addStep(QStringLiteral("cmdLast"), tr("Last page"), QStringLiteral("\u25B6|"),
                           Qt::CTRL | Qt::Key_End);

    connect(m_backward[0], &QAction::triggered, this, [this] { m_view->goTo(0); });
    connect(m_backward[1], &QAction::triggered, this, [this] { m_view->goTo(m_view->currentPage() - 1); });
    connect(m_forward[0], &QAction::triggered, this, [this] { m_view->goTo(m_view->currentPage() + 1); });
    connect(m_forward[1], &QAction::triggered, this, [this] { m_view->goTo(m_view->pageCount() - 1); });
    connect(m_page, &QSpinBox::valueChanged, this, [this](int page) { m_view->goTo(page - 1); });
    connect(m_page, &QSpinBox::editingFinished, m_view, qOverload<>(&QWidget::setFocus));
    connect(m_view, &PageView::pageChanged, this, &PreviewWindow::showPage);
}

void PreviewWindow::addZoomButtons()
{
    QAction *smaller = addStep(QStringLiteral("cmdZoomOut"), tr("Smaller"), QStringLiteral("\u2212"),
                               Qt::CTRL | Qt::Key_Minus);
    m_zoom->setObjectName(QStringLiteral("cmbZoom"));
    m_zoom->setAccessibleName(tr("Zoom"));
    m_zoom->addItem(tr("Fit width"));
    m_zoom->addItem(tr("Fit page"));
    for (const int percent : kPercents)
        m_zoom->addItem(QStringLiteral("%1 %").arg(percent), percent);
    m_zoom->setMaxVisibleItems(m_zoom->count());
    m_bar->addWidget(m_zoom);
    QAction *larger = addStep(QStringLiteral("cmdZoomIn"), tr("Larger"), QStringLiteral("+"), QKeySequence());
    larger->setShortcuts({Qt::CTRL | Qt::Key_Plus, Qt::CTRL | Qt::Key_Equal});
    describe(larger, tr("Larger"));

    connect(smaller, &QAction::triggered, this, [this] { stepZoom(-1); });
    connect(larger, &QAction::triggered, this, [this] { stepZoom(1); });
    connect(m_view, &PageView::zoomStep, this, &PreviewWindow::stepZoom);
    connect(m_zoom, &QComboBox::currentIndexChanged, this, &PreviewWindow::cmbZoom_Click);
    connect(m_zoom, &QComboBox::activated, m_view, qOverload<>(&QWidget::setFocus));
    m_zoom->setCurrentIndex(m_zoom->findData(static_cast<int>(kWhole)));
}

void PreviewWindow::cmbZoom_Click(int index)
{
    if (index < kFits)
        m_view->setFit(index == 0 ? PageView::Fit::Width : PageView::Fit::Page);
    else
        m_view->setZoom(m_zoom->itemData(index).toInt() / kWhole);
}

/// To the next percentage of the list, from a fitted zoom too.
void PreviewWindow::stepZoom(int direction)
{
    const int now = qRound(m_view->zoom() * kWhole);
    const auto next = direction > 0 ? std::upper_bound(kPercents.begin(), kPercents.end(), now)
                                    : std::lower_bound(kPercents.begin(), kPercents.end(), now);
    const auto at = next - kPercents.begin() - (direction > 0 ? 0 : 1);
    if (at >= 0 && at < static_cast<std::ptrdiff_t>(kPercents.size()))
        m_zoom->setCurrentIndex(kFits + static_cast<int>(at));
}

void PreviewWindow::showPages(Pages pages)
{
    const int count = pages.count;
    m_pages->setText(tr("of %1").arg(count));
    m_page->setRange(1, std::max(1, count));
    m_view->setPages(std::move(pages));
    showPage(m_view->currentPage());
}

void PreviewWindow::showPage(int page)
{
    m_page->setValue(page + 1);
    for (QAction *action : m_backward)
        action->setEnabled(page > 0);
    for (QAction *action : m_forward)
        action->setEnabled(page + 1 < m_view->pageCount());
}

std::string PreviewWindow::askPdfName(const QString &fileName)
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return m_dialogs.saveFile(typed(folder + QLatin1Char('/') + fileName), "PDF files (*.pdf)|*.pdf");
}

} // namespace ui
