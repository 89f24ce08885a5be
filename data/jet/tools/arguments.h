// The command line of the small tools: [--password P] and names.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct ToolArguments
{
    std::string password;
    std::vector<std::string> names;
};

/// Nothing when an option is not known or lacks its value.
[[nodiscard]] inline std::optional<ToolArguments> readArguments(int count, char **values)
{
    ToolArguments result;
    bool options = true;
    for (int i = 1; i < count; ++i) {
        const std::string_view value = values[i];
        if (options && value == "--") {
            options = false;
        } else if (options && value == "--password") {
            if (++i == count)
                return std::nullopt;
            result.password = values[i];
        } else if (options && value.starts_with("--password=")) {
            result.password = value.substr(value.find('=') + 1);
        } else if (options && value.starts_with("-") && value != "-") {
            return std::nullopt;
        } else {
            result.names.emplace_back(value);
        }
    }
    return result;
}
