// The database of one company and financial year.
#pragma once

#include "data/jet/database.h"
#include "samples/company.h"
#include "samples/ledgers.h"
#include "samples/movements.h"

#include <vector>

namespace samples {

/// What stays the same over a company's years.
struct CompanyData
{
    PartCatalogue catalogue;
    std::vector<Ledger> ledgers;
};

/// Makes all tables of a year and fills them; `history` moves on by this year.
void fillYearDatabase(jet::Database &database, const Options &options, const CompanyYear &year,
                      const CompanyData &data, StockHistory &history);

} // namespace samples
