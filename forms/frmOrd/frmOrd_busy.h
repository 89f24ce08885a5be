// While the order form works on something long.
#pragma once

#include "forms/frmOrd/frmOrd.h"
#include "forms/frmOrd/frmOrd_ui.h"

#include <QApplication>

class frmOrd::Busy
{
public:
    explicit Busy(frmOrd &form)
        : m_form(form)
    {
        m_form.m_busy = true;
        m_form.showResult({});
        QApplication::setOverrideCursor(Qt::WaitCursor);
    }
    ~Busy()
    {
        QApplication::restoreOverrideCursor();
        m_form.m_ui->Pb->hide();
        m_form.m_busy = false;
    }
    Busy(const Busy &) = delete;
    Busy &operator=(const Busy &) = delete;

private:
    frmOrd &m_form;
};
