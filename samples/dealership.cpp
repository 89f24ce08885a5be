#include "samples/dealership.h"

#include "common/errors.h"
#include "data/schema.h"
#include "data/schema_files.h"
#include "samples/company.h"
#include "samples/row_writer.h"
#include "samples/year_database.h"

#include <filesystem>
#include <iterator>
#include <system_error>

namespace samples {

namespace fs = std::filesystem;

namespace {

constexpr std::int32_t kOrderTask = 2103;

[[noreturn]] void fail(const fs::path &path, const std::error_code &error)
{
    throw FileError(ErrorNumber::PathAccess, "Cannot make " + path.string() + ": " + error.message() + ".");
}

void makeFolder(const fs::path &path)
{
    std::error_code error;
    fs::create_directories(path, error);
    if (error)
        fail(path, error);
}

class Maker
{
public:
    Maker(const Options &options, const std::function<void(const std::string &)> &report)
        : m_options(options)
        , m_report(report)
        , m_target(fs::absolute(options.folder).lexically_normal())
    {
        if (!m_target.has_filename()) // written with a separator at its end
            m_target = m_target.parent_path();
        m_work = m_target;
        m_work += ".incomplete-dealership"; // a name that nobody else gives to a folder
    }

    void make();

private:
    void refuseOccupiedTarget() const;
    void makeServerFiles() const;
    void copyFile(const fs::path &file, const char *folder) const;
    void makeSerPath() const;
    void makeLayouts() const;
    void makeMain() const;
    void makeSubsidiary(int number) const;
    void makeYears(int number) const;
    [[nodiscard]] std::unique_ptr<jet::Database> create(const fs::path &file) const;
    [[nodiscard]] jet::CreateOptions createOptions() const;
    void report(const fs::path &file) const;
    [[nodiscard]] fs::path database(const std::string &code) const
    {
        return m_work / "server" / "DataBas" / (code + ".mdb");
    }

    const Options &m_options;
    const std::function<void(const std::string &)> &m_report;
    fs::path m_target;
    fs::path m_work; ///< where it is made, beside the target
};

void Maker::make()
{
    refuseOccupiedTarget();
    std::error_code error;
    fs::remove_all(m_work, error); // what an interrupted run left
    makeFolder(m_work / "program");
    makeFolder(m_work / "server" / "DataBas");
    makeServerFiles();
    makeSerPath();
    makeLayouts();
    makeMain();
    for (int number = 0; number < m_options.companies; ++number) {
        makeSubsidiary(number);
        makeYears(number);
    }
    fs::rename(m_work, m_target, error);
    if (error)
        fail(m_target, error);
}

void Maker::refuseOccupiedTarget() const
{
    std::error_code error;
    if (fs::exists(m_target, error) && !fs::is_empty(m_target, error))
        throw AppError(ErrorNumber::ObjectExists,
                       m_target.string() + " exists already; name another folder or remove it first.");
}

void Maker::makeServerFiles() const
{
    makeFolder(m_work / "server" / "StkOrder");
    copyFile("sheets/Ord.Xls", "FlashFrm");
    copyFile("sheets/branch-order.xls", "Received");
    copyFile("PPrint.Bat", "");
    const fs::path batch = m_work / "server" / "PPrint.Bat";
    std::error_code error;
    fs::permissions(batch, fs::perms::owner_exec | fs::perms::group_exec | fs::perms::others_exec,
                    fs::perm_options::add, error);
    if (error)
        fail(batch, error);
}

/// The files lie finished beside the sources of this program; the sheets' script needs a spreadsheet program.
void Maker::copyFile(const fs::path &file, const char *folder) const
{
    makeFolder(m_work / "server" / folder);
    const fs::path target = m_work / "server" / folder / file.filename();
    std::error_code error;
    fs::copy_file(fs::path(SAMPLE_FILES) / file, target, error);
    if (error)
        fail(target, error);
}

std::unique_ptr<jet::Database> Maker::create(const fs::path &file) const
{
    return jet::Database::create(file.string(), createOptions());
}

jet::CreateOptions Maker::createOptions() const
{
    return {.version = m_options.format,
            .password = std::string(data::schema::kPassword),
            .created = toDate(m_options.date)};
}

void Maker::report(const fs::path &file) const
{
    if (m_report)
        m_report(file.lexically_relative(m_work).string());
}

void Maker::makeSerPath() const
{
    const fs::path file = m_work / "program" / "SerPath.mdb";
    const auto opened = create(file);
    const std::vector<jet::TableSpec> specs = data::schema::serPathTables();
    RowWriter path(*opened, specs.at(0), {"Path"});
    path.add({(m_target / "server").string()});
    path.finish();
    RowWriter user(*opened, specs.at(1), {"Uid"});
    user.add({rememberedUser().id});
    user.finish();
    report(file);
}

void Maker::makeLayouts() const
{
    const fs::path file = m_work / "program" / "Layouts.mdb";
    data::makeDatabase(file.string(), data::schema::layoutsTables(), createOptions());
    report(file);
}

void Maker::makeMain() const
{
    const fs::path file = database("Main");
    const auto opened = create(file);
    const std::vector<jet::TableSpec> specs = data::schema::mainTables();
    const auto flag = [](bool set) { return std::int16_t{set}; };
    RowWriter pass(*opened, specs.at(0), {"Uid", "UName", "PWD", "SaveUser", "Year1", "Year2"});
    for (const User &user : users())
        pass.add({user.id, std::string(user.name), std::string(user.password), flag(user.remembered),
                  flag(user.firstCompany), flag(user.secondCompany)});
    pass.finish();

    RowWriter years(*opened, specs.at(1),
                    {"ComCode", "Code", "YStart", "YEnd", "ComName", "Town", "DBMst", "DbSub"});
    for (int number = 0; number < m_options.companies; ++number) {
        const Company &owner = company(number);
        for (const CompanyYear &year : companyYears(m_options, number)) {
            years.add({std::string(owner.code), year.code, toDate(year.year.start), toDate(year.year.end),
                       std::string(owner.name), std::string(owner.town), year.database,
                       std::string(owner.subsidiary)});
        }
    }
    years.finish();
    report(file);
}

void Maker::makeSubsidiary(int number) const
{
    const fs::path file = database(std::string(company(number).subsidiary));
    const auto opened = create(file);
    RowWriter tasks(*opened, data::schema::subsidiaryTables().at(0),
                    {"Uid", "TaskId", "opt1", "opt2", "opt3"});
    // Neighbouring tasks of the accounting application stand in the same table.
    for (const std::int32_t task : {2101, 2102, kOrderTask, 2201}) {
        for (const User &user : users()) {
            if (user.mayOrder) {
                const bool permitted = *user.mayOrder || task != kOrderTask;
                tasks.add({user.id, task, permitted, permitted, permitted});
            }
        }
    }
    tasks.finish();
    report(file);
}

void Maker::makeYears(int number) const
{
    const CompanyData data{makeCatalogue(m_options.seed, number, m_options.items, m_options.years),
                           makeLedgers(m_options.seed, number)};
    StockHistory history(data.catalogue, m_options.seed, number);
    for (const CompanyYear &year : companyYears(m_options, number)) {
        const fs::path file = database(year.database);
        const auto opened = create(file);
        fillYearDatabase(*opened, m_options, year, data, history);
        report(file);
    }
}

} // namespace

void makeDealership(const Options &options, const std::function<void(const std::string &)> &report)
{
    Maker(options, report).make();
}

} // namespace samples
