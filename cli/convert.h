// Converts the files of a command line.

#ifndef SGBK_CLI_CONVERT_H
#define SGBK_CLI_CONVERT_H

#include <string>

#include "options.h"
#include "sgbk/EncodingConvertor.h"

namespace cli {

// The exit statuses of the command.
enum class Status { done = 0, losses = 1, usage = 2, failure = 3 };

void printMessage(const std::string& text);

Status convertFiles(EncodingConvertor& converter, const Options& options);

}  // namespace cli

#endif
