#include "output/libreoffice/libreoffice.h"

#include "common/errors.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace output {

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using wire::Answer;
using wire::Message;
using wire::Outcome;
using wire::Request;

constexpr auto kEndTime = 6s;  ///< for an office that ends by itself: it waits 3 s for what hangs
constexpr auto kKillTime = 3s; ///< for velk-calc to kill the office and to clean up behind it

Message request(Request kind)
{
    return std::move(Message().put(static_cast<std::uint8_t>(kind)));
}

class LibreOfficeSheet final : public Worksheet
{
public:
    LibreOfficeSheet(LibreOffice &office, std::string name)
        : m_office(office)
        , m_name(std::move(name))
    {}

    CellBlock read(int row, int column, int rows, int columns) override
    {
        Message question = request(Request::Read);
        question.put(std::string_view(m_name))
            .put(std::int32_t{row})
            .put(std::int32_t{column})
            .put(std::int32_t{rows})
            .put(std::int32_t{columns});
        return m_office.ask(question).block();
    }

    void write(int row, int column, const CellBlock &block) override
    {
        Message order = request(Request::Write);
        order.put(std::string_view(m_name)).put(std::int32_t{row}).put(std::int32_t{column}).put(block);
        m_office.ask(order);
    }

private:
    LibreOffice &m_office;
    std::string m_name;
};

class LibreOfficeWorkbook final : public Workbook
{
public:
    explicit LibreOfficeWorkbook(LibreOffice &office)
        : m_office(office)
    {}
    ~LibreOfficeWorkbook() override { m_office.askIfRunning(request(Request::Close)); }
    LibreOfficeWorkbook(const LibreOfficeWorkbook &) = delete;
    LibreOfficeWorkbook &operator=(const LibreOfficeWorkbook &) = delete;

    std::unique_ptr<Worksheet> worksheet(const std::string &name) override
    {
        m_office.ask(request(Request::Sheet).put(std::string_view(name)));
        return std::make_unique<LibreOfficeSheet>(m_office, name);
    }

    void save() override { m_office.ask(request(Request::Save)); }

private:
    LibreOffice &m_office;
};

/// The office stays; an application is one turn of its use.
class LibreOfficeApplication final : public SpreadsheetApplication
{
public:
    explicit LibreOfficeApplication(LibreOffice &office)
        : m_office(office)
    {}

    std::unique_ptr<Workbook> open(const std::string &file, Access access) override
    {
        // The office has a current folder of its own.
        std::error_code error;
        const fs::path whole = fs::absolute(file, error);
        m_office.ask(request(Request::Open)
                         .put(std::string_view(whole.string()))
                         .put(std::int32_t{access == Access::Write ? 1 : 0}));
        return std::make_unique<LibreOfficeWorkbook>(m_office);
    }

private:
    LibreOffice &m_office;
};

} // namespace

LibreOffice::LibreOffice(Settings settings)
    : m_settings(std::move(settings))
{}

LibreOffice::~LibreOffice()
{
    LibreOffice::end();
}

std::string LibreOffice::besideProgram()
{
    std::error_code error;
    return (fs::read_symlink("/proc/self/exe", error).parent_path() / "velk-calc").string();
}

void LibreOffice::prepare()
{
    // What is wrong is told when the office is wanted.
    if (m_process < 0)
        attempt([this] { start(); });
}

std::unique_ptr<SpreadsheetApplication> LibreOffice::create()
{
    if (m_process > 0) {
        Message answer;
        const Outcome outcome = exchange(request(Request::Hello), answer);
        if (outcome == Outcome::TimedOut)
            fail(outcome);
        if (outcome == Outcome::Done && answer.byte() == static_cast<std::uint8_t>(Answer::Done))
            return std::make_unique<LibreOfficeApplication>(*this);
        end(); // Lost while nobody used it: nothing to tell.
    }
    start();
    ask(request(Request::Hello));
    return std::make_unique<LibreOfficeApplication>(*this);
}

