#include "forms/paper_preview/paper_preview.h"

#include "common/ui/connect.h"
#include "common/ui/text.h"
#include "data/paths.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTime>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPdfWriter>
#include <QSaveFile>
#include <QStatusBar>
#include <QWindow>

using output::escp::kUnitsPerInch;
using output::escp::PaperAdvance;

namespace {

constexpr int kMessageMs = 8000;
constexpr int kChoiceGap = 8;

} // namespace

PaperPreview::PaperPreview(std::string file, Dialogs &dialogs)
    : PreviewWindow(QStringLiteral("paperPreview"), dialogs)
    , m_file(std::move(file))
    , m_advance(new QComboBox(this))
    , m_bars(new QCheckBox(tr("&Green bars"), this))
    , m_remarks(new QLabel(this))
    , m_fileLabel(new QLabel(this))
{
    setWindowTitle(tr("Paper Preview"));
    setWindowFlags(Qt::Dialog | Qt::WindowMinMaxButtonsHint | Qt::WindowCloseButtonHint);
    createControls();
}

void PaperPreview::createControls()
{
    ui::on(addCommand(QStringLiteral("cmdPdf"), tr("Save as PDF..."), Qt::CTRL | Qt::Key_S),
           &QAction::triggered, this, &PaperPreview::cmdPdf_Click);
    ui::on(addCommand(QStringLiteral("cmdReload"), tr("Read again"), Qt::Key_F5), &QAction::triggered, this,
           &PaperPreview::cmdReload_Click);

    setKeys(tr("Paper Preview"),
            {{tr("Ctrl+S"), tr("saves the sheets as PDF")},
             {tr("F5"), tr("reads the print file again")},
             {tr("Alt+A"), tr("what the printer does where the paper moves on by part of a line")},
             {tr("Alt+G"), tr("paper with green bars")}});

    m_advance->setObjectName(QStringLiteral("cmbAdvance"));
    m_advance->setAccessibleName(tr("Carriage at a paper advance"));
    m_advance->setToolTip(
        tr("What the printer does with the carriage when the paper is moved on by a part of "
           "a line (ESC J). Printers differ; try yours."));
    m_advance->addItem(tr("Carriage returns"), QVariant::fromValue(PaperAdvance::ReturnsCarriage));
    m_advance->addItem(tr("Carriage stays"), QVariant::fromValue(PaperAdvance::KeepsColumn));
    m_bars->setObjectName(QStringLiteral("chkBars"));
    m_bars->setToolTip(tr("Shows paper with green bars"));
    auto *choices = new QWidget(this);
    auto *row = new QHBoxLayout(choices);
    row->setContentsMargins(kChoiceGap, 0, kChoiceGap, 0);
    row->setSpacing(kChoiceGap);
    auto *label = new QLabel(tr("At paper &advance"), choices);
    label->setBuddy(m_advance);
    for (QWidget *control : std::initializer_list<QWidget *>{label, m_advance, m_bars})
        row->addWidget(control);
    addControl(choices);
    connect(m_advance, &QComboBox::currentIndexChanged, this, &PaperPreview::interpret);
    connect(m_advance, &QComboBox::activated, &view(), qOverload<>(&QWidget::setFocus));
    connect(m_bars, &QCheckBox::toggled, this, &PaperPreview::showSheets);

    m_remarks->setObjectName(QStringLiteral("lblRemarks"));
    m_fileLabel->setObjectName(QStringLiteral("lblFile"));
    for (QLabel *text : {m_remarks, m_fileLabel})
        text->setContentsMargins(6, 0, 6, 0);
    statusBar()->addWidget(m_remarks, 1);
    statusBar()->addPermanentWidget(m_fileLabel);
}

void PaperPreview::readFile()
{
    m_bytes.clear();
    m_fileLabel->clear();
    interpret();
    m_bytes = output::escp::readStream(m_file);
    const QFileInfo file(ui::shown(data::localPath(m_file)));
    const QString written = QLocale::c().toString(file.lastModified(), QStringLiteral("dd/MMM/yyyy HH:mm"));
    m_fileLabel->setText(tr("%1, written %2").arg(file.fileName(), written));
    interpret();
}

