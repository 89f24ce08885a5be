// search-bench FOLDER: measures a keystroke in the part search as the user has it, from the key to the
// painted list, on a dealership that make-dealership made. Exit 0: every target holds, 1: some do not, 2: it
// could not be measured.

#include "bench/measure.h"
#include "common/ui/grid_view.h"
#include "common/ui/text_box.h"
#include "forms/frm_Srh_Spares/frm_Srh_Spares.h"
#include "tests/forms/workstation.h"

#include <QApplication>
#include <QTest>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <stdexcept>

namespace {

constexpr int kTurns = 9;
constexpr double kKeystroke = 0.05;

/// The newest year's file: the largest of the server's databases.
std::string yearFile(const std::string &folder)
{
    std::filesystem::path largest;
    for (const auto &entry : std::filesystem::directory_iterator(folder + "/server/DataBas")) {
        if (largest.empty() || entry.file_size() > std::filesystem::file_size(largest))
            largest = entry.path();
    }
    return largest.string();
}

class Search
{
public:
    explicit Search(const std::string &folder)
    {
        const std::string connect = "Provider=Microsoft.jet.oledb.3.51; Data Source=" + yearFile(folder) +
                                    ";Jet OLEDB:Database Password=" + std::string(data::schema::kPassword);
        m_station.connections.conYear.setConnectionString(connect);
        m_station.connections.conYear.open();
        m_station.session.YearDsnConnect = connect;
        m_station.session.MdiWidth = 1200;
        m_station.session.MdiHeight = 700;
        m_form = std::make_unique<frm_Srh_Spares>(m_station.context);
        m_form->show();
        QCoreApplication::processEvents();
    }

    void press(const char *box, Qt::Key key) const
    {
        QTest::keyClick(m_form->findChild<QWidget *>(QLatin1String(box)), key);
    }

    /// The middle of several strokes of `key`, each undone before the next; seconds of the processor.
    [[nodiscard]] double stroke(const char *box, Qt::Key key, Qt::Key undo)
    {
        std::vector<double> times;
        for (int turn = 0; turn < kTurns; ++turn) {
            times.push_back(bench::processorSecondsOf([&] {
                press(box, key);
                m_form->grab();
            }));
            m_listed = m_form->findChild<ui::GridView *>(QStringLiteral("fgList"))->model()->rowCount();
            press(box, undo);
        }
        std::ranges::sort(times);
        if (!m_station.dialogs.takeShown().isEmpty() || m_listed == 0)
            throw std::runtime_error("the search found nothing");
        return times[times.size() / 2];
    }
    [[nodiscard]] int listed() const { return m_listed; }

private:
    Workstation m_station;
    std::unique_ptr<frm_Srh_Spares> m_form;
    int m_listed = 0;
};

int measureAll(const std::string &folder)
{
    using bench::Target;
    bench::Report report;
    Search search(folder);
    report.note("from the key to the painted list; processor time, the middle of " + std::to_string(kTurns));
    report.heading();
    // By a letter that parts of the sample data begin with.
    for (const auto &[box, key] : {std::pair{"txtItem_Name", Qt::Key_B}, {"txtItem_Code", Qt::Key_T}}) {
        const auto add = [&](const std::string &what, double seconds) {
            report.add({std::string(box) + ", " + what + ": " + std::to_string(search.listed()) + " parts",
                        seconds,
                        std::nullopt,
                        {Target::Kind::Below, kKeystroke}});
        };
        add("first letter", search.stroke(box, key, Qt::Key_Backspace));
        search.press(box, key);
        add("letter taken out", search.stroke(box, Qt::Key_Backspace, key));
    }
    report.note(std::to_string(report.missed()) + " targets missed");
    return report.missed() == 0 ? 0 : 1;
}

} // namespace

int main(int count, char **values)
{
    if (count != 2) {
        static_cast<void>(std::fputs("usage: search-bench FOLDER\n", stderr));
        return 2;
    }
    const std::string folder = values[1];
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(count, values);
    try {
        return measureAll(folder);
    } catch (const std::exception &error) {
        static_cast<void>(std::fprintf(stderr, "search-bench: %s\n", error.what()));
        return 2;
    }
}
