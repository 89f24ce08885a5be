#include "output/libreoffice/office_process.h"

#include "common/errors.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace output {

namespace {

constexpr int kStartAgain = 81; ///< how soffice.bin ends when it has set up a new profile
constexpr int kMostStarts = 3;

/// Read by a signal handler.
volatile std::sig_atomic_t runningOffice = 0;

[[noreturn]] void becomeOffice(const std::string &program, char *const *arguments, pid_t starter)
{
    // Killed together with its starter, whatever kills that. Started directly and not by the program's own
    // starter script: that one runs the office as a child of a child, which would stay behind.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() == starter) {
        const int nothing = ::open("/dev/null", O_RDWR);
        for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            ::dup2(nothing, standard);
        ::execv(program.c_str(), arguments);
    }
    ::_exit(127);
}

} // namespace

OfficeProcess::OfficeProcess(const std::string &office)
    : m_office(office)
{
    // Its own temporary files go with the folder, and file names are UTF-8 whatever the user's locale.
    ::setenv("TMPDIR", m_folder.temporary().c_str(), 1);
    ::setenv("LC_ALL", "C.UTF-8", 1);
    ::setenv("SAL_ENABLE_FILE_LOCKING", "1", 1);
    start();
}

OfficeProcess::~OfficeProcess()
{
    if (m_process > 0) {
        ::kill(m_process, SIGKILL);
        ::waitpid(m_process, nullptr, 0);
    }
    runningOffice = 0;
}

void OfficeProcess::start()
{
    const std::string program = m_office + "/soffice.bin";
    std::array<std::string, 9> texts = {program,
                                        "--headless",
                                        "--invisible",
                                        "--norestore",
                                        "--nologo",
                                        "--nodefault",
                                        "--nofirststartwizard",
                                        "--accept=pipe,name=" + pipeName() +
                                            ";urp;StarOffice.ComponentContext",
                                        "-env:UserInstallation=file://" + m_folder.profile()};
    std::array<char *, texts.size() + 1> arguments{};
    for (std::size_t i = 0; i < texts.size(); ++i)
        arguments[i] = texts[i].data();

    ++m_starts;
    const pid_t starter = ::getpid();
    m_process = ::fork();
    if (m_process == 0)
        becomeOffice(program, arguments.data(), starter);
    if (m_process < 0)
        throw AppError(ErrorNumber::SpreadsheetProgram, "The spreadsheet program cannot be started: this "
                                                        "machine has no room for another process.");
    runningOffice = m_process;
}

bool OfficeProcess::isRunning()
{
    int status = 0;
    if (m_process <= 0 || ::waitpid(m_process, &status, WNOHANG) != m_process)
        return m_process > 0;
    m_process = -1;
    runningOffice = 0;
    if (!WIFEXITED(status) || WEXITSTATUS(status) != kStartAgain || m_starts >= kMostStarts)
        return false;
    start();
    return true;
}

void OfficeProcess::waitForEnd()
{
    using namespace std::chrono_literals;
    const auto until = std::chrono::steady_clock::now() + 2s;
    m_starts = kMostStarts;
    while (isRunning() && std::chrono::steady_clock::now() < until)
        std::this_thread::sleep_for(5ms);
}

void OfficeProcess::killFromSignal()
{
    if (runningOffice > 0)
        ::kill(static_cast<pid_t>(runningOffice), SIGKILL);
}

} // namespace output
