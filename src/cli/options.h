// The fields of a request as options of a command.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "service/field.h"

namespace tarnwick::cli {

/// "--all-files" for "all_files".
std::string option_name(std::string_view field);

/// Adds an option for each field, its name with "-" for "_"; a required one takes the words of the command
/// line that are no options, joined by blanks. The request must stay where it is as long as `command` may
/// parse. Bytes of texts that are no UTF-8 become lone surrogates (text/surrogates.h). The limits of fields
/// do not hold here.
void add_options(CLI::App& command, const std::vector<service::Field>& fields);

/// Adds --format, one of those of the output; empty unless it is given.
void add_format_option(CLI::App& command, std::string& format);

}  // namespace tarnwick::cli
