// frmStart: the choice of company and financial year.
//
// Lists the companies that the user may open (flags `Year1` and `Year2` of the user's row in `Pass`, for the
// first and the second company in code order) with the years of the selected one. OK opens the year's
// database and brings up the main window.
#pragma once

#include "common/text_grid.h"
#include "common/ui/combo_box.h"
#include "common/ui/form_dialog.h"
#include "common/ui/grid_view.h"
#include "forms/context.h"

#include <cstdint>
#include <string>

class frmStart : public ui::FormDialog
{
    Q_OBJECT

public:
    /// Loads the form: opens the base databases anew and lists the companies. That may end the program; the
    /// form must then not be shown.
    frmStart(const forms::Context &context, forms::Navigator &navigator, QWidget *parent = nullptr);
    ~frmStart() override;

    /// The digit of a one-digit number in the system's own numbering; nothing calls it.
    [[nodiscard]] static std::uint8_t Numm(const std::string &N);

protected:
    void Form_Activate() override;

private:
    void layOut();
    void Form_Load();
    void Load_Company();
    [[nodiscard]] bool listCompany(const std::string &code, std::int16_t companyNumber, std::int16_t row);
    [[nodiscard]] bool mayOpen(std::int16_t companyNumber);
    void Design();
    void Load_Years();
    void fgList_Click();
    void fgList_RowColChange();
    void fgList_SelChange();
    void fgList_KeyPress(int character);
    void fgList_DblClick();
    void cmbYear_Click();
    void cmdOk_Click();
    void cmdExit_Click();
    void Un();
    void Un_Ld();

    [[nodiscard]] std::string currentCompany() const;
    [[nodiscard]] bool onCompany() const;
    bool takeYearRow();

    forms::Context m_context;
    forms::Navigator &m_navigator;
    TextGrid m_companies{4};
    std::string m_database; ///< `DBMst` of the year that OK has read
    ui::GridView *m_fgList;
    ui::ComboBox *m_cmbYear;
    QPushButton *m_cmdOk;
    QPushButton *m_cmdExit;
};