void LibreOffice::requireInstalled() const
{
    std::error_code error;
    if (!fs::exists(m_settings.officeFolder + "/soffice.bin", error) ||
        !fs::exists(m_settings.officeFolder + "/libsclo.so", error)) {
        throw AppError(
            ErrorNumber::SpreadsheetProgram,
            "Spreadsheets need the program LibreOffice Calc, which is not installed on this machine: "
            "install the package libreoffice-calc-nogui (or libreoffice-calc).");
    }
    if (!fs::exists(m_settings.velkCalc, error)) {
        throw AppError(ErrorNumber::SpreadsheetProgram,
                       "A part of this program is missing: " + m_settings.velkCalc + ". Install it again.");
    }
}

void LibreOffice::start()
{
    requireInstalled();
    int ends[2] = {-1, -1};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        throw AppError(ErrorNumber::SpreadsheetProgram,
                       "The spreadsheet program cannot be started: too many files are open.");
    }
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, ends[1], STDIN_FILENO);
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    // A group of its own, so that velk-calc and the office can be ended together.
    posix_spawnattr_t attributes;
    ::posix_spawnattr_init(&attributes);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    std::string program = m_settings.velkCalc;
    std::string folder = m_settings.officeFolder;
    std::array<char *, 3> arguments = {program.data(), folder.data(), nullptr};
    const int failure =
        ::posix_spawn(&m_process, program.c_str(), &actions, &attributes, arguments.data(), environ);
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    m_socket = ends[0];
    if (failure != 0) {
        m_process = -1;
        ::close(std::exchange(m_socket, -1));
        throw AppError(ErrorNumber::SpreadsheetProgram, "The spreadsheet program cannot be started: " +
                                                            std::generic_category().message(failure) + ".");
    }
}

Outcome LibreOffice::exchange(const Message &request, Message &answer) const
{
    wire::Patience patience;
    patience.until = std::chrono::steady_clock::now() + m_settings.patience;
    patience.goOn = [this] {
        if (m_settings.meanwhile)
            m_settings.meanwhile();
        return true;
    };
    const Outcome outcome = wire::send(m_socket, request, patience);
    return outcome == Outcome::Done ? wire::receive(m_socket, answer, patience) : outcome;
}

Message LibreOffice::ask(const Message &request)
{
    if (m_process < 0) {
        throw AppError(ErrorNumber::SpreadsheetProgram,
                       "The spreadsheet program (LibreOffice) is not running any more. Try again.");
    }
    Message answer;
    const Outcome outcome = exchange(request, answer);
    if (outcome != Outcome::Done)
        fail(outcome);

    const auto kind = static_cast<Answer>(answer.byte());
    if (kind == Answer::Done)
        return answer;
    const auto number = static_cast<ErrorNumber>(answer.number());
    const std::string sentence = answer.text();
    if (kind == Answer::Lost)
        end();
    if (number == ErrorNumber::FileNotFound || number == ErrorNumber::PathAccess)
        throw FileError(number, sentence);
    throw AppError(number, sentence);
}

void LibreOffice::askIfRunning(const Message &request)
{
    if (m_process > 0)
        attempt([&] { ask(request); });
}

void LibreOffice::fail(Outcome outcome)
{
    kill();
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(m_settings.patience).count();
    throw AppError(ErrorNumber::SpreadsheetProgram,
                   outcome == Outcome::TimedOut
                       ? "The spreadsheet program (LibreOffice) has not answered for " +
                             std::to_string(seconds) + " seconds and was ended. Try again."
                       : "The spreadsheet program (LibreOffice) has ended unexpectedly. Try again.");
}

bool LibreOffice::waitForEnd(std::chrono::milliseconds time)
{
    const auto until = std::chrono::steady_clock::now() + time;
    // Gone also when it was somebody else who waited for it.
    while (::waitpid(m_process, nullptr, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() >= until)
            return false;
        std::this_thread::sleep_for(2ms);
    }
    return true;
}

void LibreOffice::end()
{
    if (m_process < 0)
        return;
    ::close(std::exchange(m_socket, -1));
    if (!waitForEnd(kEndTime))
        return kill();
    m_process = -1;
}

void LibreOffice::kill()
{
    if (m_socket >= 0)
        ::close(std::exchange(m_socket, -1));
    // Asked first, velk-calc kills the office and cleans up behind it.
    ::kill(m_process, SIGTERM);
    if (!waitForEnd(kKillTime)) {
        ::kill(-m_process, SIGKILL);
        ::waitpid(m_process, nullptr, 0);
    }
    m_process = -1;
}

} // namespace output
