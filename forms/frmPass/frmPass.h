// frmPass: the login form, the first window of the program.
//
// Checks user name and password against `Pass` of the main database. Three failures of either kind in one run
// end the program; on success the user is stored in the session and the company form comes up.
#pragma once

#include "common/ui/form_dialog.h"
#include "common/ui/text_box.h"
#include "forms/context.h"

#include <cstdint>

class frmPass : public ui::FormDialog
{
    Q_OBJECT

public:
    /// Loads the form: opens the base databases and fills in the remembered user. That may end the program;
    /// the form must then not be shown.
    frmPass(const forms::Context &context, forms::Navigator &navigator, QWidget *parent = nullptr);

protected:
    void Form_Activate() override;

private:
    void layOut();
    void Form_Load();
    void showRememberedUser();
    void cmdOk_Click();
    void cmdCan_Click();
    void Count_Id();
    void refuse(const QString &message, ui::TextBox *box);

    forms::Context m_context;
    forms::Navigator &m_navigator;
    std::uint8_t m_failures = 0; ///< failed logins of this run
    ui::TextBox *m_txtUser;
    ui::TextBox *m_txtPass;
    QPushButton *m_cmdOk;
    QPushButton *m_cmdCan;
};
