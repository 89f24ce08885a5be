// A fuzzed file, opened from memory.
#pragma once

#include "data/jet/check.h"
#include "tests/jet/memory_file.h"

#include <cstdint>

namespace fuzz {

class FileInput
{
public:
    FileInput(const std::uint8_t *data, std::size_t size)
    {
        FileBytes bytes(size);
        if (size > 0)
            std::memcpy(bytes.data(), data, size);
        m_folder.put(kName, std::move(bytes));
    }

    /// The database, with the passwords of the seed files; nothing when it cannot be opened.
    [[nodiscard]] std::unique_ptr<jet::Database> open(bool readOnly)
    {
        for (const char *password : {"", "password", "qzrt5817"}) {
            try {
                return jet::Database::open(kName, {.password = password, .readOnly = readOnly}, m_folder);
            } catch (const AppError &error) {
                if (error.number() != ErrorNumber::PasswordWrong)
                    break;
            }
        }
        return nullptr;
    }

private:
    static constexpr const char *kName = "fuzzed.mdb";
    MemoryFolder m_folder;
};

/// Every table of the file that can be looked at, system tables too.
template <class Visit>
void forEachTable(jet::Database &database, Visit visit)
{
    std::vector<jet::CatalogueEntry> entries;
    if (!attempt([&] { entries = database.catalogue(); }))
        return;
    for (const jet::CatalogueEntry &entry : entries) {
        if (entry.type == 1)
            attempt([&] { visit(database.table(entry.name)); });
    }
}

} // namespace fuzz
