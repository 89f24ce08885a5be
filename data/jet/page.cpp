#include "data/jet/page.h"

namespace jet {

CorruptFile damaged(PageNo page, std::size_t at, const std::string &reason)
{
    return CorruptFile("The database file is damaged (page " + std::to_string(number(page)) + ", offset " +
                       std::to_string(at) + "): " + reason + ".");
}

CorruptFile damaged(PageNo page, const std::string &reason)
{
    return CorruptFile("The database file is damaged (page " + std::to_string(number(page)) + "): " + reason +
                       ".");
}

void throwPastEnd(PageNo page, std::size_t at)
{
    throw damaged(page, at, "a value reaches past the end");
}

} // namespace jet
