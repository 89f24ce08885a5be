// frm_Srh_Names: the modal pick-list of suppliers.
//
// The list narrows with every typed character. The choice goes back through the session (`FoundLedgCode`,
// `FoundLedgName`); 0 and "" mean that nothing was chosen.
#pragma once

#include "common/ui/search_dialog.h"
#include "forms/context.h"

#include <string>

class frm_Srh_Names : public ui::SearchDialog
{
    Q_OBJECT

public:
    explicit frm_Srh_Names(const forms::Context &context, QWidget *parent = nullptr);

    /// Forgets the last choice and reloads the list; called before the form is shown. Throws what the
    /// databases throw.
    void Calling();

protected:
    void Form_Activate() override;
    void cmdOk_Click() override;

private:
    void Form_Load();
    void Load_frm_Srh_Names();
    void txtName_Change();
    void txtName_Down();

    forms::Context m_context;
    std::string m_field; ///< the searched field of the ledger master
    std::string m_text;  ///< the search text
    ui::TextBox *m_txtName;
};
