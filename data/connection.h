// Connection: one opened database, named by a connection string.
#pragma once

#include "data/engine.h"

#include <memory>
#include <string>

namespace data {

class Connection
{
public:
    Connection() = default;

    /// Accepts the two forms that the system writes: "Provider=Microsoft.jet.oledb.3.51; Data Source=FILE;Jet
    /// OLEDB: Database Password=P" (blanks and empty parts are ignored) and "DSN=NAME;UID=;PWD=P;".
    void setConnectionString(const std::string &text);
    [[nodiscard]] const std::string &connectionString() const { return m_text; }
    /// Changes made through this connection need not survive a power cut (scratch tables). Set before open().
    void setDurable(Durable durable) { m_durable = durable; }

    /// Throws RunTimeError(StatementNotUnderstood) on a string of another form, AppError(DataSourceNotFound),
    /// FileError(FileNotFound), and what the database throws. An open connection is opened anew.
    void open();
    /// Closing a connection that is not open does nothing. Recordsets opened on it stay usable.
    void close();
    [[nodiscard]] bool isOpen() const { return m_engine != nullptr; }

    /// Runs a statement that gives no rows. Throws RunTimeError(ObjectClosed) when not open.
    void execute(const std::string &text);

    /// The opened file, as a local path; "" when the connection is not open.
    [[nodiscard]] const std::string &file() const { return m_file; }
    /// For recordsets. Throws RunTimeError(ObjectClosed) when not open.
    [[nodiscard]] Engine &engine() const;

private:
    std::string m_text;
    std::string m_file;
    Durable m_durable = Durable::Yes;
    std::unique_ptr<Engine> m_engine;
};

/// A connection, opened, to a file that has the installation's password. Throws as Connection::open() does.
[[nodiscard]] Connection openFile(const std::string &file, Durable durable = Durable::Yes);

} // namespace data
