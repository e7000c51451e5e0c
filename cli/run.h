// The files of a command line: what goes where, and what must not.

#ifndef SGBK_CLI_RUN_H
#define SGBK_CLI_RUN_H

#include "message.h"
#include "options.h"

namespace cli {

// Throws UsageError before any file is touched.
Status convertFiles(Options options);

}  // namespace cli

#endif
