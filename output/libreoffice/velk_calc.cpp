// velk-calc: the program's hand in LibreOffice.
//
// A process of its own, started with a socket as its standard input, so that the office's libraries are
// never loaded into the program, a call that hangs can be given up, and the office always has a parent that
// cleans up behind it: it ends when the socket does.
//
//     velk-calc OFFICE-FOLDER
#include "output/libreoffice/calc.h"
#include "output/libreoffice/office_process.h"
#include "output/libreoffice/wire.h"
#include "output/workbook_lock.h"

#include <csignal>
#include <sys/prctl.h>
#include <thread>
#include <unistd.h>

#ifdef SPARES_COVERAGE
extern "C" void __gcov_dump();
#endif

namespace {

using namespace output;
using wire::Answer;
using wire::Message;
using wire::Outcome;

constexpr int kSocket = STDIN_FILENO;
constexpr unsigned kTerminateSeconds = 3;
constexpr std::chrono::milliseconds kConnectEvery(25);
constexpr std::chrono::seconds kConnectTime(60); ///< some errors make an office spin for ever
constexpr std::chrono::milliseconds kSignalSlice(1000);

volatile std::sig_atomic_t toEnd = 0;

/// A call that is waiting for the office returns as soon as that is dead.
void endAtSignal(int /*signal*/)
{
    toEnd = 1;
    OfficeProcess::killFromSignal();
}

void listenToSignals()
{
    struct sigaction action = {};
    action.sa_handler = endAtSignal;
    for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGALRM})
        ::sigaction(signal, &action, nullptr);
    ::signal(SIGPIPE, SIG_IGN);
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
}

void connect(Calc &calc, OfficeProcess &office)
{
    const auto until = std::chrono::steady_clock::now() + kConnectTime;
    while (!calc.connect(office.pipeName())) {
        if (toEnd || wire::isHungUp(kSocket) || !office.isRunning() ||
            std::chrono::steady_clock::now() >= until) {
            throw OfficeLost();
        }
        std::this_thread::sleep_for(kConnectEvery);
    }
}

Message done()
{
    return std::move(Message().put(static_cast<std::uint8_t>(Answer::Done)));
}

Message failed(Answer answer, const AppError &error)
{
    return std::move(Message()
                         .put(static_cast<std::uint8_t>(answer))
                         .put(static_cast<std::int32_t>(error.number()))
                         .put(std::string_view(error.what())));
}

/// What is opened for writing is noted before, for whoever cleans up behind a killed office.
void openNoted(Calc &calc, const OfficeProcess &office, const std::string &file, bool writes)
{
    using Access = SpreadsheetApplication::Access;
    if (!writes)
        return calc.open(file, Access::Read);
    office.noteWorkbook(file);
    try {
        calc.open(file, Access::Write);
    } catch (const OfficeLost &) {
        throw;
    } catch (const AppError &) {
        office.forgetWorkbook(); // It is not this office that has it open.
        throw;
    }
}

Message carryOut(Calc &calc, const OfficeProcess &office, Message &request)
{
    using wire::Request;
    Message answer = done();
    switch (static_cast<Request>(request.byte())) {
    case Request::Hello:
        calc.greet();
        break;
    case Request::Open: {
        const std::string file = request.text();
        const bool writes = request.number() == 1;
        requireFree(file); // The office itself would read it without a word.
        openNoted(calc, office, file, writes);
        break;
    }
    case Request::Sheet:
        calc.requireSheet(request.text());
        break;
    case Request::Read: {
        const std::string sheet = request.text();
        const int row = request.number();
        const int column = request.number();
        const int rows = request.number();
        answer.put(calc.read(sheet, row, column, rows, request.number()));
        break;
    }
    case Request::Write: {
        const std::string sheet = request.text();
        const int row = request.number();
        const int column = request.number();
        calc.write(sheet, row, column, request.block());
        break;
    }
    case Request::Save:
        calc.save();
        break;
    case Request::Close:
        calc.close();
        office.forgetWorkbook();
        break;
    }
    return answer;
}

/// False when the office is gone.
bool answerOne(Calc &calc, const OfficeProcess &office, Message &request)
{
    try {
        return wire::send(kSocket, carryOut(calc, office, request), {}) == Outcome::Done;
    } catch (const OfficeLost &lost) {
        static_cast<void>(wire::send(kSocket, failed(Answer::Lost, lost), {}));
        return false;
    } catch (const AppError &error) {
        return wire::send(kSocket, failed(Answer::Failed, error), {}) == Outcome::Done;
    }
}

/// Waits for the next request; a signal ends the wait.
bool nextRequest(Message &request)
{
    wire::Patience untilSignal;
    untilSignal.goOn = [] { return !toEnd; };
    untilSignal.slice = kSignalSlice; // A signal ends the slice; this is for one that comes just before it.
    return wire::receive(kSocket, request, untilSignal) == Outcome::Done && !toEnd;
}

void work(const std::string &officeFolder)
{
    Calc calc(officeFolder);
    OfficeProcess office(officeFolder);
    connect(calc, office);
    Message request;
    while (nextRequest(request)) {
        if (!answerOne(calc, office, request))
            return;
    }
    ::alarm(kTerminateSeconds);
    attempt([&] { calc.close(); });
    attempt([&] { calc.terminate(); });
    office.waitForEnd();
}

/// The first request is answered with what kept the office from starting.
void tellWhy(const AppError &error)
{
    Message request;
    if (nextRequest(request))
        static_cast<void>(wire::send(kSocket, failed(Answer::Lost, error), {}));
}

} // namespace

int main(int argumentCount, char **arguments)
{
    if (argumentCount != 2)
        return 2;
    listenToSignals();
    try {
        work(arguments[1]);
    } catch (const AppError &error) {
        tellWhy(error);
    }
#ifdef SPARES_COVERAGE
    __gcov_dump(); // no exit handler does it
#endif
    // The office's libraries have threads of their own that would be waited for.
    ::_exit(0);
}
