// The program's own folder.
#pragma once

#include <string>

/// Folder of the program file as it was started, for `AppPath`. A link counts as the program file itself: a
/// link to the program in a workstation's folder makes that the program's folder. `startedAs` is the first
/// argument of main(); a bare name is looked up the way the command line does.
[[nodiscard]] std::string programFolder(const std::string &startedAs);
