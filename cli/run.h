// The files of a command line: what goes where, and what must not.

#ifndef SGBK_CLI_RUN_H
#define SGBK_CLI_RUN_H

#include "options.h"

namespace cli {

// Throws UsageError before any file is touched, and OutputFailure.
void convertFiles(Options options);

}  // namespace cli

#endif
