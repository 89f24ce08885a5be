// The dealership that is measured: a copy of its main and newest year database, and the same movements and
// items in a native SQLite file.
#pragma once

#include "common/date.h"

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

/// Lives in a scratch folder inside the dealership, so that all lies on one disk, and removes it.
class YearCopy
{
public:
    /// `folder` is what make-dealership made. Throws std::runtime_error when it has no year database.
    explicit YearCopy(const std::string &folder);
    ~YearCopy();
    YearCopy(const YearCopy &) = delete;
    YearCopy &operator=(const YearCopy &) = delete;

    /// Path of a file in the scratch folder; nothing need exist there.
    [[nodiscard]] std::string path(const std::string &name) const;
    /// The copy of the newest year's database: the largest one.
    [[nodiscard]] std::string yearFile() const;
    /// The copy of the smallest year database.
    [[nodiscard]] std::string smallYearFile() const { return path("small.mdb"); }
    [[nodiscard]] std::string nativeFile() const { return path("native.sqlite"); }
    /// What the session calls the server's path.
    [[nodiscard]] std::string serverPath() const { return m_scratch; }

    /// Fills the native file: amounts as whole ten-thousandths, dates as day numbers, the indexes of the
    /// Access file. Also learns what follows.
    void fillNative();
    [[nodiscard]] std::int64_t movements() const { return m_movements; }
    /// Codes of the item master, in stored order.
    [[nodiscard]] const std::vector<std::int32_t> &items() const { return m_items; }
    [[nodiscard]] Date firstDay() const { return m_firstDay; }
    [[nodiscard]] Date lastDay() const { return m_lastDay; }

private:
    std::string m_scratch;
    std::string m_yearName;
    std::int64_t m_movements = 0;
    std::vector<std::int32_t> m_items;
    Date m_firstDay;
    Date m_lastDay;
};

} // namespace bench
