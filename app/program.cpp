#include "app/program.h"

#include "common/ui/waiting.h"
#include "forms/frmOrd/frmOrd.h"

#include <QScreen>

namespace {

output::LibreOffice::Settings officeSettings()
{
    output::LibreOffice::Settings settings;
    settings.meanwhile = ui::keepPainting;
    return settings;
}

} // namespace

Program::Program(Dialogs &dialogs, Clock &clock, Shell &shell, const std::string &folder)
    : m_outlet(dialogs)
    , m_rptOrder(m_outlet, dialogs, clock)
    , m_office(officeSettings())
    , m_context{m_session, m_connections, dialogs, clock, shell, folder, &m_office, &m_rptOrder}
{}

void Program::start()
{
    m_frmPass = std::make_unique<frmPass>(m_context, *this);
    if (!m_context.shell.ended())
        m_frmPass->show();
}

void Program::showStart()
{
    m_frmStart = std::make_unique<frmStart>(m_context, *this);
    if (m_context.shell.ended())
        return;
    m_frmStart->setWindowModality(Qt::ApplicationModal);
    m_frmStart->show();
}

void Program::showMain()
{
    m_main = std::make_unique<Main>(m_context);
    // When it is brought back from there, all of it is on the screen, its frame too.
    constexpr QSize kFrame(10, 50);
    m_main->resize(m_main->size().boundedTo(m_main->screen()->availableSize() - kFrame));
    m_main->showMaximized();
    auto order = std::make_unique<frmOrd>(m_context);
    // A failing statement is skipped here: a year that could not be opened leaves an order form that shows
    // the error at every action.
    attempt([&] { order->Calling(); });
    if (!m_context.shell.ended())
        m_main->showChild(order.release());
}
