// A program with an office that is going to be killed by its test.
#include "output/libreoffice/libreoffice.h"

#include <cstdio>
#include <unistd.h>

int main(int argumentCount, char **arguments)
{
    output::LibreOffice::Settings settings;
    settings.velkCalc = VELK_CALC;
    settings.patience = std::chrono::seconds(90);
    output::LibreOffice office(settings);
    const auto application = office.create();
    if (argumentCount > 1)
        static_cast<void>(
            application->open(arguments[1], output::SpreadsheetApplication::Access::Write).release());
    std::puts("ready");
    std::fflush(stdout);
    ::pause();
}
