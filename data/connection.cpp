#include "data/connection.h"

#include "common/errors.h"
#include "data/connection_string.h"
#include "data/data_sources.h"
#include "data/error_details.h"
#include "data/paths.h"

namespace data {

namespace {

std::string fileOf(const ConnectionTarget &target)
{
    if (target.dataSource.empty())
        return target.file;
    if (auto file = dataSourceFile(target.dataSource))
        return *file;
    throw AppError(ErrorNumber::DataSourceNotFound,
                   "The data source " + target.dataSource + " is not registered for this user.");
}

} // namespace

void Connection::setConnectionString(const std::string &text)
{
    m_text = text;
}

void Connection::open()
{
    close();
    const ConnectionTarget target = parseConnectionString(m_text);
    const std::string file = fileOf(target);
    if (!fileExists(file))
        throw FileError(ErrorNumber::FileNotFound,
                        "The database file " + localPath(file) + " was not found.");
    describing(localPath(file), {}, "open",
               [&] { m_engine = openAccessFile(localPath(file), target.password, m_durable); });
    m_file = localPath(file);
}

void Connection::close()
{
    m_engine.reset();
    m_file.clear();
}

void Connection::execute(const std::string &text)
{
    describing(m_file, text, nullptr, [&] { engine().execute(text); });
}

Engine &Connection::engine() const
{
    if (!m_engine) {
        throw RunTimeError(ErrorNumber::ObjectClosed,
                           "The database is not open, so nothing can be read from it or written to it.");
    }
    return *m_engine;
}

Connection openFile(const std::string &file, Durable durable)
{
    Connection connection;
    connection.setConnectionString(fileConnectionString(file));
    connection.setDurable(durable);
    connection.open();
    return connection;
}

} // namespace data
