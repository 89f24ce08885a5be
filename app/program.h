// The program: session, connections and windows of one run, and the order in which the windows follow one
// another.
#pragma once

#include "app/Main.h"
#include "app/session.h"
#include "data/session_connections.h"
#include "forms/context.h"
#include "forms/frmPass/frmPass.h"
#include "forms/frmStart/frmStart.h"
#include "forms/report_preview/report_outlet.h"
#include "output/libreoffice/libreoffice.h"

#include <memory>
#include <string>

class Program : public forms::Navigator
{
public:
    /// `folder` is the program's own folder, where the workstation's two databases lie.
    Program(Dialogs &dialogs, Clock &clock, Shell &shell, const std::string &folder);

    /// Shows the login form. When loading it has ended the program, nothing is shown.
    void start();

    [[nodiscard]] const Session &session() const { return m_session; }

private:
    void showStart() override;
    void showMain() override;

    Session m_session;
    forms::ScreenOutlet m_outlet;
    output::LayoutReport m_rptOrder;
    data::Connections m_connections;
    output::LibreOffice m_office;
    forms::Context m_context;
    // The forms outlive their own end: each is still in a handler when it brings up the next.
    std::unique_ptr<frmPass> m_frmPass;
    std::unique_ptr<frmStart> m_frmStart;
    std::unique_ptr<Main> m_main;
};
