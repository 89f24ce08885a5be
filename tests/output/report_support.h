// A report control over a small dealership whose previews and prints become PDF files, read back with
// pdftotext and pdfinfo.
#pragma once

#include "output/layout_report.h"
#include "tests/support/files.h"
#include "tests/support/fixed_clock.h"
#include "tests/support/scripted_dialogs.h"
#include "tests/support/small_dealership.h"

#include <QDir>

class PdfOutlet : public output::ReportOutlet
{
public:
    explicit PdfOutlet(const std::string &folder)
        : m_folder(folder)
    {}

    void preview(output::ReportDocument document, bool maximised) override
    {
        ++previews;
        wasMaximised = maximised;
        save(document);
    }
    void print(const output::ReportDocument &document) override
    {
        ++prints;
        save(document);
    }

    [[nodiscard]] QString file() const
    {
        return QString::fromStdString(m_folder) + QStringLiteral("/report.pdf");
    }
    /// Words of the pages as they stand on the paper, blanks folded; pages end with a form feed.
    [[nodiscard]] QString words() const
    {
        QStringList lines;
        const QString text =
            outputOf(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), file(), QStringLiteral("-")});
        for (const QString &line : text.split(QLatin1Char('\n'))) {
            if (const QString folded = line.simplified(); !folded.isEmpty())
                lines << folded;
        }
        return lines.join(QLatin1Char('\n'));
    }
    /// A line of pdfinfo.
    [[nodiscard]] QString info(const QString &name) const
    {
        for (const QString &line : outputOf(QStringLiteral("pdfinfo"), {file()}).split(QLatin1Char('\n'))) {
            if (line.startsWith(name + QLatin1Char(':')))
                return line.mid(name.size() + 1).trimmed();
        }
        return {};
    }

    int previews = 0;
    int prints = 0;
    bool wasMaximised = false;
    QString pdfName;

private:
    void save(const output::ReportDocument &document)
    {
        pdfName = document.pdfName();
        document.savePdf(file().toStdString());
    }

    std::string m_folder;
};

struct ReportDesk
{
    SmallDealership dealer;
    ScriptedDialogs dialogs;
    FixedClock clock{Date::fromYmd(2026, 4, 6)};
    PdfOutlet outlet{dealer.folder()};
    output::LayoutReport control{outlet, dialogs, clock};

    ReportDesk()
    {
        std::filesystem::create_directory_symlink(LAYOUT_FOLDER, dealer.folder() + "/program/Layouts");
    }

    /// Puts one layout, for orders without rates, in the place of all; gives its file. Its name is spelled as
    /// an old file server may have it.
    QString replaceLayout(const QByteArray &text) const
    {
        const QString folder = QString::fromStdString(dealer.folder()) + QStringLiteral("/program/");
        QFile::remove(folder + QStringLiteral("Layouts"));
        QDir().mkpath(folder + QStringLiteral("LAYOUTS"));
        const QString file = folder + QStringLiteral("LAYOUTS/stk_ord.rpt");
        writeFile(file, text);
        return file;
    }

    /// Runs the report; what it showed stands in the outlet.
    void print(const char *layout, std::int32_t destination = output::kToPreview)
    {
        if (!dealer.conYear.isOpen())
            dealer.connect("Y26");
        output::Print_Report(control, dealer.session, "ORDER FORM", "Ord.No. : 25", layout, destination);
    }
};
