// frm_Srh_Names: the modal pick-list of suppliers.
//
// The list narrows with every typed character. The choice goes back through the session (`FoundLedgCode`,
// `FoundLedgName`); 0 and "" mean that nothing was chosen.
#pragma once

#include "common/text_grid.h"
#include "common/ui/form_dialog.h"
#include "common/ui/grid_view.h"
#include "common/ui/text_box.h"
#include "forms/context.h"

#include <string>

class QFrame;
class QLabel;

class frm_Srh_Names : public ui::FormDialog
{
    Q_OBJECT

public:
    explicit frm_Srh_Names(const forms::Context &context, QWidget *parent = nullptr);
    ~frm_Srh_Names() override;

    /// Forgets the last choice and reloads the list; called before the form is shown. Throws what the
    /// databases throw.
    void Calling();

protected:
    void Form_Activate() override;

private:
    void layOut();
    void Form_Load();
    void Load_frm_Srh_Names();
    void txtName_Change();
    void txtName_Down();
    void fgList_KeyPress(int character);
    void cmdOk_Click();
    void cmdExit_Click();

    forms::Context m_context;
    TextGrid m_names{2};
    std::string m_field; ///< the searched field of the ledger master
    std::string m_text;  ///< the search text
    QFrame *m_Pic;
    QLabel *m_lblName;
    ui::TextBox *m_txtName;
    ui::GridView *m_fgList;
    QFrame *m_fmSave;
    QPushButton *m_cmdOk;
    QPushButton *m_cmdExit;
};
