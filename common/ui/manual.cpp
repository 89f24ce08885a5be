#include "common/ui/manual.h"

#include "common/ui/key_card.h"

#include <QApplication>
#include <QDialog>
#include <QFile>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QImage>
#include <QPointer>
#include <QPushButton>
#include <QScrollBar>
#include <QTextBrowser>
#include <QTimer>
#include <QVBoxLayout>
#include <QtMath>

#include <algorithm>

namespace ui {

namespace {

constexpr QSize kUsualSize(1020, 740);

/// The text of a page. Pictures that are wider than the window are made smaller, and again when that changes.
class Pages : public QTextBrowser
{
public:
    using QTextBrowser::QTextBrowser;

protected:
    QVariant loadResource(int type, const QUrl &name) override
    {
        QVariant found = QTextBrowser::loadResource(type, name);
        QImage picture;
        if (type != QTextDocument::ImageResource || !picture.loadFromData(found.toByteArray()))
            return found;
        const int room = viewport()->width() - qCeil(2 * document()->documentMargin());
        if (room <= 0 || picture.width() <= room)
            return picture;
        const qreal ratio = devicePixelRatioF();
        picture =
            picture.scaledToWidth(std::min(picture.width(), qFloor(room * ratio)), Qt::SmoothTransformation);
        picture.setDevicePixelRatio(picture.width() / qreal(room));
        return picture;
    }

    void resizeEvent(QResizeEvent *event) override
    {
        QTextBrowser::resizeEvent(event);
        // Later: it may have come from the middle of laying out the page, as a scroll bar appeared.
        if (viewport()->width() != m_fittedTo)
            QTimer::singleShot(0, this, &Pages::fitAgain);
    }

private:
    void fitAgain()
    {
        if (source().isEmpty() || viewport()->width() == m_fittedTo)
            return;
        m_fittedTo = viewport()->width();
        const int at = verticalScrollBar()->value();
        document()->clear(); // forgets the pictures of the old size
        reload();
        verticalScrollBar()->setValue(at);
    }

    int m_fittedTo = -1; ///< the width of the viewport for which the pictures were made
};

/// A browser of our own: a workstation for orders has no need of another one.
class ManualWindow : public QDialog
{
public:
    explicit ManualWindow(QWidget *parent);

    void show(const QString &page);

private:
    QPushButton *addButton(QHBoxLayout *row, const char *name, const QString &caption);

    QTextBrowser *m_text;
};

ManualWindow::ManualWindow(QWidget *parent)
    : QDialog(parent)
    , m_text(new Pages(this))
{
    setObjectName(QStringLiteral("manual"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("Velk Spares Manual"));
    m_text->setObjectName(QStringLiteral("manualText"));
    m_text->setAccessibleName(tr("Page of the manual"));
    m_text->setOpenExternalLinks(false);
    m_text->document()->setDocumentMargin(16);
    // Never comes and goes: pictures fitted to one width could make the page need it, to the other not.
    m_text->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    // The browser widget does not follow a page's link to its style sheet.
    if (QFile style(manualFolder() + QStringLiteral("/manual.css")); style.open(QIODevice::ReadOnly))
        m_text->document()->setDefaultStyleSheet(QString::fromUtf8(style.readAll()));

    auto *row = new QHBoxLayout;
    QPushButton *contents = addButton(row, "manualContents", tr("C&ontents"));
    QPushButton *back = addButton(row, "manualBack", tr("&Back"));
    row->addStretch();
    QPushButton *close = addButton(row, "manualClose", tr("&Close"));
    connect(contents, &QPushButton::clicked, this, [this] { show(QStringLiteral("index.html")); });
    connect(back, &QPushButton::clicked, m_text, &QTextBrowser::backward);
    connect(m_text, &QTextBrowser::backwardAvailable, back, &QPushButton::setEnabled);
    connect(close, &QPushButton::clicked, this, &QDialog::close);
    back->setEnabled(false);

    auto *column = new QVBoxLayout(this);
    column->addWidget(m_text);
    column->addLayout(row);
    setKeyCard(this, tr("Manual"),
               {{tr("Tab, Shift+Tab"), tr("to the next link, to the one before")},
                {tr("Enter"), tr("opens the link")},
                {tr("Alt+O"), tr("to the contents")},
                {tr("Alt+B, Alt+Left"), tr("back to the page one came from")},
                {tr("Escape, Alt+C"), tr("closes the manual")}});
    resize(kUsualSize);
    m_text->setFocus();
}

QPushButton *ManualWindow::addButton(QHBoxLayout *row, const char *name, const QString &caption)
{
    auto *button = new QPushButton(caption, this);
    button->setObjectName(QLatin1String(name));
    button->setAutoDefault(false);
    row->addWidget(button);
    return button;
}

void ManualWindow::show(const QString &page)
{
    const QString file = manualFolder() + QLatin1Char('/') + page.section(QLatin1Char('#'), 0, 0);
    QUrl place = QUrl::fromLocalFile(file);
    place.setFragment(page.section(QLatin1Char('#'), 1));
    if (QFileInfo::exists(file)) {
        m_text->setSource(place);
    } else {
        m_text->setPlainText(tr("The manual is not installed: there is no %1.").arg(file));
    }
    QDialog::show();
    raise();
    activateWindow();
}

} // namespace

QString manualFolder()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/manual");
}

void openManual(QWidget *from, const QString &page)
{
    static QPointer<ManualWindow> window;
    // A window that is open over another form could not be reached from behind a modal one.
    if (window && window != from && window->parentWidget() != from)
        delete window;
    if (!window)
        window = new ManualWindow(from);
    window->show(page);
}

} // namespace ui