void PaperPreview::showBeside(const QWidget &form)
{
    readFile();
    setAttribute(Qt::WA_ShowWithoutActivating);
    showAbove(form);
}

void PaperPreview::showInFront(const QWidget &form)
{
    readFile();
    setAttribute(Qt::WA_ShowWithoutActivating, false);
    setWindowState(windowState() & ~Qt::WindowMinimized);
    showAbove(form);
    activateWindow();
}

/// The desktop keeps the window above that of the form, or a question of the form would bring that window up
/// in front of the paper. The toolkit may not know of it: it would block the paper together with the form.
void PaperPreview::showAbove(const QWidget &form)
{
    winId(); // makes the window that is spoken of
    windowHandle()->setTransientParent(form.window()->windowHandle());
    show();
    windowHandle()->setTransientParent(nullptr);
    raise();
}

void PaperPreview::cmdReload_Click()
{
    readFile();
}

void PaperPreview::interpret()
{
    m_sheets = PaperSheets(output::escp::interpret(m_bytes, m_advance->currentData().value<PaperAdvance>()));
    m_remarks->setText(remarks());
    showSheets();
}

void PaperPreview::showSheets()
{
    const bool bars = m_bars->isChecked();
    showPages(
        {.count = m_sheets.count(),
         .size = m_sheets.size(PaperStock::Continuous),
         .unitsPerInch = kUnitsPerInch,
         .paint = [this, bars](QPainter &painter,
                               int page) { m_sheets.paint(painter, page, PaperStock::Continuous, bars); },
         .joined = true});
}

/// What the picture cannot show.
QString PaperPreview::remarks() const
{
    const output::escp::Paper &paper = m_sheets.paper();
    QStringList texts;
    if (paper.pageLengths.empty())
        texts << tr("The file prints nothing.");
    if (paper.cutShort)
        texts << tr("Only the first %1 pages are shown.").arg(output::escp::kMostPages);
    if (paper.wrappedLines > 0)
        texts << tr("Lines that ran over the right edge: %1.").arg(paper.wrappedLines);
    if (!paper.skipped.empty()) {
        QStringList codes;
        for (const output::escp::SkippedCode &code : paper.skipped)
            codes << QStringLiteral("%1 (%2)").arg(ui::shown(code.name)).arg(code.count);
        texts << tr("Codes that were passed over: %1.").arg(codes.join(QStringLiteral(", ")));
    }
    return texts.join(QLatin1Char(' '));
}

void PaperPreview::cmdPdf_Click()
{
    const std::string path = askPdfName(tr("Order paper.pdf"));
    if (!path.empty())
        writePdf(path);
}

void PaperPreview::writePdf(const std::string &path) const
{
    QSaveFile file(ui::shown(path));
    if (!file.open(QIODevice::WriteOnly))
        throw FileError(ErrorNumber::PathAccess, "The file " + path + " cannot be written.");
    const QSizeF size = m_sheets.size(PaperStock::TornOff) / kUnitsPerInch;
    QPdfWriter writer(&file);
    writer.setTitle(windowTitle());
    writer.setResolution(kUnitsPerInch);
    writer.setPageSize(QPageSize(size, QPageSize::Inch, {}, QPageSize::ExactMatch));
    writer.setPageMargins({});
    QPainter painter(&writer);
    for (int page = 0; page < m_sheets.count(); ++page) {
        if (page > 0)
            writer.newPage();
        m_sheets.paint(painter, page, PaperStock::TornOff, m_bars->isChecked());
    }
    if (!painter.end() || !file.commit())
        throw FileError(ErrorNumber::PathAccess, "The file " + path + " cannot be written.");
    statusBar()->showMessage(tr("Saved as %1").arg(ui::shown(path)), kMessageMs);
}
