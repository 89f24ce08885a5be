// The session record: who is logged in, which company and year are open, and what the windows hand to one
// another.
//
// Plain values without behaviour; one object lives for the whole run. The database layer fills it and every
// form reads it, therefore it is the one header of this folder that lower folders may include.
#pragma once

#include "common/date.h"

#include <cstdint>
#include <string>

struct Session
{
    // Identity and rights
    std::int16_t UserId = 0; ///< `Uid` of the logged-in user
    std::string UserName;    ///< as typed in the login form, before any check; nothing else reads it
    std::string SuperUser;   ///< the word "True" or "False", kept as text; nothing else reads it

    // Company and year
    std::string ComCode;       ///< `Years`.`ComCode` of the chosen company
    std::int32_t YearCode = 0; ///< `Years`.`Code` of the chosen financial year
    std::uint8_t SPID = 0;     ///< price category: 1, 2 NDPD; 3, 4, 6 NDPS; 5 NDPA
    std::string ComName;
    std::string Town;
    Date YearStart;
    Date YearEnd;
    Date WorkDate;       ///< today, but not after YearEnd
    std::string DbSub;   ///< code of the subsidiary database that holds the task rights
    std::string DlrCode; ///< dealer code; nothing else reads it

    // Paths, as the system writes them (backslashes; mapped to local paths only where files are opened)
    std::string AppPath;
    std::string ServerPath;
    std::string DbMst;          ///< code of the open year's database
    std::string DbMstCopy;      ///< the second copy kept beside it
    std::string YearDbFile;     ///< path of the open year's database
    std::string LayOutsFile;    ///< set when a year is opened; nothing reads it
    std::string LayoutsFile;    ///< set when the scratch database is opened; nothing reads it
    std::string YearDsnConnect; ///< connect string of the year's data source, without its last semicolon
    std::string YearNameText;   ///< never assigned
    std::string YearLabel;      ///< always "-1": its source text is never assigned; kept, nothing reads it

    // Window geometry: inner size of the main window
    std::int32_t MdiHeight = 0;
    std::int32_t MdiWidth = 0;

    // Order form modes
    std::uint8_t FormMode = 0;     ///< 1 New, 2 Modify, 3 Delete
    std::uint8_t PreviousMode = 0; ///< what FormMode falls back to when a mode is refused
    std::string DeniedAction;      ///< "Add", "Modify", "Delete", or "" when nothing was refused
    bool PrintRates = false;       ///< state of the rate check box at the last print

    // What the order form and the search forms hand to each other
    std::uint8_t SearchKind = 0;    ///< 10 suppliers; 1 to 4 spare-part category
    std::string SearchFilter;       ///< the first typed character, or ""
    std::int32_t FoundLedgCode = 0; ///< chosen supplier; 0 means nothing chosen
    std::string FoundLedgName;
    std::int32_t FoundItemCode = 0; ///< chosen part; 0 means nothing chosen
    std::string FoundPartCode;
    std::string FoundItemName;
};
