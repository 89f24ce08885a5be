// Message and file boxes on the screen.
//
// Every box is a window of the toolkit with an object name ("notice", "question", "openFile",
// "saveFile", "runTimeError"), centred over the active window. After the end of the program no box comes up
// any more: a question is then answered No.
#pragma once

#include "common/seams.h"

namespace ui {

class QtDialogs : public Dialogs
{
public:
    explicit QtDialogs(const Shell &shell)
        : m_shell(shell)
    {}

    void notice(const std::string &text, Icon icon, Title title) override;
    bool question(const std::string &text, Icon icon, Title title) override;
    std::string openFile(const std::vector<std::string> &filters) override;
    std::string saveFile(const std::string &suggested, const std::string &filter) override;
    void runTimeError(const AppError &error) override;

private:
    const Shell &m_shell;
};

} // namespace ui
