#include "bench/fill_dealer.h"

#include "common/null_safe.h"
#include "data/recordset.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <stdlib.h>

namespace bench {

namespace fs = std::filesystem;

FillDealer::FillDealer(const std::string &folder)
    : m_folder(folder)
{
    std::string pattern = (fs::path(folder) / "bench.XXXXXX").string();
    if (!::mkdtemp(pattern.data()))
        throw std::runtime_error("No scratch folder can be made in " + folder);
    m_scratch = pattern;
    fs::copy_file(fs::path(folder) / "program" / "Layouts.mdb", m_scratch + "/Layouts.mdb");
    session.AppPath = m_scratch;
    session.ServerPath = (fs::path(folder) / "server").string();
    session.SPID = 1;
    conLayouts = data::openFile(m_scratch + "/Layouts.mdb", data::Durable::No);
    conMain = data::openFile(session.ServerPath + "/DataBas/Main.mdb");
    learnYears();
    conYear = data::openFile(yearFiles().front());
}

FillDealer::~FillDealer()
{
    conLayouts.close();
    std::error_code ignored;
    fs::remove_all(m_scratch, ignored);
}

void FillDealer::learnYears()
{
    data::Recordset years("Select * From Years Order by Code Desc", conMain);
    for (; !years.eof(); years.moveNext()) {
        if (m_codes.empty())
            session.ComCode = Null_Str(years.field("ComCode"));
        if (Null_Str(years.field("ComCode")) == session.ComCode && m_codes.size() < 2)
            m_codes.push_back(Null_Str(years.field("DBMst")));
    }
    years.close();
    if (m_codes.empty())
        throw std::runtime_error(m_folder + " has no financial year; make-dealership makes one");
    session.DbMst = m_codes.front();
    for (const std::string &file : yearFiles()) {
        const data::Connection year = data::openFile(file);
        const auto dates = year.engine().scan("Stock_Stock", {"StkDate"});
        while (const std::size_t rows = dates->next()) {
            m_movements += static_cast<std::int64_t>(rows);
            const auto &days = dates->columns().front().floats;
            const auto last =
                std::max_element(days.begin(), days.begin() + static_cast<std::ptrdiff_t>(rows));
            m_lastDay = std::max(m_lastDay, Date::fromSerial(*last).midnight());
        }
    }
}

std::vector<std::string> FillDealer::yearFiles() const
{
    std::vector<std::string> files;
    for (const std::string &code : m_codes)
        files.push_back(session.ServerPath + "/DataBas/" + code + ".mdb");
    return files;
}

orders::ProposalRequest FillDealer::request() const
{
    constexpr int kMonths = 12;
    const Date orderDate = Date::fromSerial(m_lastDay.serial() + 1);
    return {{orderDate.addMonths(-kMonths), orderDate, orders::OrderType::All}, kMonths, "2"};
}

} // namespace bench
