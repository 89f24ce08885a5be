// frm_Srh_Spares: the modal pick-list of spare parts.
//
// Typing the beginning of a part number or of a part name lists the matching parts with their stock and bin;
// a second list shows the vehicle models that the highlighted part fits. The choice goes back through the
// session (`FoundItemCode`, `FoundPartCode`, `FoundItemName`); 0 and "" mean that nothing was chosen.
#pragma once

#include "common/ui/search_dialog.h"
#include "data/connection.h"
#include "forms/context.h"

#include <cstdint>
#include <string>

class frm_Srh_Spares : public ui::SearchDialog
{
    Q_OBJECT

public:
    /// Loads the form: forgets the last choice, puts the session's search filter (the letter typed in the
    /// grid, or "") into the name box and searches at once.
    explicit frm_Srh_Spares(const forms::Context &context, QWidget *parent = nullptr);
    ~frm_Srh_Spares() override;

protected:
    void Form_Activate() override;
    void cmdOk_Click() override;

private:
    void layOutLists();
    void Form_Load();
    void searchFilter();
    void Load_Items();
    void Load_Veh();
    void Design();
    void Design_Veh();
    void txtItem_Code_Change();
    void txtItem_Name_Change();
    void searchBy(const char *field, int column, const QString &text);
    void txtItem_Down();
    void fgList_RowColChange();

    forms::Context m_context;
    data::Connection m_Adodc1; ///< the list's own connection, by the year's connect string
    TextGrid m_vehicles{1};
    std::string m_field = "ItemName"; ///< the searched field of the item master
    std::string m_text;               ///< the search text
    bool m_searching = false;         ///< the list is being filled: the vehicles wait for the row it ends on
    ui::TextBox *m_txtItem_Code;
    ui::TextBox *m_txtItem_Name;
    ui::GridView *m_fgVeh;
};
