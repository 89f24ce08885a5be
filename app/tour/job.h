// The storekeeper's main job as steps for the stage: log in, choose company and year, prepare an order,
// correct it, save and print it, call it up again, leave.
#pragma once

#include "app/tour/stage.h"

#include <QSize>
#include <QString>

#include <string>
#include <vector>

namespace tour {

/// What the tour entered, saw and must find again.
struct Record
{
    QString supplier;
    QString orderNumber;
    int correctedRow = 1;
    QString correctedQuantity;
    QString netTotal;
    int lines = 0; ///< lines with a quantity above zero when the order was saved
};

[[nodiscard]] std::vector<Step> storekeepersJob(Stage &stage, Record &record, QSize windowSize);

} // namespace tour
